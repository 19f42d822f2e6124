// Look-up of one key in an INI file, as the log's configuration check needs it on every call: no
// stdio, no heap for ordinary files, no state.
#ifndef QUILLONID_SUPPORT_INI_H
#define QUILLONID_SUPPORT_INI_H

#include <cstddef>

// A value with its terminating zero.
inline constexpr std::size_t kIniValueSize = 1024;

enum class IniLookup { kFound, kNotFound, kNoFile };

// Copies the value of `key` in `section` of the file `path` to `value`. kNoFile: nothing has that
// name; every other failure, null arguments among them, is kNotFound and leaves `value` alone.
IniLookup FindIniValue(const char* path, const char* section, const char* key,
                       char (&value)[kIniValueSize]);

#endif
