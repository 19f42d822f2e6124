// qlid doctor: why reading does not work.
#include <cstdio>

#include "tools/qlid/checks.h"
#include "tools/qlid/commands.h"
#include "tools/qlid/json_document.h"
#include "tools/qlid/permission.h"
#include "tools/qlid/results.h"
#include "tools/qlid/terminal.h"

namespace qlid {
namespace {

struct VerdictText {
  const char* shown;
  const char* name;  // in JSON
  Ink ink;
};
// In the order of Verdict.
constexpr VerdictText kVerdicts[] = {
    {"ok",   "ok",   Ink::kGreen },
    {"warn", "warn", Ink::kYellow},
    {"FAIL", "fail", Ink::kRed   },
    {"skip", "skip", Ink::kDim   },
};

const VerdictText& TextOf(Verdict verdict) { return kVerdicts[static_cast<int>(verdict)]; }

int Count(const std::vector<CheckGroup>& groups, Verdict verdict) {
  int count = 0;
  for (const CheckGroup& group : groups) {
    for (const Check& check : group.checks) count += check.verdict == verdict ? 1 : 0;
  }
  return count;
}

void PrintCheck(const Check& check) {
  constexpr int kVerdictColumns = 4;
  const VerdictText& verdict = TextOf(check.verdict);
  const std::string padded = PaddedTo(verdict.shown, kVerdictColumns);
  std::printf("  %s  %s\n", Paint(verdict.ink, padded, 1).c_str(), Printable(check.text).c_str());
  for (std::size_t i = 0; i < check.remedy.size(); ++i) {
    const std::string number = check.remedy.size() > 1 ? Format("%zu. ", i + 1) : "";
    std::printf("        %s%s\n", number.c_str(), Printable(check.remedy[i]).c_str());
  }
}

void PrintSum(int problems, int warnings) {
  if (problems + warnings == 0) {
    std::printf("\n%s\n", Tr("No problems.", "没有问题。"));
    return;
  }
  std::printf("\n");
  std::printf(Tr("%d %s, %d %s.", "%d 个%s，%d 个%s。"), problems,
              problems == 1 ? Tr("problem", "问题") : Tr("problems", "问题"), warnings,
              warnings == 1 ? Tr("warning", "警告") : Tr("warnings", "警告"));
  std::printf(" %s\n", Tr("For support, without card data: qlid doctor --json",
                          "寻求支持时（不含卡片数据）：qlid doctor --json"));
}

void PrintPeople(const std::vector<CheckGroup>& groups) {
  for (const CheckGroup& group : groups) {
    std::printf("%s\n", Paint(Ink::kBold, group.title, 1).c_str());
    for (const Check& check : group.checks) PrintCheck(check);
  }
  PrintSum(Count(groups, Verdict::kFail), Count(groups, Verdict::kWarn));
}

cJSON* CheckObject(const Check& check) {
  cJSON* object = cJSON_CreateObject();
  cJSON_AddStringToObject(object, "id", check.id);
  cJSON_AddStringToObject(object, "verdict", TextOf(check.verdict).name);
  AddText(object, "text", Printable(check.text));
  cJSON* remedy = cJSON_AddArrayToObject(object, "remedy");
  for (const std::string& step : check.remedy)
    cJSON_AddItemToArray(remedy, cJSON_CreateString(Printable(step).c_str()));
  return object;
}

void PrintJson(const std::vector<CheckGroup>& groups) {
  const int problems = Count(groups, Verdict::kFail);
  const Json document = NewDocument("qlid.doctor/1");
  cJSON_AddBoolToObject(document.get(), "ok", problems == 0);
  cJSON_AddNumberToObject(document.get(), "problems", problems);
  cJSON_AddNumberToObject(document.get(), "warnings", Count(groups, Verdict::kWarn));
  cJSON* list = cJSON_AddArrayToObject(document.get(), "groups");
  for (const CheckGroup& group : groups) {
    cJSON* object = cJSON_CreateObject();
    cJSON_AddItemToArray(list, object);
    cJSON_AddStringToObject(object, "id", group.id);
    cJSON* checks = cJSON_AddArrayToObject(object, "checks");
    for (const Check& check : group.checks) cJSON_AddItemToArray(checks, CheckObject(check));
  }
  PrintJson(document);
}

std::vector<UsbIdText> IdsAsked(const DoctorOptions& options) {
  std::vector<UsbIdText> ids;
  for (const std::string& text : options.request.usb_ids) {
    UsbIdText id = {};
    if (ParseUsbId(text, &id)) ids.push_back(id);
  }
  return ids;
}

std::vector<CheckGroup> CheckAll(const DoctorOptions& options) {
  std::vector<UsbIdText> ids = KnownIds();
  for (const UsbIdText& id : IdsAsked(options)) ids.push_back(id);
  const UsbBus bus = FindUsbReaders(ids);
  const std::vector<SerialPort> ports = FindSerialPorts();
  ReaderToAsk reader = {options.request, !options.request.device.empty(),
                        !bus.readers.empty() || !ports.empty(), false};
  if (!reader.named) reader.request.device = "HID";
  for (const UsbReader& found : bus.readers)
    reader.usb_ready = reader.usb_ready || found.access == NodeAccess::kReady;
  return {CheckLibrary(), CheckDecoder(), CheckUsb(bus, ids.size()), CheckSerial(ports),
          CheckReader(reader)};
}

}  // namespace

int DoctorCommand(const DoctorOptions& options) {
  if (options.print_udev_rules) {
    std::printf("%s", UdevRules(IdsAsked(options)).c_str());
    return kExitDone;
  }
  const std::vector<CheckGroup> groups = CheckAll(options);
  if (options.json) {
    PrintJson(groups);
  } else {
    PrintPeople(groups);
  }
  return Count(groups, Verdict::kFail) == 0 ? kExitDone : kExitUnexpected;
}

}  // namespace qlid
