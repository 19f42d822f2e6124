// doctor: the reader itself, asked through the library.
#include <chrono>

#include "api/published.h"
#include "quillonid/link.h"
#include "quillonid/reader.h"
#include "quillonid/results.h"
#include "tools/qlid/checks.h"
#include "tools/qlid/node_watch.h"
#include "tools/qlid/permission.h"
#include "tools/qlid/read_failure.h"
#include "tools/qlid/report.h"
#include "tools/qlid/results.h"
#include "tools/qlid/terminal.h"

namespace qlid {
namespace {

using Clock = std::chrono::steady_clock;

double SecondsSince(Clock::time_point start) {
  return std::chrono::duration<double>(Clock::now() - start).count();
}

bool IsUsb(const ReadRequest& request) { return !IsSerial(request.device); }

std::string NameOf(const ReadRequest& request) {
  return IsUsb(request)
             ? "\"" + request.device + "\""
             : Format(Tr("%s at %ld bit/s", "%s，%ld bit/s"), request.device.c_str(), request.baud);
}

Check NotOpened(const ReadRequest& request) {
  const OpenProblem problem = ExplainOpening(request);
  Check check = {Verdict::kFail, "open",
                 Format(Tr("%s cannot be opened", "无法打开 %s"), NameOf(request).c_str()),
                 problem.next};
  switch (problem.failure) {
    case OpenFailure::kNoNode:
      if (!IsUsb(request))
        check.text = Format(Tr("there is no %s", "没有 %s"), request.device.c_str());
      break;
    case OpenFailure::kNoPermission:
      check.text += "; " + PermissionText(problem.node);
      break;
    case OpenFailure::kHeld:
      check.text +=
          Format(Tr("; it is open in %s", "；已被 %s 打开"), HolderText(problem.holders).c_str());
      break;
    case OpenFailure::kOther:
      break;
  }
  return check;
}

Check Silent(const ReadRequest& request) {
  Check check = {Verdict::kFail,
                 "answer",
                 Format(Tr("%s was opened and did not answer", "%s 已打开但没有应答"),
                        NameOf(request).c_str()),
                 {}};
  check.remedy = {IsUsb(request)
                      ? Tr("unplug the reader and plug it in again", "拔出读卡器后重新插入")
                      : Format(Tr("try the other speed: --baud %d; check cable and power",
                                  "换一个波特率：--baud %d；检查线缆和电源"),
                               request.baud == 9600 ? 115200 : 9600)};
  return check;
}

// A card lies there that the reader cannot take.
Check NotSelected(int result) {
  const ResultText& text = ResultOf(PublishedCode(result));
  Check check = {
      Verdict::kFail,
      "card",
      Format(Tr("a card was found and not selected: %s (%d)", "找到卡片但未能选中：%s（%d）"),
             Tr(text.english, text.chinese), text.code),
      {}};
  check.remedy = {Tr(text.next_english, text.next_chinese)};
  return check;
}

// Searches once and selects; the card is not read.
Check FindCard() {
  constexpr int kSearchSeconds = 1;
  const char* id = "card";
  const int found = SearchCardOneTime(kSearchSeconds);
  if (found < 0) {
    return {Verdict::kFail,
            id,
            Format(Tr("the reader did not answer the search for a card (%d)",
                      "读卡器没有应答寻卡（%d）"),
                   PublishedCode(found)),
            {Tr("check the cable, and see what travels: qlid read --trace",
                "检查线缆，并查看收发的内容：qlid read --trace")}};
  }
  if (found != RET_PUB_SUCCESS) {
    return {Verdict::kSkip,
            id,
            Tr("no card lies on the reader; put one there to have it found",
               "读卡器上没有卡片；放上卡片后可检查寻卡"),
            {}};
  }
  const int selected = SelectIDCardOneTime();
  if (selected != RET_PUB_SUCCESS) return NotSelected(selected);
  return {Verdict::kOk,
          id,
          Tr("a card was found and selected (not read)", "已找到并选中卡片（未读取）"),
          {}};
}

// What the library would misunderstand is refused as `qlid read` refuses it.
bool Refused(const ReadRequest& request, CheckGroup* group) {
  const std::optional<Report> wrong = CheckRequest(request);
  if (!wrong) return false;
  Check check = {Verdict::kFail, "open", wrong->what, {}};
  for (const Row& row : wrong->rows) check.remedy.push_back(row.text);
  group->checks.push_back(std::move(check));
  group->checks.push_back(
      {Verdict::kSkip, "answer", Tr("not asked: it was not opened", "未询问：没有打开"), {}});
  return true;
}

void Ask(const ReadRequest& request, CheckGroup* group) {
  SettleLibrary(request);
  const Clock::time_point start = Clock::now();
  if (tFuncOpenDevice(request.device.c_str(), "", static_cast<int>(request.baud), 0, 1) != 0) {
    group->checks.push_back(NotOpened(request));
    group->checks.push_back({Verdict::kSkip,
                             "answer",
                             Tr("not asked: it could not be opened", "未询问：无法打开"),
                             {}});
    return;
  }
  const double opened = SecondsSince(start);
  group->checks.push_back(
      {Verdict::kOk,
       "open",
       Format(Tr("%s opened in %.1f s", "%s 打开用时 %.1f 秒"), NameOf(request).c_str(), opened),
       {}});
  const Clock::time_point asked = Clock::now();
  if (IsAnswering()) {
    group->checks.push_back(
        {Verdict::kOk,
         "answer",
         Format(Tr("card module ready, answered in %.0f ms", "安全模块就绪，应答用时 %.0f 毫秒"),
                SecondsSince(asked) * 1000),
         {}});
    group->checks.push_back(FindCard());
  } else {
    group->checks.push_back(Silent(request));
    group->checks.push_back({Verdict::kSkip,
                             "card",
                             Tr("not looked for: the reader is silent", "未寻卡：读卡器无应答"),
                             {}});
  }
  tFuncCloseDevice();
}

}  // namespace

CheckGroup CheckReader(const ReaderToAsk& reader) {
  CheckGroup group = {"reader", Tr("Reader", "读卡器"), {}};
  if (reader.named && Refused(reader.request, &group)) return group;
  if (reader.named || reader.usb_ready) {
    Ask(reader.request, &group);
  } else if (!reader.any) {
    group.checks.push_back(
        {Verdict::kFail,
         "open",
         Tr("there is neither a USB reader nor a serial port", "既没有 USB 读卡器也没有串口"),
         {Tr("plug the reader in; in a virtual machine, pass it through",
             "插入读卡器；虚拟机中请直通设备")}});
  } else {
    group.checks.push_back(
        {Verdict::kSkip,
         "open",
         Tr("not asked: no USB reader could be opened", "未询问：没有可打开的 USB 读卡器"),
         {Tr("A serial one: qlid doctor --device /dev/ttyS0 --baud 115200",
             "串口读卡器：qlid doctor --device /dev/ttyS0 --baud 115200")}});
  }
  return group;
}

}  // namespace qlid
