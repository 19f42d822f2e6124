#include "simulator/usb/kernel_reader.h"

#include <arpa/inet.h>
#include <dirent.h>
#include <fcntl.h>
#include <linux/usbdevice_fs.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <utility>

namespace simulator {
namespace {

// USB/IP, version 1.1.1: headers of twelve 32-bit words, big-endian.
constexpr std::uint32_t kCommandSubmit = 1;
constexpr std::uint32_t kCommandUnlink = 2;
constexpr std::uint32_t kReplySubmit = 3;
constexpr std::uint32_t kReplyUnlink = 4;
using Header = std::array<std::uint32_t, 12>;

// Standard requests, type and number.
constexpr unsigned kGetStatus = 0x8000;
constexpr unsigned kClearFeature = 0x0201;
constexpr unsigned kGetDescriptor = 0x8006;
constexpr unsigned kGetInterfaceDescriptor = 0x8106;
constexpr unsigned kSetConfiguration = 0x0009;

constexpr char kController[] = "/sys/devices/platform/vhci_hcd.0/";
constexpr char kDevices[] = "/sys/bus/usb/devices";
constexpr unsigned kFullSpeed = 2;
constexpr unsigned kDeviceNumber = 1;

[[noreturn]] void Die(const std::string& what) {
  std::perror(what.c_str());
  std::abort();
}

std::string FirstLine(const std::string& path) {
  std::ifstream file(path);
  std::string line;
  std::getline(file, line);
  return line;
}

template <typename Test>
bool WaitFor(Test test) {
  for (int i = 0; i < 2000; ++i) {
    if (test()) return true;
    usleep(5000);
  }
  return false;
}

// The sysfs folder of the device with these ids, once the kernel has configured it.
std::string FindDevice(const UsbTraits& traits) {
  char vendor[5];
  char product[5];
  std::snprintf(vendor, sizeof vendor, "%04x", traits.vendor);
  std::snprintf(product, sizeof product, "%04x", traits.product);
  std::error_code none;
  for (const auto& entry : std::filesystem::directory_iterator(kDevices, none)) {
    std::string path = entry.path();
    if (FirstLine(path + "/idVendor") == vendor && FirstLine(path + "/idProduct") == product &&
        FirstLine(path + "/bConfigurationValue") == "1") {
      return path;
    }
  }
  return "";
}

// First free port for full speed ("hs 0000 004 ..."), or -1.
int FreePort() {
  std::ifstream status(std::string(kController) + "status");
  std::string hub, port, state, rest;
  while (status >> hub >> port >> state && std::getline(status, rest)) {
    if (hub == "hs" && state == "004") return std::atoi(port.c_str());
  }
  return -1;
}

bool ReceiveAll(int socket, void* data, std::size_t size) {
  auto* at = static_cast<std::uint8_t*>(data);
  while (size > 0) {
    const ssize_t got = recv(socket, at, size, 0);
    if (got <= 0) return false;
    at += got;
    size -= static_cast<std::size_t>(got);
  }
  return true;
}

}  // namespace

KernelUsbReader::KernelUsbReader(UsbTraits traits) : UsbDevice(std::move(traits)) {
  int ends[2];
  if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends) != 0) Die("socketpair");
  wire_ = ends[0];
  server_ = std::thread(&KernelUsbReader::Serve, this);
  Attach(ends[1]);
  close(ends[1]);  // the kernel keeps its own reference
  if (!WaitFor([this] { return !(path_ = FindDevice(traits_)).empty(); })) Die("not enumerated");
  if (traits_.hid && !WaitFor([this] { return Driver() == "usbhid"; })) Die("usbhid did not bind");
  if (traits_.claim_errno != 0) HoldInterface();
}

void KernelUsbReader::Attach(int kernel_end) {
  int port = -1;
  if (!WaitFor([&port] { return (port = FreePort()) >= 0; })) Die("no free port");
  const std::string file = std::string(kController) + "attach";
  const int attach = open(file.c_str(), O_WRONLY | O_CLOEXEC);
  char text[64];
  const int length =
      std::snprintf(text, sizeof text, "%d %d %u %u", port, kernel_end, kDeviceNumber, kFullSpeed);
  if (attach < 0 || write(attach, text, static_cast<std::size_t>(length)) != length) Die(file);
  close(attach);
}

void KernelUsbReader::HoldInterface() {
  holder_ = open(Node().c_str(), O_RDWR | O_CLOEXEC);
  usbdevfs_ioctl detach = {0, static_cast<int>(USBDEVFS_DISCONNECT), nullptr};
  unsigned interface = 0;
  ioctl(holder_, USBDEVFS_IOCTL, &detach);
  if (ioctl(holder_, USBDEVFS_CLAIMINTERFACE, &interface) != 0) Die("claim");
}

