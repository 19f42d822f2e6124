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

#endif
