// The emulated bus needs its preload library from the start of the process: runs this same program
// again with it. So a plain call, a debugger and the discovery of tests all work.

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "simulator/environment.h"

namespace {

constexpr char kPreload[] = "libumockdev-preload.so.0";

}  // namespace

int main(int argc, char** argv) {
  const char* preload = std::getenv("LD_PRELOAD");
  if (!preload || !std::string(preload).ends_with(kPreload)) {
    simulator::Extend("LD_PRELOAD", kPreload);
    // AddressSanitizer asks to be the first library; behind a preloaded one it works as well.
    simulator::Extend("ASAN_OPTIONS", "verify_asan_link_order=0");
    // By its name: under valgrind the link itself leads to valgrind.
    const std::string self = std::filesystem::read_symlink("/proc/self/exe");
    execv(self.c_str(), argv);
    std::perror(self.c_str());
    return 1;
  }
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}
