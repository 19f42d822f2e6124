// bench: times the library against what else does the same work and prints one table.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "bench/table.h"

namespace {

constexpr char kUsage[] =
    "usage: bench [--markdown] [--check] [--equal] [--repetitions N] [ROW]\n"
    "  --markdown       the table as docs/performance.md holds it\n"
    "  --check          fail when a must is missed by more than the spread twice in a row\n"
    "  --equal          only compare the results of the ways, byte for byte\n"
    "  ROW              only the rows whose id contains this text\n";

}  // namespace

int main(int argc, char** argv) {
  bench::Table::Options options;
  for (int i = 1; i < argc; ++i) {
    const std::string_view argument = argv[i];
    if (argument == "--markdown") {
      options.markdown = true;
    } else if (argument == "--check") {
      options.check = true;
    } else if (argument == "--equal") {
      options.equal = true;
    } else if (argument == "--repetitions" && i + 1 < argc) {
      options.repetitions = std::max(3, std::atoi(argv[++i]));
    } else if (argument.starts_with("-")) {
      std::fputs(kUsage, argument == "--help" ? stdout : stderr);
      return argument == "--help" ? 0 : 64;
    } else {
      options.only = argument;
    }
  }
  bench::Table table;
  bench::AddTextRows(table);
  bench::AddCardRows(table);
  bench::AddLogRows(table);
  bench::AddReadRows(table);
  bench::AddLoadRows(table);
  return table.Run(options);
}
