// USB HID: the one open USB reader of the process, through libusb's default context. Bytes go out
// and come in as they are, without report ids. The state stands below.

#include <libusb-1.0/libusb.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdint>
#include <cstring>

#include "quillonid/results.h"
#include "quillonid/transport.h"
#include "support/clock.h"
#include "support/log.h"

namespace {

// The open reader. Set by COMM_Hid_OpenLinuxUsbLibHid; cleared by every failed open and by close.
libusb_device* m_targetDev;      // matched device, or null
libusb_device_handle* m_handle;  // open device, or null
libusb_device** m_devs;          // device list, held as long as the device is open

// 1: trailing zeros of every received transfer are dropped. Kept across open and close.
std::uint32_t g_bIsLinuxHidClearZero = 1;

constexpr int kInterface = 0;
constexpr unsigned char kEndpointOut = 0x01;
constexpr unsigned char kEndpointIn = 0x81;
constexpr unsigned kWriteMilliseconds = 1000;
constexpr unsigned kReadMilliseconds = 200;
constexpr int kWriteTransfers = 5;
constexpr int kReadTransfer = 1024;
constexpr int kEmptyPass = 10;  // milliseconds; a pass that brings nothing sooner naps

// Undoes what the open did so far. Every libusb_init gets its libusb_exit here: without it each
// attempt without a reader would leave descriptors and, once a device was opened, a thread.
void CloseLibusb() {
  if (m_handle) libusb_close(m_handle);
  if (m_devs) libusb_free_device_list(m_devs, 1);
  libusb_exit(nullptr);
  m_handle = nullptr;
  m_devs = nullptr;
  m_targetDev = nullptr;
}

libusb_device* FindDevice(ssize_t count, std::uint32_t vendor_id, std::uint32_t product_id) {
  for (ssize_t i = 0; i < count; ++i) {
    libusb_device_descriptor descriptor = {};
    if (libusb_get_device_descriptor(m_devs[i], &descriptor) != 0) continue;
    LOG_DEVICE("vid=%04X pid=%04X\n", descriptor.idVendor, descriptor.idProduct);
    if (descriptor.idVendor == vendor_id && descriptor.idProduct == product_id) {
      LOG_DEVICE("find target device\n");
      return m_devs[i];
    }
  }
  return nullptr;
}

// Takes interface 0 from whoever has it. Returns libusb's result of the claim.
int TakeInterface() {
  libusb_reset_device(m_handle);
  LOG_DEVICE("libusb_reset_device\n");
  if (libusb_kernel_driver_active(m_handle, kInterface) == 1) {
    libusb_detach_kernel_driver(m_handle, kInterface);
  }
  return libusb_claim_interface(m_handle, kInterface);
}

int LengthToLastNonZero(const unsigned char* data, int count) {
  while (count > 0 && data[count - 1] == 0) --count;
  return std::max(count, 0);
}

// One transfer. A failed one may leave the count unset, or report one that cannot be.
int Transfer(unsigned char endpoint, unsigned char* data, int size, int* moved, unsigned limit) {
  *moved = 0;
  const int result = libusb_bulk_transfer(m_handle, endpoint, data, size, moved, limit);
  *moved = std::clamp(*moved, 0, size);
  return result;
}

}  // namespace

QL_API int COMM_Hid_OpenLinuxUsbLibHid(uint32_t vendor_id, uint32_t product_id) {
  LOG_DEVICE("openHid:%04x,%04x\n", vendor_id, product_id);
  if (m_targetDev) return 0;

  if (libusb_init(nullptr) != 0) {
    LOG_DEVICE("get hiddev err!\n");
    return RET_PUB_DEVICE_ERROR;
  }
  const ssize_t count = libusb_get_device_list(nullptr, &m_devs);
  m_targetDev = FindDevice(count, vendor_id, product_id);
  if (!m_targetDev) {
    LOG_DEVICE("get hiddev err!\n");
    CloseLibusb();
    return RET_PUB_DEVICE_ERROR;
  }

  if (libusb_open(m_targetDev, &m_handle) != 0) {
    LOG_DEVICE("libusb open failed\n");
    m_handle = nullptr;
    CloseLibusb();
    return RET_PUB_OPEN_ERROR;
  }

  const int claimed = TakeInterface();
  if (claimed != 0) {
    CloseLibusb();
    LOG_DEVICE_RESULT(true, "Cannot Claim Interface:%d\n", claimed);
    return RET_PUB_OPEN_ERROR;
  }
  LOG_DEVICE("open hiddev success!\n");
  return 0;
}

