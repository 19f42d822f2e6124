// The USB reader behind a real kernel: the kernel's virtual host controller (module vhci-hcd, root
// needed) takes one end of a local socket pair, and this class serves the other as a USB/IP device.
// The kernel enumerates it, binds its driver and runs usbfs; no network and no further tools.
#ifndef QUILLONID_SIMULATOR_USB_KERNEL_READER_H
#define QUILLONID_SIMULATOR_USB_KERNEL_READER_H

#include <atomic>

#include "simulator/usb/device.h"

namespace simulator {

class KernelUsbReader : public UsbDevice {
 public:
  // Returns when the kernel has configured the device and bound its driver. With a claim error in
  // the traits another open file holds interface 0. Aborts when there is no controller.
  explicit KernelUsbReader(UsbTraits traits = {});
  ~KernelUsbReader();

  // Takes the device node away, so that opening fails.
  void RemoveNode();
  // The driver bound to interface 0, empty for none; "usbfs" when a program has claimed it.
  std::string Driver() const;
  bool Claimed() const { return Driver() == "usbfs"; }
  // How often the kernel has configured the device: once when it is plugged in, and once more for
  // every reset.
  int Configured() const { return configured_; }
  // Waits until the kernel has noticed the unplugging.
  bool WaitGone() const;

 private:
  std::string Node() const;
  void Attach(int kernel_end);
  void HoldInterface();
  void Serve();
  void Control(std::uint32_t sequence, const std::uint8_t* setup, std::uint32_t length, bool in);
  void Reply(std::uint32_t command, std::uint32_t sequence, int status, std::size_t moved,
             const Bytes& data);
  void Completed(Transfer transfer) override;
  void Unplugged() override;

  std::string path_;  // /sys/bus/usb/devices/BUS-PORT
  int wire_ = -1;
  int holder_ = -1;  // open file that holds the interface
  std::atomic<int> configured_{0};
  std::mutex write_;
  std::thread server_;
};

}  // namespace simulator

#endif
