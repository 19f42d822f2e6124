#include "tools/qlid/terminal.h"

#include <langinfo.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace qlid {
namespace {

Language s_language = Language::kEnglish;   // set once by main
ColorMode s_color_mode = ColorMode::kAuto;  // set once by main

constexpr const char* kInkCodes[] = {"", "1", "2", "31", "32", "33"};

struct Character {
  char32_t code;
  std::size_t bytes;
  bool valid;
};

// The first character of a text that is not empty.
Character FirstCharacter(std::string_view text) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned lead = byte(0);
  if (lead < 0x80) return {lead, 1, true};
  std::size_t size = 0;
  char32_t least = 0;
  char32_t code = 0;
  if (lead >> 5 == 0x6) {
    size = 2, least = 0x80, code = lead & 0x1F;
  } else if (lead >> 4 == 0xE) {
    size = 3, least = 0x800, code = lead & 0x0F;
  } else if (lead >> 3 == 0x1E) {
    size = 4, least = 0x10000, code = lead & 0x07;
  } else {
    return {0xFFFD, 1, false};
  }
  if (text.size() < size) return {0xFFFD, text.size(), false};
  for (std::size_t i = 1; i < size; ++i) {
    if (byte(i) >> 6 != 0x2) return {0xFFFD, i, false};
    code = code << 6 | (byte(i) & 0x3F);
  }
  const bool surrogate = code >= 0xD800 && code <= 0xDFFF;
  return {code, size, code >= least && code <= 0x10FFFF && !surrogate};
}

// East Asian Wide and Fullwidth blocks (Unicode Standard Annex 11), as far as identity documents
// use them.
bool IsWide(char32_t code) {
  return (code >= 0x1100 && code <= 0x115F) || (code >= 0x2E80 && code <= 0xA4CF) ||
         (code >= 0xAC00 && code <= 0xD7A3) || (code >= 0xF900 && code <= 0xFAFF) ||
         (code >= 0xFE30 && code <= 0xFE6F) || (code >= 0xFF00 && code <= 0xFF60) ||
         (code >= 0xFFE0 && code <= 0xFFE6) || (code >= 0x20000 && code <= 0x3FFFD);
}

// Where the last character of a UTF-8 text begins.
std::size_t LastCharacterAt(std::string_view text) {
  std::size_t at = text.empty() ? 0 : text.size() - 1;
  while (at > 0 && (static_cast<unsigned char>(text[at]) & 0xC0) == 0x80) --at;
  return at;
}

}  // namespace

void SetLanguage(Language language) { s_language = language; }
Language ChosenLanguage() { return s_language; }
void SetColorMode(ColorMode mode) { s_color_mode = mode; }

Language LanguageOfEnvironment() {
  for (const char* name : {"LC_ALL", "LC_MESSAGES", "LANG"}) {
    const char* value = std::getenv(name);
    if (value && *value) {
      return std::strncmp(value, "zh", 2) == 0 ? Language::kChinese : Language::kEnglish;
    }
  }
  return Language::kEnglish;
}

const char* Tr(const char* english, const char* chinese) {
  return s_language == Language::kChinese ? chinese : english;
}

bool IsTerminal(int stream) { return isatty(stream) != 0; }

bool ColorWanted(int stream) {
  if (s_color_mode != ColorMode::kAuto) return s_color_mode == ColorMode::kAlways;
  const char* no_color = std::getenv("NO_COLOR");
  const char* term = std::getenv("TERM");
  if (no_color && *no_color) return false;
  if (!term || std::strcmp(term, "dumb") == 0) return false;
  return IsTerminal(stream);
}

std::string Paint(Ink ink, std::string_view text, int stream) {
  if (ink == Ink::kPlain || !ColorWanted(stream)) return std::string(text);
  return std::string("\x1b[") + kInkCodes[static_cast<int>(ink)] + "m" + std::string(text) +
         "\x1b[0m";
}

int TerminalColumns(int stream) {
  winsize size = {};
  if (ioctl(stream, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return 80;
  return size.ws_col;
}

bool EncodingIsUtf8() { return std::strcmp(nl_langinfo(CODESET), "UTF-8") == 0; }

void WarnUnlessUtf8() {
  if (!IsTerminal(STDOUT_FILENO) && !IsTerminal(STDERR_FILENO)) return;
  if (EncodingIsUtf8()) return;
  std::fprintf(
      stderr,
      Tr("qlid: the locale's encoding is %s, Chinese text may not be readable; try: export "
         "LC_ALL=C.UTF-8\n",
         "qlid: 当前编码为 %s，中文可能无法显示；请执行：export LC_ALL=C.UTF-8，并加选项 --lang "
         "zh\n"),
      nl_langinfo(CODESET));
}

int DisplayWidth(std::string_view text) {
  int columns = 0;
  while (!text.empty()) {
    const Character first = FirstCharacter(text);
    columns += IsWide(first.code) ? 2 : 1;
    text.remove_prefix(first.bytes);
  }
  return columns;
}

std::string PaddedTo(std::string_view text, int columns) {
  const int missing = columns - DisplayWidth(text);
  return std::string(text) + std::string(missing > 0 ? static_cast<std::size_t>(missing) : 0, ' ');
}

std::string Format(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  char* text = nullptr;
  const int size = vasprintf(&text, format, arguments);
  va_end(arguments);
  if (size < 0) return "";
  std::string result(text, static_cast<std::size_t>(size));
  std::free(text);
  return result;
}

std::string Printable(std::string_view text) {
  std::string printable;
  while (!text.empty()) {
    const Character first = FirstCharacter(text);
    const bool control = first.code < 0x20 || (first.code >= 0x7F && first.code < 0xA0);
    if (first.valid && !control) {
      printable += text.substr(0, first.bytes);
    } else {
      printable += '?';
    }
    text.remove_prefix(first.bytes);
  }
  return printable;
}

void StatusLine::Show(const std::string& text) {
  if (!IsTerminal(STDERR_FILENO) || text == shown_) return;
  // Cut, or it would go on in a second line that the next one does not replace.
  std::string cut(text);
  while (DisplayWidth(cut) >= TerminalColumns(STDERR_FILENO)) cut.resize(LastCharacterAt(cut));
  std::fprintf(stderr, "\r%s\x1b[K", cut.c_str());
  std::fflush(stderr);
  shown_ = text;
}

void StatusLine::Clear() {
  if (shown_.empty()) return;
  std::fputs("\r\x1b[K", stderr);
  std::fflush(stderr);
  shown_.clear();
}

}  // namespace qlid
