// Exchanges with a reader on a pseudo-terminal, and frames that it answers with.
#ifndef QUILLONID_TESTS_LINK_EXCHANGE_FIXTURE_H
#define QUILLONID_TESTS_LINK_EXCHANGE_FIXTURE_H

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

#include "quillonid/link.h"
#include "quillonid/results.h"
#include "tests/link/serial_reader.h"

using Bytes = std::vector<unsigned char>;

class Exchange : public SerialReader {
 protected:
  // Reads into a buffer of EE and gives the bytes that the result counts.
  int Read(std::uint32_t use_end_byte, int head, int end, int max = 256) {
    bytes_.assign(5000, 0xEE);
    const int result =
        COMM_Zel_ReadDataFromReader(use_end_byte, static_cast<std::uint8_t>(head),
                                    static_cast<std::uint8_t>(end), bytes_.data(), max);
    const std::size_t count = result > 0 ? static_cast<std::size_t>(result) : 0;
    EXPECT_EQ(0xEE, bytes_[count]) << "wrote too much";
    bytes_.resize(count);
    return result;
  }

  int Write(int head, int end, std::string_view data) {
    return COMM_Zel_WriteDataToReader(static_cast<std::uint8_t>(head),
                                      static_cast<std::uint8_t>(end), Octets(data),
                                      static_cast<int>(data.size()));
  }

  Bytes bytes_;
};

inline int AtTenBytes(const unsigned char*, int count) { return count >= 10 ? 0 : -1; }

// Status 9000, payload 41 42.
inline const std::string kFrame =
    "\x02"
    "000490004142"
    "93\x03";
// Status 9000, no payload.
inline const std::string kEmptyFrame =
    "\x02"
    "0002900090\x03";
inline const std::string kBadFrame =
    "\x02"
    "0002900091\x03";

#endif
