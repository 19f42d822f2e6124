#include "tests/models/model.h"

#include <cstdio>
#include <cstdlib>

#include "tests/testing/private_root.h"

std::uint64_t InputsToTry(std::uint64_t usual) {
  const char* wanted = std::getenv("QL_MODEL_INPUTS");
  return wanted == nullptr ? usual : std::strtoull(wanted, nullptr, 10);
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
