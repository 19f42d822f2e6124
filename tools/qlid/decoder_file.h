// The photo decoder's file, looked at without running any of it.
#ifndef QUILLONID_TOOLS_QLID_DECODER_FILE_H
#define QUILLONID_TOOLS_QLID_DECODER_FILE_H

#include <optional>
#include <string>

#include "tools/qlid/elf_file.h"

namespace qlid {

inline constexpr char kDecoderFile[] = "/libwlt.so";
inline constexpr char kDecoderFunction[] = "unpack";

struct DecoderFile {
  bool there = false;
  std::string unreadable;  // why it cannot be read; empty: it was
  ElfFacts facts;          // of one that was read
};
DecoderFile LookAtDecoder();

// What keeps it from decoding, as far as that shows; none for a decoder that looks sound.
struct DecoderFault {
  const char* reason;  // for programs
  std::string text;
  bool function = false;  // the file is sound but for its function
};
std::optional<DecoderFault> FaultOf(const DecoderFile& file);

}  // namespace qlid

#endif
