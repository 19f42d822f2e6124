// What device opening shares with the reader exchange beyond the exported functions. The state
// stands at the top of exchange.cc.
#ifndef QUILLONID_LINK_EXCHANGE_H
#define QUILLONID_LINK_EXCHANGE_H

#include <cstdint>

// Connection kind of the reader opened last, or 0 when none was.
std::uint32_t ReaderKind();

#endif
