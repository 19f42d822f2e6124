// Readers and serial ports of this machine, from what the kernel publishes under /sys and /dev.
// Nothing is opened.
#ifndef QUILLONID_TOOLS_QLID_DEVICES_H
#define QUILLONID_TOOLS_QLID_DEVICES_H

#include <string>
#include <vector>

namespace qlid {

struct UsbIdText {
  unsigned vendor;
  unsigned product;
};

// "1234:5678", vendor and product in hexadecimal.
bool ParseUsbId(const std::string& text, UsbIdText* id);

enum class NodeAccess { kReady, kNoPermission, kMissing };

struct UsbReader {
  UsbIdText id = {};
  int bus = 0;
  int device = 0;
  std::string node;  // /dev/bus/usb/001/007
  NodeAccess access = NodeAccess::kMissing;
  std::string driver;  // of interface 0; empty: none
};

struct UsbBus {
  std::vector<UsbReader> readers;
  int devices = 0;  // all that are connected, hubs included
};

// The ids that the library tries, in its order.
std::vector<UsbIdText> KnownIds();

// The connected devices with one of these ids, in the order in which the library tries them.
UsbBus FindUsbReaders(const std::vector<UsbIdText>& ids);

struct SerialPort {
  std::string path;    // /dev/ttyUSB0
  std::string stable;  // name under /dev/serial/by-id that survives replugging; empty: none
  std::string about;   // "USB 1234:5678", or that it is built in
  NodeAccess access = NodeAccess::kMissing;
};

std::vector<SerialPort> FindSerialPorts();

// Owner, group and mode of a node: "root:dialout, mode 0660".
std::string NodeOwner(const std::string& path);

}  // namespace qlid

#endif
