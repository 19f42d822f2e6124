// Configuration files of any content, read as a plain model reads them.
#include "support/ini.h"

#include <cstdlib>
#include <optional>

#include "fuzz/check.h"
#include "fuzz/guarded.h"
#include "fuzz/input.h"
#include "fuzz/work_file.h"
#include "quillonid/support.h"

namespace {

constexpr std::size_t kMostBytes = 1 << 20;
constexpr std::size_t kMostOfLine = 1023;

std::optional<std::string> ValueOf(std::string text, const std::string& section,
                                   const std::string& key) {
  text.resize(std::min(text.size(), kMostBytes));
  bool in_section = false;
  for (std::size_t start = 0, feed = 0; (feed = text.find('\n', start)) != std::string::npos;
       start = feed + 1) {
    std::string line = text.substr(start, std::min(feed - start, kMostOfLine));
    line.resize(std::min(line.size(), line.find('\0')));
    const std::size_t equals = line.find('=');
    if (equals == std::string::npos || !in_section) {
      in_section = in_section || line.rfind("[" + section + "]", 0) == 0;
      continue;
    }
    if (line.starts_with('#') || line.starts_with("//")) continue;
    if (line.find(key) != std::string::npos) return line.substr(equals + 1);
  }
  return std::nullopt;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Input input(data, size);
  const std::string section = input.Text(20), key = input.Text(20);
  // What stands before the input, so that it also lies at the end of a page and of what is read.
  constexpr std::size_t kSizes[] = {0, 1000, 4000, 4090, 8000, kMostBytes - 100};
  const std::size_t choice = input.Byte();
  const std::size_t padding = kSizes[choice == 255 ? 5 : choice % 5];
  Bytes content(padding, 'x');
  if (padding > 0) content.back() = '\n';
  const Bytes rest = input.Rest();
  content.insert(content.end(), rest.begin(), rest.end());
  const std::string path = WorkFolder() + "fuzz.ini";
  WriteWorkFile(path, content);

  const auto expected = ValueOf({content.begin(), content.end()}, section, key);

  char otherwise[] = "12345";
  const char* const found = GetIniKeyString(section.c_str(), key.c_str(), otherwise, path.c_str());
  FUZZ_CHECK(expected ? found != otherwise && *expected == found : found == otherwise);
  const long number = GetIniKeyInt(section.c_str(), key.c_str(), otherwise, path.c_str());
  FUZZ_CHECK(number == std::strtol(expected ? expected->c_str() : otherwise, nullptr, 10));
  Guarded value(kIniValueSize);
  const IniLookup lookup = FindIniValue(path.c_str(), section.c_str(), key.c_str(),
                                        *reinterpret_cast<char(*)[kIniValueSize]>(value.text()));
  FUZZ_CHECK(lookup == (expected ? IniLookup::kFound : IniLookup::kNotFound));
  FUZZ_CHECK(expected ? *expected == value.Text() : value.UntouchedFrom(0));
  return 0;
}
