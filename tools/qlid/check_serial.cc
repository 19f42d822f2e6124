// doctor: serial ports, who may open them, and the programs that speak to every new port.
#include "tools/qlid/checks.h"
#include "tools/qlid/holders.h"
#include "tools/qlid/permission.h"
#include "tools/qlid/terminal.h"

namespace qlid {
namespace {

Check CheckPort(const SerialPort& port) {
  const char* id = "port";
  const char* path = port.path.c_str();
  switch (port.access) {
    case NodeAccess::kReady:
      return {Verdict::kOk,
              id,
              Format(Tr("%s can be opened (%s)", "%s 可以打开（%s）"), path,
                     NodeOwner(port.path).c_str()),
              {}};
    case NodeAccess::kNoPermission:
      return {Verdict::kFail, id, PermissionText(port.path), SerialRemedy(port.path)};
    case NodeAccess::kMissing:
      break;
  }
  return {
      Verdict::kFail,
      id,
      Format(Tr("there is no %s, although the kernel lists the port", "内核列出了端口，但没有 %s"),
             path),
      {Format(Tr("in a container, pass %s in", "容器中请传入 %s"), path)}};
}

Check CheckHolders(const SerialPort& port) {
  const char* id = "holders";
  const Holders holders = HoldersOf(port.path);
  if (!holders.list.empty()) {
    return {
        Verdict::kWarn,
        id,
        Format(Tr("%s is also open in %s, which takes bytes away from a reader there",
                  "%s 同时被 %s 打开，会取走读卡器的数据"),
               port.path.c_str(), HolderText(holders.list).c_str()),
        {Tr("end that program; the package's udev rules keep ModemManager away from known readers",
            "结束该程序；软件包的 udev 规则可使 ModemManager 避开已知读卡器")}};
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

struct Meddler {
  const char* program;
  const char* english;
  const char* chinese;
  const char* remedy;
};
constexpr Meddler kMeddlers[] = {
    {"ModemManager", "sends modem commands to new serial ports",       "会向新串口发送调制解调器命令",
     "sudo systemctl disable --now ModemManager"                                                                                             },
    {"brltty",       "takes USB serial adapters for braille displays",
     "会把 USB 转串口适配器当作盲文显示器占用",                                                     "sudo apt remove brltty"},
};

Check CheckMeddler(const Meddler& meddler) {
  const Holders running = RunningPrograms({meddler.program});
  if (running.list.empty() && !running.complete) {
    return {Verdict::kSkip,
            meddler.program,
            Format(Tr("whether %s runs: other users' programs are hidden; sudo qlid doctor can see",
                      "%s 是否运行：其他用户的程序被隐藏；可用 sudo qlid doctor"),
                   meddler.program),
            {}};
  }
  if (running.list.empty()) {
    return {Verdict::kOk,
            meddler.program,
            Format(Tr("%s does not run", "%s 未运行"), meddler.program),
            {}};
  }
  return {Verdict::kWarn,
          meddler.program,
          Format("%s %s", HolderText(running.list).c_str(), Tr(meddler.english, meddler.chinese)),
          {Format(Tr("when the machine does not need it: %s", "不需要时：%s"), meddler.remedy)}};
}

}  // namespace

CheckGroup CheckSerial(const std::vector<SerialPort>& ports) {
  CheckGroup group = {"serial", Tr("Serial", "串口"), {}};
  for (const SerialPort& port : ports) {
    group.checks.push_back(CheckPort(port));
    if (port.access != NodeAccess::kMissing) group.checks.push_back(CheckHolders(port));
  }
  if (ports.empty())
    group.checks.push_back({Verdict::kSkip, "port", Tr("no port", "没有串口"), {}});
  for (const Meddler& meddler : kMeddlers) group.checks.push_back(CheckMeddler(meddler));
  return group;
}

}  // namespace qlid
