// String and BCD helpers: hex, trimming, check bytes. A leaf header that every layer may include;
// the exported functions themselves are declared in quillonid/link.h.
#ifndef QUILLONID_LINK_STR_H
#define QUILLONID_LINK_STR_H

#include <cstddef>
#include <cstdint>
#include <span>

#include "quillonid/export.h"

extern "C" {
QL_API unsigned char Str_GetDataLRC(const unsigned char* data, int len);
QL_API int Str_GetDataDeleteChar(const unsigned char* data, int len, unsigned char byte);
QL_API int Str_AscToHex(const char* text, int len, unsigned char* out);
QL_API int Str_HexToAsc(const unsigned char* data, int count, char* out);
QL_API char* Str_strsTrim(char* text);
}

// Where the body of a packet stands: behind the first head byte, before the first end byte after
// it. Empty: there is none.
std::span<const unsigned char> PacketBody(std::uint8_t head, std::uint8_t end,
                                          std::span<const unsigned char> packet);

// Compares without regard to the case of A to Z, whatever the locale.
bool EqualsIgnoringCase(const char* text, const char* word);
bool StartsIgnoringCase(const char* text, const char* word);

#endif
