#include "bench/machine.h"

#include <gnu/libc-version.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <ctime>
#include <fstream>

namespace bench {
namespace {

// x86-64 gives its processors' names, AArch64 does not.
std::string Processor() {
  std::ifstream info("/proc/cpuinfo");
  for (std::string line; std::getline(info, line);) {
    const std::size_t colon = line.find(": ");
    if (line.starts_with("model name") && colon != std::string::npos) return line.substr(colon + 2);
  }
  return "processor without a name";
}

bool IsVirtual() {
  std::ifstream info("/proc/cpuinfo");
  for (std::string line; std::getline(info, line);) {
    if (line.find(" hypervisor") != std::string::npos) return true;
  }
  return false;
}

}  // namespace

std::string Machine() {
  utsname system = {};
  uname(&system);
  const std::string release = system.release;
  const std::time_t now = std::time(nullptr);
  char date[32];
  std::strftime(date, sizeof date, "%Y-%m-%d", std::gmtime(&now));
  return std::to_string(sysconf(_SC_NPROCESSORS_ONLN)) + " x " + Processor() +
         (IsVirtual() ? " in a virtual machine" : "") + ", " + system.machine + ", Linux " +
         release.substr(0, release.find('-')) + ", glibc " + gnu_get_libc_version() + ", g++ " +
         __VERSION__ + ", " + date;
}

}  // namespace bench
