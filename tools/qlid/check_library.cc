// doctor: the library that is loaded, its configuration file and its log.
#include <dlfcn.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "quillonid/quillonid.h"
#include "quillonid/support.h"
#include "tools/qlid/checks.h"
#include "tools/qlid/elf_file.h"
#include "tools/qlid/files.h"
#include "tools/qlid/terminal.h"
#include "tools/qlid/versions.h"

namespace qlid {
namespace {

constexpr char kConfiguration[] = "/home/quillon/QLConfig.ini";
constexpr char kLog[] = "/home/quillon/Alg_debug.log";
constexpr std::size_t kConfigurationLimit = 1U << 20;  // bytes that the library looks at

Check CheckVersion() {
  const std::string version = LibraryVersion();
  const std::string text = Format("libquillonid %s (%s), %s", version.c_str(),
                                  LibraryName().c_str(), ThisMachine().c_str());
  if (version == QLID_VERSION) return {Verdict::kOk, "library", text, {}};
  return {Verdict::kWarn,
          "library",
          Format(Tr("%s, but qlid is %s", "%s，但 qlid 为 %s"), text.c_str(), QLID_VERSION),
          {Tr("install library and tool of one release", "安装同一版本的库和工具")}};
}

// Whether the file's last line names LogFlag and has no line feed.
bool LastLineIsLost(const std::string& text) {
  if (text.empty() || text.back() == '\n') return false;
  const std::size_t feed = text.find_last_of('\n');
  const std::size_t start = feed == std::string::npos ? 0 : feed + 1;
  return text.compare(start, 7, "LogFlag") == 0;
}

Check CheckConfiguration() {
  const char* id = "configuration";
  struct stat status = {};
  if (stat(kConfiguration, &status) != 0) {
    return {Verdict::kOk,
            id,
            Format(Tr("logging is off: there is no %s", "日志关闭：没有 %s"), kConfiguration),
            {}};
  }
  if (!S_ISREG(status.st_mode)) {
    return {Verdict::kFail,
            id,
            Format(Tr("%s is no regular file; the library does not read it",
                      "%s 不是普通文件，库不会读取"),
                   kConfiguration),
            {Format(Tr("move it away: sudo mv %s %s.old", "移走：sudo mv %s %s.old"),
                    kConfiguration, kConfiguration)}};
  }
  std::vector<std::uint8_t> bytes;
  std::string problem;
  if (!ReadFile(kConfiguration, kConfigurationLimit, &bytes, &problem)) {
    return {Verdict::kWarn,
            id,
            Format(Tr("%s cannot be read: %s", "无法读取 %s：%s"), kConfiguration, problem.c_str()),
            {Format("sudo chmod a+r %s", kConfiguration)}};
  }
  if (LastLineIsLost({bytes.begin(), bytes.end()})) {
    return {
        Verdict::kWarn,
        id,
        Format(Tr("LogFlag stands on the last line of %s, which has no line feed: it is ignored",
                  "LogFlag 位于 %s 的最后一行且无换行符：不起作用"),
               kConfiguration),
        {Format("echo | sudo tee -a %s", kConfiguration)}};
  }
  const bool on = isWriteLog() != 0;
  return {Verdict::kOk,
          id,
          Format(on ? Tr("%s switches logging on", "%s 已打开日志")
                    : Tr("%s leaves logging off", "%s 未打开日志"),
                 kConfiguration),
          {}};
}

std::string SizeText(long long bytes) {
  if (bytes >= 10LL << 20) return Format("%lld MB", bytes >> 20);
  return bytes >= 10LL << 10 ? Format("%lld kB", bytes >> 10)
                             : Format(Tr("%lld bytes", "%lld 字节"), bytes);
}

const char* WhoMayRead(unsigned mode) {
  if (mode & S_IROTH) return Tr("readable by everyone", "所有人可读");
  if (mode & S_IRGRP) return Tr("readable by its group", "组内可读");
  return Tr("readable by its owner", "仅所有者可读");
}

Check CheckLog() {
  const char* id = "log";
  const bool on = isWriteLog() != 0;
  struct stat status = {};
  if (stat(kLog, &status) != 0) {
    const std::string folder = std::filesystem::path(kLog).parent_path().string();
    if (!on) return {Verdict::kOk, id, Format(Tr("there is no log %s", "没有日志 %s"), kLog), {}};
    if (access(folder.c_str(), W_OK) == 0) {
      return {Verdict::kWarn,
              id,
              Format(Tr("logging is on: names, numbers and photos will go to %s",
                        "日志已打开：姓名、号码、照片将写入 %s"),
                     kLog),
              {Format(Tr("turn it off: set LogFlag=0 in %s", "关闭：在 %s 中设 LogFlag=0"),
                      kConfiguration)}};
    }
    return {Verdict::kWarn,
            id,
            Format(Tr("logging is on, but this user may not write into %s: no log is kept",
                      "日志已打开，但当前用户无权写入 %s：不会有日志"),
                   folder.c_str()),
            {Format("sudo install -d -o \"$USER\" -m 0700 %s", folder.c_str())}};
  }
  const std::string what = Format(Tr("%s, %s, mode %04o, %s; it holds names, numbers and photos",
                                     "%s，%s，权限 %04o，%s；含姓名、号码和照片"),
                                  kLog, SizeText(status.st_size).c_str(), status.st_mode & 07777U,
                                  WhoMayRead(status.st_mode));
  if (on) {
    return {Verdict::kWarn,
            id,
            Format(Tr("logging is on: %s", "日志已打开：%s"), what.c_str()),
            {Format(Tr("Turn it off: set LogFlag=0 in %s. Share it only after: qlid log --redact",
                       "关闭：在 %s 中设 LogFlag=0。分享前先执行：qlid log --redact"),
                    kConfiguration)}};
  }
  return {Verdict::kWarn,
          id,
          Format(Tr("logging is off, its log is left: %s", "日志已关闭，日志文件仍在：%s"),
                 what.c_str()),
          {Format(Tr("when it is not needed: sudo rm %s", "不再需要时：sudo rm %s"), kLog)}};
}

}  // namespace

CheckGroup CheckLibrary() {
  return {
      "library", Tr("Library", "库"), {CheckVersion(), CheckConfiguration(), CheckLog()}
  };
}

}  // namespace qlid
