// The terminal: language, colour, text width, and the line that counts down in place.
#ifndef QUILLONID_TOOLS_QLID_TERMINAL_H
#define QUILLONID_TOOLS_QLID_TERMINAL_H

#include <string>
#include <string_view>

namespace qlid {

enum class Language { kEnglish, kChinese };
enum class ColorMode { kAuto, kAlways, kNever };

void SetLanguage(Language language);
Language ChosenLanguage();
void SetColorMode(ColorMode mode);

// LC_ALL, LC_MESSAGES, LANG: a value that begins with "zh" means Chinese.
Language LanguageOfEnvironment();

// The text of the chosen language; both stand side by side where they are used, and the compiler
// checks both as formats.
const char* Tr(const char* english, const char* chinese)
    __attribute__((format_arg(1), format_arg(2)));

enum class Ink { kPlain, kBold, kDim, kRed, kGreen, kYellow };

// `text` in that ink for standard output (1) or standard error (2), plain where colour is not
// wanted.
std::string Paint(Ink ink, std::string_view text, int stream);

bool IsTerminal(int stream);
bool ColorWanted(int stream);
int TerminalColumns(int stream);

// Whether the locale's encoding is UTF-8.
bool EncodingIsUtf8();

// On a terminal whose locale is not UTF-8, says on standard error that card text will not show.
void WarnUnlessUtf8();

// Columns that a UTF-8 text takes; East Asian wide characters take two.
int DisplayWidth(std::string_view text);

// The text followed by blanks up to `columns`.
std::string PaddedTo(std::string_view text, int columns);

// printf into a string.
std::string Format(const char* format, ...) __attribute__((format(printf, 1, 2)));

// Bytes that do not belong to well-formed UTF-8 and control characters become "?", so that a card
// cannot drive the terminal.
std::string Printable(std::string_view text);

// One line on standard error, rewritten in place; nothing at all when that is no terminal.
class StatusLine {
 public:
  StatusLine() = default;
  StatusLine(const StatusLine&) = delete;
  StatusLine& operator=(const StatusLine&) = delete;
  ~StatusLine() { Clear(); }
  void Show(const std::string& text);
  void Clear();

 private:
  std::string shown_;
};

}  // namespace qlid

#endif
