// Log calls of any text, level and type, with any file name and version: each writes exactly the
// line that a model gives, into the named file, or nothing.
#include <cctype>
#include <climits>
#include <cstdio>
#include <cstring>

#include "fuzz/check.h"
#include "fuzz/input.h"
#include "fuzz/work_file.h"
#include "quillonid/support.h"

namespace {

constexpr char kFolder[] = "/home/quillon/";
constexpr std::size_t kLongestMessage = 4095;
constexpr char kNoPrivateRoot[] = "no private root: nothing is tried";  // the test is skipped
constexpr char kTime[] = "MMDDhhmmssmmm";  // stands for the 13 digits of the time

// What the process has set, as applications see it.
std::string s_version, s_name;

std::string LogFile() { return kFolder + (s_name.empty() ? "Alg_debug.log" : s_name); }

// A name of one component that the file system takes.
bool CanBeOpened() { return s_name != "." && s_name != ".." && s_name.size() <= NAME_MAX; }

// On purpose: the area name goes over the type text without a zero of its own.
std::string Marks(int type, int level) {
  static const char* const kAreas[] = {
      "",        "Public:", "Comm:",    "CommDev:", "Instr:", "Loginc",
      "BusiId:", "BusiIc:", "BusiMsg:", "AppId:",   "AppIc",  "AppMsg"};
  std::string text = type == 0 ? "INFO:  " : type == 1 ? "!!ERROR:   " : "";
  const std::string area = level >= 1 && level <= 11 ? kAreas[level] : "";
  std::string over = area;
  if (area.size() < text.size()) over += text.substr(area.size());
  return text + "  " + over + "  ";
}

std::string Line(bool indented, const std::string& marks, const std::string& message) {
  return (indented ? " " : "") + s_version + " " + kTime + "  " + marks + message + "\r\n";
}

std::string Dump(const char* title, const Bytes& bytes) {
  std::string text = title != nullptr ? std::string(title) + "  " : "";
  text += "LEN=" + std::to_string(bytes.size()) + "   HEX: ";
  constexpr char kDigits[] = "0123456789ABCDEF";
  for (const std::uint8_t byte : bytes) {
    text += kDigits[byte / 16];
    text += kDigits[byte % 16];
  }
  return text;
}

// The log holds `expected` and nothing else; it is emptied for the next call.
void CheckLog(const std::string& expected) {
  if (!CanBeOpened()) return;
  const auto written = ReadWorkFile(LogFile());
  if (expected.empty()) {
    FUZZ_CHECK(!written);
    return;
  }
  FUZZ_CHECK(written.has_value() && written->size() == expected.size());
  const std::size_t time_at =
      expected.find(kTime, expected.front() == ' ' ? 1 + s_version.size() : s_version.size());
  for (std::size_t i = 0; i < expected.size(); ++i) {
    const std::uint8_t byte = (*written)[i];
    const bool in_time = i >= time_at && i < time_at + 13;
    FUZZ_CHECK(in_time ? std::isdigit(byte) != 0 : byte == static_cast<std::uint8_t>(expected[i]));
  }
  unlink(LogFile().c_str());
}

void SetNames(Input& input) {
  const Bytes version = input.Take(input.Byte()), name = input.Take(input.Byte() * std::size_t{4});
  s_version.assign(version.begin(), std::find(version.begin(), version.end(), 0));
  s_name.assign(name.begin(), std::find(name.begin(), name.end(), 0));
  std::replace(s_name.begin(), s_name.end(), '/', '_');  // stay in the folder
  if (s_name == "QLConfig.ini") s_name = "other";
  const Exact<char> version_block(s_version), name_block(s_name);
  QL_DebugSetVersion(version_block.get());
  s_version.resize(std::min<std::size_t>(s_version.size(), 128));
  s_name.resize(std::min<std::size_t>(s_name.size(), 512));
  FUZZ_CHECK(static_cast<const char*>(SetLogPath(name_block.get())) == s_name);
  if (CanBeOpened()) FUZZ_CHECK(getLogFilePath() == LogFile());
}

void Message(Input& input) {
  const int number = static_cast<int>(input.Word());
  std::string text = input.Text();
  for (std::size_t twice = input.Byte() % 6; twice > 0; --twice) text += text;
  const Exact<char> block(text);
  DPrintLogToFile("%s|%d", block.get(), number);
  CheckLog(Line(false, "", (text + "|" + std::to_string(number)).substr(0, kLongestMessage)));
}

void MarkedMessage(Input& input) {
  const int type = input.Between(-1, 2), level = input.Between(-1, 13);
  const auto character = static_cast<char>(input.Byte());
  const std::string text = input.Text();
  const Exact<char> block(text);
  DPrintLogToFileAddType(type, level, "%.10s%c%s", block.get(), character, block.get());
  std::string message = text.substr(0, 10) + character + text;
  message.resize(std::min(message.size(), message.find('\0')));  // as it reads as a text
  CheckLog(Line(true, Marks(type, level), message));
}

void DumpBytes(Input& input) {
  const int type = input.Between(-1, 2), level = input.Between(-1, 13);
  const std::string title = input.Text();
  Bytes bytes = input.Take(input.Byte() * std::size_t{4});
  for (std::size_t twice = input.Byte() % 5; twice > 0 && bytes.size() < 6000; --twice) {
    const Bytes copy = bytes;
    bytes.insert(bytes.end(), copy.begin(), copy.end());
  }
  const Exact<unsigned char> block(bytes);
  const Exact<char> title_block(title);
  const bool titled = level % 2 == 0;
  const char* const shown = titled ? title_block.get() : nullptr;
  const int size = static_cast<int>(bytes.size());
  DPrintDataHexToFile(shown, block.get(), size);
  CheckLog(Line(false, "", Dump(shown, bytes)));
  DPrintDataHexToFileAddType(type, level, shown, block.get(), size);
  CheckLog(type == 0 ? "" : Line(false, Marks(type, level), Dump(shown, bytes)));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  if (!HavePrivateRoot()) {  // the log's folder is fixed
    std::fprintf(stderr, "%s\n", kNoPrivateRoot);
    return 0;
  }
  const std::string flag = "[QuillonLog]\nLogFlag=1\n";
  static const bool configured = [&] {
    WriteWorkFile(WorkFolder() + "QLConfig.ini", {flag.begin(), flag.end()});
    return true;
  }();
  FUZZ_CHECK(configured);
  Input input(data, size);
  for (int calls = 0; calls < 16 && !input.Empty(); ++calls) {
    switch (input.Byte() % 4) {
      case 0:
        SetNames(input);
        break;
      case 1:
        Message(input);
        break;
      case 2:
        MarkedMessage(input);
        break;
      default:
        DumpBytes(input);
        break;
    }
  }
  s_version.clear();
  s_name.clear();
  QL_DebugSetVersion("");
  SetLogPath("");
  return 0;
}
