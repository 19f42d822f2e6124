// The commands that documents and manual pages name exist, with the options that they are given.
#include <gtest/gtest.h>

#include <map>
#include <regex>

#include "tests/qlid/bench.h"
#include "tests/testing/private_root.h"

namespace {

struct Named {
  std::string command;
  std::vector<std::string> options;
  std::string text;
};

// "qlid COMMAND ..." up to the end of the line, the quotation or the sentence.
std::vector<Named> CommandsIn(const std::string& document) {
  static const std::regex kCommand("qlid ([a-z][a-z-]*)([^`\n;|>#(]*)");
  static const std::regex kOption("--[a-z][a-z-]*");
  std::vector<Named> commands;
  for (std::sregex_iterator found(document.begin(), document.end(), kCommand), end; found != end;
       ++found) {
    Named named = {(*found)[1], {}, found->str()};
    const std::string rest = (*found)[2];
    for (std::sregex_iterator option(rest.begin(), rest.end(), kOption); option != end; ++option)
      named.options.push_back(option->str());
    commands.push_back(named);
  }
  return commands;
}

class Document : public testing::TestWithParam<const char*> {};

}  // namespace

TEST_P(Document, NamesCommandsThatExist) {
  const std::string document = ReadWholeFile(std::string(DOCUMENTS) + "/" + GetParam());
  ASSERT_NE("", document);
  const std::vector<Named> commands = CommandsIn(document);
  std::map<std::string, std::string> help;

  for (const Named& named : commands) {
    if (help.count(named.command) == 0)
      help[named.command] = RunQlid({named.command, "--help"}).out;
    EXPECT_TRUE(Contains(help[named.command], "Usage: qlid " + named.command)) << named.text;
    for (const std::string& option : named.options)
      EXPECT_TRUE(Contains(help[named.command], option)) << named.text;
  }

  EXPECT_GT(commands.size(), 3U);
}

INSTANTIATE_TEST_SUITE_P(Each, Document,
                         testing::Values("docs/troubleshooting.md", "docs/privacy.md",
                                         "docs/troubleshooting.zh_CN.md", "docs/privacy.zh_CN.md",
                                         "docs/man/zh_CN/quillonid-errors.7.scd",
                                         "docs/man/quillonid-errors.7.scd"),
                         [](const auto& row) { return "At" + std::to_string(row.index); });

// Whoever has the tool has the pages that its own refers to: the package of the tool brings that of
// the library.
TEST(QlidPackage, BringsThePagesThatItsOwnRefersTo) {
  const std::string page = ReadWholeFile(MANUAL_PAGES "/qlid.1.scd");
  const std::string see_also = page.substr(page.find("# SEE ALSO"));
  const std::string installed = ReadWholeFile(DOCUMENTS "/debian/quillonid-tools.install") +
                                ReadWholeFile(DOCUMENTS "/debian/libquillonid1.install");
  const std::regex kPage("\\*([A-Za-z.-]+)\\*\\(([157])\\)");

  int pages = 0;
  for (std::sregex_iterator found(see_also.begin(), see_also.end(), kPage), end; found != end;
       ++found, ++pages) {
    const std::string section = (*found)[2];
    EXPECT_TRUE(Contains(installed, "usr/share/man/man" + section + "\n")) << (*found)[1];
    EXPECT_TRUE(Contains(installed, "usr/share/man/zh_CN/man" + section + "\n")) << (*found)[1];
  }

  EXPECT_EQ(3, pages);
}

TEST(QlidPackage, BringsTheDocumentsThatTheToolNames) {
  const std::string documents = ReadWholeFile(DOCUMENTS "/debian/quillonid-tools.docs");

  for (const char* name : {"README", "docs/privacy", "docs/troubleshooting"}) {
    for (const char* language : {".md\n", ".zh_CN.md\n"})
      EXPECT_TRUE(Contains(documents, name + std::string(language))) << name;
  }
}
