#include "simulator/usb/card_reader.h"

#include <utility>

namespace simulator {
namespace {

// A reply in packets, each leaving when its last byte is there. A padded device sends full packets
// only, so what a pulled plug leaves of the last one is lost.
void Deliver(UsbDevice& device, const std::vector<Step>& steps) {
  const bool padded = device.traits().padded;
  Bytes packet;
  Milliseconds delay{0};
  const auto send = [&] {
    device.SendPacket(std::exchange(packet, {}), std::exchange(delay, Milliseconds(0)));
  };
  for (const Step& step : steps) {
    delay += step.delay;
    for (const std::uint8_t byte : step.bytes) {
      packet.push_back(byte);
      if (packet.size() == kUsbPacket) send();
    }
    if (!padded && !packet.empty()) send();
    if (step.hang_up) {
      device.Unplug(delay);
      return;
    }
  }
  if (packet.empty()) return;
  packet.resize(kUsbPacket);
  send();
}

}  // namespace

void ServeCards(UsbDevice& device, CardModule& module) {
  device.on_out = [&module](UsbDevice& sender, const Bytes& bytes) {
    for (const Exchange& exchange : module.Receive(bytes)) Deliver(sender, exchange.steps);
  };
}

}  // namespace simulator
