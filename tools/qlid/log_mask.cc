#include "tools/qlid/log_mask.h"

#include <algorithm>
#include <array>
#include <iterator>

#include "quillonid/support.h"

namespace qlid {
namespace {

constexpr char kMasked[] = "<masked>";
constexpr std::size_t kStampDigits = 13;   // time that every line carries
constexpr std::size_t kVersionLength = 8;  // of a version text that is shown
constexpr std::size_t kNumberDigits = 6;   // of a number that is shown: no date of birth
constexpr std::size_t kFrameDigits = 20;   // of a dump: preamble, length and status of a frame
constexpr std::string_view kFrame = "AAAAAA9669";
constexpr std::string_view kHex = "HEX: ";

// Words of the library's own messages; other names of its variables are known by their form.
// clang-format off
constexpr std::string_view kWords[] = {
    "After", "Before", "CRC", "CRCCheck", "Cancel", "Cannot", "Card", "Check", "China", "Claim",
    "Close", "Collect", "DEV", "Data", "ESC", "End", "Err", "Error", "Fail", "Foreign", "Gat",
    "Get", "GetIDCardInfo", "GetPhotoBmp", "GetPhotoData", "HId", "Hid", "ICC", "Id",
    "Interface", "Json", "LEN", "Len", "NULL", "Not", "OpenDevice", "PACKGET", "PID", "READ",
    "Read", "ReadFileData", "ReadIDCard", "ReadIDCardInfo", "ReadUnblock", "Req", "START",
    "SaveBmp", "Search", "SearchCard", "Set", "Short", "Start", "Struct", "Tag", "Type", "USE",
    "VID", "WriteUnblock", "auto", "baud", "cEnd", "cHead", "cancel", "card", "close", "com",
    "data", "default", "device", "end", "err", "error", "exit", "failed", "find", "fp", "free",
    "have", "hid", "hiddev", "i", "interface", "is", "len", "lenFile", "lenR", "libusb",
    "linux", "malloc", "ms", "native", "nbaud", "nretval", "ok", "open", "over", "pid", "read",
    "real", "reset", "ret", "return", "sEndTime", "sStartTime", "search", "searchcard", "send",
    "sendlen", "status", "success", "szData", "target", "the", "time1", "timeout", "to", "too",
    "type", "ucBody", "ucPacket", "unpack", "unsupport", "vid", "write",
};
// clang-format on

bool IsDigit(char c) { return c >= '0' && c <= '9'; }
bool IsLower(char c) { return c >= 'a' && c <= 'z'; }
bool IsUpper(char c) { return c >= 'A' && c <= 'Z'; }
bool IsIdentifierPart(char c) { return IsDigit(c) || IsLower(c) || IsUpper(c) || c == '_'; }

bool All(std::string_view text, bool (*wanted)(char)) {
  return std::all_of(text.begin(), text.end(), wanted);
}

bool StartsWith(std::string_view text, std::string_view start) {
  return text.substr(0, start.size()) == start;
}

// "nRet", "szRes", "bFlag", "s_bSearchCardD", "COMM_Zel_OpenReader": prefixes and underscores that
// no text of a card has.
bool IsNameOfOurs(std::string_view word) {
  // The row of a country tells a nationality.
  if (!All(word, IsIdentifierPart) || word == "nIndex") return false;
  for (const std::string_view prefix : {"n", "sz", "psz", "b", "g_", "s_", "h", "p"}) {
    if (word.size() > prefix.size() + 1 && StartsWith(word, prefix) &&
        (IsUpper(word[prefix.size()]) || prefix.back() == '_')) {
      return true;
    }
  }
  for (const std::string_view prefix : {"COMM_", "ICC_", "APP_ID_", "QL_APP_", "TY_", "tFunc",
                                        "Dev_", "Str_", "RET_", "TYPE_", "libusb_"}) {
    if (StartsWith(word, prefix)) return true;
  }
  return false;
}

bool IsDevicePath(std::string_view word) {
  constexpr auto kPart = [](char c) { return IsIdentifierPart(c) || c == '/'; };
  return word == "/libwlt.so" ||
         (StartsWith(word, "/dev/") && word.size() < 24 && All(word.substr(1), kPart));
}

bool IsSafeWord(std::string_view word) {
  if (All(word, IsDigit)) return word.size() <= kNumberDigits;
  return std::find(std::begin(kWords), std::end(kWords), word) != std::end(kWords) ||
         IsNameOfOurs(word) || IsDevicePath(word);
}

bool IsPunctuation(char c) {
  return std::string_view("=*[]#!~:,()<>-.?").find(c) != std::string_view::npos;
}

// What a token holds between its punctuation. `[Name]` is a function of ours, whatever its name.
bool IsSafeToken(std::string_view token, bool bracketed) {
  while (!token.empty()) {
    std::size_t size = 0;
    while (size < token.size() && !IsPunctuation(token[size])) ++size;
    // A file name's dot and a path's dash belong to the word.
    while (StartsWith(token, "/") && size < token.size() && token[size] == '.') {
      ++size;
      while (size < token.size() && !IsPunctuation(token[size])) ++size;
    }
    const std::string_view word = token.substr(0, size);
    const bool function =
        bracketed && size < token.size() && token[size] == ']' && All(word, IsIdentifierPart);
    if (!word.empty() && !function && !IsSafeWord(word)) return false;
    if (size < token.size()) bracketed = token[size] == '[';
    token.remove_prefix(std::min(size + 1, token.size()));
  }
  return true;
}

// "pGat->name": the token is shown, its value is not.
bool NamesAValue(std::string_view token) {
  const std::size_t arrow = token.find("->");
  return arrow != std::string_view::npos && token[0] == 'p' &&
         All(token.substr(0, arrow), IsIdentifierPart) &&
         All(token.substr(arrow + 2), IsIdentifierPart);
}

bool IsBlank(std::string_view text) {
  return text.find_first_not_of(" \t\r") == std::string_view::npos;
}

std::string Masked(std::string_view kept, std::string_view rest) {
  std::string text(kept);
  if (IsBlank(rest)) return text;
  if (!text.empty() && text.back() != ' ') text += ' ';
  return text + kMasked;
}

std::string MaskMessage(std::string_view message) {
  std::size_t at = 0;
  bool open = false;  // "[ Name ]" with blanks inside
  while (at < message.size()) {
    const std::size_t start = message.find_first_not_of(' ', at);
    if (start == std::string_view::npos) break;
    std::size_t end = message.find(' ', start);
    if (end == std::string_view::npos) end = message.size();
    const std::string_view token = message.substr(start, end - start);
    if (NamesAValue(token)) return Masked(message.substr(0, end), message.substr(end));
    const bool function =
        open && All(token, IsIdentifierPart) && StartsWith(message.substr(end), " ]");
    if (!function && !IsSafeToken(token, false)) return Masked(message.substr(0, start), token);
    open = token == "[";
    at = end;
  }
  return std::string(message);
}

// A dump keeps its title, its length and, of a frame that begins with the preamble, the head.
std::string MaskDump(std::string_view message, std::size_t hex) {
  const std::string_view title = message.substr(0, hex);
  const std::string_view digits = message.substr(hex + kHex.size());
  std::string shown = MaskMessage(title);
  if (shown != title) return shown;
  const std::size_t kept = StartsWith(digits, kFrame) ? std::min(kFrameDigits, digits.size()) : 0;
  return std::string(message.substr(0, hex + kHex.size())) +
         Masked(digits.substr(0, kept), digits.substr(kept));
}

// Where the time stamp stands: digits that follow a blank and are followed by two.
std::size_t FindStamp(std::string_view line) {
  for (std::size_t at = 0; at + kStampDigits + 2 <= line.size(); ++at) {
    if (at > 0 && line[at - 1] != ' ') continue;
    if (All(line.substr(at, kStampDigits), IsDigit) && line.substr(at + kStampDigits, 2) == "  ") {
      return at;
    }
  }
  return std::string_view::npos;
}

// The type and area that most lines carry, in each of the few combinations.
std::size_t SizeOfMarks(std::string_view text) {
  constexpr int kTypes = 2;
  constexpr int kLevels = 11;
  for (int type = 0; type < kTypes; ++type) {
    for (int level = 1; level <= kLevels; ++level) {
      std::array<char, 64> work = {};
      MapDebugInfoType(type, work.data());
      std::string marks = std::string(work.data()) + "  ";
      MapDebugLevelType(level, work.data());
      marks += std::string(work.data()) + "  ";
      if (StartsWith(text, marks)) return marks.size();
    }
  }
  return 0;
}

std::string MaskVersion(std::string_view version) {
  constexpr auto kPart = [](char c) { return IsDigit(c) || c == '.' || c == ' ' || c == 'v'; };
  const bool harmless = version.size() <= kVersionLength && All(version, kPart);
  return harmless ? std::string(version) : Masked("", version) + " ";
}

}  // namespace

std::string MaskLogLine(std::string_view line) {
  const std::size_t stamp = FindStamp(line);
  if (stamp == std::string_view::npos) return Masked("", line);
  const std::size_t message = stamp + kStampDigits + 2;
  const std::size_t marks = SizeOfMarks(line.substr(message));
  const std::string_view text = line.substr(message + marks);
  const std::size_t hex = text.find(kHex);
  return MaskVersion(line.substr(0, stamp)) +
         std::string(line.substr(stamp, message - stamp + marks)) +
         (hex == std::string_view::npos ? MaskMessage(text) : MaskDump(text, hex));
}

}  // namespace qlid
