// Why this user may not open a device node, and the commands that change it.
#ifndef QUILLONID_TOOLS_QLID_PERMISSION_H
#define QUILLONID_TOOLS_QLID_PERMISSION_H

#include <string>
#include <vector>

namespace qlid {

// Name of the user that the tool runs as, and of the groups: "kiosk, video".
std::string UserName();
std::string GroupNames();

// `user "kiosk" may not write to /dev/ttyS0 (root:dialout, mode 0660; your groups: kiosk, video)`
std::string PermissionText(const std::string& node);

// What to type, a command in a line.
std::vector<std::string> SerialRemedy(const std::string& node);
std::vector<std::string> UsbRemedy(const std::string& node);

// The udev rules for the known readers, as the package installs them.
std::string UdevRules();

// The installed rules file that names this id; empty: none.
std::string InstalledRule(unsigned vendor, unsigned product);

}  // namespace qlid

#endif
