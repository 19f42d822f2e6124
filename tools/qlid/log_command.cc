// qlid log: the library's log, personal data masked when asked.
#include <cerrno>
#include <cstdio>
#include <fstream>
#include <iostream>

#include "quillonid/results.h"
#include "quillonid/support.h"
#include "tools/qlid/commands.h"
#include "tools/qlid/files.h"
#include "tools/qlid/log_mask.h"
#include "tools/qlid/report.h"
#include "tools/qlid/results.h"
#include "tools/qlid/terminal.h"

namespace qlid {
namespace {

// A log of days does not fit the memory: line by line.
void Show(std::istream& log, bool redact) {
  for (std::string line; std::getline(log, line);) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (redact) line = MaskLogLine(line);
    if (IsTerminal(1)) line = Printable(line);
    line += '\n';
    if (std::fwrite(line.data(), 1, line.size(), stdout) != line.size()) break;
  }
  FlushOutput();
}

int Missing(const std::string& path, int error) {
  PrintReport(
      {QL_INVALID_ARGUMENT,
       kExitUsage,
       Format(Tr("%s cannot be read: %s", "无法读取 %s：%s"), path.c_str(),
              SystemProblem(error).c_str()),
       {{Tr("Next", "建议"), Tr("logging is switched on in /home/quillon/QLConfig.ini: man "
                                "QLConfig.ini; its state: qlid doctor",
                                "日志在 /home/quillon/QLConfig.ini 中打开：man QLConfig.ini；状态："
                                "qlid doctor")}}});
  return kExitUsage;
}

}  // namespace

int LogCommand(const LogOptions& options) {
  if (options.file == "-") {
    Show(std::cin, options.redact);
    return kExitDone;
  }
  const std::string path = options.file.empty() ? getLogFilePath() : options.file;
  std::ifstream log(path, std::ios::binary);
  // A folder opens and gives no line.
  if (log) log.peek();
  if (log.bad() || !log.is_open()) return Missing(path, errno);
  if (!options.redact) {
    std::fprintf(stderr, "%s\n",
                 Tr("This log holds personal data; to share it: qlid log --redact",
                    "此日志含个人信息；分享前请用：qlid log --redact"));
  }
  log.clear();
  Show(log, options.redact);
  return kExitDone;
}

}  // namespace qlid
