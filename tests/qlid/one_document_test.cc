// With --json there is one document on standard output, whatever happens, and nothing else there.
#include <gtest/gtest.h>
#include <sys/wait.h>

#include <cstdlib>

#include "tests/qlid/bench.h"
#include "tests/testing/private_root.h"

namespace {

// The one document of an output; what stands behind it is an error.
Json DocumentOf(const Output& output) {
  const char* end = nullptr;
  Json document = {cJSON_ParseWithOpts(output.out.c_str(), &end, 0), cJSON_Delete};
  EXPECT_NE(nullptr, document) << output.out << output.err;
  EXPECT_EQ("\n", std::string(document ? end : "")) << output.out;
  return document;
}

struct Refusal {
  const char* name;
  std::vector<std::string> arguments;
  const char* schema;
};

void PrintTo(const Refusal& row, std::ostream* out) { *out << row.name; }

class WrongCommandLine : public testing::TestWithParam<Refusal> {};

}  // namespace

TEST_P(WrongCommandLine, IsRefusedInADocument) {
  const Output output = RunQlid(GetParam().arguments);

  EXPECT_EQ(2, output.exit);
  EXPECT_EQ("", output.err);
  const Json document = DocumentOf(output);
  EXPECT_EQ(GetParam().schema, Member(document.get(), "schema"));
  EXPECT_EQ("false", Member(document.get(), "ok"));
  EXPECT_EQ("argument", Member(Child(document, "error"), "reason"));
  const std::string file = TemporaryFolder() + "/document.json";
  WriteWholeFile(file, output.out);
  const std::string schema = GetParam().schema;
  const std::string check = "python3 " CHECK_SCHEMA " " SCHEMAS "/" +
                            schema.substr(0, schema.find('/')) + "-1.schema.json " + file;
  const int status = std::system(check.c_str());
  EXPECT_TRUE(WEXITSTATUS(status) == 0 || WEXITSTATUS(status) == 77) << status;
}

INSTANTIATE_TEST_SUITE_P(
    QlidDocument, WrongCommandLine,
    testing::Values(
        Refusal{
            "Timeout", {"read", "--json", "--timeout", "500"},
             "qlid.read/1"
},
        Refusal{"Option", {"read", "--tiemout", "5", "--json"}, "qlid.read/1"},
        Refusal{"Device", {"read", "--json", "--device", "COM1"}, "qlid.read/1"},
        Refusal{"NoFile", {"decode", "--json"}, "qlid.read/1"},
        Refusal{"Native", {"read", "--json", "--native", "-"}, "qlid.read/1"},
        Refusal{"Photo", {"read", "--json", "--photo", "-"}, "qlid.read/1"},
        Refusal{
            "Record", {"read", "--json", "--device", "/dev/ttyS0", "--record", "-"}, "qlid.read/1"},
        Refusal{"Watch", {"read", "--json", "--watch", "--native", "-"}, "qlid.read/1"},
        Refusal{"DecodePhoto", {"decode", "--json", "--photo", "-", "/dev/null"}, "qlid.read/1"},
        Refusal{"Doctor", {"doctor", "--json", "--foo"}, "qlid.usage/1"},
        Refusal{"Command", {"reed", "--json"}, "qlid.usage/1"}),
    [](const auto& row) { return std::string(row.param.name); });

TEST(QlidDocument, IsPrintedBesideAProgramThatTakesTheCard) {
  const Bench bench;

  const Output good = RunQlid(bench.Read({"--json", "--exec", "echo from the program"}));
  const Output bad = RunQlid(bench.Read({"--json", "--exec", "exit 3"}));

  EXPECT_EQ(0, good.exit);
  EXPECT_EQ("true", Member(DocumentOf(good).get(), "ok"));
  EXPECT_TRUE(Contains(good.err, "from the program")) << good.err;
  EXPECT_EQ(8, bad.exit);
  const Json document = DocumentOf(bad);
  EXPECT_EQ("false", Member(document.get(), "ok"));
  EXPECT_EQ("command", Member(Child(document, "error"), "reason"));
  EXPECT_EQ(bench.card.person.text.at("cardId"), Member(Child(document, "card"), "IDNumber"));
}

