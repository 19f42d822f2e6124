// Look-up of one key in an INI file, as the log's configuration check needs it on every call: no
// stdio, no heap for ordinary files, no state.
#ifndef QUILLONID_SUPPORT_INI_H
#define QUILLONID_SUPPORT_INI_H

#include <cstddef>

// A value with its terminating zero.
inline constexpr std::size_t kIniValueSize = 1024;

enum class IniLookup { kFound, kNotFound, kNoFile };

// Copies the value of `key` in `section` of the file `path` to `value`. kNoFile: nothing has that
// name; every other failure, null arguments among them, is kNotFound. What a device or anything
// else but a regular file says is not found either, unless the caller says that the value does not
// matter.
IniLookup FindIniValue(const char* path, const char* section, const char* key,
                       char (&value)[kIniValueSize], bool matters(const char* value) = nullptr);

#endif
