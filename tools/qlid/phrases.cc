#include "tools/qlid/phrases.h"

#include <regex>

#include "tools/qlid/terminal.h"

namespace qlid {
namespace {

// The expressions of the standard library go a call deeper for each character.
constexpr std::size_t kLongest = 500;

}  // namespace

std::string Rephrased(const std::string& english, std::span<const Phrase> phrases) {
  if (ChosenLanguage() == Language::kEnglish) return english;
  // Most texts have no parts that vary, and need no expression to be made.
  for (const Phrase& phrase : phrases) {
    if (english == phrase.english) return phrase.chinese;
  }
  if (english.size() > kLongest) return english;
  for (const Phrase& phrase : phrases) {
    std::smatch found;
    if (std::regex_match(english, found, std::regex(phrase.english)))
      return found.format(phrase.chinese);
  }
  return english;
}

}  // namespace qlid