QL_API int COMM_Hid_WriteLinuxUsbLibHid(const unsigned char* data, uint32_t len) {
  // More than an int counts, or nothing to take the bytes from, cannot be sent.
  const bool sendable = len <= INT_MAX && (data || len == 0);
  const int size = sendable ? static_cast<int>(len) : 0;
  DPrintDataHexToFile("hid write", data, size);
  if (!m_handle) return RET_PUB_DEVICE_ERROR;
  if (!sendable) return RET_PUB_WRITE_ERROR;

  int total = 0;
  for (int times = 1; times <= kWriteTransfers; ++times) {
    int sent = 0;
    // libusb does not write to the bytes of an outgoing transfer.
    auto* rest = const_cast<unsigned char*>(data) + total;
    const int result = Transfer(kEndpointOut, rest, size - total, &sent, kWriteMilliseconds);
    const int error = errno;
    if (result != 0) {
      char text[128] = {};
      LOG_DEVICE_RESULT(true, "nTimes:%d sendlen%d ret:%d %s\n", times, sent, result,
                        strerror_r(error, text, sizeof text));
      return RET_PUB_WRITE_ERROR;
    }
    total += sent;
    if (total == size) {
      LOG_DEVICE("write ok:%d\n", size);
      return size;
    }
  }
  return RET_PUB_WRITE_ERROR;
}

QL_API int COMM_Hid_ReadLinuxUsbLibHid(unsigned char* buffer, int wanted, uint32_t timeout_s,
                                       QL_END_CONDITION end_condition) {
  if (!m_handle) return RET_PUB_DEVICE_ERROR;

  const int room = buffer ? std::max(wanted, 0) : 0;
  // Signed: what is left of a budget that several reads share may be below zero.
  const auto limit = static_cast<std::int32_t>(timeout_s);
  const std::int64_t start = MonotonicSeconds();
  int total = 0;
  for (;;) {
    unsigned char received[kReadTransfer] = {};
    int got = 0;
    const std::int64_t pass_start = MonotonicMilliseconds();
    const int result = Transfer(kEndpointIn, received, kReadTransfer, &got, kReadMilliseconds);
    LOG_DEVICE_RESULT(result < 0, "read nRetVal:%d, nReadOneTm=%d\n", result, got);
    DPrintDataHexToFile("read data", received, got);

    // A transfer that ran into its time limit or failed still brings the bytes that had arrived.
    if (g_bIsLinuxHidClearZero == 1) got = LengthToLastNonZero(received, got);
    const int fitting = std::min(got, room - total);
    if (fitting > 0) std::memcpy(buffer + total, received, static_cast<std::size_t>(fitting));
    total += fitting;
    if (total == room) break;

    DPrintDataHexToFile("read real data", buffer, total);
    if (end_condition && end_condition(buffer, total) == 0) {
      LOG_DEVICE("2nReadLen=%d\n", total);
      break;
    }
    // A pulled or stalled reader fails at once, and one that sends only zeros may be as fast.
    if (result != 0) {
      NapRestOfSlice(pass_start, kEmptyPass, kReadMilliseconds);
    } else if (got == 0) {
      NapRestOfSlice(pass_start, kEmptyPass, kEmptyPass);
    }
    if (MonotonicSeconds() - start > limit) {
      LOG_DEVICE("3\n");
      LOG_DEVICE("read ret:%d\n", 0);
      return 0;
    }
  }

  // On purpose: also the zeros that belong to the reply. Dev_Zel_IdSendAndReciveData, which knows
  // the announced length, puts them back.
  const int length = LengthToLastNonZero(buffer, total);
  LOG_DEVICE("read ret:%d\n", length);
  return length;
}

QL_API int COMM_Hid_CloseLinuxUsbLibHid(void) {
  LOG_DEVICE("Close hid!\n");
  if (!m_targetDev) return 0;

  libusb_release_interface(m_handle, kInterface);
  LOG_DEVICE("free interface!\n");
  CloseLibusb();
  LOG_DEVICE("exit libusb!\n");
  return 0;
}

// On purpose: a USB read runs to its end condition, count or time limit.
QL_API int COMM_Hid_CancelLinuxUsbLibHid(void) { return RET_PUB_CANCEL; }

QL_API void COMM_Hid_SetLinuxHidClearZero(uint32_t flag) { g_bIsLinuxHidClearZero = flag; }
