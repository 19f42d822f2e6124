#include "tools/qlid/node_watch.h"

#include <unistd.h>

#include <ctime>
#include <thread>

#include "tools/qlid/terminal.h"

namespace qlid {
namespace {

constexpr std::chrono::milliseconds kBetweenLooks(250);
constexpr std::chrono::milliseconds kMoment(50);
constexpr int kLooksInAMoment = 10;

std::vector<UsbIdText> IdsOf(const ReadRequest& request) {
  std::vector<UsbIdText> ids = KnownIds();
  for (const std::string& text : request.usb_ids) {
    UsbIdText id = {};
    if (ParseUsbId(text, &id)) ids.push_back(id);
  }
  return ids;
}

bool Exists(const std::string& node) { return access(node.c_str(), F_OK) == 0; }

std::string ClockTime() {
  const time_t now = std::time(nullptr);
  tm local = {};
  localtime_r(&now, &local);
  return Format("%02d:%02d:%02d", local.tm_hour, local.tm_min, local.tm_sec);
}

}  // namespace

bool IsSerial(const std::string& device) { return device.rfind("/dev", 0) == 0; }

UsbReader UsbReaderOf(const ReadRequest& request) {
  const UsbBus bus = FindUsbReaders(IdsOf(request));
  for (const UsbReader& reader : bus.readers) {
    if (reader.access == NodeAccess::kReady) return reader;
  }
  return bus.readers.empty() ? UsbReader() : bus.readers.front();
}

std::string UsbIdOf(const ReadRequest& request) {
  if (IsSerial(request.device)) return "";
  const UsbReader reader = UsbReaderOf(request);
  return reader.node.empty() ? "" : Format("%04x:%04x", reader.id.vendor, reader.id.product);
}

std::string NodeOf(const ReadRequest& request) {
  if (IsSerial(request.device)) return Exists(request.device) ? request.device : "";
  return UsbReaderOf(request).node;
}

NodeWatch::NodeWatch(const ReadRequest& request)
    : request_(request),
      node_(NodeOf(request)),
      next_look_(std::chrono::steady_clock::now() + kBetweenLooks) {}

bool NodeWatch::IsGone() {
  const auto now = std::chrono::steady_clock::now();
  if (node_.empty() || !since_.empty() || now < next_look_) return !since_.empty();
  next_look_ = now + kBetweenLooks;
  return Look();
}

bool NodeWatch::IsGoneAfterAll(bool moment) {
  if (node_.empty() || !since_.empty()) return !since_.empty();
  for (int looks = moment ? kLooksInAMoment : 1; looks > 1 && !Look(); --looks)
    std::this_thread::sleep_for(kMoment);
  return Look();
}

bool NodeWatch::Look() {
  // A USB reader that was reset may come back under another number.
  if (since_.empty() && !Exists(node_) && NodeOf(request_).empty()) since_ = ClockTime();
  return !since_.empty();
}

}  // namespace qlid
