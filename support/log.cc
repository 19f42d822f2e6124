#include "support/log.h"

#include <fcntl.h>
#include <pthread.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string_view>

#include "support/clock.h"
#include "support/handles.h"
#include "support/hex_text.h"
#include "support/ini.h"
#include "support/terminal_wait.h"

namespace {

constexpr char kFolder[] = "/home/quillon/";
constexpr char kDefaultName[] = "Alg_debug.log";
constexpr char kConfigurationFile[] = "/home/quillon/QLConfig.ini";

constexpr std::size_t kNameSize = 512;      // log file name
constexpr std::size_t kVersionSize = 128;   // text that opens every line
constexpr std::size_t kPathSize = 1024;     // folder and name
constexpr std::size_t kStampSize = 13;      // MMDDhhmmss and milliseconds
constexpr std::size_t kMarkSize = 64;       // type text, area name over it
constexpr std::size_t kPrefixSize = 256;    // everything before the message, and room to spare
constexpr std::size_t kMessageSize = 4096;  // message with its zero
constexpr std::size_t kDumpSize = 8192;     // a dump line on the stack; longer ones on the heap
constexpr int kStuckDevice = 500;           // milliseconds that a terminal may take nothing
constexpr int kSlowLine = 10'000;           // milliseconds for a line; 8 KiB leave at 9,600 bit/s

// The names that applications set, each with a spare zero byte. s_stNames guards them: a thread
// that cancels a read logs while the reading thread does.
pthread_mutex_t s_stNames = PTHREAD_MUTEX_INITIALIZER;
char g_szLogPath[kNameSize + 1];        // log file name; empty: kDefaultName
char g_DebugVersion[kVersionSize + 1];  // opens every line
char gLogFileName[256 + 1];             // read by nothing
// 1: no configuration file at the last look, so the next look begins with the cheaper stat().
std::atomic<int> s_bNoConfiguration;
// 1: the terminal of the log file's name did not take a line in its time and no whole line since.
std::atomic<int> s_bDeviceIsStuck;
// What GetLogTime() and getLogFilePath() returned last; used by nothing else.
char s_szLogTime[128];
char s_szLogFilePath[kPathSize];

class NamesLock {
 public:
  NamesLock() { pthread_mutex_lock(&s_stNames); }
  ~NamesLock() { pthread_mutex_unlock(&s_stNames); }
  NamesLock(const NamesLock&) = delete;
  NamesLock& operator=(const NamesLock&) = delete;
};

// A log call may stand between a failing call and the report of its errno.
class KeptErrno {
 public:
  KeptErrno() = default;
  ~KeptErrno() { errno = kept_; }
  KeptErrno(const KeptErrno&) = delete;
  KeptErrno& operator=(const KeptErrno&) = delete;

 private:
  int kept_ = errno;
};

struct DebugLevel {
  int code;
  char name[32];
};

// On purpose: three names have no colon.
constexpr DebugLevel s_DebugLevel[] = {
    {1,  "Public:" },
    {2,  "Comm:"   },
    {3,  "CommDev:"},
    {4,  "Instr:"  },
    {5,  "Loginc"  },
    {6,  "BusiId:" },
    {7,  "BusiIc:" },
    {8,  "BusiMsg:"},
    {9,  "AppId:"  },
    {10, "AppIc"   },
    {11, "AppMsg"  },
};

// Type and area of a line.
struct Marks {
  int type;
  int level;
};

// A text being put together in a buffer that is known to be large enough.
class Line {
 public:
  explicit Line(char* buffer) : begin_(buffer), end_(buffer) {}

  const char* begin() const { return begin_; }
  char* end() { return end_; }
  std::size_t size() const { return static_cast<std::size_t>(end_ - begin_); }
  void Grow(std::size_t count) { end_ += count; }

  void Add(std::string_view text) {
    std::memcpy(end_, text.data(), text.size());
    end_ += text.size();
  }

  void AddDigits(int value, int count) {
    for (int i = count; i-- > 0; value /= 10) end_[i] = static_cast<char>('0' + value % 10);
    end_ += count;
  }

