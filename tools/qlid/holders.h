// Programs that have a device node open, from what the kernel publishes under /proc.
#ifndef QUILLONID_TOOLS_QLID_HOLDERS_H
#define QUILLONID_TOOLS_QLID_HOLDERS_H

#include <string>
#include <vector>

namespace qlid {

struct Holder {
  std::string program;
  long pid = 0;
};

struct Holders {
  std::vector<Holder> list;
  bool complete = true;  // false: other users' programs could not be seen or looked into
};

// This program is left out, and so is the far end of a pseudo-terminal: it is no rival.
Holders HoldersOf(const std::string& node);

// The running programs of one of these names.
Holders RunningPrograms(const std::vector<std::string>& names);

// "frontdesk (pid 2231), ModemManager (pid 612)"
std::string HolderText(const std::vector<Holder>& holders);

}  // namespace qlid

#endif
