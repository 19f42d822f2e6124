// doctor: USB readers, who may open them and who has them open.
#include "tools/qlid/checks.h"
#include "tools/qlid/holders.h"
#include "tools/qlid/permission.h"
#include "tools/qlid/terminal.h"

namespace qlid {
namespace {

std::string NameOf(const UsbReader& reader) {
  return Format(Tr("reader %04x:%04x on bus %d, device %d", "读卡器 %04x:%04x，总线 %d，设备 %d"),
                reader.id.vendor, reader.id.product, reader.bus, reader.device);
}

Check CheckNode(const UsbReader& reader) {
  const char* id = "node";
  switch (reader.access) {
    case NodeAccess::kReady:
      return {Verdict::kOk,
              id,
              Format(Tr("%s can be opened (%s)", "%s 可以打开（%s）"), reader.node.c_str(),
                     NodeOwner(reader.node).c_str()),
              {}};
    case NodeAccess::kNoPermission:
      return {Verdict::kFail, id, PermissionText(reader.node), UsbRemedy(reader)};
    case NodeAccess::kMissing:
      break;
  }
  return {
      Verdict::kFail,
      id,
      Format(Tr("the kernel lists the reader, but there is no %s", "内核列出了读卡器，但没有 %s"),
             reader.node.c_str()),
      {Tr("in a container, pass /dev/bus/usb in; else start udev: sudo systemctl start "
          "systemd-udevd",
          "容器中请传入 /dev/bus/usb；否则启动 udev：sudo systemctl start systemd-udevd")}};
}

Check CheckRule(const UsbReader& reader) {
  const char* id = "rule";
  const std::string file = InstalledRule(reader.id);
  if (!file.empty())
    return {Verdict::kOk, id, Format(Tr("udev rule in %s", "udev 规则位于 %s"), file.c_str()), {}};
  return {Verdict::kWarn,
          id,
          Tr("no udev rule for this reader: only root may open it once it is plugged in again",
             "没有此读卡器的 udev 规则：重新插入后仅 root 可以打开"),
          {InstallRules(reader.id)}};
}

Check CheckDriver(const UsbReader& reader) {
  const char* id = "driver";
  if (reader.driver.empty() || reader.driver == "usbfs")
    return {Verdict::kOk, id, Tr("no kernel driver is bound to it", "没有内核驱动绑定"), {}};
  return {Verdict::kOk,
          id,
          Format(Tr("kernel driver %s is bound to it; the library detaches it for each read",
                    "内核驱动 %s 已绑定；每次读取时由库分离"),
                 reader.driver.c_str()),
          {}};
}

Check CheckHolders(const UsbReader& reader) {
  const char* id = "holders";
  const Holders holders = HoldersOf(reader.node);
  if (!holders.list.empty()) {
    // usbfs as its driver: that program has claimed it, so that nobody else can.
    return {reader.driver == "usbfs" ? Verdict::kFail : Verdict::kWarn,
            id,
            Format(Tr("%s is also open in %s", "%s 同时被 %s 打开"), reader.node.c_str(),
                   HolderText(holders.list).c_str()),
            {Tr("end that program, or let it do the reading", "结束该程序，或由它读卡")}};
  }
  if (holders.complete)
    return {Verdict::kOk, id, Tr("no other program has it open", "没有其他程序打开它"), {}};
  return {Verdict::kSkip,
          id,
          Tr("who else has it open: other users' programs cannot be looked into; sudo qlid doctor "
             "can",
             "是否被其他程序占用：无法查看其他用户的程序；可用 sudo qlid doctor"),
          {}};
}

}  // namespace

CheckGroup CheckUsb(const UsbBus& bus, std::size_t known_ids) {
  CheckGroup group = {"usb", "USB", {}};
  bool first = true;
  for (const UsbReader& reader : bus.readers) {
    group.checks.push_back({Verdict::kOk, "reader", NameOf(reader), {}});
    group.checks.push_back(CheckNode(reader));
    group.checks.push_back(CheckRule(reader));
    group.checks.push_back(CheckDriver(reader));
    group.checks.push_back(CheckHolders(reader));
    if (!first) {
      group.checks.push_back(
          {Verdict::kWarn,
           "second",
           Tr("it is not used while the first one opens", "第一个能打开时不会使用它"),
           {Tr("unplug the reader that is not wanted", "拔出不用的读卡器")}});
    }
    first = false;
  }
  if (bus.readers.empty()) {
    group.checks.push_back({Verdict::kSkip,
                            "reader",
                            Format(Tr("none of the %zu known ids among %d devices",
                                      "%zu 个已知 ID 均不在 %d 个设备中"),
                                   known_ids, bus.devices),
                            {Tr("a reader of another id: qlid doctor --usb-id 1234:5678",
                                "其他 ID 的读卡器：qlid doctor --usb-id 1234:5678")}});
  }
  return group;
}

}  // namespace qlid
