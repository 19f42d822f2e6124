// Slips at the command line: what is wrong, and what to type instead. And demo, which a newcomer
// types first.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "tests/qlid/bench.h"
#include "tests/testing/private_root.h"

namespace {

// The text behind "Next", or none.
std::string NextOf(const Output& output) {
  const std::size_t at = output.err.find("\n  Next ");
  if (at == std::string::npos) return "none in: " + output.err;
  const std::size_t start = output.err.find_first_not_of(' ', at + 7);
  return output.err.substr(start, output.err.find('\n', start) - start);
}

}  // namespace

TEST(QlidUsage, EverySlipHasANextStep) {
  const std::string link = TemporaryFolder() + "/there";
  WriteWholeFile(link, "");

  const Output unknown = RunQlid({"reed"});
  const Output value = RunQlid({"read", "--timeout", "500"});
  const Output file = RunQlid({"decode", "/quillonid-none"});
  const Output bytes = RunQlid({"decode", "--packet", "zz"});
  const Output code = RunQlid({"explain", "xx"});
  const Output linked = RunQlid({"simulate", "--link", link});

  EXPECT_EQ("try \"qlid --help\"", NextOf(unknown));
  EXPECT_EQ("try \"qlid read --help\"", NextOf(value));
  EXPECT_EQ("name a file that was saved with qlid read --native", NextOf(file));
  EXPECT_EQ("two digits for each byte: qlid decode --packet \"AA AA AA 96 69 ...\"", NextOf(bytes));
  EXPECT_TRUE(Contains(bytes.err, "\"zz\" is neither a file nor bytes in hexadecimal"));
  EXPECT_EQ("see them all: qlid explain", NextOf(code));
  EXPECT_EQ(2, code.exit);
  EXPECT_EQ("name one that does not exist yet, in a folder that you may write to", NextOf(linked));
  EXPECT_TRUE(Contains(linked.err, "qlid: the link " + link + " was not made\n")) << linked.err;
  EXPECT_EQ(1, linked.exit);
}

TEST(QlidUsage, NamesTheVariableThatHoldsAWrongValue) {
  const Output variable = RunQlid({"read"}, {"QLID_TIMEOUT=abc"});
  const Output range = RunQlid({"read"}, {"QLID_TIMEOUT=500"});
  const Output given = RunQlid({"read", "-t", "x"}, {"QLID_TIMEOUT=7"});

  EXPECT_EQ(2, variable.exit);
  EXPECT_TRUE(Contains(variable.err, "the environment variable QLID_TIMEOUT is \"abc\"\n"))
      << variable.err;
  EXPECT_TRUE(Contains(range.err, "the environment variable QLID_TIMEOUT is \"500\"\n"))
      << range.err;
  EXPECT_EQ(2, given.exit);
  EXPECT_FALSE(Contains(given.err, "QLID_TIMEOUT")) << given.err;
}

TEST(QlidUsage, WritesNoPictureUnderAFalseName) {
  const Bench bench;
  for (const char* name : {"/photo.jpg", "/photo", "/bmp"}) {
    const std::string file = TemporaryFolder() + name;

    const Output read = RunQlid(bench.Read({"--photo", file}));
    const Output demo = RunQlid({"demo", "--photo", file});

    for (const Output& output : {read, demo}) {
      EXPECT_EQ(2, output.exit) << name;
      EXPECT_TRUE(Contains(output.err, "end its name in .bmp or .png")) << output.err;
    }
    EXPECT_FALSE(FileExists(file)) << name;
  }
  EXPECT_TRUE(bench.reader.Requests().empty());
}

TEST(QlidUsage, ANativeFileThatFailsKeepsNothingElseBack) {
  NEEDS_PRIVATE_ROOT();
  WriteWholeFile(kDecoderFile, ReadWholeFile(SPECIMEN_DECODER));
  const Bench bench;
  const std::string photo = TemporaryFolder() + "/photo.bmp";

  const Output read =
      RunQlid(bench.Read({"--native", "/no-such-folder/card.bin", "--photo", photo}));

  EXPECT_EQ(8, read.exit);
  EXPECT_TRUE(
      Contains(read.err, "qlid: the card was read, /no-such-folder/card.bin was not written\n"))
      << read.err;
  EXPECT_TRUE(Contains(read.out, bench.card.person.text.at("name")));
  EXPECT_EQ("BM", ReadWholeFile(photo).substr(0, 2));
}

TEST(QlidDemo, PrintsOneDocument) {
  const Output demo = RunQlid({"demo", "--json"});
  const Output failed = RunQlid({"demo", "--json", "--fault", "ic-power-on"});

  const Json document = Parse(demo.out);
  ASSERT_NE(nullptr, document) << demo.out;
  EXPECT_EQ(0, demo.exit);
  EXPECT_EQ("", demo.err);
  EXPECT_EQ("qlid.read/1", Member(document.get(), "schema"));
  EXPECT_EQ("999999199001010024", Member(Child(document, "card"), "IDNumber"));
  EXPECT_EQ(8, failed.exit);
  EXPECT_EQ("", failed.err);
  EXPECT_EQ("-100", Member(Child(Parse(failed.out), "error"), "code")) << failed.out;
}

TEST(QlidDemo, WritesNoFileForADocumentUnlessOneIsNamed) {
  std::filesystem::current_path(TemporaryFolder());

  RunQlid({"demo", "--json"});
  const Output named = RunQlid({"demo", "--json", "--photo", "named.png"});

  EXPECT_FALSE(FileExists("specimen.bmp"));
  EXPECT_EQ(0, named.exit) << named.out;
  EXPECT_EQ("\x89PNG", ReadWholeFile("named.png").substr(0, 4));
}

TEST(QlidDemo, DoesNotFailOnAFileThatNobodyAskedFor) {
  const std::string folder = TemporaryFolder() + "/occupied";
  std::filesystem::create_directories(folder + "/specimen.bmp");
  std::filesystem::current_path(folder);

  const Output demo = RunQlid({"demo"});
  const Output named = RunQlid({"demo", "--photo", "/no-such-folder/photo.bmp"});

  EXPECT_EQ(0, demo.exit) << demo.err;
  EXPECT_TRUE(Contains(demo.out, "102 x 126, specimen.bmp was not written: Is a directory"))
      << demo.out;
  EXPECT_EQ(7, named.exit);
  EXPECT_TRUE(Contains(named.err,
                       "qlid: the card was read, /no-such-folder/photo.bmp was not written (-8)\n"))
      << named.err;
}
