#include "tools/qlid/files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "tools/qlid/terminal.h"

namespace qlid {
namespace {

std::string Reason() { return std::strerror(errno); }

bool WriteAll(int fd, const std::vector<std::uint8_t>& bytes) {
  std::size_t done = 0;
  while (done < bytes.size()) {
    const ssize_t written = write(fd, bytes.data() + done, bytes.size() - done);
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    done += static_cast<std::size_t>(written);
  }
  return true;
}

}  // namespace

bool ReadFile(const std::string& path, std::size_t limit, std::vector<std::uint8_t>* bytes,
              std::string* problem) {
  const int fd = path == "-" ? dup(STDIN_FILENO) : open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) {
    *problem = Reason();
    return false;
  }
  bytes->clear();
  std::uint8_t piece[4096];
  ssize_t got = 0;
  do {
    got = read(fd, piece, sizeof piece);
    if (got < 0 && errno == EINTR) continue;
    if (got > 0) bytes->insert(bytes->end(), piece, piece + got);
  } while ((got > 0 || (got < 0 && errno == EINTR)) && bytes->size() <= limit);
  if (got < 0) *problem = Reason();
  close(fd);
  if (got < 0) return false;
  if (bytes->size() > limit) {
    *problem = Format(Tr("more than %zu bytes", "超过 %zu 字节"), limit);
    return false;
  }
  return true;
}

TemporaryFile::TemporaryFile(const std::string& beside) : path_(beside + ".XXXXXX"), fd_(-1) {
  fd_ = mkostemp(path_.data(), O_CLOEXEC);
  if (fd_ < 0) path_.clear();
}

TemporaryFile::~TemporaryFile() {
  if (fd_ >= 0) close(fd_);
  if (!path_.empty()) unlink(path_.c_str());
}

int TemporaryFile::Release() {
  const int fd = fd_;
  fd_ = -1;
  return fd;
}

bool WriteFile(const std::string& path, const std::vector<std::uint8_t>& bytes,
               std::string* problem) {
  if (path == "-") {
    if (WriteAll(STDOUT_FILENO, bytes)) return true;
    *problem = Reason();
    return false;
  }
  struct stat status = {};
  if (stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode)) {
    // A device such as /dev/null, or a pipe, is written to, never replaced.
    const int fd = open(path.c_str(), O_WRONLY | O_CLOEXEC);
    const bool done = fd >= 0 && WriteAll(fd, bytes);
    if (!done) *problem = Reason();
    if (fd >= 0) close(fd);
    return done;
  }
  TemporaryFile file(path);
  if (file.path().empty()) {
    *problem = Reason();
    return false;
  }
  const int fd = file.Release();
  const bool written = WriteAll(fd, bytes) && fsync(fd) == 0;
  if (!written) *problem = Reason();
  if (close(fd) != 0 || !written) return false;
  if (rename(file.path().c_str(), path.c_str()) != 0) {
    *problem = Reason();
    return false;
  }
  return true;
}

}  // namespace qlid
