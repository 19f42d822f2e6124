// Files of a target: in the private root's empty folder, or in a temporary one without it.
#ifndef QUILLONID_FUZZ_WORK_FILE_H
#define QUILLONID_FUZZ_WORK_FILE_H

#include <fcntl.h>
#include <unistd.h>

#include <cstdlib>
#include <optional>
#include <string>

#include "fuzz/check.h"
#include "fuzz/input.h"

inline bool HavePrivateRoot() { return std::getenv("QL_PRIVATE_ROOT") != nullptr; }

inline const std::string& WorkFolder() {
  static const std::string folder = [] {
    if (HavePrivateRoot()) return std::string("/home/quillon/");
    char name[] = "/tmp/quillonid-fuzz-XXXXXX";
    FUZZ_CHECK(mkdtemp(name) != nullptr);
    return std::string(name) + "/";
  }();
  return folder;
}

inline void WriteWorkFile(const std::string& path, const Bytes& content) {
  const int fd = open(path.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
  FUZZ_CHECK(fd >= 0);
  FUZZ_CHECK(write(fd, content.data(), content.size()) == static_cast<ssize_t>(content.size()));
  close(fd);
}

// Nothing when there is no such file.
inline std::optional<Bytes> ReadWorkFile(const std::string& path) {
  const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return std::nullopt;
  Bytes content;
  std::uint8_t chunk[4096];
  for (ssize_t got = 0; (got = read(fd, chunk, sizeof chunk)) > 0;) {
    content.insert(content.end(), chunk, chunk + got);
  }
  close(fd);
  return content;
}

#endif
