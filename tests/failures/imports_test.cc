// Every call that the library makes to the outside is one that the tests of failures know.
#include "tests/failures/imports.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "tests/failures/library_file.h"

namespace failures {
namespace {

#ifndef QL_COVERAGE_BUILD  // The counters' own calls are linked into the library.
TEST(LibraryImports, AreAllKnown) {
  const std::vector<std::string> symbols = UndefinedSymbols();
  ASSERT_GE(symbols.size(), 50u);
  for (const std::string& symbol : symbols) {
    EXPECT_TRUE(FindImport(symbol) != nullptr || IsInstrumentation(symbol))
        << symbol << ": say in tests/failures/imports.cc how it can fail";
  }
}
#endif

// A row that nothing calls any more would count as tried.
TEST(LibraryImports, StillHoldEveryCallThatIsMadeToFail) {
  std::set<const Import*> imported;
  for (const Slot& slot : ImportSlots()) imported.insert(FindImport(slot.symbol));

  for (const Import& row : Imports()) {
    EXPECT_TRUE(row.stand_in == nullptr || imported.contains(&row)) << row.name;
  }
}

// What an overrun, if there were one, would meet.
TEST(LibraryFile, IsHardened) {
  const std::vector<std::string> symbols = UndefinedSymbols();
  const auto has = [&symbols](std::string_view name) {
    return std::find(symbols.begin(), symbols.end(), name) != symbols.end();
  };

  EXPECT_TRUE(HasReadOnlySlots());
  EXPECT_TRUE(IsBoundWhenLoaded());
  EXPECT_TRUE(has("__stack_chk_fail"));
#ifdef QL_FORTIFIED
  EXPECT_TRUE(has("__memcpy_chk"));
  EXPECT_TRUE(has("__snprintf_chk"));
#endif
}

// Else an application's "test" or "CopyFile" would be called instead.
TEST(LibraryImports, AreNoFunctionsOfItsOwn) {
  EXPECT_EQ(std::vector<std::string>{}, OwnFunctionSlots());
}

TEST(LibraryImports, AreFoundUnderThePlainName) {
  ASSERT_NE(nullptr, FindImport("pread"));
  EXPECT_EQ(FindImport("pread"), FindImport("__pread_chk"));
  EXPECT_EQ(nullptr, FindImport("system"));
}

}  // namespace
}  // namespace failures
