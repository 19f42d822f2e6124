// What is installed is built so that an overrun, if there were one, would meet guards.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tests/failures/elf_file.h"
#include "tests/failures/library_file.h"

namespace failures {
namespace {

void ExpectToBeHardened(const std::string& path) {
  const Hardening hardening = HardeningOf(path);
  EXPECT_TRUE(hardening.moves);
  EXPECT_TRUE(hardening.read_only_slots);
  EXPECT_TRUE(hardening.bound_when_loaded);
  const std::vector<std::string> symbols = UndefinedSymbols(path);
  EXPECT_EQ(1, std::count(symbols.begin(), symbols.end(), "__stack_chk_fail"));
#ifdef QL_FORTIFIED
  // Calls that know the size of the buffer, such as __read_chk.
  EXPECT_TRUE(std::any_of(symbols.begin(), symbols.end(),
                          [](const std::string& symbol) { return symbol.ends_with("_chk"); }));
#endif
}

TEST(LibraryFile, IsHardened) { ExpectToBeHardened(LibraryPath()); }

TEST(ToolFile, IsHardened) { ExpectToBeHardened(QL_TOOL); }

TEST(HardeningOf, TellsAPlainFile) {
  const Hardening plain = HardeningOf(QL_PLAIN_FILE);

  EXPECT_FALSE(plain.moves);
  EXPECT_FALSE(plain.read_only_slots);
  EXPECT_FALSE(plain.bound_when_loaded);
}

}  // namespace
}  // namespace failures
