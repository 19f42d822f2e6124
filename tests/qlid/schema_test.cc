// The JSON of qlid against its schemas, docs/qlid.*.schema.json.
#include <gtest/gtest.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>

#include <cstdlib>
#include <sstream>

#include "tests/qlid/bench.h"
#include "tests/qlid/rival.h"
#include "tests/qlid/usb_machine.h"
#include "tests/testing/private_root.h"

namespace {

constexpr int kNoValidator = 77;

// Exit status of the check of these documents; what is wrong goes to the test's output.
int Check(const std::vector<std::string>& documents, const std::string& schema = "read") {
  std::string command = "python3 " CHECK_SCHEMA " " SCHEMAS "/qlid." + schema + "-1.schema.json";
  const std::string folder = TemporaryFolder();
  for (std::size_t i = 0; i < documents.size(); ++i) {
    const std::string file = folder + "/" + std::to_string(i) + ".json";
    WriteWholeFile(file, documents[i]);
    command += " " + file;
  }
  const int status = std::system(command.c_str());
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

bool HasValidator() { return Check({}) != kNoValidator; }

#define NEEDS_VALIDATOR() \
  if (!HasValidator()) GTEST_SKIP() << "no python3-jsonschema"

}  // namespace

class SchemaOfAKind : public testing::TestWithParam<const char*> {};

TEST_P(SchemaOfAKind, HoldsForEveryReadAndDecode) {
  NEEDS_VALIDATOR();
  std::vector<std::string> documents;
  for (const bool fingerprints : {false, true}) {
    const Bench bench(GetParam(), fingerprints);
    std::vector<std::string> arguments = {"--json", "--timing"};
    if (fingerprints) arguments.push_back("--fingerprints");
    documents.push_back(RunQlid(bench.Read(arguments)).out);
    arguments.push_back("--redact");
    documents.push_back(RunQlid(bench.Read(arguments)).out);
    const std::string file = TemporaryFolder() + "/card.bin";
    WriteWholeFile(file, Text(simulator::NativeData(bench.card, fingerprints)));
    documents.push_back(RunQlid({"decode", "--json", file}).out);
  }
  for (const std::string& document : documents) ASSERT_TRUE(Contains(document, "\"card\""));

  EXPECT_EQ(0, Check(documents));
}

INSTANTIATE_TEST_SUITE_P(Each, SchemaOfAKind, testing::Values("resident", "foreigner", "permit"),
                         [](const auto& kind) { return std::string(kind.param); });

TEST(QlidSchema, HoldsForWhatAProgramIsHanded) {
  NEEDS_VALIDATOR();
  const Bench bench("permit", true);

  const Output read = RunQlid(bench.Read({"--fingerprints", "--exec", "cat"}));

  ASSERT_TRUE(Contains(read.out, "PhotoNativeData")) << read.err;
  EXPECT_EQ(0, Check({read.out}));
}

TEST(QlidSchema, HoldsForEveryLineOfAWatch) {
  NEEDS_VALIDATOR();
  Bench bench;
  Program watch(Qlid(bench.Read({"--watch", "--json", "--pause", "50"})));
  ASSERT_TRUE(watch.WaitFor("\"kind\":\"resident\"")) << watch.err();
  bench.reader.PutCard(simulator::MakeCard("foreigner"));
  ASSERT_TRUE(watch.WaitFor("\"kind\":\"foreigner\"")) << watch.err();
  watch.Signal(SIGINT);

  std::istringstream lines(watch.Finish().out);
  std::vector<std::string> documents;
  for (std::string line; std::getline(lines, line);) documents.push_back(line);

  EXPECT_EQ(2U, documents.size());
  EXPECT_EQ(0, Check(documents));
}

TEST(QlidSchema, HoldsForFailures) {
  NEEDS_PRIVATE_ROOT();
  NEEDS_VALIDATOR();
  const Bench bench("permit");
  simulator::TtyReader empty;
  simulator::TtyReader silent;
  silent.SetFault({simulator::FaultId::kSilent, 0});
  const std::string broken = TemporaryFolder() + "/broken.bin";
  WriteWholeFile(broken, "x");
  const std::vector<std::vector<std::string>> failures = {
      {"read",       "--json",        "--device",                                 "/dev/quillonid-none"},
      {"read",            "--json",                      "--device",                                             "COM1"},
      {"read",      "--json",                     "--timeout",              "1", "--device", empty.path()},
      {"read", "--json","--timeout",            "1", "--device", silent.path()},
      bench.Read({"--json",            "--kind",                      "resident"                                                       }
      ),
      bench.Read({"--json",         "--photo",              TemporaryFolder() + "/none.bmp"                               }
      ), // no decoder
      {"decode",     "--json", broken           },
      {"decode",     "--json",   "/quillonid-none.bin"},
  };
  std::vector<std::string> documents;

  for (const auto& arguments : failures) {
    const Output output = RunQlid(arguments);
    EXPECT_NE(0, output.exit) << arguments.back();
    documents.push_back(output.out);
  }
  {
    const Rival rival(bench.reader.path());
    documents.push_back(RunQlid(bench.Read({"--json"})).out);
    EXPECT_TRUE(Contains(documents.back(), "\"holders\"")) << documents.back();
  }
  chown(bench.reader.path().c_str(), 0, 0);  // Takes several steps.
  chmod(bench.reader.path().c_str(), 0);
  prctl(PR_CAPBSET_DROP, 1 /* CAP_DAC_OVERRIDE */);
  documents.push_back(RunQlid(bench.Read({"--json"})).out);
  EXPECT_TRUE(Contains(documents.back(), "no-permission")) << documents.back();

  EXPECT_EQ(0, Check(documents));
}

// The end of a document, with an error of this code and reason and one detail.
#define ERROR_BEHIND(code, reason, detail)                           \
  R"("error":{"code":)" code R"(,"name":"device","reason":")" reason \
  R"(","message":"m","next":["n"],"details":{")" detail R"(":"t"}}})"

TEST(QlidSchema, RefusesWhatQlidNeverPrints) {
  NEEDS_VALIDATOR();
  const char* const kWrong[] = {
      "{}",
      R"({"schema":"qlid.read/1","ok":true})",
      R"({"schema":"qlid.read/1","ok":false})",
      R"({"schema":"qlid.read/2","ok":false,)" ERROR_BEHIND("-1", "held", "d"),
      R"({"schema":"qlid.read/1","ok":false,)" ERROR_BEHIND("-6", "held", "d"),
      R"({"schema":"qlid.read/1","ok":false,)" ERROR_BEHIND("-1", "broken", "d"),
      R"({"schema":"qlid.read/1","ok":false,)" ERROR_BEHIND("-1", "held", ""),
      R"({"schema":"qlid.read/1","ok":true,"kind":"resident","card":{},"remarks":[]})",
  };
  for (const char* wrong : kWrong) EXPECT_EQ(1, Check({wrong})) << wrong;
  EXPECT_EQ(0, Check({R"({"schema":"qlid.read/1","ok":false,)" ERROR_BEHIND("-1", "held", "d")}));
}

TEST(QlidSchema, HoldsForASoundAndABrokenChainOfTheDoctor) {
  NEEDS_PRIVATE_ROOT();
  NEEDS_VALIDATOR();
  const Bench bench;
  simulator::TtyReader silent;
  silent.SetFault({simulator::FaultId::kSilent, 0});
  std::vector<std::string> documents;

  documents.push_back(RunQlid({"doctor", "--json", "--device", "/dev/quillonid-none"}).out);
  SwitchLogging(true);
  documents.push_back(RunQlid({"doctor", "--json", "--device", silent.path()}).out);
  SwitchLogging(false);
  WriteWholeFile(kDecoderFile, "not a program");
  documents.push_back(RunQlid({"--lang", "zh", "doctor", "--json"}).out);
  for (const std::string& document : documents) {
    ASSERT_TRUE(Contains(document, "\"fail\"")) << document;
  }
  WriteWholeFile(kDecoderFile, ReadWholeFile(SPECIMEN_DECODER));
  documents.push_back(RunQlid({"doctor", "--json", "--device", bench.reader.path()}).out);
  ASSERT_TRUE(Contains(documents.back(), "a card was found and selected")) << documents.back();

  EXPECT_EQ(0, Check(documents, "doctor"));
}

TEST(QlidSchema, HoldsForTheDevices) {
  NEEDS_VALIDATOR();

  std::vector<std::string> documents = {RunQlid({"devices", "--json"}).out};
  if (HavePrivateRoot()) {
    const UsbMachine machine("usbhid");
    documents.push_back(RunQlid({"devices", "--json"}).out);
    EXPECT_TRUE(Contains(documents.back(), "0403:bcd5")) << documents.back();
    documents.push_back(RunQlid({"devices", "--json", "--usb-id", "1234:5678"}).out);
  }

  EXPECT_EQ(0, Check(documents, "devices"));
}

TEST(QlidSchema, HoldsForADeviceThatIsAsked) {
  NEEDS_VALIDATOR();
  const Bench bench;
  std::vector<std::string> documents;
  for (const std::string& device :
       {bench.reader.path(), std::string("/dev/quillonid-none"), std::string("/dev/null"),
        std::string("COM1"), std::string("HID")}) {
    documents.push_back(RunQlid({"devices", "--json", "--probe", device}).out);
  }

  EXPECT_EQ(0, Check(documents, "probe"));
  EXPECT_EQ(0, Check({RunQlid({"devices", "--json", "--known"}).out}, "known"));
}

TEST(QlidSchema, HoldsForExplainedBytes) {
  NEEDS_VALIDATOR();
  std::vector<std::string> documents;
  const std::string file = TemporaryFolder() + "/card.bin";
  for (const char* id : {"resident", "foreigner", "permit"}) {
    for (const bool fingerprints : {false, true}) {
      std::string bytes =
          Text(simulator::NativeData(simulator::MakeCard(id, fingerprints), fingerprints));
      WriteWholeFile(file, bytes);
      documents.push_back(RunQlid({"decode", "--explain", "--json", file}).out);
      documents.push_back(RunQlid({"decode", "--explain", "--json", "--redact", file}).out);
      bytes.back() = static_cast<char>(bytes.back() ^ 1);
      WriteWholeFile(file, bytes);
      documents.push_back(RunQlid({"decode", "--explain", "--json", file}).out);
      ASSERT_TRUE(Contains(documents.back(), "false")) << documents.back();
    }
  }

  EXPECT_EQ(0, Check(documents, "explain"));
}

TEST(QlidSchema, HoldsForPackets) {
  NEEDS_VALIDATOR();
  std::vector<std::string> documents;
  for (const char* bytes :
       {"02 30 30 30 34 33 32 33 30 30 30 30 31 30 33 03", "02 30 30 30 34 33 32 03",
        "AA AA AA 96 69 00 03 20 01 22", "AA AA AA 96 69 00 04", "FF", "/quillonid-none"}) {
    documents.push_back(RunQlid({"decode", "--packet", "--json", bytes}).out);
    documents.push_back(RunQlid({"decode", "--packet", "--json", "--redact", bytes}).out);
  }

  EXPECT_EQ(0, Check(documents, "packet"));
}

TEST(QlidSchema, RefusesOtherVerdicts) {
  NEEDS_PRIVATE_ROOT();
  NEEDS_VALIDATOR();
  WriteWholeFile(kDecoderFile, "not a program");
  const std::string document = RunQlid({"doctor", "--json", "--device", "/dev/quillonid-none"}).out;
  const auto changed = [&](const std::string& from, const std::string& to) {
    std::string text = document;
    const std::size_t at = text.find(from);
    EXPECT_NE(std::string::npos, at) << from;
    return at == std::string::npos ? text : text.replace(at, from.size(), to);
  };
  ASSERT_EQ(0, Check({document}, "doctor"));

  EXPECT_EQ(1, Check({changed("\"fail\"", "\"bad\"")}, "doctor"));
  EXPECT_EQ(1, Check({changed("\"ok\":\tfalse", "\"ok\":\ttrue")}, "doctor"));
  EXPECT_EQ(1, Check({changed("\"decoder\"", "\"usb\"")}, "doctor"));
  EXPECT_EQ(1, Check({changed("\"remedy\"", "\"remedies\"")}, "doctor"));
}
