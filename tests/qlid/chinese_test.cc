// Everything that qlid says is Chinese where Chinese is asked for: help, complaints, faults.
#include <gtest/gtest.h>

#include <map>
#include <set>
#include <sstream>

#include "simulator/faults.h"
#include "tests/qlid/bench.h"
#include "tests/testing/private_root.h"

namespace {

constexpr std::size_t kColumn = 30;  // where descriptions begin

const std::vector<std::string> kChinese = {"LC_ALL=zh_CN.UTF-8"};
const std::vector<std::string> kEnglish = {"LC_ALL=C.UTF-8"};

// U+3000 and the CJK planes behind it: three bytes in UTF-8 and two columns on the screen.
bool IsHan(const std::string& text, std::size_t at) {
  return static_cast<unsigned char>(text[at]) >= 0xE3;
}

bool HasHan(const std::string& text) {
  for (std::size_t at = 0; at < text.size(); ++at) {
    if (IsHan(text, at)) return true;
  }
  return false;
}

// A command, option or argument as the help lists it.
struct Entry {
  std::string name;   // "-d,--device", "demo"
  std::string about;  // what stands from the column of descriptions on
};

// `line` from that column on; "" where a character lies across it.
std::string Described(const std::string& line) {
  std::size_t column = 0;
  std::size_t at = 0;
  while (at < line.size() && column < kColumn) {
    const bool wide = IsHan(line, at);
    column += wide ? 2 : 1;
    at += wide ? 3 : 1;
  }
  const bool begins =
      column == kColumn && at < line.size() && line[at - 1] == ' ' && line[at] != ' ';
  return begins ? line.substr(at) : "";
}

std::vector<std::string> LinesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

std::vector<Entry> Entries(const std::string& help) {
  std::vector<Entry> entries;
  for (const std::string& line : LinesOf(help)) {
    if (line.rfind("  ", 0) != 0) continue;
    if (line[2] != ' ') entries.push_back({line.substr(2, line.find_first_of(" \xEF", 2) - 2), ""});
    if (!entries.empty() && entries.back().about.empty()) entries.back().about = Described(line);
  }
  return entries;
}

std::string Help(const std::string& command, const std::vector<std::string>& environment) {
  std::vector<std::string> arguments = {command, "--help"};
  if (command.empty()) arguments.erase(arguments.begin());
  const Output output = RunQlid(arguments, environment);
  EXPECT_EQ(0, output.exit) << output.err;
  return output.out;
}

// Every command, and "" for the tool itself.
std::vector<std::string> Commands() {
  std::vector<std::string> commands = {""};
  for (const Entry& entry : Entries(Help("", kEnglish))) {
    if (entry.name[0] != '-') commands.push_back(entry.name);
  }
  return commands;
}

std::set<std::string> OptionsIn(const std::string& help) {
  std::set<std::string> options;
  for (const Entry& entry : Entries(help)) {
    if (entry.name[0] == '-') options.insert(entry.name);
  }
  return options;
}

}  // namespace

TEST(ChineseHelp, DescribesEveryCommandOptionAndArgument) {
  const std::vector<std::string> commands = Commands();
  ASSERT_EQ(11U, commands.size());

  for (const std::string& command : commands) {
    const std::string help = Help(command, kChinese);
    EXPECT_TRUE(HasHan(help.substr(0, help.find('\n')))) << help;
    ASSERT_FALSE(Entries(help).empty()) << help;
    for (const Entry& entry : Entries(help))
      EXPECT_TRUE(HasHan(entry.about)) << command << " " << entry.name << ": " << entry.about;
  }
}

TEST(ChineseHelp, HasTheOptionsOfTheEnglishOne) {
  for (const std::string& command : Commands()) {
    const std::string english = Help(command, kEnglish);
    const std::string chinese = Help(command, kChinese);

    EXPECT_EQ(OptionsIn(english), OptionsIn(chinese)) << command;
    EXPECT_EQ(Entries(english).size(), Entries(chinese).size()) << command;
    EXPECT_FALSE(HasHan(english)) << english;
  }
}

TEST(ChineseHelp, KeepsNoWordOfTheArgumentLibrary) {
  for (const std::string& command : Commands()) {
    const std::string help = Help(command, kChinese);

    for (const char* word : {"Usage", "OPTIONS", "Options", "COMMAND", "Positionals", "REQUIRED",
                             "TEXT", "INT", "FILE", "CODE", "DEVICE ", "Env", "Excludes", "Needs"})
      EXPECT_FALSE(Contains(help, word)) << word << "\n" << help;
  }
}