 private:
  char* begin_;
  char* end_;
};

void AddTimeStamp(Line& line) {
  const timespec now = WallClock();
  const tm local = LocalTime(now.tv_sec);
  line.AddDigits(local.tm_mon + 1, 2);
  line.AddDigits(local.tm_mday, 2);
  line.AddDigits(local.tm_hour, 2);
  line.AddDigits(local.tm_min, 2);
  line.AddDigits(local.tm_sec, 2);
  line.AddDigits(static_cast<int>(now.tv_nsec / 1'000'000), 3);
}

// On purpose: the area name goes over the type text without a zero of its own, so a shorter name
// leaves the tail of the type text visible.
void AddMarks(Line& line, const Marks& marks) {
  char work[kMarkSize] = {};
  MapDebugInfoType(marks.type, work);
  line.Add(work);
  line.Add("  ");
  MapDebugLevelType(marks.level, work);
  line.Add(work);
  line.Add("  ");
}

// Version and time, and the marks unless null.
void AddPrefix(Line& line, const Marks* marks) {
  {
    const NamesLock lock;
    line.Add(g_DebugVersion);
  }
  line.Add(" ");
  AddTimeStamp(line);
  line.Add("  ");
  if (marks != nullptr) AddMarks(line, *marks);
}

void MakeLogFilePath(char (&path)[kPathSize]) {
  const NamesLock lock;
  Line text(path);
  text.Add(kFolder);
  text.Add(g_szLogPath[0] == '\0' ? kDefaultName : g_szLogPath);
  *text.end() = '\0';
}

// A write beyond the process's file size limit would raise SIGXFSZ, which ends a process that does
// not expect it.
bool IsWithinFileLimit(int fd, std::size_t size) {
  rlimit limit = {};
  if (getrlimit(RLIMIT_FSIZE, &limit) != 0 || limit.rlim_cur == RLIM_INFINITY) return true;
  struct stat status = {};
  return fstat(fd, &status) == 0 && static_cast<rlim_t>(status.st_size) + size <= limit.rlim_cur;
}

// Terminals and serial printers. One that takes nothing for a while loses the rest of the line, and
// is not waited for again before it has taken one: a read logs many.
void WriteToDevice(int fd, std::string_view text) {
  struct stat status = {};
  if (fstat(fd, &status) != 0 || !S_ISCHR(status.st_mode)) return;
  Patience patience(kStuckDevice, kSlowLine);
  while (!text.empty()) {
    const ssize_t n = write(fd, text.data(), text.size());
    if (n > 0) {
      text.remove_prefix(static_cast<std::size_t>(n));
      patience.SeeProgress();
      continue;
    }
    if (n < 0 && errno == EINTR) continue;
    const bool wait = n < 0 && errno == EAGAIN && s_bDeviceIsStuck == 0;
    if (!wait || !WaitForRoom(fd, patience, nullptr)) {
      s_bDeviceIsStuck = 1;
      return;
    }
  }
  s_bDeviceIsStuck = 0;
}

// One open, one write, one close for each line: lines of several threads or processes stay whole,
// and the file may be moved away at any time. Failures are silent. pwrite, which here appends, is
// refused by what has no offset: a pipe or socket of that name neither blocks nor signals.
void WriteLine(Line& line) {
  line.Add("\r\n");
  char path[kPathSize];
  MakeLogFilePath(path);
  const int flags = O_WRONLY | O_APPEND | O_CREAT | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
  const Descriptor file(open(path, flags, 0600));
  if (!file || !IsWithinFileLimit(file.get(), line.size())) return;
  const ssize_t written = pwrite(file.get(), line.begin(), line.size(), 0);
  if (written < 0 && errno == ESPIPE) WriteToDevice(file.get(), {line.begin(), line.size()});
}

// Apart from its callers, so that a call with logging off does not touch the large buffer.
[[gnu::noinline, gnu::format(printf, 3, 0)]] void WriteMessage(const char* indent,
                                                               const Marks* marks, const char* fmt,
                                                               va_list arguments) {
  char buffer[kPrefixSize + kMessageSize];
  Line line(buffer);
  line.Add(indent);
  AddPrefix(line, marks);
  *line.end() = '\0';
  // NOLINTNEXTLINE(clang-analyzer-valist.Uninitialized): the callers started it.
  vsnprintf(line.end(), kMessageSize, fmt, arguments);
  line.Grow(std::strlen(line.end()));  // Not what was formatted: "%c" may have put a zero there.
  WriteLine(line);
}

void WriteDumpTo(char* buffer, const Marks* marks, const char* title, const void* data, int len) {
  Line line(buffer);
  AddPrefix(line, marks);
  if (title != nullptr) {
    line.Add(title);
    line.Add("  ");
  }
  char length[32];
  std::snprintf(length, sizeof length, "LEN=%d   HEX: ", len);
  line.Add(length);
  if (len > 0 && data != nullptr) {
    const auto count = static_cast<std::size_t>(len);
    WriteHexUpper(static_cast<const std::uint8_t*>(data), count, line.end());
    line.Grow(2 * count);
  }
  WriteLine(line);
}

[[gnu::noinline]] void WriteDump(const Marks* marks, const char* title, const void* data, int len) {
  const std::size_t title_size = title == nullptr ? 0 : std::strlen(title);
  const std::size_t size =
      kPrefixSize + title_size + 2 * static_cast<std::size_t>(len < 0 ? 0 : len);
  if (size <= kDumpSize) {
    char buffer[kDumpSize];
    WriteDumpTo(buffer, marks, title, data, len);
    return;
  }
  const HeapBytes buffer(static_cast<unsigned char*>(std::malloc(size)));
  if (buffer == nullptr) return;
  WriteDumpTo(reinterpret_cast<char*>(buffer.get()), marks, title, data, len);
}

// Takes over at most `size` - 1 characters of `name` and zeroes the rest.
template <std::size_t size>
void SetName(char (&target)[size], const char* name) {
  std::memset(target, 0, size);
  std::memcpy(target, name, strnlen(name, size - 1));
}

bool IsNotZero(const char* flag) { return std::strcmp(flag, "0") != 0; }

[[gnu::noinline]] int LogFlag() {
  char value[kIniValueSize];
  const IniLookup result =
      FindIniValue(kConfigurationFile, "QuillonLog", "LogFlag", value, IsNotZero);
  s_bNoConfiguration.store(result == IniLookup::kNoFile, std::memory_order_relaxed);
  if (result != IniLookup::kFound) return 0;
  const long flag = std::strtol(value, nullptr, 10);
  const int narrow = static_cast<int>(flag);
  return flag != 0 && narrow == 0 ? 1 : narrow;
}

}  // namespace

