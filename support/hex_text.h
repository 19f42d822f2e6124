// Bytes as hexadecimal text, for log dumps, exported helpers and JSON alike.
#ifndef QUILLONID_SUPPORT_HEX_TEXT_H
#define QUILLONID_SUPPORT_HEX_TEXT_H

#include <cstddef>
#include <cstdint>

// Writes 2 * `size` upper-case digits to `text`, without a terminating zero.
void WriteHexUpper(const std::uint8_t* bytes, std::size_t size, char* text);

#endif
