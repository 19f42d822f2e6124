// A USB card reader without hardware: its descriptors, its two endpoints and what it sends, apart
// from how the host reaches it. EmulatedUsbReader and KernelUsbReader derive from it: they hand in
// the host's transfers with Submit() and Cancel() and get each one back through Completed().
//
// It works in packets of 64 bytes, as the wire does: an IN transfer ends when its buffer is full,
// when a packet shorter than 64 bytes arrives, or on an error; until then it keeps what it has.
#ifndef QUILLONID_SIMULATOR_USB_DEVICE_H
#define QUILLONID_SIMULATOR_USB_DEVICE_H

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <list>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "simulator/card.h"

namespace simulator {

using Milliseconds = std::chrono::milliseconds;

inline constexpr std::size_t kUsbPacket = 64;
inline constexpr std::uint8_t kEndpointIn = 0x81;
inline constexpr std::uint8_t kEndpointOut = 0x01;

struct UsbTraits {
  std::uint16_t vendor = 0x0403;
  std::uint16_t product = 0xBCD5;
  bool hid = true;       // HID class, interrupt endpoints; false: vendor class, bulk endpoints
  bool padded = true;    // a reply's last packet is filled up with zeros, as HID reports are
  std::string driver{};  // driver bound to interface 0 (a real kernel binds its own)
  int claim_errno = 0;   // claiming the interface fails with it (a real kernel: EBUSY only)
  std::size_t out_limit = SIZE_MAX;  // most bytes that one OUT transfer takes
  bool out_blocked = false;          // OUT transfers are never accepted and time out
};

Bytes DeviceDescriptor(const UsbTraits& traits);
Bytes ConfigurationDescriptor(const UsbTraits& traits);
Bytes ReportDescriptor();

class UsbDevice {
 public:
  // Called, without the lock, with the bytes of every OUT transfer. Set it before the host opens
  // the device.
  std::function<void(UsbDevice&, const Bytes&)> on_out;

  UsbDevice(const UsbDevice&) = delete;
  UsbDevice& operator=(const UsbDevice&) = delete;

  // What the device does next on its IN endpoint, in call order, each step `delay` after the one
  // before it.
  void Send(const Bytes& data, Milliseconds delay = {});    // in packets, padded or not
  void SendPacket(Bytes packet, Milliseconds delay = {});   // at most 64 bytes, as they are
  void Flood(std::uint8_t value, Milliseconds delay = {});  // full transfers without end
  void Stall(Milliseconds delay = {});                      // halts the endpoint until reset
  void Unplug(Milliseconds delay = {});                     // gone from here on

  const UsbTraits& traits() const { return traits_; }

  // The OUT transfers so far, each with the bytes it took.
  std::vector<Bytes> Written() const;

 protected:
  struct Transfer {
    std::uint64_t id = 0;
    std::uint8_t endpoint = 0;
    std::size_t room = 0;   // length of the host's buffer
    Bytes data;             // OUT: what the host sends; IN: what has arrived
    std::size_t moved = 0;  // bytes transferred, set when it is completed
    int status = 0;         // 0 or a negative errno, as in struct usbdevfs_urb
  };

  explicit UsbDevice(UsbTraits traits);
  ~UsbDevice() = default;

  virtual void Completed(Transfer transfer) = 0;  // lock held
  virtual void Unplugged() {}                     // lock held

  void Submit(Transfer transfer);
  // Completes a waiting transfer with -ENOENT and what it has; false when it does not wait.
  bool Cancel(std::uint64_t id);
  void ClearHalt();
  void Stop();  // for destructors: no Completed() after it

  UsbTraits traits_;
  mutable std::mutex lock_;
  std::condition_variable changed_;
  bool gone_ = false;

 private:
  enum class Action { kPacket, kFlood, kHalt, kUnplug };
  struct Step {
    Action action;
    Bytes data;
    std::chrono::steady_clock::time_point due;
  };
  using Waiting = std::list<Transfer>;

  void Queue(Action action, Bytes data, Milliseconds delay);
  void Pump();                            // lock held: moves due steps into IN transfers
  bool TakeEvent();                       // lock held: a due halt or unplug at the front
  void Fill(Waiting::iterator transfer);  // lock held: the due packet at the front
  void Finish(Waiting::iterator transfer, int status);
  void RunTimer();

  bool stopping_ = false;
  bool halted_ = false;
  std::deque<Step> steps_;
  Waiting waiting_;
  std::vector<Bytes> written_;
  std::thread timer_;  // last: it uses all the rest
};

}  // namespace simulator

#endif
