// qlid reset-baud: brings a serial reader back to the speed that it starts with.
#include <unistd.h>

#include <cstdio>

#include "quillonid/link.h"
#include "quillonid/results.h"
#include "tools/qlid/commands.h"
#include "tools/qlid/node_watch.h"
#include "tools/qlid/read_failure.h"
#include "tools/qlid/report.h"
#include "tools/qlid/results.h"
#include "tools/qlid/terminal.h"

namespace qlid {
namespace {

constexpr int kOwnSpeed = 0;       // in a speed command
constexpr long kStartBaud = 9600;  // which that is
constexpr useconds_t kUntilSent = 200'000;

std::optional<Report> CheckSerial(const ReadRequest& request) {
  if (auto wrong = CheckRequest(request)) return wrong;
  if (IsSerial(request.device)) return std::nullopt;
  return UsageReport(
      Tr("a USB reader has no line speed", "USB 读卡器没有波特率"),
      Tr("name a serial port: --device /dev/ttyUSB0", "指定串口：--device /dev/ttyUSB0"));
}

// Sends the command at the speed that the reader was left at. False when the port does not open.
bool SendReset(const ReadRequest& request) {
  SettleLibrary(request);
  if (tFuncOpenDevice(request.device.c_str(), "", static_cast<int>(request.baud), 0, 1) !=
      RET_PUB_SUCCESS) {
    return false;
  }
  COMM_Id_SetBaud(kOwnSpeed);
  usleep(kUntilSent);
  tFuncCloseDevice();
  return true;
}

Report StillSilent(const ReadRequest& request) {
  Report report = {
      QL_TIMEOUT,
      kExitNoCard,
      Format(Tr("the reader does not answer at %ld bit/s", "读卡器在 %ld bit/s 下没有应答"),
             kStartBaud),
      {{Tr("Reader", "读卡器"), request.device}}};
  report.tell_code = false;  // No read was made.
  report.reason = kReasonSilent;
  report.node = request.device;
  AddHolders(HoldersOf(request.device).list, &report);
  AddNext({Tr("try the other speeds that it can be left at: --baud 38400, --baud 19200",
              "试试它可能停留的其他波特率：--baud 38400、--baud 19200"),
           Tr("or switch its power off and on", "或将读卡器断电后重新上电")},
          &report);
  return report;
}

}  // namespace

int ResetBaudCommand(const ReadRequest& request) {
  std::optional<Report> report = CheckSerial(request);
  if (!report && !SendReset(request)) {
    Reading nothing;
    nothing.result = QL_DEVICE_ERROR;
    report = ReadReport(request, nothing);
  }
  if (!report) {
    ReadRequest start = request;
    start.baud = kStartBaud;
    if (AskReader(start) != ReaderState::kReady) report = StillSilent(request);
  }
  if (report) {
    PrintReport(*report);
    return report->exit;
  }
  std::printf(Tr("%s  %ld bit/s  the reader answers\n", "%s  %ld bit/s  读卡器有应答\n"),
              request.device.c_str(), kStartBaud);
  return kExitDone;
}

}  // namespace qlid
