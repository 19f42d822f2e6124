// There is no configuration file: known here, since every log call of the library asks, and asking
// the system would take most of a target's time. A session that logs has one. Linked in by --wrap,
// see CMakeLists.txt.
#include "fuzz/no_configuration.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstring>

namespace {

bool s_hidden = true;

}  // namespace

void configuration::Hide(bool hidden) { s_hidden = hidden; }

extern "C" {

int __real_stat(const char* path, struct stat* status);

int __wrap_stat(const char* path, struct stat* status) {
  if (!s_hidden || std::strcmp(path, "/home/quillon/QLConfig.ini") != 0)
    return __real_stat(path, status);
  errno = ENOENT;
  return -1;
}

}  // extern "C"
