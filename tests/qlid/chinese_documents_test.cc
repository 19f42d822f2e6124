// The Chinese documents say what the English ones say, as far as a program can tell: the same
// options, functions, files, codes, bytes and numbers.
#include <gtest/gtest.h>

#include <regex>
#include <set>

#include "tests/qlid/bench.h"
#include "tests/testing/private_root.h"

namespace {

std::string Document(const std::string& path) {
  std::string text = ReadWholeFile(std::string(DOCUMENTS) + "/" + path);
  EXPECT_NE("", text) << path;
  return text;
}

std::vector<std::string> Matches(const std::string& text, const char* pattern) {
  const std::regex expression(pattern);
  std::vector<std::string> matches;
  for (std::sregex_iterator found(text.begin(), text.end(), expression), end; found != end; ++found)
    matches.push_back(found->str());
  return matches;
}

// Commands, options, functions, variables of the environment, paths, names of files and codes.
std::set<std::string> NamesIn(const std::string& text) {
  constexpr char kName[] =
      "qlid\\*? "
      "\\*?(demo|devices|doctor|read|decode|simulate|reset-baud|explain|log|completion)\\b|"
      "--[a-z][a-z-]+|"
      "[A-Z]+_[A-Z][A-Za-z_]+|"
      "(/[a-z][A-Za-z0-9_]+)+|"
      "[A-Za-z_-]+\\.(ini|log|so|json|png|bmp|bin|qtrace)|"
      "-[0-9]+";
  const auto names = Matches(text, kName);
  return {names.begin(), names.end()};
}

struct Pair {
  const char* english;
  const char* chinese;
};

class ChineseDocument : public testing::TestWithParam<Pair> {};

}  // namespace

TEST_P(ChineseDocument, NamesWhatTheEnglishOneNames) {
  const std::set<std::string> english = NamesIn(Document(GetParam().english));
  const std::set<std::string> chinese = NamesIn(Document(GetParam().chinese));

  EXPECT_GE(english.size(), 3U);
  for (const std::string& name : english) EXPECT_TRUE(chinese.count(name)) << name;
  for (const std::string& name : chinese) EXPECT_TRUE(english.count(name)) << name;
}

INSTANTIATE_TEST_SUITE_P(
    Each, ChineseDocument,
    testing::Values(Pair{"README.md", "README.zh_CN.md"},
                    Pair{"docs/man/qlid.1.scd", "docs/man/zh_CN/qlid.1.scd"},
                    Pair{"docs/troubleshooting.md", "docs/troubleshooting.zh_CN.md"},
                    Pair{"docs/privacy.md", "docs/privacy.zh_CN.md"},
                    Pair{"docs/man/libquillonid.3.scd", "docs/man/zh_CN/libquillonid.3.scd"},
                    Pair{"docs/man/QLConfig.ini.5.scd", "docs/man/zh_CN/QLConfig.ini.5.scd"},
                    Pair{"docs/man/quillonid-errors.7.scd",
                         "docs/man/zh_CN/quillonid-errors.7.scd"}),
    [](const auto& row) { return "At" + std::to_string(row.index); });

TEST(ChineseProtocol, HasTheBytesAndNumbersOfTheEnglishOne) {
  const std::string english = Document("docs/protocol.md");
  const std::string chinese = Document("docs/protocol.zh_CN.md");

  EXPECT_EQ(Matches(english, "`[^`]+`"), Matches(chinese, "`[^`]+`"));
  EXPECT_EQ(Matches(english, "[0-9]+(,[0-9]+)?"), Matches(chinese, "[0-9]+(,[0-9]+)?"));
}
