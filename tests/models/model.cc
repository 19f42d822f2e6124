#include "tests/models/model.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "tests/testing/private_root.h"
#include "tests/testing/valgrind.h"

namespace {

bool s_no_configuration;  // set by KnownConfiguration

}  // namespace

KnownConfiguration::KnownConfiguration() { s_no_configuration = !FileExists(kConfigurationFile); }

KnownConfiguration::~KnownConfiguration() { s_no_configuration = false; }

// Calls from the library come here, too.
extern "C" int stat(const char* path, struct stat* status) noexcept {
  if (s_no_configuration && std::string_view(path) == kConfigurationFile) {
    errno = ENOENT;
    return -1;
  }
  return fstatat(AT_FDCWD, path, status, 0);
}

std::uint64_t InputsToTry(std::uint64_t usual) {
  const char* wanted = std::getenv("QL_MODEL_INPUTS");
  if (wanted != nullptr) return std::strtoull(wanted, nullptr, 10);
  return RunsSlowly() ? usual / 10 : usual;
}

std::string WorkFolder() { return HavePrivateRoot() ? "/home/quillon" : TemporaryFolder(); }

std::uint64_t SeedOfTest() {
  const testing::TestInfo* test = testing::UnitTest::GetInstance()->current_test_info();
  std::uint64_t seed = 0xCBF29CE484222325U;  // FNV-1a over the name
  for (const char c : std::string(test->test_suite_name()) + "." + test->name()) {
    seed = (seed ^ static_cast<unsigned char>(c)) * 0x100000001B3U;
  }
  return seed;
}

void ReportInputs(std::uint64_t inputs) {
  std::printf("equal inputs: %llu\n", static_cast<unsigned long long>(inputs));
}
