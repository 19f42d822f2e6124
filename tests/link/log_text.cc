#include "tests/link/log_text.h"

#include <algorithm>
#include <iterator>

#include "tests/testing/hex_text.h"
#include "tests/testing/private_root.h"

namespace {

// A line's start as the log writes it, and as the tests do. The name of an area covers the text of
// the type from its start, whose tail stays.
constexpr struct {
  const char* written;
  const char* shortened;
} kStarts[] = {
    {"  TIME  INFO:    Public:  ",         "1: " },
    {"  TIME  INFO:    Comm:    ",         "2: " },
    {"  TIME  INFO:    CommDev:  ",        "3: " },
    {"  TIME  !!ERROR:     Comm:OR:     ", "2!: "},
    {"  TIME  !!ERROR:     CommDev:     ", "3!: "},
};

std::string Shortened(const std::string& line) {
  for (const auto& [written, shortened] : kStarts) {
    if (line.starts_with(written)) return shortened + line.substr(std::string(written).size());
  }
  const std::size_t title = std::string(" TIME  ").size();
  const std::size_t length = line.find("  LEN=");
  const std::size_t digits = line.find("   HEX: ");
  if (!line.starts_with(" TIME  ") || length == line.npos || digits == line.npos) return line;
  const auto bytes = FromHex(line.substr(digits + 8));
  const std::string stated = line.substr(length + 6, digits - length - 6);
  if (stated != std::to_string(bytes.size())) return line;
  return line.substr(title, length - title) + ": " + HexText(bytes);
}

}  // namespace

Lines Logged() {
  Lines lines = LogLines();
  std::transform(lines.begin(), lines.end(), lines.begin(), Shortened);
  return lines;
}

Lines Logged(const std::string& level) {
  Lines found;
  for (const std::string& line : Logged()) {
    if (line.starts_with(level + ": ")) found.push_back(line.substr(level.size() + 2));
  }
  return found;
}

Lines WithoutEmptyLines(const Lines& lines) {
  Lines kept;
  std::copy_if(lines.begin(), lines.end(), std::back_inserter(kept),
               [](const std::string& line) { return !line.empty(); });
  return kept;
}

std::size_t CountLogged(const std::string& start) {
  const Lines lines = Logged();
  return static_cast<std::size_t>(
      std::count_if(lines.begin(), lines.end(),
                    [&](const std::string& line) { return line.starts_with(start); }));
}
