#include "tests/reader/log_area.h"

#include <algorithm>

#include "tests/testing/private_root.h"

std::string LineOpening(bool error, const std::string& area) {
  const std::string type = error ? "!!ERROR:   " : "INFO:  ";
  std::string over = area;
  if (type.size() > area.size()) over += type.substr(area.size());
  return "  TIME  " + type + "  " + over + "  ";
}

std::vector<std::string> LinesOf(const std::string& area) {
  std::vector<std::string> messages;
  for (const std::string& line : LogLines()) {
    for (const bool error : {false, true}) {
      const std::string opening = LineOpening(error, area);
      if (line.compare(0, opening.size(), opening) != 0) continue;
      messages.push_back((error ? "! " : "") + line.substr(opening.size()));
    }
  }
  return messages;
}

bool HasLine(const std::string& line) {
  const std::vector<std::string> lines = LogLines();
  return std::find(lines.begin(), lines.end(), line) != lines.end();
}