TEST(QlidDocument, SaysBeforeTheReadThatARecordingCannotBeWritten) {
  const Bench bench;

  const Output read = RunQlid(bench.Read({"--json", "--record", "/quillonid-none/line.qtrace"}));

  EXPECT_EQ(8, read.exit);
  EXPECT_EQ("", read.err);
  EXPECT_EQ("recording", Member(Child(DocumentOf(read), "error"), "reason"));
  EXPECT_EQ(0U, bench.reader.Requests().size());
}

// A folder is no file to write to, and a disk may fill up later.
TEST(QlidDocument, SaysBehindTheReadThatARecordingWasNotWritten) {
  const Bench bench;

  const Output folder = RunQlid(bench.Read({"--json", "--record", "/dev"}));
  const Output full = RunQlid(bench.Read({"--json", "--record", "/dev/full"}));

  EXPECT_EQ(8, folder.exit);
  EXPECT_EQ(8, full.exit);
  const Json document = DocumentOf(full);
  EXPECT_EQ("false", Member(document.get(), "ok"));
  EXPECT_EQ("recording", Member(Child(document, "error"), "reason"));
  EXPECT_EQ("resident", Member(document.get(), "kind"));
}

TEST(QlidDocument, LeavesStandardOutputToTheOneFileThatIsNamedSo) {
  const Bench bench;

  const Output native = RunQlid(bench.Read({"--native", "-"}));
  const Output two = RunQlid(bench.Read({"--native", "-", "--photo", "-"}));

  EXPECT_EQ(0, native.exit) << native.err;
  EXPECT_EQ(Text(simulator::NativeData(bench.card, false)), native.out);
  EXPECT_EQ(2, two.exit);
  EXPECT_TRUE(Contains(two.err, "standard output takes one thing alone")) << two.err;
}

TEST(QlidDocument, OfExplainedBytesSaysWhetherTheAnswerIsSound) {
  const Bench bench;
  const std::string file = TemporaryFolder() + "/card.bin";
  const std::string sound = Text(simulator::NativeData(bench.card, false));
  const std::vector<std::string> explain = {"decode", "--explain", "--json", file};

  WriteWholeFile(file, sound);
  const Output good = RunQlid(explain);
  WriteWholeFile(file, sound + "x");
  const Output size = RunQlid(explain);

  EXPECT_EQ(0, good.exit);
  EXPECT_EQ("true", Member(DocumentOf(good).get(), "ok"));
  EXPECT_EQ(5, size.exit);
  EXPECT_EQ("", size.err);
  const Json document = DocumentOf(size);
  EXPECT_EQ("qlid.explain/1", Member(document.get(), "schema"));
  EXPECT_EQ("false", Member(document.get(), "ok"));
  EXPECT_EQ("receive", Member(Child(document, "error"), "reason"));
}

TEST(QlidDecode, EndsWith5WhenTheCheckByteIsWrong) {
  const Bench bench;
  const std::string file = TemporaryFolder() + "/card.bin";
  std::string bytes = Text(simulator::NativeData(bench.card, false));
  bytes.back() = static_cast<char>(bytes.back() ^ 1);
  WriteWholeFile(file, bytes);

  const Output text = RunQlid({"decode", file});
  const Output json = RunQlid({"decode", "--json", file});
  const Output explained = RunQlid({"decode", "--explain", "--json", file});

  EXPECT_EQ(5, text.exit);
  EXPECT_TRUE(Contains(text.out, bench.card.person.text.at("cardId"))) << text.out;
  EXPECT_TRUE(Contains(text.err, "the answer does not fit its check byte")) << text.err;
  EXPECT_TRUE(Contains(text.err, "byte " + std::to_string(bytes.size() - 1))) << text.err;
  for (const Output* output : {&json, &explained}) {
    EXPECT_EQ(5, output->exit);
    EXPECT_EQ("check", Member(Child(DocumentOf(*output), "error"), "reason"));
  }
}
