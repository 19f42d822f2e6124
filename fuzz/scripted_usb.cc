#include "fuzz/scripted_usb.h"

#include <libusb-1.0/libusb.h>

#include <climits>
#include <cstring>

#include "fuzz/check.h"
#include "fuzz/virtual_clock.h"

namespace {

enum class Fault : std::uint8_t {
  kNone,
  kInit,
  kList,
  kAbsent,
  kDescriptor,
  kOpen,
  kClaim,
  kTransfer
};

Input* s_script;
ScriptedCard* s_card;
Fault s_fault;
int s_contexts, s_lists, s_handles, s_claims;
char s_device, s_handle;  // their addresses stand for the device and its handle

libusb_device* TheDevice() { return reinterpret_cast<libusb_device*>(&s_device); }
libusb_device_handle* TheHandle() { return reinterpret_cast<libusb_device_handle*>(&s_handle); }

void OnHandle(const libusb_device_handle* handle) {
  FUZZ_CHECK(handle == TheHandle() && s_handles == 1);
  virtual_clock::CountCall();
}

// What a transfer reports instead of what it did.
int Misreport(int result, int* transferred) {
  switch (s_script->Byte() % 16) {
    case 1:
      return LIBUSB_ERROR_NO_DEVICE;
    case 2:
      return LIBUSB_ERROR_PIPE;
    case 3:
      return LIBUSB_ERROR_OVERFLOW;
    case 4:
      *transferred = INT_MAX;
      break;
    case 5:
      *transferred = -1;
      break;
    case 6:
      *transferred = INT_MIN;
      return LIBUSB_ERROR_IO;
    case 7:
      *transferred = 0;
      break;
    case 8:
      *transferred /= 2;
      break;
    default:
      break;
  }
  return result;
}

int TransferOut(const unsigned char* data, int length, int* transferred) {
  s_card->Receive(data, static_cast<std::size_t>(length));
  *transferred = length;
  return 0;
}

int TransferIn(unsigned char* data, int length, int* transferred, unsigned timeout) {
  std::memset(data, 0xEE, static_cast<std::size_t>(length));  // it says that it has room
  *transferred = 0;
  if (s_card->HungUp()) {
    virtual_clock::Wait(1);
    return LIBUSB_ERROR_NO_DEVICE;
  }
  if (s_card->TakeFault() != 0) {
    virtual_clock::Wait(1);
    return LIBUSB_ERROR_IO;
  }
  virtual_clock::Wait(s_card->UntilNext(timeout * std::int64_t{1000}));
  const Bytes bytes = s_card->Give(static_cast<std::size_t>(length));
  if (bytes.empty()) return LIBUSB_ERROR_TIMEOUT;
  std::memcpy(data, bytes.data(), bytes.size());
  *transferred = static_cast<int>(bytes.size());
  return 0;
}

}  // namespace

namespace scripted_usb {

void Plug(Input* script, ScriptedCard* card) {
  s_card = card;
  s_contexts = s_lists = s_handles = s_claims = 0;
  const int choice = script->Byte() % 32;
  s_fault = choice < 24 ? Fault::kNone : static_cast<Fault>(choice - 24);
  s_script = script;
}

void Unplug() {
  s_script = nullptr;
  s_card = nullptr;
}

int Held() { return s_contexts + s_lists + s_handles + s_claims; }
bool Flawless() { return s_fault == Fault::kNone; }

}  // namespace scripted_usb

extern "C" {

int libusb_init(libusb_context** /*context*/) {
  virtual_clock::CountCall();
  if (s_fault == Fault::kInit) return LIBUSB_ERROR_NO_MEM;
  ++s_contexts;
  return 0;
}

void libusb_exit(libusb_context* /*context*/) {
  FUZZ_CHECK(s_handles == 0 && s_lists == 0 && s_contexts > 0);
  --s_contexts;
}

ssize_t libusb_get_device_list(libusb_context* /*context*/, libusb_device*** list) {
  if (s_fault == Fault::kList) return LIBUSB_ERROR_NO_MEM;
  const ssize_t count = s_fault == Fault::kAbsent ? 0 : 1;
  *list = new libusb_device*[2]();
  if (count > 0) (*list)[0] = TheDevice();
  ++s_lists;
  return count;
}

void libusb_free_device_list(libusb_device** list, int /*unref_devices*/) {
  FUZZ_CHECK(s_lists == 1);
  --s_lists;
  delete[] list;
}

int libusb_get_device_descriptor(libusb_device* device, libusb_device_descriptor* descriptor) {
  FUZZ_CHECK(device == TheDevice());
  if (s_fault == Fault::kDescriptor) return LIBUSB_ERROR_IO;
  descriptor->idVendor = 0x0403;
  descriptor->idProduct = 0xBCD5;
  return 0;
}

int libusb_open(libusb_device* device, libusb_device_handle** handle) {
  FUZZ_CHECK(device == TheDevice() && s_handles == 0);
  *handle = TheHandle();  // also on failure, where nobody may use it
  if (s_fault == Fault::kOpen) return LIBUSB_ERROR_ACCESS;
  ++s_handles;
  return 0;
}

void libusb_close(libusb_device_handle* handle) {
  OnHandle(handle);
  FUZZ_CHECK(s_claims == 0);
  --s_handles;
}

int libusb_reset_device(libusb_device_handle* handle) {
  OnHandle(handle);
  return 0;
}

int libusb_kernel_driver_active(libusb_device_handle* handle, int /*interface_number*/) {
  OnHandle(handle);
  return 1;
}

int libusb_detach_kernel_driver(libusb_device_handle* handle, int /*interface_number*/) {
  OnHandle(handle);
  return 0;
}

int libusb_claim_interface(libusb_device_handle* handle, int /*interface_number*/) {
  OnHandle(handle);
  if (s_fault == Fault::kClaim) return LIBUSB_ERROR_BUSY;
  ++s_claims;
  return 0;
}

int libusb_release_interface(libusb_device_handle* handle, int /*interface_number*/) {
  OnHandle(handle);
  --s_claims;
  return 0;
}

int libusb_bulk_transfer(libusb_device_handle* handle, unsigned char endpoint, unsigned char* data,
                         int length, int* transferred, unsigned timeout) {
  OnHandle(handle);
  FUZZ_CHECK(s_claims == 1);
  const bool in = (endpoint & LIBUSB_ENDPOINT_IN) != 0;
  const int result =
      in ? TransferIn(data, length, transferred, timeout) : TransferOut(data, length, transferred);
  return s_fault == Fault::kTransfer ? Misreport(result, transferred) : result;
}

}  // extern "C"
