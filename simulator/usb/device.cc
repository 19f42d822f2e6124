#include "simulator/usb/device.h"

#include <algorithm>
#include <cerrno>
#include <utility>

namespace simulator {

using Clock = std::chrono::steady_clock;

UsbDevice::UsbDevice(UsbTraits traits)
    : traits_(std::move(traits)), timer_(&UsbDevice::RunTimer, this) {}

void UsbDevice::Stop() {
  {
    const std::lock_guard hold(lock_);
    stopping_ = true;
  }
  changed_.notify_all();
  timer_.join();
}

// What the device does ------------------------------------------------------------------------

void UsbDevice::Send(const Bytes& data, Milliseconds delay) {
  for (std::size_t at = 0; at < data.size(); at += kUsbPacket) {
    const std::size_t end = std::min(at + kUsbPacket, data.size());
    Bytes packet(data.begin() + static_cast<std::ptrdiff_t>(at),
                 data.begin() + static_cast<std::ptrdiff_t>(end));
    if (traits_.padded) packet.resize(kUsbPacket);
    SendPacket(std::move(packet), at ? Milliseconds(0) : delay);
  }
}

void UsbDevice::SendPacket(Bytes packet, Milliseconds delay) {
  Queue(Action::kPacket, std::move(packet), delay);
}
void UsbDevice::Flood(std::uint8_t value, Milliseconds delay) {
  Queue(Action::kFlood, {value}, delay);
}
void UsbDevice::Stall(Milliseconds delay) { Queue(Action::kHalt, {}, delay); }
void UsbDevice::Unplug(Milliseconds delay) { Queue(Action::kUnplug, {}, delay); }

std::vector<Bytes> UsbDevice::Written() const {
  const std::lock_guard hold(lock_);
  return written_;
}

void UsbDevice::Queue(Action action, Bytes data, Milliseconds delay) {
  const std::lock_guard hold(lock_);
  auto start = Clock::now();
  if (!steps_.empty()) start = std::max(start, steps_.back().due);
  steps_.push_back({action, std::move(data), start + delay});
  Pump();
  changed_.notify_all();
}

// The wire ------------------------------------------------------------------------------------

void UsbDevice::RunTimer() {
  std::unique_lock hold(lock_);
  while (!stopping_) {
    const auto now = Clock::now();
    if (!steps_.empty() && steps_.front().due <= now) Pump();
    // A packet that is due but finds no transfer waits for the next Submit().
    if (steps_.empty() || steps_.front().due <= now) {
      changed_.wait(hold);
    } else {
      changed_.wait_until(hold, steps_.front().due);
    }
  }
}

void UsbDevice::Pump() {
  for (;;) {
    while (TakeEvent()) {
    }
    while (gone_ && !waiting_.empty()) Finish(waiting_.begin(), -ESHUTDOWN);
    const auto transfer = std::find_if(waiting_.begin(), waiting_.end(), [](const Transfer& each) {
      return each.endpoint == kEndpointIn;
    });
    if (transfer == waiting_.end()) return;
    if (halted_) {
      Finish(transfer, -EPIPE);
    } else if (!steps_.empty() && steps_.front().due <= Clock::now()) {
      Fill(transfer);
    } else {
      return;
    }
  }
}

// Halts and unpluggings happen whether or not a transfer waits.
bool UsbDevice::TakeEvent() {
  if (steps_.empty() || steps_.front().due > Clock::now()) return false;
  const Action action = steps_.front().action;
  if (action != Action::kHalt && action != Action::kUnplug) return false;
  steps_.pop_front();
  if (action == Action::kHalt) {
    halted_ = true;
    return true;
  }
  gone_ = true;
  steps_.clear();
  while (!waiting_.empty()) Finish(waiting_.begin(), -ESHUTDOWN);
  Unplugged();
  return true;
}

void UsbDevice::Fill(Waiting::iterator transfer) {
  Step& step = steps_.front();
  if (step.action == Action::kFlood) {
    transfer->data.resize(transfer->room, step.data.front());
    Finish(transfer, 0);
    return;
  }
  const Bytes packet = std::move(step.data);
  steps_.pop_front();
  const std::size_t fits = std::min(packet.size(), transfer->room - transfer->data.size());
  transfer->data.insert(transfer->data.end(), packet.begin(),
                        packet.begin() + static_cast<std::ptrdiff_t>(fits));
  if (fits < packet.size()) {
    Finish(transfer, -EOVERFLOW);
  } else if (packet.size() < kUsbPacket || transfer->data.size() == transfer->room) {
    Finish(transfer, 0);
  }
}

void UsbDevice::Finish(Waiting::iterator transfer, int status) {
  Transfer done = std::move(*transfer);
  waiting_.erase(transfer);
  done.status = status;
  if (done.endpoint == kEndpointIn) done.moved = done.data.size();
  Completed(std::move(done));
}

void UsbDevice::Submit(Transfer transfer) {
  Bytes taken;
  {
    const std::lock_guard hold(lock_);
    waiting_.push_back(std::move(transfer));
    const auto last = std::prev(waiting_.end());
    if (last->endpoint == kEndpointOut && !gone_ && !traits_.out_blocked) {
      last->moved = std::min(last->data.size(), traits_.out_limit);
      taken.assign(last->data.begin(),
                   last->data.begin() + static_cast<std::ptrdiff_t>(last->moved));
      written_.push_back(taken);
      Finish(last, 0);
    } else {
      Pump();
      changed_.notify_all();
    }
  }
  if (!taken.empty() && on_out) on_out(*this, taken);
}

bool UsbDevice::Cancel(std::uint64_t id) {
  const std::lock_guard hold(lock_);
  const auto transfer = std::find_if(waiting_.begin(), waiting_.end(),
                                     [id](const Transfer& each) { return each.id == id; });
  if (transfer == waiting_.end()) return false;
  Finish(transfer, -ENOENT);
  return true;
}

void UsbDevice::ClearHalt() {
  const std::lock_guard hold(lock_);
  halted_ = false;
}

}  // namespace simulator
