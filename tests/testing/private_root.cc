#include "tests/testing/private_root.h"

#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

bool HavePrivateRoot() { return std::getenv("QL_PRIVATE_ROOT") != nullptr; }

void WriteWholeFile(const std::string& path, const std::string& text) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file << text;
  file.close();
  ASSERT_TRUE(file.good()) << path;
}

std::string ReadWholeFile(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

bool FileExists(const std::string& path) { return std::filesystem::exists(path); }

void SwitchLogging(bool on) {
  std::filesystem::remove(kLogFile);
  if (on) {
    WriteWholeFile(kConfigurationFile, "[QuillonLog]\nLogFlag=1\n");
  } else {
    std::filesystem::remove(kConfigurationFile);
  }
}

std::vector<std::string> LogLines() {
  const std::string text = ReadWholeFile(kLogFile);
  std::vector<std::string> lines;
  std::size_t start = 0;
  for (std::size_t end = text.find("\r\n"); end != std::string::npos;
       end = text.find("\r\n", start)) {
    std::string line = text.substr(start, end - start);
    start = end + 2;
    std::size_t digits = 0;
    std::size_t first = line.find_first_not_of(' ');
    while (first != std::string::npos && first + digits < line.size() &&
           std::isdigit(static_cast<unsigned char>(line[first + digits]))) {
      ++digits;
    }
    if (digits == 13) line.replace(first, 13, "TIME");
    lines.push_back(line);
  }
  return lines;
}

std::string TemporaryFolder() {
  struct Folder {
    std::string path;
    Folder() {
      char name[] = "/tmp/quillonid-test-XXXXXX";
      const char* made = mkdtemp(name);
      path = made ? made : "";
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    ~Folder() {
      std::error_code ignored;
      if (!path.empty()) std::filesystem::remove_all(path, ignored);
    }
  };
  static const Folder folder;
  return folder.path;
}
