// Why this user may not open a device node, and the commands that change it.
#ifndef QUILLONID_TOOLS_QLID_PERMISSION_H
#define QUILLONID_TOOLS_QLID_PERMISSION_H

#include <string>
#include <vector>

#include "tools/qlid/devices.h"

namespace qlid {

// Name of the user that the tool runs as, and of the groups: "kiosk, video".
std::string UserName();
std::string GroupNames();

// `user "kiosk" may not write to /dev/ttyS0 (root:dialout, mode 0660; your groups: kiosk, video)`
std::string PermissionText(const std::string& node);

// What to type, a command in a line.
std::vector<std::string> SerialRemedy(const std::string& node);
std::vector<std::string> UsbRemedy(const UsbReader& reader);

// The udev rules for the known readers, as the package installs them, and for these besides.
std::string UdevRules(const std::vector<UsbIdText>& more);

// The command that installs them, with the id if it is not a known one.
std::string InstallRules(const UsbIdText& id);

// The installed rules file that names this id; empty: none.
std::string InstalledRule(const UsbIdText& id);

}  // namespace qlid

#endif
