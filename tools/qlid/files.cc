#include "tools/qlid/files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "tools/qlid/signals.h"
#include "tools/qlid/terminal.h"

namespace qlid {
namespace {

struct ErrorText {
  int error;
  const char* chinese;
};
constexpr ErrorText kErrorTexts[] = {
    {EPERM,        "不允许的操作"            },
    {ENOENT,       "没有那个文件或目录"   },
    {EIO,          "输入/输出错误"           },
    {ENXIO,        "没有那个设备或地址"   },
    {ENOMEM,       "无法分配内存"            },
    {EACCES,       "权限不够"                  },
    {EBUSY,        "设备或资源忙"            },
    {EEXIST,       "文件已存在"               },
    {ENODEV,       "没有那个设备"            },
    {ENOTDIR,      "不是目录"                  },
    {EISDIR,       "是一个目录"               },
    {EINVAL,       "无效的参数"               },
    {EMFILE,       "打开的文件过多"         },
    {ENFILE,       "系统中打开的文件过多"},
    {ETXTBSY,      "文本文件忙"               },
    {EFBIG,        "文件过大"                  },
    {ENOSPC,       "设备上没有空间"         },
    {EROFS,        "只读文件系统"            },
    {EPIPE,        "断开的管道"               },
    {ENAMETOOLONG, "文件名过长"               },
    {ELOOP,        "符号链接的层数过多"   },
    {EDQUOT,       "超出磁盘限额"            },
};

std::string Reason() { return SystemProblem(errno); }

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

std::string SystemProblem(int error) {
  for (const ErrorText& text : kErrorTexts) {
    if (text.error == error) return Tr(std::strerror(error), text.chinese);
  }
  return std::strerror(error);
}

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

bool CanBeWritten(const std::string& path, std::string* problem) {
  struct stat status = {};
  if (path == "-") return true;
  if (stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode)) {
    if (!S_ISDIR(status.st_mode) && access(path.c_str(), W_OK) == 0) return true;
    *problem = SystemProblem(S_ISDIR(status.st_mode) ? EISDIR : errno);
    return false;
  }
  const SignalsPutOff until_removed;
  const TemporaryFile file(path);
  if (file.path().empty()) *problem = Reason();
  return !file.path().empty();
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
  const SignalsPutOff until_written;
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
