// Writing whole blocks to open files.
#ifndef QUILLONID_SUPPORT_FILES_H
#define QUILLONID_SUPPORT_FILES_H

#include <fcntl.h>

#include <cstddef>

// How a file is opened that is created or replaced.
inline constexpr int kReplacing = O_WRONLY | O_CREAT | O_TRUNC | O_NOCTTY | O_CLOEXEC;

// Writes all of `bytes`, in as many calls as it takes. False when that fails.
bool WriteAll(int fd, const unsigned char* bytes, std::size_t size);

#endif
