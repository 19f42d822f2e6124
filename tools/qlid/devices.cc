#include "tools/qlid/devices.h"

#include <grp.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>

#include "link/usb_ids.h"
#include "tools/qlid/terminal.h"

namespace qlid {
namespace {

namespace fs = std::filesystem;

constexpr char kUsbDevices[] = "/sys/bus/usb/devices";
constexpr char kTtys[] = "/sys/class/tty";
constexpr char kStableNames[] = "/dev/serial/by-id";

std::string FirstLine(const fs::path& path) {
  std::ifstream file(path);
  std::string line;
  std::getline(file, line);
  return line;
}

// A hexadecimal or decimal attribute, or -1.
int Attribute(const fs::path& folder, const char* name, int base) {
  const std::string text = FirstLine(folder / name);
  char* end = nullptr;
  const long value = std::strtol(text.c_str(), &end, base);
  return text.empty() || *end ? -1 : static_cast<int>(value);
}

std::vector<fs::path> Entries(const fs::path& folder) {
  std::vector<fs::path> entries;
  std::error_code none;
  for (const auto& entry : fs::directory_iterator(folder, none)) entries.push_back(entry.path());
  std::sort(entries.begin(), entries.end());
  return entries;
}

std::string DriverName(const fs::path& folder) {
  std::error_code none;
  const fs::path driver = fs::read_symlink(folder / "driver", none);
  return driver.filename().string();
}

NodeAccess AccessTo(const std::string& node) {
  if (access(node.c_str(), F_OK) != 0) return NodeAccess::kMissing;
  return access(node.c_str(), R_OK | W_OK) == 0 ? NodeAccess::kReady : NodeAccess::kNoPermission;
}

UsbReader Describe(const fs::path& folder, const UsbIdText& id) {
  UsbReader reader;
  reader.id = id;
  reader.bus = Attribute(folder, "busnum", 10);
  reader.device = Attribute(folder, "devnum", 10);
  reader.node = Format("/dev/bus/usb/%03d/%03d", reader.bus, reader.device);
  reader.access = AccessTo(reader.node);
  reader.driver = DriverName(folder / (folder.filename().string() + ":1.0"));
  return reader;
}

// The USB device that a tty hangs on, "1234:5678"; empty for a port of another kind.
std::string UsbIdOf(fs::path folder) {
  for (int level = 0; level < 8 && folder.has_relative_path();
       ++level, folder = folder.parent_path()) {
    const std::string vendor = FirstLine(folder / "idVendor");
    if (!vendor.empty()) return vendor + ":" + FirstLine(folder / "idProduct");
  }
  return "";
}

// Ports that the kernel lists although no hardware is behind them are of type 0.
bool IsRealPort(const fs::path& tty) {
  std::error_code none;
  return fs::exists(tty / "device", none) && FirstLine(tty / "type") != "0";
}

std::string StableName(const std::string& path) {
  std::error_code none;
  for (const fs::path& link : Entries(kStableNames)) {
    if (fs::canonical(link, none) == path) return link.string();
  }
  return "";
}

}  // namespace

bool ParseUsbId(const std::string& text, UsbIdText* id) {
  int used = 0;
  const bool parsed = std::sscanf(text.c_str(), "%4x:%4x%n", &id->vendor, &id->product, &used) == 2;
  return parsed && static_cast<std::size_t>(used) == text.size() && text.size() == 9;
}

std::vector<UsbIdText> KnownIds() {
  std::vector<UsbIdText> ids;
  for (const UsbId& id : kKnownReaders) ids.push_back({id.vendor, id.product});
  return ids;
}

UsbBus FindUsbReaders(const std::vector<UsbIdText>& ids) {
  UsbBus bus;
  const std::vector<fs::path> folders = Entries(kUsbDevices);
  for (const fs::path& folder : folders)
    bus.devices += Attribute(folder, "idVendor", 16) >= 0 ? 1 : 0;
  for (const UsbIdText& id : ids) {
    for (const fs::path& folder : folders) {
      if (Attribute(folder, "idVendor", 16) != static_cast<int>(id.vendor)) continue;
      if (Attribute(folder, "idProduct", 16) != static_cast<int>(id.product)) continue;
      bus.readers.push_back(Describe(folder, id));
    }
  }
  return bus;
}

std::vector<SerialPort> FindSerialPorts() {
  std::vector<SerialPort> ports;
  for (const fs::path& tty : Entries(kTtys)) {
    if (!IsRealPort(tty)) continue;
    SerialPort port;
    port.path = "/dev/" + tty.filename().string();
    port.stable = StableName(port.path);
    port.access = AccessTo(port.path);
    std::error_code none;
    const fs::path device = fs::canonical(tty / "device", none);
    const std::string usb = UsbIdOf(device);
    port.about = usb.empty() ? Tr("built-in port", "内置串口") : "USB " + usb;
    ports.push_back(port);
  }
  return ports;
}

std::string NodeOwner(const std::string& path) {
  struct stat status = {};
  if (stat(path.c_str(), &status) != 0) return "";
  const passwd* user = getpwuid(status.st_uid);
  const group* owner = getgrgid(status.st_gid);
  return Format(Tr("%s:%s, mode %04o", "%s:%s，权限 %04o"),
                user ? user->pw_name : std::to_string(status.st_uid).c_str(),
                owner ? owner->gr_name : std::to_string(status.st_gid).c_str(),
                static_cast<unsigned>(status.st_mode & 07777));
}

}  // namespace qlid
