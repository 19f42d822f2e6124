// Descriptors of USB 2.0 chapter 9 and of the HID class 1.11: one configuration, interface 0, one
// endpoint each way.

#include "simulator/usb/device.h"

namespace simulator {
namespace {

constexpr std::uint8_t Low(std::size_t value) { return static_cast<std::uint8_t>(value); }
constexpr std::uint8_t High(std::size_t value) { return static_cast<std::uint8_t>(value >> 8); }

void Append(Bytes& all, const Bytes& more) {
  for (const std::uint8_t byte : more) all.push_back(byte);
}

}  // namespace

Bytes DeviceDescriptor(const UsbTraits& traits) {
  return {18,
          1,
          0x00,
          0x02,  // USB 2.0
          0,
          0,
          0,
          kUsbPacket,
          Low(traits.vendor),
          High(traits.vendor),
          Low(traits.product),
          High(traits.product),
          0x00,
          0x01,
          0,
          0,
          0,  // release 1.0, no strings
          1};
}

Bytes ConfigurationDescriptor(const UsbTraits& traits) {
  const std::uint8_t interface_class = traits.hid ? 3 : 255;
  const std::uint8_t endpoint_kind = traits.hid ? 3 : 2;  // interrupt, bulk
  const std::uint8_t interval = traits.hid ? 1 : 0;

  Bytes body = {9, 4, 0, 0, 2, interface_class, 0, 0, 0};
  if (traits.hid) {
    const std::size_t report = ReportDescriptor().size();
    Append(body, {9, 0x21, 0x11, 0x01, 0, 1, 0x22, Low(report), High(report)});
  }
  for (const std::uint8_t endpoint : {kEndpointIn, kEndpointOut}) {
    Append(body, {7, 5, endpoint, endpoint_kind, kUsbPacket, 0, interval});
  }

  const std::size_t total = 9 + body.size();
  Bytes all = {9, 2, Low(total), High(total), 1, 1, 0, 0x80, 50};
  Append(all, body);
  return all;
}

// Vendor page, 64 bytes in, 64 bytes out: what makes usbhid bind.
Bytes ReportDescriptor() {
  return {0x06, 0x00, 0xFF, 0x09, 0x01, 0xA1, 0x01, 0x15, 0x00, 0x26, 0xFF, 0x00, 0x75, 0x08,
          0x95, 0x40, 0x09, 0x01, 0x81, 0x02, 0x95, 0x40, 0x09, 0x01, 0x91, 0x02, 0xC0};
}

}  // namespace simulator
