// qlid log: the library's log, and what --redact leaves of it.
#include <gtest/gtest.h>
#include <iconv.h>

#include <algorithm>
#include <sstream>

#include "tests/qlid/bench.h"
#include "tests/testing/private_root.h"

namespace {

std::string Hex(const std::string& bytes) {
  std::string text;
  for (const char c : bytes) {
    char pair[3];
    std::snprintf(pair, sizeof pair, "%02X", static_cast<unsigned>(static_cast<unsigned char>(c)));
    text += pair;
  }
  return text;
}

std::string Gbk(std::string utf8) {
  std::string text(utf8.size() * 2 + 4, '\0');
  char* in = utf8.data();
  char* out = text.data();
  std::size_t in_left = utf8.size();
  std::size_t out_left = text.size();
  const iconv_t conversion = iconv_open("GBK", "UTF-8");
  iconv(conversion, &in, &in_left, &out, &out_left);
  iconv_close(conversion);
  text.resize(text.size() - out_left);
  return text;
}

// What could give a person away, in each form in which a log could hold it.
std::vector<std::string> Traces(const simulator::Card& card) {
  std::vector<std::string> traces;
  for (const auto& [field, value] : card.person.text) {
    // One or two letters stand in any text; the lines of the fields are looked at apart.
    if (value.size() < 6 &&
        value.find_first_not_of("0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZ") == std::string::npos) {
      continue;
    }
    for (const std::string& text : {value, Gbk(value)}) {
      if (text.empty()) continue;
      traces.push_back(text);
      traces.push_back(Hex(text));
    }
  }
  // The native data from the text on, in pieces: a dump may begin anywhere.
  const simulator::Bytes native = simulator::NativeData(card, card.fingerprints);
  const std::string digits = Hex({native.begin() + 14, native.end()});
  const std::string nothing(32, '0');
  std::string blanks;
  for (int i = 0; i < 8; ++i) blanks += "2000";
  for (std::size_t at = 0; at + 32 <= digits.size(); at += 32) {
    const std::string piece = digits.substr(at, 32);
    if (piece != nothing && piece != blanks) traces.push_back(piece);
  }
  return traces;
}

void ReadWithAllThatIsLogged(const Bench& bench, bool fingerprints) {
  const std::string photo = TemporaryFolder() + "/photo.bmp";
  std::vector<std::string> more = {"--json", "--photo", photo};
  if (fingerprints) more.emplace_back("--fingerprints");
  const Output read = RunQlid(bench.Read(more));
  ASSERT_EQ(0, read.exit) << read.err;
}

std::string Redacted(const std::string& line) {
  const std::string file = TemporaryFolder() + "/line.log";
  WriteWholeFile(file, line + "\r\n");
  std::string text = RunQlid({"log", "--redact", file}).out;
  if (!text.empty()) text.pop_back();
  return text;
}

constexpr char kStart[] = " 1121140000123  INFO:    BusiId:  ";

}  // namespace

TEST(QlidLog, RedactsEveryFieldOfTheSpecimenCards) {
  NEEDS_PRIVATE_ROOT();
  WriteWholeFile(kDecoderFile, ReadWholeFile(SPECIMEN_DECODER));
  SwitchLogging(true);
  std::vector<std::string> traces;
  for (const bool fingerprints : {false, true}) {
    for (const char* id : {"resident", "foreigner", "permit"}) {
      const Bench bench(id, fingerprints);
      ReadWithAllThatIsLogged(bench, fingerprints);
      const std::vector<std::string> more = Traces(bench.card);
      traces.insert(traces.end(), more.begin(), more.end());
    }
  }
  ASSERT_GT(traces.size(), 500U);
  const std::string before = ReadWholeFile(kLogFile);

  const Output log = RunQlid({"log", "--redact"});

  EXPECT_EQ(0, log.exit) << log.err;
  int stood_there = 0;
  for (const std::string& trace : traces) {
    stood_there += Contains(before, trace) ? 1 : 0;
    EXPECT_FALSE(Contains(log.out, trace)) << trace;
  }
  EXPECT_GT(stood_there, 500);  // Or the log was not one of reads.
}

TEST(QlidLog, RedactsEveryValueWhateverItsLength) {
  NEEDS_PRIVATE_ROOT();
  SwitchLogging(true);
  const Bench bench;
  ASSERT_EQ(0, RunQlid(bench.Read()).exit);

  std::istringstream lines(RunQlid({"log", "--redact"}).out);

  int values = 0;
  for (std::string line; std::getline(lines, line);) {
    const std::size_t arrow = line.find("->");
    if (arrow == std::string::npos) continue;
    const std::string value = line.substr(std::min(line.find(' ', arrow), line.size()));
    EXPECT_TRUE(value == " <masked>" || value.find_first_not_of(' ') == std::string::npos) << line;
    ++values;
  }
  EXPECT_GT(values, 10);
}

TEST(QlidLog, KeepsWhatSupportNeeds) {
  for (const std::string message :
       {"[ ReadIDCard ] Start ", "GetIDCardInfo nRet = -56 ", "pszDevice: /dev/ttyUSB0",
        "***[have Id Card] ", "==> nReadLen = 1295 ", "[COMM_Zel_OpenReader]End nRet = -50  "}) {
    EXPECT_EQ(kStart + message, Redacted(kStart + message));
  }
  EXPECT_EQ(" 1121140000123  hid write  LEN=10   HEX: AAAAAA96690003200122",
            Redacted(" 1121140000123  hid write  LEN=10   HEX: AAAAAA96690003200122"));
}

TEST(QlidLog, MasksWhatItDoesNotKnow) {
  const struct {
    const char* message;
    const char* left;
  } kLines[] = {
      {"parse szTag Address Value :1",                      "<masked>"                            },
      {"[convert] Start szHeadImg = /home/zhang/zhang.bmp", "[convert] Start szHeadImg = <masked>"},
      {"{\"Name\":\"ZHANG SAN\",\"IDNumber\":\"11\"}",      "<masked>"                            },
      {"[szBase64 = AAAA ]",                                "[szBase64 = <masked>"                },
      {"pChina->sexCode 2 ",                                "pChina->sexCode <masked>"            },
      {"nIndex = 17 szCountry = ",                          "<masked>"                            },
      {"nRet = 19900101",                                   "nRet = <masked>"                     },
  };
  for (const auto& line : kLines)
    EXPECT_EQ(std::string(kStart) + line.left, Redacted(std::string(kStart) + line.message));
  EXPECT_EQ("<masked>", Redacted("the second line of a value"));
  EXPECT_EQ("<masked>", Redacted("999999199001010024"));
  EXPECT_EQ("<masked> 1121140000123  [test] Start ",
            Redacted("ZHANG SAN 1121140000123  [test] Start "));
}

TEST(QlidLog, ShowsTheLogAsItIsWithAWarning) {
  const std::string file = TemporaryFolder() + "/a.log";
  WriteWholeFile(file, " 1121140000123  pChina->name ZHANG\r\n");

  const Output log = RunQlid({"log", file});

  EXPECT_EQ(" 1121140000123  pChina->name ZHANG\n", log.out);
  EXPECT_TRUE(Contains(log.err, "qlid log --redact")) << log.err;
}

TEST(QlidLog, NamesALogThatIsNotThere) {
  NEEDS_PRIVATE_ROOT();

  const Output log = RunQlid({"log"});

  EXPECT_EQ(2, log.exit);
  EXPECT_TRUE(Contains(log.err, "/home/quillon/Alg_debug.log")) << log.err;
  EXPECT_TRUE(Contains(log.err, "QLConfig.ini")) << log.err;
}
