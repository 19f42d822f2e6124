// What the device layer asks the exchange; its state stands at the top of exchange.cc.
#ifndef QUILLONID_LINK_EXCHANGE_H
#define QUILLONID_LINK_EXCHANGE_H

#include <cstdint>

// Connection kind of the last reader that was opened.
std::uint32_t ReaderKind();

#endif
