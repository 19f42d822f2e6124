#include "bench/files.h"

#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <fstream>
#include <iterator>

namespace bench {

bool HaveFolder() { return std::getenv("QL_PRIVATE_ROOT") != nullptr; }

std::string ReadWhole(const char* path) {
  std::ifstream file(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(file), {});
}

void WriteWhole(const char* path, const std::string& bytes) {
  std::ofstream(path, std::ios::binary) << bytes;
}

void SetLogging(Logging logging) {
  if (!HaveFolder()) return;
  unlink(kLog);
  if (logging == Logging::kNoFile) {
    unlink(kConfiguration);
  } else {
    WriteWhole(kConfiguration,
               std::string("[QuillonLog]\nLogFlag=") + (logging == Logging::kOn ? "1\n" : "0\n"));
  }
}

std::string LogWithoutTimes() {
  constexpr std::size_t kDigits = 13;  // MMDDhhmmss and milliseconds
  std::string log = ReadWhole(kLog);
  const auto is_digit = [](unsigned char c) { return std::isdigit(c) != 0; };
  for (auto at = log.begin(); at != log.end();) {
    const auto first = std::find_if(at, log.end(), is_digit);
    at = std::find_if_not(first, log.end(), is_digit);
    if (static_cast<std::size_t>(at - first) == kDigits) std::fill(first, at, '0');
  }
  return log;
}

}  // namespace bench
