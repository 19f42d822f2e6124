#include "tools/qlid/permission.h"

#include <grp.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "tools/qlid/terminal.h"
#include "udev_rules.h"  // generated: kUdevRules

namespace qlid {
namespace {

namespace fs = std::filesystem;

constexpr char kUsbGroup[] = "plugdev";
constexpr char kSerialGroup[] = "dialout";
constexpr const char* kRuleFolders[] = {"/etc/udev/rules.d", "/run/udev/rules.d",
                                        "/usr/local/lib/udev/rules.d", "/usr/lib/udev/rules.d",
                                        "/lib/udev/rules.d"};

std::vector<gid_t> OwnGroups() {
  std::vector<gid_t> groups(static_cast<std::size_t>(std::max(0, getgroups(0, nullptr))));
  const int count = getgroups(static_cast<int>(groups.size()), groups.data());
  groups.resize(static_cast<std::size_t>(std::max(0, count)));
  if (std::find(groups.begin(), groups.end(), getegid()) == groups.end())
    groups.insert(groups.begin(), getegid());
  return groups;
}

std::string GroupName(gid_t id) {
  const group* entry = getgrgid(id);
  return entry ? entry->gr_name : std::to_string(id);
}

// Whether the account is in the group, though this session may have begun before.
bool IsListedIn(const std::string& name, const std::string& user) {
  const group* entry = getgrnam(name.c_str());
  if (!entry) return false;
  for (char** member = entry->gr_mem; *member; ++member) {
    if (user == *member) return true;
  }
  return false;
}

// What gives this user the rights of `name`.
std::string JoinGroup(const std::string& name) {
  const std::string user = UserName();
  if (IsListedIn(name, user)) {
    return Format(Tr("log out and in again: \"%s\" has been in group %s only since",
                     "注销后重新登录：\"%s\" 本次登录之后才加入 %s 组"),
                  user.c_str(), name.c_str());
  }
  return Format("sudo usermod -aG %s %s     %s", name.c_str(), user.c_str(),
                Tr("then log in again", "然后重新登录"));
}

bool IsKnown(const UsbIdText& id) {
  const std::vector<UsbIdText> known = KnownIds();
  return std::any_of(known.begin(), known.end(), [&](const UsbIdText& each) {
    return each.vendor == id.vendor && each.product == id.product;
  });
}

// The group that may read and write the node, unless it is root's; else empty.
std::string GroupOfNode(const std::string& node) {
  struct stat status = {};
  if (stat(node.c_str(), &status) != 0 || status.st_gid == 0) return "";
  const bool served = (status.st_mode & (S_IRGRP | S_IWGRP)) == (S_IRGRP | S_IWGRP);
  return served ? GroupName(status.st_gid) : "";
}

}  // namespace

std::string UserName() {
  const passwd* user = getpwuid(geteuid());
  return user ? user->pw_name : std::to_string(geteuid());
}

std::string GroupNames() {
  std::string names;
  for (const gid_t id : OwnGroups()) names += (names.empty() ? "" : ", ") + GroupName(id);
  return names;
}

std::string PermissionText(const std::string& node) {
  return Format(Tr("user \"%s\" may not write to %s (%s; your groups: %s)",
                   "用户 \"%s\" 无权写入 %s（%s；所属组：%s）"),
                UserName().c_str(), node.c_str(), NodeOwner(node).c_str(), GroupNames().c_str());
}

std::vector<std::string> SerialRemedy(const std::string& node) {
  const std::string served = GroupOfNode(node);
  if (!served.empty()) return {JoinGroup(served)};
  return {Format("sudo chgrp %s %s && sudo chmod 660 %s", kSerialGroup, node.c_str(), node.c_str()),
          JoinGroup(kSerialGroup)};
}

std::vector<std::string> UsbRemedy(const UsbReader& reader) {
  const std::string served = GroupOfNode(reader.node);
  if (!served.empty()) return {JoinGroup(served)};
  const char* replug = Tr("unplug the reader and plug it in", "拔出读卡器后重新插入");
  if (!IsKnown(reader.id)) return {InstallRules(reader.id), JoinGroup(kUsbGroup), replug};
  return {
      Format("sudo apt install libquillonid1     %s", Tr("brings the udev rule", "提供 udev 规则")),
      JoinGroup(kUsbGroup), replug,
      Tr("without the package: ", "未使用软件包时：") + InstallRules(reader.id)};
}

std::string UdevRules(const std::vector<UsbIdText>& more) {
  std::string rules = kUdevRules;
  for (const UsbIdText& id : more) {
    if (IsKnown(id)) continue;
    rules += Format(
        "SUBSYSTEM==\"usb\", ENV{DEVTYPE}==\"usb_device\", ATTR{idVendor}==\"%04x\", "
        "ATTR{idProduct}==\"%04x\", MODE=\"0660\", GROUP=\"%s\", TAG+=\"uaccess\", "
        "ENV{ID_MM_DEVICE_IGNORE}=\"1\"\n",
        id.vendor, id.product, kUsbGroup);
  }
  return rules;
}

std::string InstallRules(const UsbIdText& id) {
  const std::string named = IsKnown(id) ? "" : Format(" --usb-id %04x:%04x", id.vendor, id.product);
  return "qlid doctor --print-udev-rules" + named +
         " | sudo tee /etc/udev/rules.d/60-quillonid.rules";
}

std::string InstalledRule(const UsbIdText& id) {
  const std::string vendor_text = Format("\"%04x\"", id.vendor);
  const std::string product_text = Format("\"%04x\"", id.product);
  for (const char* folder : kRuleFolders) {
    std::error_code none;
    for (const auto& entry : fs::directory_iterator(folder, none)) {
      if (entry.path().extension() != ".rules") continue;
      std::ifstream file(entry.path());
      for (std::string line; std::getline(file, line);) {
        if (line.find("ATTR{idVendor}==" + vendor_text) != std::string::npos &&
            line.find("ATTR{idProduct}==" + product_text) != std::string::npos) {
          return entry.path().string();
        }
      }
    }
  }
  return "";
}

}  // namespace qlid
