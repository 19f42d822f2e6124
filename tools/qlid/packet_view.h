// One packet of the reader or frame of its card module, field by field: for the bytes of a line
// trace.
#ifndef QUILLONID_TOOLS_QLID_PACKET_VIEW_H
#define QUILLONID_TOOLS_QLID_PACKET_VIEW_H

#include <cstdint>
#include <string>
#include <vector>

#include "tools/qlid/byte_meanings.h"

namespace qlid {

struct PacketView {
  const char* frame = "unknown";  // in JSON: "reader-packet", "card-module" or "unknown"
  std::string meaning;            // of all of it, in words; empty when it is not known
  std::vector<ByteMeaning> rows;  // from the first byte to the last without a gap
  std::string fault;              // what is wrong with the framing, and where; empty: it is right
};

// A reader packet is right when Str_ZEL_ParsePacket() takes it.
PacketView ViewPacket(const std::vector<std::uint8_t>& bytes);

// Bytes in hexadecimal, with or without blanks, colons or line feeds between them; false when the
// text is anything else.
bool ParseHex(const std::string& text, std::vector<std::uint8_t>* bytes);

}  // namespace qlid

#endif
