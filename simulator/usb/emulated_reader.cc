#include "simulator/usb/emulated_reader.h"

#include <fcntl.h>
#include <linux/usbdevice_fs.h>
#include <sys/ioctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <utility>

namespace simulator {
namespace {

constexpr std::size_t kPage = 4096;
constexpr int kNumber = 2;  // in kNode
constexpr char kSysfsFolder[] = "/sys/devices/pci0000:00/usb1/1-1";

std::string Hex(const Bytes& bytes) {
  std::string text;
  for (const std::uint8_t byte : bytes) {
    char pair[3];
    std::snprintf(pair, sizeof pair, "%02X", byte);
    text += pair;
  }
  return text;
}

// umockdev's device description language: a root hub, and the reader on its first port.
constexpr char kRootHub[] =
    "P: /devices/pci0000:00/usb1\n"
    "N: bus/usb/001/001\n"
    "E: SUBSYSTEM=usb\nE: DEVTYPE=usb_device\nE: DRIVER=usb\n"
    "E: BUSNUM=001\nE: DEVNUM=001\nE: DEVNAME=/dev/bus/usb/001/001\n"
    "A: busnum=1\\n\nA: devnum=1\\n\nA: speed=480\\n\nA: bConfigurationValue=1\\n\n"
    "A: idVendor=1d6b\\n\nA: idProduct=0002\\n\n"
    "H: descriptors=12010002090000406B1D0200000100000001"
    "0902190001010040000904000001090000000705810304000C\n\n";

std::string ReaderDescription(const UsbTraits& traits, int number) {
  char text[512];
  std::snprintf(text, sizeof text,
                "P: /devices/pci0000:00/usb1/1-1\n"
                "N: bus/usb/001/%03d\n"
                "E: SUBSYSTEM=usb\nE: DEVTYPE=usb_device\nE: DRIVER=usb\n"
                "E: BUSNUM=001\nE: DEVNUM=%03d\nE: DEVNAME=/dev/bus/usb/001/%03d\n"
                "A: busnum=1\\n\nA: devnum=%d\\n\nA: speed=12\\n\nA: bConfigurationValue=1\\n\n"
                "A: idVendor=%04x\\n\nA: idProduct=%04x\\n\nH: descriptors=",
                number, number, number, number, traits.vendor, traits.product);
  return text + Hex(DeviceDescriptor(traits)) + Hex(ConfigurationDescriptor(traits)) + "\n";
}

// Interface 0 with the driver that holds it, as sysfs shows it; nothing without a driver.
std::string DriverDescription(const UsbTraits& traits) {
  if (traits.driver.empty()) return "";
  return "\nP: /devices/pci0000:00/usb1/1-1/1-1:1.0\n"
         "E: SUBSYSTEM=usb\nE: DEVTYPE=usb_interface\n"
         "L: driver=../../../../../bus/usb/drivers/" +
         traits.driver + "\n";
}

struct RequestName {
  unsigned long request;
  const char* name;
};

constexpr RequestName kTracedRequests[] = {
    {USBDEVFS_RESET,            "RESET"     },
    {USBDEVFS_GETDRIVER,        "GETDRIVER" },
    {USBDEVFS_IOCTL,            "DISCONNECT"},
    {USBDEVFS_CLAIMINTERFACE,   "CLAIM"     },
    {USBDEVFS_RELEASEINTERFACE, "RELEASE"   },
    {USBDEVFS_CLEAR_HALT,       "CLEAR_HALT"},
    {USBDEVFS_SUBMITURB,        "SUBMIT"    },
    {USBDEVFS_DISCARDURB,       "DISCARD"   },
};

[[noreturn]] void Die(const char* what) {
  std::perror(what);
  std::abort();
}

UMockdevIoctlData* Resolve(UMockdevIoctlData* data, std::size_t offset, std::size_t size) {
  return umockdev_ioctl_data_resolve(data, offset, size, nullptr);
}

template <typename Type>
Type* As(const UMockdevIoctlData* data) {
  return reinterpret_cast<Type*>(data->data);
}

}  // namespace

EmulatedUsbReader::EmulatedUsbReader(UsbTraits traits)
    : UsbDevice(std::move(traits)),
      bed_(umockdev_testbed_new()),
      handler_(umockdev_ioctl_base_new()) {
  g_signal_connect(handler_, "handle-ioctl", G_CALLBACK(OnIoctl), this);
  g_signal_connect(handler_, "client-connected", G_CALLBACK(OnConnected), this);
  AddToBus(kRootHub + ReaderDescription(traits_, kNumber) + DriverDescription(traits_));
}

EmulatedUsbReader::~EmulatedUsbReader() {
  // With the testbed gone, umockdev aborts a client that still has the node open at its next ioctl.
  if (!WaitClosed()) std::fprintf(stderr, "emulated USB reader: %s is still open\n", kNode);
  g_signal_handlers_disconnect_by_data(handler_, this);
  {
    const std::lock_guard hold(lock_);
    for (GObject* client : clients_) g_object_weak_unref(client, OnClosed, this);
  }
  Stop();
  g_object_unref(bed_);  // removes its folder
  g_object_unref(handler_);
  for (const auto& [address, record] : records_) {
    g_clear_object(const_cast<UMockdevIoctlData**>(&record.buffer));
    g_object_unref(record.urb);
  }
  close(gate_);
}

void EmulatedUsbReader::AddToBus(const std::string& description) {
  GError* error = nullptr;
  if (!umockdev_testbed_attach_ioctl(bed_, bus_node_.c_str(), handler_, &error) ||
      !umockdev_testbed_add_from_string(bed_, description.c_str(), &error)) {
    g_error("testbed: %s", error->message);
  }
  MakeNodePollable();
}

// umockdev makes the node a plain file, which is always ready, so that libusb would reap without
// pause. A pipe that is full while nothing can be reaped, and empty when something can, gives
// poll() the POLLOUT of usbfs.
void EmulatedUsbReader::MakeNodePollable() {
  gchar* root = umockdev_testbed_get_root_dir(bed_);
  node_ = std::string(root) + bus_node_;
  g_free(root);
  if (unlink(node_.c_str()) != 0 || mkfifo(node_.c_str(), 0600) != 0) Die(node_.c_str());
  gate_ = open(node_.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
  if (gate_ < 0 || fcntl(gate_, F_SETPIPE_SZ, kPage) < 0) Die("pipe for the USB node");
  SetReady(false);
}

void EmulatedUsbReader::SetReady(bool ready) {
  if (ready == ready_) return;
  char page[kPage] = {};
  if (ready) {
    while (read(gate_, page, sizeof page) > 0) {
    }
  } else {
    while (write(gate_, page, sizeof page) > 0) {
    }
  }
  ready_ = ready;
}

void EmulatedUsbReader::Pull() {
  Unplug();
  umockdev_testbed_uevent(bed_, kSysfsFolder, "remove");
  umockdev_testbed_remove_device(bed_, kSysfsFolder);
  unlink(node_.c_str());
}

bool EmulatedUsbReader::PlugIn(int number) {
  if (!WaitClosed()) return false;
  umockdev_testbed_detach_ioctl(bed_, bus_node_.c_str(), nullptr);
  {
    const std::lock_guard hold(lock_);
    gone_ = false;
    done_.clear();
    close(gate_);
    ready_ = true;  // as a fresh pipe is
  }
  char node[64];
  std::snprintf(node, sizeof node, "/dev/bus/usb/001/%03d", number);
  bus_node_ = node;
  AddToBus(ReaderDescription(traits_, number));
  umockdev_testbed_uevent(bed_, kSysfsFolder, "add");
  return true;
}

void EmulatedUsbReader::RemoveNode() {
  const std::lock_guard hold(lock_);
  node_removed_ = true;
  unlink(node_.c_str());
}

std::vector<std::string> EmulatedUsbReader::Trace() const {
  const std::lock_guard hold(lock_);
  return trace_;
}

bool EmulatedUsbReader::Claimed() const {
  const std::lock_guard hold(lock_);
  return claimed_;
}

bool EmulatedUsbReader::WaitClosed(Milliseconds limit) {
  std::unique_lock hold(lock_);
  return changed_.wait_for(hold, limit, [this] { return clients_.empty(); });
}

// Open files ----------------------------------------------------------------------------------

void EmulatedUsbReader::OnConnected(UMockdevIoctlBase*, UMockdevIoctlClient* client,
                                    gpointer self) {
  auto* reader = static_cast<EmulatedUsbReader*>(self);
  const std::lock_guard hold(reader->lock_);
  // The preload library connects even when open() failed, and never hangs up.
  if (reader->node_removed_) return;
  reader->clients_.push_back(G_OBJECT(client));
  g_object_weak_ref(G_OBJECT(client), OnClosed, self);
}

// umockdev drops its client object when the file is closed; its signals for that never come.
void EmulatedUsbReader::OnClosed(gpointer self, GObject* client) {
  auto* reader = static_cast<EmulatedUsbReader*>(self);
  const std::lock_guard hold(reader->lock_);
  reader->claimed_ = false;  // the kernel takes interfaces back when the file is closed
  reader->trace_.emplace_back("CLOSE");
  std::erase(reader->clients_, client);
  reader->changed_.notify_all();
}

// usbfs ---------------------------------------------------------------------------------------

gboolean EmulatedUsbReader::OnIoctl(UMockdevIoctlBase*, UMockdevIoctlClient* client,
                                    gpointer self) {
  auto* reader = static_cast<EmulatedUsbReader*>(self);
  const unsigned long request = umockdev_ioctl_client_get_request(client);
  const int error = reader->Handle(request, umockdev_ioctl_client_get_arg(client));
  umockdev_ioctl_client_complete(client, error ? -1 : 0, error);
  return TRUE;
}

int EmulatedUsbReader::Handle(unsigned long request, UMockdevIoctlData* argument) {
  {
    const std::lock_guard hold(lock_);
    for (const RequestName& traced : kTracedRequests) {
      if (traced.request == request) trace_.emplace_back(traced.name);
    }
    const bool ends_transfers = request == USBDEVFS_REAPURB || request == USBDEVFS_REAPURBNDELAY ||
                                request == USBDEVFS_DISCARDURB;
    if (gone_ && !ends_transfers) return ENODEV;
  }
  switch (request) {
    case USBDEVFS_GET_CAPABILITIES: {
      g_autoptr(UMockdevIoctlData) word = Resolve(argument, 0, sizeof(guint32));
      *As<guint32>(word) = USBDEVFS_CAP_ZERO_PACKET | USBDEVFS_CAP_NO_PACKET_SIZE_LIM |
                           USBDEVFS_CAP_BULK_SCATTER_GATHER | USBDEVFS_CAP_REAP_AFTER_DISCONNECT;
      return 0;
    }
    case USBDEVFS_RESET:
    case USBDEVFS_CLEAR_HALT:
      ClearHalt();
      return 0;
    case USBDEVFS_GETDRIVER:
      return NameDriver(argument);
    case USBDEVFS_IOCTL:
      return DetachDriver(argument);
    case USBDEVFS_CLAIMINTERFACE:
      return Claim();
    case USBDEVFS_RELEASEINTERFACE:
      return Release();
    case USBDEVFS_SUBMITURB:
      return SubmitUrb(argument);
    case USBDEVFS_REAPURB:
    case USBDEVFS_REAPURBNDELAY:
      return Reap(argument);
    case USBDEVFS_DISCARDURB:
      return Discard(argument);
    default:
      return ENOTTY;
  }
}

int EmulatedUsbReader::NameDriver(UMockdevIoctlData* argument) {
  const std::lock_guard hold(lock_);
  const std::string driver = claimed_ ? "usbfs" : traits_.driver;
  if (driver.empty()) return ENODATA;
  g_autoptr(UMockdevIoctlData) record = Resolve(argument, 0, sizeof(usbdevfs_getdriver));
  g_strlcpy(As<usbdevfs_getdriver>(record)->driver, driver.c_str(), USBDEVFS_MAXDRIVERNAME + 1);
  return 0;
}

int EmulatedUsbReader::DetachDriver(UMockdevIoctlData* argument) {
  const std::lock_guard hold(lock_);
  g_autoptr(UMockdevIoctlData) record = Resolve(argument, 0, sizeof(usbdevfs_ioctl));
  const auto code = static_cast<unsigned>(As<usbdevfs_ioctl>(record)->ioctl_code);
  if (code != USBDEVFS_DISCONNECT) return ENOTTY;
  if (traits_.driver.empty()) return ENODATA;
  traits_.driver.clear();
  return 0;
}

int EmulatedUsbReader::Claim() {
  const std::lock_guard hold(lock_);
  if (traits_.claim_errno) return traits_.claim_errno;
  if (!traits_.driver.empty()) return EBUSY;
  claimed_ = true;
  return 0;
}

int EmulatedUsbReader::Release() {
  const std::lock_guard hold(lock_);
  claimed_ = false;
  return 0;
}

int EmulatedUsbReader::SubmitUrb(UMockdevIoctlData* argument) {
  Record record;
  record.urb = Resolve(argument, 0, sizeof(usbdevfs_urb));
  const auto* urb = As<const usbdevfs_urb>(record.urb);
  Transfer transfer;
  transfer.id = record.urb->client_addr;
  transfer.endpoint = urb->endpoint;
  transfer.room = static_cast<std::size_t>(urb->buffer_length);
  const bool known = transfer.endpoint == kEndpointIn || transfer.endpoint == kEndpointOut;
  {
    const std::lock_guard hold(lock_);
    if (!known || !claimed_) {
      g_object_unref(record.urb);
      return known ? EBUSY : ENOENT;
    }
    if (transfer.room) {
      record.buffer = Resolve(record.urb, G_STRUCT_OFFSET(usbdevfs_urb, buffer), transfer.room);
    }
    if (transfer.endpoint == kEndpointOut && record.buffer) {
      transfer.data.assign(record.buffer->data, record.buffer->data + transfer.room);
    }
    records_[transfer.id] = record;
  }
  Submit(std::move(transfer));
  return 0;
}

void EmulatedUsbReader::Completed(Transfer transfer) {
  done_.push_back(std::move(transfer));
  SetReady(true);
}

int EmulatedUsbReader::Reap(UMockdevIoctlData* argument) {
  const std::lock_guard hold(lock_);
  if (done_.empty()) return gone_ ? ENODEV : EAGAIN;
  const Transfer transfer = std::move(done_.front());
  done_.pop_front();
  Record record = records_.at(transfer.id);
  records_.erase(transfer.id);

  auto* urb = As<usbdevfs_urb>(record.urb);
  urb->status = transfer.status;
  urb->actual_length = static_cast<int>(transfer.moved);
  if (transfer.endpoint == kEndpointIn && transfer.moved) {
    std::memcpy(record.buffer->data, transfer.data.data(), transfer.moved);
  }
  // The result is the address of the client's own record; this also writes the record back to it.
  g_autoptr(UMockdevIoctlData) pointer = Resolve(argument, 0, sizeof(gpointer));
  umockdev_ioctl_data_set_ptr(pointer, 0, record.urb);
  if (done_.empty() && !gone_) SetReady(false);
  g_clear_object(&record.buffer);
  g_object_unref(record.urb);
  return 0;
}

int EmulatedUsbReader::Discard(UMockdevIoctlData* argument) {
  std::uint64_t address = 0;
  static_assert(sizeof(gpointer) <= sizeof address);
  std::memcpy(&address, argument->data, sizeof(gpointer));
  return Cancel(address) ? 0 : EINVAL;
}

}  // namespace simulator
