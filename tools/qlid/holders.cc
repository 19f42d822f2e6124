#include "tools/qlid/holders.h"

#include <sys/stat.h>
#include <sys/sysmacros.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>

#include "tools/qlid/terminal.h"

namespace qlid {
namespace {

namespace fs = std::filesystem;

constexpr unsigned kMemoryDevices = 1;   // major number of /dev/null and its like
constexpr char kMultiplexer[] = "ptmx";  // far end of every pseudo-terminal

std::string NameOf(const fs::path& process) {
  std::ifstream file(process / "comm");
  std::string name;
  std::getline(file, name);
  return Printable(name);
}

std::vector<fs::path> Processes() {
  std::vector<fs::path> processes;
  std::error_code none;
  for (const auto& entry : fs::directory_iterator("/proc", none)) {
    const std::string name = entry.path().filename().string();
    if (std::all_of(name.begin(), name.end(), [](char c) { return c >= '0' && c <= '9'; }))
      processes.push_back(entry.path());
  }
  return processes;
}

// Whether this user is shown everybody's programs. The first of all runs as long as the machine;
// mount options of /proc (hidepid) hide it, or its files, with the others.
bool AllAreShown() { return !NameOf("/proc/1").empty(); }

long PidOf(const fs::path& process) { return std::stol(process.filename().string()); }

struct OpenFiles {
  bool node = false;
  bool multiplexer = false;
};

// Compares device numbers, not names: a node has many names, and a container its own.
OpenFiles Look(const fs::path& process, dev_t device, std::error_code* problem) {
  OpenFiles found;
  for (fs::directory_iterator it(process / "fd", *problem), end; !*problem && it != end;
       it.increment(*problem)) {
    std::error_code none;
    const fs::path target = fs::read_symlink(it->path(), none);
    // Only what lies under /dev is looked at closer: a dead network file would keep us waiting.
    if (target.string().rfind("/dev/", 0) != 0) continue;
    found.multiplexer = found.multiplexer || target.filename() == kMultiplexer;
    struct stat status = {};
    if (stat(it->path().c_str(), &status) == 0 && S_ISCHR(status.st_mode) &&
        status.st_rdev == device) {
      found.node = true;
    }
  }
  return found;
}

}  // namespace

Holders HoldersOf(const std::string& node) {
  Holders holders;
  struct stat status = {};
  if (stat(node.c_str(), &status) != 0 || !S_ISCHR(status.st_mode)) return holders;
  if (major(status.st_rdev) == kMemoryDevices) return holders;
  holders.complete = AllAreShown();
  std::error_code none;
  const bool pseudo_terminal = fs::canonical(node, none).string().rfind("/dev/pts/", 0) == 0;
  for (const fs::path& process : Processes()) {
    if (PidOf(process) == getpid()) continue;
    std::error_code problem;
    const OpenFiles files = Look(process, status.st_rdev, &problem);
    if (problem == std::errc::permission_denied) holders.complete = false;
    if (files.node && !(pseudo_terminal && files.multiplexer))
      holders.list.push_back({NameOf(process), PidOf(process)});
  }
  return holders;
}

Holders RunningPrograms(const std::vector<std::string>& names) {
  Holders running;
  running.complete = AllAreShown();
  for (const fs::path& process : Processes()) {
    const std::string name = NameOf(process);
    if (std::find(names.begin(), names.end(), name) != names.end())
      running.list.push_back({name, PidOf(process)});
  }
  return running;
}

std::string HolderText(const std::vector<Holder>& holders) {
  std::string text;
  for (const Holder& holder : holders) {
    if (!text.empty()) text += ", ";
    text += Format("%s (pid %ld)", holder.program.c_str(), holder.pid);
  }
  return text;
}

}  // namespace qlid
