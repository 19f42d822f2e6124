// The USB reader on an emulated bus: no hardware, no kernel USB, any user. Unmodified libusb finds
// it through the sysfs and udev data that umockdev redirects and opens the usbfs node, whose ioctls
// umockdev hands to this class on its worker thread.
//
// The process that uses libusb needs LD_PRELOAD=libumockdev-preload.so.0 from its start. While a
// reader exists, ioctls on pseudo-terminals fail, so a program that uses both needs two processes.
#ifndef QUILLONID_SIMULATOR_USB_EMULATED_READER_H
#define QUILLONID_SIMULATOR_USB_EMULATED_READER_H

#include <umockdev.h>

#include <map>

#include "simulator/usb/device.h"

struct usbdevfs_urb;

namespace simulator {

class EmulatedUsbReader : public UsbDevice {
 public:
  static constexpr char kNode[] = "/dev/bus/usb/001/002";

  explicit EmulatedUsbReader(UsbTraits traits = {});
  ~EmulatedUsbReader();

  // The plug is pulled: what waits ends, and the bus lists the reader no more.
  void Pull();
  // Plugged in again after a Pull(), under this number on its bus, once the host has closed it.
  // False when the host keeps it open.
  bool PlugIn(int number);

  // Opening the device fails from here on. Each such open takes umockdev 0.17 two of its 50 file
  // slots for good, so a process can afford only a few.
  void RemoveNode();

  // The ioctls so far by name, "CLOSE" for the end of an open file; without those that only reap
  // transfers or ask for capabilities.
  std::vector<std::string> Trace() const;
  bool Claimed() const;
  // The end of an open file gets here a moment after close() has returned to the host. Waits for
  // it; false when a file is still open after `limit`.
  bool WaitClosed(Milliseconds limit = Milliseconds(2000));

 private:
  // The client's struct usbdevfs_urb and its data buffer.
  struct Record {
    UMockdevIoctlData* urb = nullptr;
    UMockdevIoctlData* buffer = nullptr;
  };

  static gboolean OnIoctl(UMockdevIoctlBase*, UMockdevIoctlClient* client, gpointer self);
  static void OnConnected(UMockdevIoctlBase*, UMockdevIoctlClient* client, gpointer self);
  static void OnClosed(gpointer self, GObject* client);

  void AddToBus(const std::string& description);
  void MakeNodePollable();
  void SetReady(bool ready);  // lock held: whether poll() sees something to reap

  int Handle(unsigned long request, UMockdevIoctlData* argument);  // 0 or an errno
  int NameDriver(UMockdevIoctlData* argument);
  int DetachDriver(UMockdevIoctlData* argument);
  int Claim();
  int Release();
  int SubmitUrb(UMockdevIoctlData* argument);
  int Reap(UMockdevIoctlData* argument);
  int Discard(UMockdevIoctlData* argument);

  void Completed(Transfer transfer) override;
  void Unplugged() override { SetReady(true); }

  UMockdevTestbed* bed_ = nullptr;
  UMockdevIoctlBase* handler_ = nullptr;
  std::string bus_node_ = kNode;
  std::string node_;  // the node's path inside the testbed
  int gate_ = -1;     // the pipe that stands for the node
  bool ready_ = true;
  bool claimed_ = false;
  bool node_removed_ = false;
  std::map<std::uint64_t, Record> records_;  // by the address of the client's urb
  std::deque<Transfer> done_;
  std::vector<GObject*> clients_;  // open files of the node
  std::vector<std::string> trace_;
};

}  // namespace simulator

#endif
