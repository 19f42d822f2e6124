// A reader on a pseudo-terminal that the exchange has open; the test plays the reader.
#ifndef QUILLONID_TESTS_LINK_SERIAL_READER_H
#define QUILLONID_TESTS_LINK_SERIAL_READER_H

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <string_view>

#include "quillonid/link.h"
#include "tests/testing/hex_text.h"
#include "tests/testing/pty.h"

inline QL_TRANSPORT_DESCRIPTION SerialDescription(const std::string& path, int seconds) {
  QL_TRANSPORT_DESCRIPTION description = {};
  description.nKind = QL_KIND_SERIAL;
  description.nBaud = 9600;
  description.nTimeOut = seconds;
  std::strncpy(description.szPath, path.c_str(), sizeof description.szPath - 1);
  return description;
}

inline const unsigned char* Octets(std::string_view bytes) {
  return reinterpret_cast<const unsigned char*>(bytes.data());
}

// A whole identity-card answer of `size` bytes behind its head.
inline std::string Answer(std::size_t size, char fill = 'x') {
  return std::string("\xAA\xAA\xAA\x96\x69", 5) + static_cast<char>(size / 256) +
         static_cast<char>(size % 256) + std::string(size, fill);
}

class SerialReader : public testing::Test {
 protected:
  void SetUp() override {
    QL_TRANSPORT_DESCRIPTION description = SerialDescription(tty_.path(), kSeconds);
    ASSERT_EQ(0, COMM_Zel_OpenReader(&description));
  }
  void TearDown() override { COMM_Zel_CloseReader(); }

  // Everything that the library sent, as hex text. Closes the reader.
  std::string Sent() {
    COMM_Zel_CloseReader();
    return HexText(tty_.ReceiveRest());
  }

  static constexpr int kSeconds = 5;
  Pty tty_;
};

// A device on a pseudo-terminal; the test plays the reader.
class SerialDevice : public testing::Test {
 protected:
  int Open(int baud = 9600) { return tFuncOpenDevice(tty_.path().c_str(), "", baud, 0, 5); }

  // Everything that the library sent, as hex text. Closes the device.
  std::string Sent() {
    tFuncCloseDevice();
    return HexText(tty_.ReceiveRest());
  }

  Pty tty_;
};

#endif
