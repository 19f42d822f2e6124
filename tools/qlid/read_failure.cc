#include "tools/qlid/read_failure.h"

#include <unistd.h>

#include "quillonid/results.h"
#include "tools/qlid/holders.h"
#include "tools/qlid/node_watch.h"
#include "tools/qlid/permission.h"
#include "tools/qlid/results.h"
#include "tools/qlid/terminal.h"

namespace qlid {
namespace {

std::string ReaderName(const ReadRequest& request) {
  return IsSerial(request.device)
             ? Format(Tr("%s at %ld bit/s", "%s，%ld bit/s"), request.device.c_str(), request.baud)
             : "\"" + request.device + "\"";
}

Report UnpluggedReport(const ReadRequest& request, const Reading& reading) {
  const std::string& device = IsSerial(request.device) ? request.device : reading.gone_node;
  const Row reader = {Tr("Reader", "读卡器"), Format(Tr("%s is gone since %s", "%s 于 %s 消失"),
                                                     device.c_str(), reading.gone_since.c_str())};
  const Row next = {
      Tr("Next", "建议"),
      Tr("plug it in and try again; for a terminal that must survive this: qlid read --watch",
         "重新插入后重试；需要自动恢复时：qlid read --watch")};
  Report report = {
      reading.result,
      kExitNoReader,
      Tr("the reader was unplugged while it was being read", "读卡过程中读卡器被拔出"),
      {reader, next}
  };
  report.reason = kReasonUnplugged;
  report.node = device;
  return report;
}

Report NoCardReport(const ReadRequest& request) {
  const ResultText& text = ResultOf(QL_TIMEOUT);
  const Row reader = {Tr("Reader", "读卡器"),
                      ReaderName(request) + Tr(": it works, its card module answered the device "
                                               "check",
                                               "：工作正常，安全模块应答了设备检测")};
  const Row next = {Tr("Next", "建议"), Tr(text.next_english, text.next_chinese)};
  Report report = {
      QL_TIMEOUT,
      kExitNoCard,
      Format(Tr("no card within %d s", "%d 秒内没有读到卡片"), request.timeout),
      {reader, next}
  };
  report.reason = kReasonNoCard;
  report.node = NodeOf(request);
  return report;
}

std::string OpenWhat(const ReadRequest& request, const OpenProblem& problem) {
  switch (problem.failure) {
    case OpenFailure::kNoNode:
      return IsSerial(request.device)
                 ? Format(Tr("there is no %s", "没有 %s"), request.device.c_str())
                 : Tr("no USB reader could be opened", "无法打开 USB 读卡器");
    case OpenFailure::kNoPermission:
      return Tr("no permission to open the reader", "没有打开读卡器的权限");
    case OpenFailure::kHeld:
      return Tr("the reader is in use by another program", "读卡器正被其他程序使用");
    case OpenFailure::kOther:
      break;
  }
  return IsSerial(request.device)
             ? Format(Tr("%s cannot be opened as a serial port", "无法以串口方式打开 %s"),
                      request.device.c_str())
             : Tr("no USB reader could be opened", "无法打开 USB 读卡器");
}

const char* OpenReason(OpenFailure failure) {
  switch (failure) {
    case OpenFailure::kNoNode:
      return kReasonNoDevice;
    case OpenFailure::kNoPermission:
      return kReasonNoPermission;
    case OpenFailure::kHeld:
      return kReasonHeld;
    case OpenFailure::kOther:
      break;
  }
  return kReasonNotOpened;
}

}  // namespace

Report OpenReport(const ReadRequest& request) {
  const OpenProblem problem = ExplainOpening(request);
  Report report = {QL_DEVICE_ERROR, kExitNoReader, OpenWhat(request, problem), {}};
  report.reason = OpenReason(problem.failure);
  report.node = problem.node;
  if (report.node.empty() && IsSerial(request.device)) report.node = request.device;
  if (!problem.node.empty()) report.rows.push_back({Tr("Reader", "读卡器"), problem.node});
  if (problem.failure == OpenFailure::kNoPermission)
    report.rows.push_back({Tr("Cause", "原因"), PermissionText(problem.node)});
  AddHolders(problem.holders, &report);
  AddNext(problem.next, &report);
  return report;
}

OpenProblem ExplainOpening(const ReadRequest& request) {
  OpenProblem problem = {OpenFailure::kOther, NodeOf(request), {}, {}};
  if (problem.node.empty()) {
    problem.failure = OpenFailure::kNoNode;
    problem.next = {IsSerial(request.device)
                        ? Tr("see which ports are there: qlid devices", "查看端口：qlid devices")
                        : Tr("plug the reader in, or name a serial port: --device /dev/ttyUSB0; "
                             "what is there: qlid devices",
                             "插入读卡器，或指定串口：--device /dev/ttyUSB0；查看设备：qlid "
                             "devices")};
    return problem;
  }
  if (access(problem.node.c_str(), R_OK | W_OK) != 0) {
    problem.failure = OpenFailure::kNoPermission;
    problem.next =
        IsSerial(request.device) ? SerialRemedy(problem.node) : UsbRemedy(UsbReaderOf(request));
    return problem;
  }
  const Holders holders = HoldersOf(problem.node);
  if (!holders.list.empty()) {
    problem.failure = OpenFailure::kHeld;
    problem.holders = holders.list;
    problem.next = {Tr("end that program, or let it do the reading", "结束该程序，或由它读卡")};
    return problem;
  }
  problem.next = {holders.complete
                      ? Tr("find out why: qlid doctor", "查找原因：qlid doctor")
                      : Tr("see whether another user's program has it open: sudo qlid doctor",
                           "查看是否被其他用户的程序占用：sudo qlid doctor")};
  return problem;
}

Report SilentReport(const ReadRequest& request) {
  Report report = {QL_TIMEOUT,
                   kExitNoCard,
                   Format(Tr("the reader did not answer within %d s", "读卡器在 %d 秒内没有应答"),
                          request.timeout),
                   {{Tr("Reader", "读卡器"), ReaderName(request)}}};
  report.reason = kReasonSilent;
  report.node = NodeOf(request);
  // A second program that has the port open takes away a part of the answers.
  AddHolders(HoldersOf(report.node).list, &report);
  AddNext({IsSerial(request.device)
               ? Format(Tr("try the other speed: --baud %d; check cable and power: qlid doctor "
                           "--device %s",
                           "换一个波特率：--baud %d；检查线缆和电源：qlid doctor --device %s"),
                        request.baud == 9600 ? 115200 : 9600, request.device.c_str())
               : Tr("unplug the reader and plug it in again", "拔出读卡器后重新插入")},
          &report);
  return report;
}

Report UnreadReport(const ReadRequest& request) {
  Report report = {QL_TIMEOUT,
                   kExitNoCard,
                   Format(Tr("a card was found and could not be read within %d s",
                             "找到了卡片，但在 %d 秒内没有读出"),
                          request.timeout),
                   {{Tr("Reader", "读卡器"), ReaderName(request)}}};
  report.reason = kReasonUnread;
  report.node = NodeOf(request);
  AddHolders(HoldersOf(report.node).list, &report);
  AddNext({Tr("keep the card still on the reader and try again",
              "将卡片放稳在读卡器上，保持不动后重试"),
           IsSerial(request.device)
               ? Format(Tr("see what the reader answers: qlid read --device %s --trace",
                           "查看读卡器的应答：qlid read --device %s --trace"),
                        request.device.c_str())
               : Tr("try another card", "换一张卡片再试")},
          &report);
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

Report ReadReport(const ReadRequest& request, const Reading& reading) {
  if (!reading.gone_since.empty()) return UnpluggedReport(request, reading);
  if (reading.result == QL_TIMEOUT) {
    const ReaderLook look = LookAtReader(request);
    if (look.card) return UnreadReport(request);
    return look.state == ReaderState::kReady ? NoCardReport(request) : SilentReport(request);
  }
  if (reading.result == QL_DEVICE_ERROR) return OpenReport(request);
  const ResultText& text = ResultOf(reading.result);
  Report report = {reading.result, text.exit, Tr(text.english, text.chinese), {}};
  if (*text.causes_english)
    report.rows.push_back({Tr("Causes", "可能原因"), Tr(text.causes_english, text.causes_chinese)});
  if (*text.next_english)
    report.rows.push_back({Tr("Next", "建议"), Tr(text.next_english, text.next_chinese)});
  return report;
}

}  // namespace qlid
