// A simulated USB reader that the library has open, and its closing. The bus is emulated, or with
// QL_KERNEL_USB the virtual one of a real kernel.
#ifndef QUILLONID_TESTS_USB_OPEN_READER_H
#define QUILLONID_TESTS_USB_OPEN_READER_H

#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <ctime>
#include <utility>

#include "quillonid/transport.h"
#ifdef QL_KERNEL_USB
#include "simulator/usb/kernel_reader.h"
using SimulatedUsbReader = simulator::KernelUsbReader;
// Most of a core that a waiting read may use, the reader's own work included. Where the processor
// is emulated everything costs more; a read that spins uses all of it.
inline constexpr double kProcessorShare = 0.5;
#else
#include "simulator/usb/emulated_reader.h"
using SimulatedUsbReader = simulator::EmulatedUsbReader;
inline constexpr double kProcessorShare = 0.1;
#endif

// Processor time of this process, the emulated bus included, past the stand-in clock.
inline double ProcessorSeconds() {
  timespec time = {};
  syscall(SYS_clock_gettime, CLOCK_PROCESS_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

class OpenReader : public SimulatedUsbReader {
 public:
  explicit OpenReader(simulator::UsbTraits traits = {}) : SimulatedUsbReader(std::move(traits)) {
    EXPECT_EQ(0, COMM_Hid_OpenLinuxUsbLibHid(traits_.vendor, traits_.product));
  }
  ~OpenReader() { COMM_Hid_CloseLinuxUsbLibHid(); }
};

#endif
