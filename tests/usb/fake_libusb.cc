#include "tests/usb/fake_libusb.h"

#include <gtest/gtest.h>
#include <libusb-1.0/libusb.h>

#include <cstdio>
#include <cstring>
#include <span>

#include "tests/testing/stand_in_clock.h"

using fake_libusb::Now;

namespace {

// Devices are told apart by number, 1 for the first.
libusb_device* DeviceNumber(std::size_t number) {
  static char places[32];
  return reinterpret_cast<libusb_device*>(&places[number]);
}

std::size_t NumberOf(const libusb_device* device) {
  return static_cast<std::size_t>(reinterpret_cast<const char*>(device) -
                                  reinterpret_cast<const char*>(DeviceNumber(0)));
}

libusb_device_handle* TheHandle() {
  static char place;
  return reinterpret_cast<libusb_device_handle*>(&place);
}

void Called(const std::string& call) { Now().calls.push_back(call); }

void OnHandle(const char* call, const libusb_device_handle* handle) {
  EXPECT_EQ(TheHandle(), handle) << call;
  EXPECT_EQ(1, Now().handles) << call;
  Called(call);
}

}  // namespace

fake_libusb::State& fake_libusb::Now() {
  static State state;
  return state;
}

extern "C" {

int libusb_init(libusb_context** context) {
  EXPECT_EQ(nullptr, context);
  Called("init");
  if (Now().init_result == 0) ++Now().contexts;
  return Now().init_result;
}

void libusb_exit(libusb_context* context) {
  EXPECT_EQ(nullptr, context);
  EXPECT_EQ(0, Now().handles) << "a handle is still open";
  EXPECT_EQ(0, Now().lists) << "a list is still held";
  Called("exit");
  --Now().contexts;
}

ssize_t libusb_get_device_list(libusb_context* context, libusb_device*** list) {
  EXPECT_EQ(nullptr, context);
  Called("list");
  if (Now().list_result < 0) return Now().list_result;
  const std::size_t count = Now().devices.size();
  *list = new libusb_device*[count + 1]();
  for (std::size_t i = 0; i < count; ++i) (*list)[i] = DeviceNumber(i + 1);
  ++Now().lists;
  return static_cast<ssize_t>(count);
}

void libusb_free_device_list(libusb_device** list, int unref_devices) {
  Called("free " + std::to_string(unref_devices));
  --Now().lists;
  delete[] list;
}

int libusb_get_device_descriptor(libusb_device* device, libusb_device_descriptor* descriptor) {
  const fake_libusb::Device& known = Now().devices.at(NumberOf(device) - 1);
  if (known.descriptor_result != 0) return known.descriptor_result;
  descriptor->idVendor = known.vendor;
  descriptor->idProduct = known.product;
  return 0;
}

int libusb_open(libusb_device* device, libusb_device_handle** handle) {
  Called("open " + std::to_string(NumberOf(device)));
  *handle = TheHandle();  // also on failure, where nobody may use it
  if (Now().open_result == 0) ++Now().handles;
  return Now().open_result;
}

void libusb_close(libusb_device_handle* handle) {
  OnHandle("close", handle);
  --Now().handles;
}

int libusb_reset_device(libusb_device_handle* handle) {
  OnHandle("reset", handle);
  return Now().reset_result;
}

int libusb_kernel_driver_active(libusb_device_handle* handle, int interface_number) {
  OnHandle("driver", handle);
  EXPECT_EQ(0, interface_number);
  return Now().driver_active;
}

int libusb_detach_kernel_driver(libusb_device_handle* handle, int interface_number) {
  OnHandle("detach", handle);
  EXPECT_EQ(0, interface_number);
  return Now().detach_result;
}

int libusb_claim_interface(libusb_device_handle* handle, int interface_number) {
  OnHandle("claim", handle);
  EXPECT_EQ(0, interface_number);
  if (Now().claim_result == 0) ++Now().claims;
  return Now().claim_result;
}

int libusb_release_interface(libusb_device_handle* handle, int interface_number) {
  OnHandle("release", handle);
  EXPECT_EQ(0, interface_number);
  --Now().claims;
  return 0;
}

int libusb_bulk_transfer(libusb_device_handle* handle, unsigned char endpoint, unsigned char* data,
                         int length, int* transferred, unsigned int timeout) {
  char call[64];
  std::snprintf(call, sizeof call, "transfer %02X %d %u", endpoint, length, timeout);
  OnHandle(call, handle);
  const auto room = static_cast<std::size_t>(length);
  const bool in = (endpoint & LIBUSB_ENDPOINT_IN) != 0;
  fake_libusb::Transfer transfer = Now().otherwise;
  if (Now().device) {
    transfer = Now().device(in ? std::span<unsigned char>() : std::span(data, room), timeout);
  } else if (!Now().transfers.empty()) {
    transfer = Now().transfers.front();
    Now().transfers.pop_front();
  }
  if (transfer.meanwhile) transfer.meanwhile();
  stand_in_clock::Advance(transfer.seconds);

  int moved = 0;
  if (in) {
    EXPECT_LE(transfer.bytes.size(), room);
    if (!transfer.bytes.empty()) std::memcpy(data, transfer.bytes.data(), transfer.bytes.size());
    moved = static_cast<int>(transfer.bytes.size());
  } else if (transfer.result == 0) {
    Now().written.emplace_back(data, data + room);
    moved = length;
  }
  if (!transfer.leaves_count) *transferred = transfer.count.value_or(moved);
  return transfer.result;
}

}  // extern "C"
