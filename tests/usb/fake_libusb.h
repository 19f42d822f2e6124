// A libusb that does what the test says: its functions stand before the real ones, for every caller
// in the program. For what no device and no bus brings about at will.
#ifndef QUILLONID_TESTS_USB_FAKE_LIBUSB_H
#define QUILLONID_TESTS_USB_FAKE_LIBUSB_H

#include <cstdint>
#include <deque>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

namespace fake_libusb {

struct Device {
  std::uint16_t vendor, product;
  int descriptor_result = 0;
};

// One bulk transfer.
struct Transfer {
  int result = 0;
  std::vector<unsigned char> bytes{};  // what comes in
  std::optional<int> count{};          // reported instead of what was moved
  bool leaves_count = false;           // reports none
  double seconds = 0;                  // that the library's clock moves on
  std::function<void()> meanwhile{};
};

struct State {
  std::vector<Device> devices = {
      {0x0403, 0xBCD5}
  };
  int init_result = 0;
  int list_result = 0;  // below zero: no list
  int open_result = 0;
  int reset_result = 0;
  int driver_active = 0;
  int detach_result = 0;
  int claim_result = 0;
  std::deque<Transfer> transfers;  // the next ones in turn
  Transfer otherwise;              // when there is none left
  // Asked for every transfer instead of the two above, with what goes out (nothing for a transfer
  // in) and the time limit in milliseconds.
  std::function<Transfer(std::span<const unsigned char> out, unsigned limit)> device{};

  std::vector<std::string> calls;  // by name, in order, with what they were given
  std::vector<std::vector<unsigned char>> written;
  int contexts = 0;  // inits without their exit
  int lists = 0;     // lists that are not freed
  int claims = 0;    // claimed interfaces
  int handles = 0;   // open handles
};

State& Now();

}  // namespace fake_libusb

#endif
