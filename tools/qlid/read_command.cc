// qlid read: one card through the library, errors with their place and the next step.
#include <sys/stat.h>

#include <array>
#include <cstring>

#include "quillonid/results.h"
#include "tools/qlid/commands.h"
#include "tools/qlid/report.h"
#include "tools/qlid/results.h"
#include "tools/qlid/terminal.h"

namespace qlid {
namespace {

constexpr std::array kSpeeds = {300L,   1200L,  2400L,  4800L,   9600L,
                                19200L, 38400L, 57600L, 115200L, 230400L};

bool IsSerial(const std::string& device) { return device.rfind("/dev", 0) == 0; }

bool Exists(const std::string& path) {
  struct stat status = {};
  return stat(path.c_str(), &status) == 0;
}

// Refuses what the library would accept and then misunderstand.
std::optional<Report> CheckRequest(const ReadRequest& request) {
  const std::string& device = request.device;
  const bool usb = strcasecmp(device.c_str(), "HID") == 0 || device == "1001";
  if (!usb && !IsSerial(device)) {
    return UsageReport(
        Format(Tr("\"%s\" names no device on Linux", "\"%s\" 不是 Linux 下的设备名"),
               device.c_str()),
        Tr("name the port: --device /dev/ttyUSB0, or leave --device out for a USB reader",
           "请指定端口：--device /dev/ttyUSB0；USB 读卡器可省略 --device"));
  }
  if (usb) return std::nullopt;
  std::string speeds;
  for (const long speed : kSpeeds) {
    if (speed == request.baud) return std::nullopt;
    speeds += Format("%ld ", speed);
  }
  Report report = UsageReport(
      Format(Tr("%ld is not a speed of this reader link; the library would use 9600 without "
                "saying so",
                "%ld 不是可用的波特率；库会不加提示地改用 9600"),
             request.baud),
      "--baud 115200");
  report.rows.insert(report.rows.begin(), {Tr("Speeds", "波特率"), speeds});
  return report;
}

Report TimeoutReport(const ReadRequest& request) {
  Report report = {QL_TIMEOUT, kExitNoCard, "", {}};
  const std::string reader =
      IsSerial(request.device)
          ? Format(Tr("%s at %ld bit/s", "%s，%ld 波特"), request.device.c_str(), request.baud)
          : "\"" + request.device + "\"";
  if (IsSerial(request.device) && !Exists(request.device)) {
    report.exit = kExitNoReader;
    report.what = Tr("the reader was unplugged while it was being read", "读卡过程中读卡器被拔出");
    report.rows = {
        {Tr("Reader", "读卡器"), Format(Tr("%s is gone", "%s 已消失"),            request.device.c_str())},
        {Tr("Next",           "建议"),               Tr("plug it in and try again",                  "重新插入后重试")}
    };
    return report;
  }
  if (AskReader(request) == ReaderState::kReady) {
    const ResultText& text = ResultOf(QL_TIMEOUT);
    report.what = Format(Tr("no card within %d s", "%d 秒内没有读到卡片"), request.timeout);
    report.rows = {
        {Tr("Reader", "读卡器"),
         reader + Tr(": it works, its card module answered the device check",
         "：工作正常，安全模块有应答")                                             },
        {Tr("Next",   "建议"),    Tr(text.next_english,                     text.next_chinese)}
    };
    return report;
  }
  report.what = Format(Tr("the reader did not answer within %d s", "读卡器在 %d 秒内没有应答"),
                       request.timeout);
  report.rows = {
      {Tr("Reader", "读卡器"), reader}
  };
  report.rows.push_back(
      {Tr("Next", "建议"),
       IsSerial(request.device)
           ? Format(Tr("try the other speed: --baud %d; check cable and power",
                       "换一个波特率：--baud %d；检查线缆和电源"),
                    request.baud == 9600 ? 115200 : 9600)
           : Tr("unplug the reader and plug it in again", "拔出读卡器后重新插入")});
  return report;
}

Report OpenReport(const ReadRequest& request) {
  const ResultText& text = ResultOf(QL_DEVICE_ERROR);
  Report report = {QL_DEVICE_ERROR, kExitNoReader, Tr(text.english, text.chinese), {}};
  if (!IsSerial(request.device)) {
    report.what = Tr("no USB reader could be opened", "无法打开 USB 读卡器");
  } else if (!Exists(request.device)) {
    report.what = Format(Tr("there is no %s", "没有 %s"), request.device.c_str());
  } else {
    report.what = Format(Tr("%s cannot be opened as a serial port", "无法以串口方式打开 %s"),
                         request.device.c_str());
  }
  report.rows = {
      {Tr("Causes", "可能原因"), Tr(text.causes_english, text.causes_chinese)                                                                                },
      {Tr("Next",   "建议"),
       Tr("plug the reader in; name a serial port with --device; give your user access "
          "to it (groups dialout and plugdev)",              "插入读卡器；用 --device 指定串口；授予用户访问权限（dialout、plugdev 组）")}
  };
  return report;
}

Report ReadReport(const ReadRequest& request, int result) {
  if (result == QL_TIMEOUT) return TimeoutReport(request);
  if (result == QL_DEVICE_ERROR) return OpenReport(request);
  const ResultText& text = ResultOf(result);
  Report report = {result, text.exit, Tr(text.english, text.chinese), {}};
  if (*text.causes_english)
    report.rows.push_back({Tr("Causes", "可能原因"), Tr(text.causes_english, text.causes_chinese)});
  if (*text.next_english)
    report.rows.push_back({Tr("Next", "建议"), Tr(text.next_english, text.next_chinese)});
  return report;
}

Report OtherKindReport(const std::string& wanted, CardKind kind) {
  const ResultText& text = ResultOf(QL_CARD_TYPE_ERROR);
  return {
      QL_CARD_TYPE_ERROR,
      text.exit,
      Format(Tr("this is not the kind of card asked for: %s", "卡片不是所要求的类型：%s"),
             wanted.c_str()),
      {{Tr("Card", "卡片"), KindText(kind)},
                 {Tr("Next", "建议"), Tr(text.next_english, text.next_chinese)}}
  };
}

}  // namespace

int ReadCommand(const ReadOptions& options) {
  Outcome outcome;
  outcome.device = options.request.device;
  if (const auto problem = CheckRequest(options.request)) {
    outcome.report = &*problem;
    PrintOutcome(outcome, options.output);
    return problem->exit;
  }
  const Reading reading = ReadCard(options.request);
  outcome.elapsed_ms = reading.elapsed_ms;
  std::optional<Report> report;
  if (reading.result != QL_SUCCESS) {
    report = ReadReport(options.request, reading.result);
  } else if (!KindWanted(options.kind, reading.card.kind)) {
    report = OtherKindReport(options.kind, reading.card.kind);
  } else {
    outcome.card = &reading.card;
    report = WriteFiles(reading.card, options.output);
  }
  if (report) outcome.report = &*report;
  PrintOutcome(outcome, options.output);
  return report ? report->exit : kExitDone;
}

}  // namespace qlid