TEST(ChineseHelp, SaysWhatAnOptionTakes) {
  const std::string read = Help("read", kChinese);
  const std::string decode = Help("decode", kChinese);

  EXPECT_TRUE(Contains(read, "用法：qlid read [选项]\n")) << read;
  EXPECT_TRUE(Contains(read, "-t,--timeout 整数（1 至 120；默认 10；环境变量 QLID_TIMEOUT）"))
      << read;
  EXPECT_TRUE(Contains(read, "--kind 文本（any,resident,foreigner,permit,gat；默认 any）")) << read;
  EXPECT_TRUE(Contains(read, "--json（不与 --picture 同用）")) << read;
  EXPECT_TRUE(Contains(decode, "用法：qlid decode [选项] 文件\n")) << decode;
  EXPECT_TRUE(Contains(decode, "文件（必需）")) << decode;
}

TEST(ChineseHelp, IsAskedForAnywhereOnTheCommandLine) {
  const std::string chinese = Help("devices", kChinese);

  EXPECT_EQ(chinese, RunQlid({"--lang", "zh", "devices", "--help"}, kEnglish).out);
  EXPECT_EQ(chinese, RunQlid({"devices", "--help", "--lang=zh"}, kEnglish).out);
  EXPECT_EQ(chinese, RunQlid({"devices", "--help"}, {"LC_ALL=", "LC_MESSAGES=zh_CN.UTF-8"}).out);
  EXPECT_EQ(Help("devices", kEnglish),
            RunQlid({"devices", "--help", "--lang", "en"}, kChinese).out);
}

TEST(ChineseComplaint, SaysWhatIsWrongWithTheCommandLine) {
  struct Wrong {
    std::vector<std::string> arguments;
    const char* complaint;
  };
  const std::vector<Wrong> wrong = {
      {{"decode"},                               "缺少参数：文件"                                             },
      {{"completion"},                           "缺少参数：SHELL"                                              },
      {{"read", "--record", "x", "--redact"},    "--record 不能与 --redact 同时使用"                          },
      {{"read", "--timeout"},                    "--timeout 缺少值"                                               },
      {{"read", "--timeout", "0"},               "--timeout：0 不在 1 至 120 之间"                             },
      {{"read", "--baud", "fast"},               "--baud 的值无效：fast"                                        },
      {{"read", "--pause", "1", "--pause", "2"}, "--pause 最多 1 个值，给出了 2 个"                         },
      {{"read", "--kind", "x"},                  "--kind：x 不在 any、resident、foreigner、permit、gat 之中"},
      {{"read", "--usb-id", "1"},                "--usb-id：\"1\" 不是 1234:5678 这样的 USB 标识"            },
      {{"read", "--tiemout"},                    "read 不接受 \"--tiemout\""                                      },
      {{"--lang", "fr"},                         "--lang：fr 不在 en、zh 之中"                                 },
  };

  for (const Wrong& each : wrong) {
    const Output output = RunQlid(each.arguments, kChinese);
    EXPECT_EQ(2, output.exit) << each.complaint;
    EXPECT_EQ(std::string("qlid: ") + each.complaint, output.err.substr(0, output.err.find('\n')));
  }
}

