// A machine with one USB reader on which nothing reads: what the kernel shows of it under /sys and
// /dev, laid over the machine's own in the private root. Its node is a pseudo-terminal, a character
// device that every user can have.
#ifndef QUILLONID_TESTS_QLID_USB_MACHINE_H
#define QUILLONID_TESTS_QLID_USB_MACHINE_H

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "tests/testing/private_root.h"

namespace fs = std::filesystem;

class UsbMachine {
 public:
  static constexpr char kNode[] = "/dev/bus/usb/001/007";

  // Lasts until the end of the test's process. Needs the private root.
  explicit UsbMachine(const std::string& driver = "")
      : far_end_(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)) {
    EXPECT_EQ(0, grantpt(far_end_));
    EXPECT_EQ(0, unlockpt(far_end_));
    const std::string device = ptsname(far_end_);
    ListReader(driver);
    const std::string dev = TemporaryFolder() + "/dev";
    fs::create_directories(dev + "/bus/usb/001");
    for (const auto& entry : fs::directory_iterator("/dev")) CopyEntry(entry.path(), dev);
    Bind(device, TemporaryFolder() + kNode);
    Mount(dev, "/dev", MS_BIND | MS_REC);
  }
  UsbMachine(const UsbMachine&) = delete;
  UsbMachine& operator=(const UsbMachine&) = delete;
  ~UsbMachine() { close(far_end_); }

 private:
  static void ListReader(const std::string& driver) {
    Mount("tmpfs", "/sys/bus", 0);
    const fs::path folder = "/sys/bus/usb/devices/1-1";
    const fs::path interface = folder / "1-1:1.0";
    fs::create_directories(interface);
    std::ofstream(folder / "idVendor") << "0403\n";
    std::ofstream(folder / "idProduct") << "bcd5\n";
    std::ofstream(folder / "busnum") << "1\n";
    std::ofstream(folder / "devnum") << "7\n";
    if (!driver.empty())
      fs::create_symlink("../../../../bus/usb/drivers/" + driver, interface / "driver");
  }

  static void CopyEntry(const fs::path& entry, const std::string& dev) {
    const std::string target = dev + "/" + entry.filename().string();
    if (entry.filename() == "bus") return;
    if (fs::is_symlink(entry)) {
      fs::copy_symlink(entry, target);
    } else {
      Bind(entry, target);
    }
  }

  static void Bind(const std::string& source, const std::string& target) {
    if (fs::is_directory(source)) {
      fs::create_directory(target);
    } else {
      std::ofstream(target).flush();
    }
    Mount(source, target, MS_BIND | MS_REC);
  }

  static void Mount(const std::string& source, const std::string& target, unsigned long flags) {
    EXPECT_EQ(0, mount(source.c_str(), target.c_str(), "tmpfs", flags, nullptr)) << target;
  }

  int far_end_;
};

#endif