KernelUsbReader::~KernelUsbReader() {
  shutdown(wire_, SHUT_RDWR);
  server_.join();
  Stop();
  close(wire_);
  if (holder_ >= 0) close(holder_);
  WaitGone();
}

bool KernelUsbReader::WaitGone() const {
  return WaitFor([this] { return !std::filesystem::exists(path_); });
}

std::string KernelUsbReader::Node() const {
  char node[64];
  std::snprintf(node, sizeof node, "/dev/bus/usb/%03d/%03d",
                std::atoi(FirstLine(path_ + "/busnum").c_str()),
                std::atoi(FirstLine(path_ + "/devnum").c_str()));
  return node;
}

void KernelUsbReader::RemoveNode() {
  if (unlink(Node().c_str()) != 0) Die(Node());
}

std::string KernelUsbReader::Driver() const {
  const std::string name = std::filesystem::path(path_).filename();
  std::error_code none;
  const auto link = std::filesystem::read_symlink(path_ + "/" + name + ":1.0/driver", none);
  return link.filename();
}

// USB/IP --------------------------------------------------------------------------------------

void KernelUsbReader::Serve() {
  Header header;
  while (ReceiveAll(wire_, header.data(), sizeof header)) {
    const std::uint32_t command = ntohl(header[0]);
    const std::uint32_t sequence = ntohl(header[1]);
    const bool in = ntohl(header[3]) == 1;
    const std::uint32_t endpoint = ntohl(header[4]);
    if (command == kCommandUnlink) {
      // What the transfer already had went out as its own reply, and the unlink finds it finished:
      // a plain reply to an unlink carries no data, so the bytes of a timed-out read would be lost.
      const bool waited = Cancel(ntohl(header[5]));
      Reply(kReplyUnlink, sequence, waited ? -ECONNRESET : 0, 0, {});
      continue;
    }
    if (command != kCommandSubmit) return;
    Transfer transfer;
    transfer.id = sequence;
    transfer.endpoint = static_cast<std::uint8_t>(endpoint | (in ? 0x80U : 0U));
    transfer.room = ntohl(header[6]);
    if (!in) {
      transfer.data.resize(transfer.room);
      if (transfer.room > 0 && !ReceiveAll(wire_, transfer.data.data(), transfer.room)) return;
    }
    if (endpoint != 0) {
      Submit(std::move(transfer));
    } else {
      std::uint8_t setup[8];
      std::memcpy(setup, &header[10], sizeof setup);
      Control(sequence, setup, static_cast<std::uint32_t>(transfer.room), in);
    }
  }
}

void KernelUsbReader::Control(std::uint32_t sequence, const std::uint8_t* setup,
                              std::uint32_t length, bool in) {
  const unsigned request = static_cast<unsigned>(setup[0]) << 8 | setup[1];
  const unsigned kind = setup[3];  // of a descriptor: 1 device, 2 configuration, 22 HID report
  Bytes data;
  int status = 0;
  if (request == kGetDescriptor && kind == 1) {
    data = DeviceDescriptor(traits_);
  } else if (request == kGetDescriptor && kind == 2) {
    data = ConfigurationDescriptor(traits_);
  } else if (request == kGetInterfaceDescriptor && kind == 0x22 && traits_.hid) {
    data = ReportDescriptor();
  } else if (request == kGetStatus) {
    data = {0, 0};
  } else if (request == kSetConfiguration || request == kClearFeature) {
    if (request == kSetConfiguration) ++configured_;
    ClearHalt();
  } else if (in) {
    status = -EPIPE;
  }
  if (data.size() > length) data.resize(length);
  Reply(kReplySubmit, sequence, status, in ? data.size() : length, data);
}

void KernelUsbReader::Reply(std::uint32_t command, std::uint32_t sequence, int status,
                            std::size_t moved, const Bytes& data) {
  Header header = {htonl(command), htonl(sequence)};
  header[5] = htonl(static_cast<std::uint32_t>(status));
  header[6] = htonl(static_cast<std::uint32_t>(moved));
  Bytes message(sizeof header + data.size());
  std::memcpy(message.data(), header.data(), sizeof header);
  std::copy(data.begin(), data.end(), message.begin() + sizeof header);
  const std::lock_guard hold(write_);
  for (std::size_t at = 0; at < message.size();) {
    const ssize_t sent = ::send(wire_, message.data() + at, message.size() - at, MSG_NOSIGNAL);
    if (sent <= 0) return;
    at += static_cast<std::size_t>(sent);
  }
}

void KernelUsbReader::Completed(Transfer transfer) {
  if (transfer.status == -ENOENT && transfer.moved == 0) return;  // the unlink's reply is enough
  Reply(kReplySubmit, static_cast<std::uint32_t>(transfer.id), transfer.status, transfer.moved,
        transfer.endpoint == kEndpointIn ? transfer.data : Bytes{});
}

void KernelUsbReader::Unplugged() { shutdown(wire_, SHUT_RDWR); }

}  // namespace simulator