int isWriteLog() {
  const KeptErrno kept;
  struct stat status;
  if (s_bNoConfiguration.load(std::memory_order_relaxed) != 0 &&
      stat(kConfigurationFile, &status) != 0) {
    return 0;
  }
  return LogFlag();
}

int DPrintLogToFile(const char* fmt, ...) {
  const KeptErrno kept;
  if (isWriteLog() == 0 || fmt == nullptr) return 0;
  va_list arguments;
  va_start(arguments, fmt);
  WriteMessage("", nullptr, fmt, arguments);
  va_end(arguments);
  return 0;
}

int DPrintLogToFileAddType(int type, int level, const char* fmt, ...) {
  const KeptErrno kept;
  if (isWriteLog() == 0 || fmt == nullptr) return 0;
  const Marks marks = {type, level};
  va_list arguments;
  va_start(arguments, fmt);
  WriteMessage(" ", &marks, fmt, arguments);  // On purpose: only these lines are indented.
  va_end(arguments);
  return 0;
}

int DPrintDataHexToFile(const char* title, const void* data, int len) {
  const KeptErrno kept;
  if (isWriteLog() != 0) WriteDump(nullptr, title, data, len);
  return 0;
}

void DPrintDataHexToFileAddType(int type, int level, const char* title, const unsigned char* data,
                                int len) {
  if (type == 0) return;  // On purpose: a dump for information is never written.
  const KeptErrno kept;
  const Marks marks = {type, level};
  if (isWriteLog() != 0) WriteDump(&marks, title, data, len);
}

int DPrintTlvToFileAddType(int type, ...) { return type; }

void MapDebugInfoType(int type, char* dst) {
  if (dst == nullptr) return;
  constexpr char kInformation[] = "INFO:  ", kError[] = "!!ERROR:   ";
  if (type == 0) std::memcpy(dst, kInformation, sizeof kInformation);
  if (type == 1) std::memcpy(dst, kError, sizeof kError);
}

void MapDebugLevelType(int level, char* dst) {
  if (dst == nullptr) return;
  for (const DebugLevel& row : s_DebugLevel) {
    if (row.code != level) continue;
    std::memcpy(dst, row.name, std::strlen(row.name));
    return;
  }
}

char* GetLogTime() {
  Line text(s_szLogTime);
  AddTimeStamp(text);
  static_assert(kStampSize < sizeof s_szLogTime);
  s_szLogTime[kStampSize] = '\0';
  return s_szLogTime;
}

const char* getLogFilePath() {
  MakeLogFilePath(s_szLogFilePath);
  return s_szLogFilePath;
}

void* SetLogPath(const char* name) {
  const NamesLock lock;
  SetName(g_szLogPath, name == nullptr ? "" : name);
  return g_szLogPath;
}

int QL_DebugSetPath(const void* /*path*/) { return 0; }

int QL_DebugSetVersion(const char* version) {
  if (version == nullptr) return 0;
  const NamesLock lock;
  SetName(g_DebugVersion, version);
  return 0;
}

void DPritLogSetFileName(const char* name) {
  if (name == nullptr) return;
  const NamesLock lock;
  std::memcpy(gLogFileName, name, strnlen(name, sizeof gLogFileName - 1));
}

int GetFullPath() { return 0; }

int GetTempFilePath() { return 0; }

int test() { return DPrintLogToFile("[%s] Start ", __func__); }
