// Hex, trimming and check bytes for every layer: the functions of quillonid/link.h that are about
// bytes alone, so that their callers see nothing of readers and devices.
#ifndef QUILLONID_LINK_STR_H
#define QUILLONID_LINK_STR_H

#include "quillonid/export.h"

QL_BEGIN_DECLS

// Exclusive-or of `len` bytes.
QL_API unsigned char Str_GetDataLRC(const unsigned char* data, int len);

// Length without the trailing run of `byte`.
QL_API int Str_GetDataDeleteChar(const unsigned char* data, int len, unsigned char byte);

// Packs `len` hex characters two to a byte. Returns 0, or -1 for null.
QL_API int Str_AscToHex(const char* text, int len, unsigned char* out);

// Removes every blank, CR, tab and LF in place. Returns the text.
QL_API char* Str_strsTrim(char* text);

// Writes `count` upper-case hex characters and a zero. Returns 0, or -1 for null.
QL_API int Str_HexToAsc(const unsigned char* data, int count, char* out);

QL_END_DECLS

#endif
