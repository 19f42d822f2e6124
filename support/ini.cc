#include "support/ini.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "quillonid/support.h"
#include "support/handles.h"

namespace {

constexpr std::size_t kPage = 4096;          // an ordinary file is read in one call
constexpr std::size_t kMostBytes = 1 << 20;  // what lies beyond is not looked at

// What GetIniKeyString() returned last. Each call overwrites it.
char s_szIniValue[kIniValueSize];

// A line as a fixed text buffer of 1,024 bytes would hold it: 1,023 characters, up to a zero byte.
std::string_view KeptPart(const char* line, std::size_t size) {
  size = std::min(size, kIniValueSize - 1);
  return {line, strnlen(line, size)};
}

// The line begins with "[" + section + "]".
bool OpensSection(std::string_view line, std::string_view section) {
  return line.size() >= section.size() + 2 && line.front() == '[' &&
         std::memcmp(line.data() + 1, section.data(), section.size()) == 0 &&
         line[section.size() + 1] == ']';
}

bool IsComment(std::string_view line) { return line.starts_with("#") || line.starts_with("//"); }

// Goes through the lines that end in a line feed; a last one without is not looked at.
bool FindInText(const char* text, std::size_t size, std::string_view section, std::string_view key,
                char (&value)[kIniValueSize]) {
  bool in_section = false;  // On purpose: later sections do not clear it.
  const char* const end = text + size;
  while (text != end) {
    const auto length = static_cast<std::size_t>(end - text);
    const auto* feed = static_cast<const char*>(std::memchr(text, '\n', length));
    if (feed == nullptr) return false;
    std::string_view line = KeptPart(text, static_cast<std::size_t>(feed - text));
    text = feed + 1;

    const std::size_t equals = line.find('=');
    if (equals == std::string_view::npos || !in_section) {
      in_section = in_section || OpensSection(line, section);
    } else if (line.find(key) != std::string_view::npos && !IsComment(line)) {
      line.remove_prefix(equals + 1);
      std::memcpy(value, line.data(), line.size());
      value[line.size()] = '\0';
      return true;
    }
  }
  return false;
}

bool IsRegular(int fd) {
  struct stat status = {};
  return fstat(fd, &status) == 0 && S_ISREG(status.st_mode);
}

// Reads from the file's beginning until `buffer` is full or the file ends. pread fails on pipes,
// sockets and terminals, so that none of them is emptied.
std::size_t ReadFromStart(int fd, char* buffer, std::size_t size) {
  std::size_t got = 0;
  while (got < size) {
    const ssize_t n = pread(fd, buffer + got, size - got, static_cast<off_t>(got));
    if (n < 0 && errno == EINTR) continue;
    if (n <= 0) break;
    got += static_cast<std::size_t>(n);
  }
  return got;
}

bool FindInLargeFile(int fd, std::string_view section, std::string_view key,
                     char (&value)[kIniValueSize]) {
  if (!IsRegular(fd)) return false;
  const HeapBytes block(static_cast<unsigned char*>(std::malloc(kMostBytes)));
  if (block == nullptr) return false;
  char* const text = reinterpret_cast<char*>(block.get());
  return FindInText(text, ReadFromStart(fd, text, kMostBytes), section, key, value);
}

}  // namespace

IniLookup FindIniValue(const char* path, const char* section, const char* key,
                       char (&value)[kIniValueSize], bool matters(const char* value)) {
  if (path == nullptr || section == nullptr || key == nullptr) return IniLookup::kNotFound;
  const Descriptor file(open(path, O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
  if (!file) return errno == ENOENT ? IniLookup::kNoFile : IniLookup::kNotFound;

  char page[kPage];
  const ssize_t got = pread(file.get(), page, sizeof page, 0);
  if (got <= 0) return IniLookup::kNotFound;
  // Only a full page asks for more calls: devices that give bytes without end fill it, too.
  const bool found = static_cast<std::size_t>(got) < sizeof page
                         ? FindInText(page, static_cast<std::size_t>(got), section, key, value)
                         : FindInLargeFile(file.get(), section, key, value);
  if (!found) return IniLookup::kNotFound;
  // Last, since it takes a quarter of the time of all this.
  const bool taken = (matters != nullptr && !matters(value)) || IsRegular(file.get());
  return taken ? IniLookup::kFound : IniLookup::kNotFound;
}

char* GetIniKeyString(const char* section, const char* key, const char* defaultValue,
                      const char* path) {
  if (FindIniValue(path, section, key, s_szIniValue) == IniLookup::kFound) return s_szIniValue;
  return const_cast<char*>(defaultValue);
}

long GetIniKeyInt(const char* section, const char* key, const char* defaultValue,
                  const char* path) {
  char value[kIniValueSize];
  if (FindIniValue(path, section, key, value) == IniLookup::kFound) {
    return std::strtol(value, nullptr, 10);
  }
  return defaultValue == nullptr ? 0 : std::strtol(defaultValue, nullptr, 10);
}
