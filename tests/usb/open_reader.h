// An emulated USB reader that the library has open, and its closing.
#ifndef QUILLONID_TESTS_USB_OPEN_READER_H
#define QUILLONID_TESTS_USB_OPEN_READER_H

#include <gtest/gtest.h>

#include <utility>

#include "quillonid/transport.h"
#include "simulator/usb/emulated_reader.h"

class OpenReader : public simulator::EmulatedUsbReader {
 public:
  explicit OpenReader(simulator::UsbTraits traits = {}) : EmulatedUsbReader(std::move(traits)) {
    EXPECT_EQ(0, COMM_Hid_OpenLinuxUsbLibHid(traits_.vendor, traits_.product));
  }
  ~OpenReader() { COMM_Hid_CloseLinuxUsbLibHid(); }
};

#endif
