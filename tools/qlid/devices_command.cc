// qlid devices: which readers and ports are there, who may open them, and how to read with each.
#include <cstdio>

#include "quillonid/results.h"
#include "tools/qlid/commands.h"
#include "tools/qlid/devices.h"
#include "tools/qlid/json_document.h"
#include "tools/qlid/node_watch.h"
#include "tools/qlid/read_failure.h"
#include "tools/qlid/report.h"
#include "tools/qlid/results.h"
#include "tools/qlid/terminal.h"

namespace qlid {
namespace {

struct Found {
  UsbBus usb;
  std::vector<SerialPort> ports;
  std::size_t known_ids = 0;
};

std::string IdText(const UsbIdText& id) { return Format("%04x:%04x", id.vendor, id.product); }

const char* AccessName(NodeAccess access) {
  switch (access) {
    case NodeAccess::kReady:
      return "ready";
    case NodeAccess::kNoPermission:
      return "no-permission";
    case NodeAccess::kMissing:
      break;
  }
  return "missing";
}

std::string AccessText(NodeAccess access, const std::string& node) {
  switch (access) {
    case NodeAccess::kReady:
      return Tr("you may open it", "可以打开");
    case NodeAccess::kNoPermission:
      return Format(Tr("no permission (%s)", "没有权限（%s）"), NodeOwner(node).c_str());
    case NodeAccess::kMissing:
      break;
  }
  return Tr("its node is missing", "设备节点不存在");
}

std::string PortCommand(const SerialPort& port) {
  return "qlid read --device " + (port.stable.empty() ? port.path : port.stable);
}

// The library takes the first id that opens, so only the first device of an id is ever read.
std::string UsbCommand(const UsbReader& reader, bool first) {
  if (!first) return Tr("not used: the first id that opens wins", "不使用：第一个能打开的设备优先");
  for (const UsbIdText& id : KnownIds()) {
    if (id.vendor == reader.id.vendor && id.product == reader.id.product) return "qlid read";
  }
  return "qlid read --usb-id " + IdText(reader.id);
}

void PrintUsb(const std::vector<UsbReader>& readers) {
  if (readers.empty()) return;
  std::printf("USB\n");
  bool first = true;
  for (const UsbReader& reader : readers) {
    std::printf(Tr("  %s  bus %d device %d  %s  %s\n", "  %s  总线 %d 设备 %d  %s  %s\n"),
                IdText(reader.id).c_str(), reader.bus, reader.device, reader.node.c_str(),
                AccessText(reader.access, reader.node).c_str());
    if (!reader.driver.empty()) {
      std::printf("    %s\n", Format(Tr("kernel driver %s holds it; the library detaches it",
                                        "内核驱动 %s 占用；库会将其分离"),
                                     reader.driver.c_str())
                                  .c_str());
    }
    std::printf("    %s\n",
                UsbCommand(reader, first && reader.access == NodeAccess::kReady).c_str());
    first = first && reader.access != NodeAccess::kReady;
  }
}

void PrintPorts(const std::vector<SerialPort>& ports) {
  if (ports.empty()) return;
  std::printf("%s\n", Tr("Serial", "串口"));
  for (const SerialPort& port : ports) {
    std::printf("  %s  %s  %s\n", port.path.c_str(), port.about.c_str(),
                AccessText(port.access, port.path).c_str());
    std::printf("    %s\n", PortCommand(port).c_str());
  }
  FlushOutput();
  std::fprintf(stderr, "%s\n  qlid devices --probe %s --baud 115200\n",
               Tr("Serial ports may be anything; ask one whether it is a reader:",
                  "串口可能连接任何设备；可询问其是否为读卡器："),
               ports.front().path.c_str());
}

void PrintJson(const Found& found) {
  const Json document = NewDocument("qlid.devices/1");
  cJSON* usb = cJSON_AddArrayToObject(document.get(), "usb");
  for (const UsbReader& reader : found.usb.readers) {
    cJSON* item = cJSON_CreateObject();
    cJSON_AddItemToArray(usb, item);
    AddText(item, "id", IdText(reader.id));
    cJSON_AddNumberToObject(item, "bus", reader.bus);
    cJSON_AddNumberToObject(item, "device", reader.device);
    AddText(item, "node", reader.node);
    cJSON_AddStringToObject(item, "access", AccessName(reader.access));
    AddText(item, "driver", reader.driver);
  }
  cJSON* serial = cJSON_AddArrayToObject(document.get(), "serial");
  for (const SerialPort& port : found.ports) {
    cJSON* item = cJSON_CreateObject();
    cJSON_AddItemToArray(serial, item);
    AddText(item, "path", port.path);
    AddText(item, "stable", port.stable);
    AddText(item, "about", port.about);
    cJSON_AddStringToObject(item, "access", AccessName(port.access));
    AddText(item, "command", PortCommand(port));
  }
  PrintJson(document);
}

Report NothingFound(const Found& found) {
  const Row usb = {
      "USB", Format(Tr("none of the %zu known ids among %d devices (list: qlid devices --known)",
                       "%zu 个已知 ID 均不在 %d 个设备中（列表：qlid devices --known）"),
                    found.known_ids, found.usb.devices)};
  const Row serial = {Tr("Serial", "串口"), Tr("no port", "没有串口")};
  const Row next = {Tr("Next", "建议"),
                    Tr("plug the reader in; if it has other ids: qlid devices --usb-id 1234:5678",
                       "插入读卡器；若其 ID 不同：qlid devices --usb-id 1234:5678")};
  return {
      QL_DEVICE_ERROR, kExitNoReader, Tr("no reader found", "没有找到读卡器"), {usb, serial, next}
  };
}

// What came of asking a device.
struct Probed {
  const char* answer;  // for programs
  const char* text;    // for people; null: the report says it all
  int exit;
  std::optional<Report> report;
};

Probed Probe(const ReadRequest& request) {
  if (auto wrong = CheckRequest(request))
    return {"refused", nullptr, wrong->exit, std::move(wrong)};
  switch (AskReader(request)) {
    case ReaderState::kReady:
      return {"ready",
              Tr("a reader answered: its card module is ready", "有读卡器应答：安全模块就绪"),
              kExitDone,
              {}};
    case ReaderState::kSilent:
      return {"silent", Tr("opened, but nothing answered", "已打开，但没有应答"), kExitNoReader,
              SilentReport(request)};
    case ReaderState::kNotOpened:
      break;
  }
  return {"not-opened", Tr("cannot be opened", "无法打开"), kExitNoReader, OpenReport(request)};
}

void PrintJson(const ReadRequest& request, const Probed& probed) {
  const Json document = NewDocument("qlid.probe/1");
  cJSON_AddBoolToObject(document.get(), "ok", !probed.report);
  AddText(document.get(), "device", request.device);
  if (IsSerial(request.device))
    cJSON_AddNumberToObject(document.get(), "baud", static_cast<double>(request.baud));
  cJSON_AddStringToObject(document.get(), "answer", probed.answer);
  if (probed.report) cJSON_AddItemToObject(document.get(), "error", ReportObject(*probed.report));
  PrintJson(document);
}

int ProbeCommand(const DevicesOptions& options) {
  ReadRequest request;
  request.device = options.probe;
  request.baud = options.baud;
  request.usb_ids = options.usb_ids;
  request.timeout = 1;
  const Probed probed = Probe(request);
  if (options.json) {
    PrintJson(request, probed);
    return probed.exit;
  }
  const std::string speed =
      IsSerial(request.device) ? Format("  %ld bit/s", request.baud) : std::string();
  if (probed.text) std::printf("%s%s  %s\n", request.device.c_str(), speed.c_str(), probed.text);
  FlushOutput();
  if (probed.report) PrintReport(*probed.report);
  return probed.exit;
}

int PrintKnown(const std::vector<UsbIdText>& ids, bool json) {
  if (!json) {
    for (const UsbIdText& id : ids) std::printf("%s\n", IdText(id).c_str());
    return kExitDone;
  }
  const Json document = NewDocument("qlid.known/1");
  cJSON* list = cJSON_AddArrayToObject(document.get(), "usb");
  for (const UsbIdText& id : ids)
    cJSON_AddItemToArray(list, cJSON_CreateString(IdText(id).c_str()));
  PrintJson(document);
  return kExitDone;
}

}  // namespace

int DevicesCommand(const DevicesOptions& options) {
  std::vector<UsbIdText> ids = KnownIds();
  for (const std::string& text : options.usb_ids) {
    UsbIdText id = {};
    if (ParseUsbId(text, &id)) ids.push_back(id);
  }
  if (options.known) return PrintKnown(ids, options.json);
  if (!options.probe.empty()) return ProbeCommand(options);

  const Found found = {FindUsbReaders(ids), FindSerialPorts(), ids.size()};
  const bool any = !found.usb.readers.empty() || !found.ports.empty();
  if (options.json) {
    PrintJson(found);
  } else {
    PrintUsb(found.usb.readers);
    PrintPorts(found.ports);
    if (!any) PrintReport(NothingFound(found));
  }
  return any ? kExitDone : kExitNoReader;
}

}  // namespace qlid
