#include <algorithm>
#include <optional>
#include <string_view>
#include <utility>
#include <vector>

#include "tests/failures/calls.h"
#include "tests/failures/world.h"
#include "tests/usb/fake_libusb.h"

namespace failures {
namespace {

// Makes the call, or fails it with `error`.
template <typename Result, typename Function, typename... Arguments>
Result Failing(std::string_view name, Result error, Function function, Arguments... arguments) {
  if (IsRunning() && NextWay(*FindImport(name), false) != kNone) return error;
  return function(arguments...);
}

// The fake libusb makes this one transfer.
int TransferAs(fake_libusb::Transfer transfer, libusb_device_handle* handle, unsigned char endpoint,
               unsigned char* data, int length, int* moved, unsigned limit) {
  fake_libusb::Now().transfers.push_front(std::move(transfer));
  return libusb_bulk_transfer(handle, endpoint, data, length, moved, limit);
}

// The reader answers before the transfer returns.
void TakeCommand() {
  World& world = TheWorld();
  for (const auto& exchange : world.module.Receive(fake_libusb::Now().written.back())) {
    for (const auto& step : exchange.steps) {
      world.arrived.insert(world.arrived.end(), step.bytes.begin(), step.bytes.end());
    }
  }
}

std::vector<unsigned char> TakeArrived(std::size_t most) {
  auto& arrived = TheWorld().arrived;
  const auto end = arrived.begin() + static_cast<std::ptrdiff_t>(std::min(most, arrived.size()));
  std::vector<unsigned char> bytes(arrived.begin(), end);
  arrived.erase(arrived.begin(), end);
  return bytes;
}

}  // namespace

cJSON* CjsonParse(const char* text) {
  return Failing<cJSON*>("cJSON_Parse", nullptr, cJSON_Parse, text);
}

char* CjsonPrintBuffered(const cJSON* item, int size, cJSON_bool formatted) {
  return Failing<char*>("cJSON_PrintBuffered", nullptr, cJSON_PrintBuffered, item, size, formatted);
}

int UsbInit(libusb_context** context) {
  return Failing<int>("libusb_init", LIBUSB_ERROR_NO_MEM, libusb_init, context);
}

ssize_t UsbList(libusb_context* context, libusb_device*** list) {
  return Failing<ssize_t>("libusb_get_device_list", LIBUSB_ERROR_NO_MEM, libusb_get_device_list,
                          context, list);
}

int UsbDescriptor(libusb_device* device, libusb_device_descriptor* descriptor) {
  return Failing<int>("libusb_get_device_descriptor", LIBUSB_ERROR_IO, libusb_get_device_descriptor,
                      device, descriptor);
}

int UsbOpen(libusb_device* device, libusb_device_handle** handle) {
  return Failing<int>("libusb_open", LIBUSB_ERROR_ACCESS, libusb_open, device, handle);
}

int UsbReset(libusb_device_handle* handle) {
  return Failing<int>("libusb_reset_device", LIBUSB_ERROR_NOT_FOUND, libusb_reset_device, handle);
}

int UsbDriverActive(libusb_device_handle* handle, int interface_number) {
  return Failing<int>("libusb_kernel_driver_active", LIBUSB_ERROR_NO_DEVICE,
                      libusb_kernel_driver_active, handle, interface_number);
}

int UsbDetach(libusb_device_handle* handle, int interface_number) {
  return Failing<int>("libusb_detach_kernel_driver", LIBUSB_ERROR_OTHER,
                      libusb_detach_kernel_driver, handle, interface_number);
}

int UsbClaim(libusb_device_handle* handle, int interface_number) {
  return Failing<int>("libusb_claim_interface", LIBUSB_ERROR_BUSY, libusb_claim_interface, handle,
                      interface_number);
}

int UsbRelease(libusb_device_handle* handle, int interface_number) {
  const int released = libusb_release_interface(handle, interface_number);
  return Failing<int>("libusb_release_interface", LIBUSB_ERROR_NO_DEVICE,
                      [released] { return released; });
}

int UsbTransfer(libusb_device_handle* handle, unsigned char endpoint, unsigned char* data,
                int length, int* moved, unsigned limit) {
  if (!IsRunning()) return libusb_bulk_transfer(handle, endpoint, data, length, moved, limit);
  static const Import& row = *FindImport("libusb_bulk_transfer");
  const Way way = NextWay(row, false);
  const bool in = (endpoint & LIBUSB_ENDPOINT_IN) != 0;
  fake_libusb::Transfer transfer;
  if (way == kError || way == kInterrupted) {
    transfer.result = way == kError ? LIBUSB_ERROR_PIPE : LIBUSB_ERROR_INTERRUPTED;
    transfer.leaves_count = true;
  } else if (in) {
    transfer.bytes = TakeArrived(static_cast<std::size_t>(length));
    if (way == kShort) {
      // The other half is still on its way.
      const std::size_t half = (transfer.bytes.size() + 1) / 2;
      const auto rest = transfer.bytes.begin() + static_cast<std::ptrdiff_t>(half);
      TheWorld().arrived.insert(TheWorld().arrived.begin(), rest, transfer.bytes.end());
      transfer.bytes.resize(half);
    }
    if (transfer.bytes.empty()) {
      transfer.result = LIBUSB_ERROR_TIMEOUT;
      Pass(limit / 1000.0);
    }
  } else if (way == kShort) {
    length = length > 1 ? length / 2 : length;
  }
  const int result = TransferAs(std::move(transfer), handle, endpoint, data, length, moved, limit);
  if (!in && result == 0) TakeCommand();
  return result;
}

}  // namespace failures
