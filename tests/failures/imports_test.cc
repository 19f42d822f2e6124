// Every call that the library makes to the outside is one that the tests of failures know.
#include "tests/failures/imports.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include "tests/failures/elf_file.h"
#include "tests/failures/library_file.h"

namespace failures {
namespace {

#ifndef QL_COVERAGE_BUILD  // The counters' own calls are linked into the library.
TEST(LibraryImports, AreAllKnown) {
  const std::vector<std::string> symbols = UndefinedSymbols(LibraryPath());
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
