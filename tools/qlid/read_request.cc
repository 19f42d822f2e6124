#include <strings.h>

#include <array>

#include "tools/qlid/node_watch.h"
#include "tools/qlid/reading.h"
#include "tools/qlid/report.h"
#include "tools/qlid/terminal.h"

namespace qlid {
namespace {

constexpr std::array kSpeeds = {300L,   1200L,  2400L,  4800L,   9600L,
                                19200L, 38400L, 57600L, 115200L, 230400L};

}  // namespace

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

}  // namespace qlid