TEST(ChineseComplaint, TakesAValueOfAnyLength) {
  const std::string value(100'000, 'x');

  const Output output = RunQlid({"read", "--kind", value}, kChinese);

  EXPECT_EQ(2, output.exit);
  EXPECT_TRUE(Contains(output.err, value + " 不在 any、resident")) << output.err.substr(0, 200);
}

TEST(ChineseComplaint, LeavesTheEnglishOneAsItIs) {
  const Output missing = RunQlid({"decode"}, kEnglish);
  const Output excluded = RunQlid({"read", "--record", "x", "--redact"}, kEnglish);
  const Output kind = RunQlid({"read", "--kind", "x"}, kEnglish);

  EXPECT_EQ(0U, missing.err.find("qlid: FILE is required\n")) << missing.err;
  EXPECT_EQ(0U, excluded.err.find("qlid: --record excludes --redact\n")) << excluded.err;
  EXPECT_EQ(0U, kind.err.find("qlid: --kind: x not in {any,resident,foreigner,permit,gat}\n"))
      << kind.err;
}

TEST(ChineseFaults, SayWhatEachDoes) {
  const std::string english = RunQlid({"simulate", "--fault", "help"}, kEnglish).out;
  const std::string chinese = RunQlid({"simulate", "--fault", "help"}, kChinese).out;

  EXPECT_EQ(simulator::FaultTable().size(), LinesOf(chinese).size());
  for (const std::string& line : LinesOf(chinese)) {
    const std::size_t about = line.find("  ");
    ASSERT_NE(std::string::npos, about) << line;
    EXPECT_TRUE(HasHan(line.substr(about))) << line;
  }
  EXPECT_TRUE(Contains(chinese, "cut=字节              读卡应答发出这么多字节后中断")) << chinese;
  EXPECT_TRUE(Contains(chinese, "  -> -100\n")) << chinese;
  EXPECT_TRUE(Contains(english,
                       "cut=BYTES             read replies stop after so many bytes"
                       "       -> -5\n"))
      << english;
  EXPECT_EQ(chinese, RunQlid({"demo", "--fault", "help"}, kChinese).out);
}

TEST(ChineseFaults, AreRefusedInChinese) {
  for (const auto& [fault, complaint] : std::map<std::string, std::string>{
           {"explode",  "没有故障 \"explode\""                    },
           {"silent=1", "\"silent\" 不带值"                        },
           {"cut=x",    "\"cut\" 的值须为 0 至 1000000 的整数"},
  }) {
    EXPECT_EQ("qlid: " + complaint, LinesOf(RunQlid({"demo", "--fault", fault}, kChinese).err)[0]);
  }
}

TEST(ChineseSpecimens, AreDescribed) {
  const std::vector<std::string> lines =
      LinesOf(RunQlid({"simulate", "--person", "help"}, kChinese).out);

  EXPECT_EQ(simulator::Specimens().size(), lines.size());
  for (const std::string& line : lines) EXPECT_TRUE(HasHan(line)) << line;
}

TEST(ChineseTrace, SaysWhatTravels) {
  const Bench bench;

  const Output read = RunQlid(bench.Read({"--trace"}), kChinese);

  EXPECT_EQ(0, read.exit) << read.err;
  std::size_t frames = 0;
  for (const std::string& line : LinesOf(read.err)) {
    const std::size_t bytes = line.find(" AA AA AA 96 69");
    if (bytes == std::string::npos) continue;
    ++frames;
    EXPECT_TRUE(HasHan(line.substr(0, bytes))) << line;
  }
  EXPECT_EQ(6U, frames) << read.err;
}

TEST(ChineseTrace, SaysWhatAFrameMeans) {
  const Output search = RunQlid({"decode", "--packet", "AA AA AA 96 69 00 03 20 01 22"}, kChinese);
  const Output no_card =
      RunQlid({"decode", "--packet", "AA AA AA 96 69 00 04 00 00 81 85"}, kChinese);

  EXPECT_EQ("寻卡", LinesOf(search.out).back()) << search.out;
  EXPECT_EQ("无卡", LinesOf(no_card.out).back()) << no_card.out;
}

TEST(ChineseComplaint, SaysWhatTheSystemSaid) {
  const std::string folder = TemporaryFolder();
  WriteWholeFile(folder + "/backwards", "qtrace 1\n2 < AA\n1 > AA\n");

  const Output missing = RunQlid({"decode", folder + "/none"}, kChinese);
  const Output directory = RunQlid({"decode", folder}, kChinese);
  const Output recording = RunQlid({"simulate", "--replay", folder + "/backwards"}, kChinese);

  EXPECT_TRUE(Contains(missing.err, "没有那个文件或目录")) << missing.err;
  EXPECT_TRUE(Contains(directory.err, "是一个目录")) << directory.err;
  EXPECT_TRUE(Contains(recording.err, "第 3 行：时间倒退")) << recording.err;
}

TEST(ChineseTerminal, IsToldHowToShowChinese) {
  Program gbk(Qlid({"devices", "--known"}), {"LC_ALL=zh_CN.GBK"}, true);
  Program utf8(Qlid({"devices", "--known", "--lang", "zh"}), {"LC_ALL=C.UTF-8"}, true);

  EXPECT_TRUE(Contains(gbk.Finish().err, "请执行：export LC_ALL=C.UTF-8，并加选项 --lang zh"));
  EXPECT_EQ("", utf8.Finish().err);
}
