// The one writer of hexadecimal text, against a plain loop.
#include "support/hex_text.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "tests/support/guarded_block.h"

TEST(WriteHexUpper, EqualsThePlainLoopAtEveryLengthAndAlignment) {
  for (std::size_t length = 0; length <= 100; ++length) {
    for (std::size_t offset = 0; offset < 16; ++offset) {
      std::vector<std::uint8_t> bytes(offset + length);
      std::string expected(offset, '#');
      for (std::size_t i = offset; i < bytes.size(); ++i) {
        bytes[i] = static_cast<std::uint8_t>(i * 77 + length);
        char pair[4];
        std::snprintf(pair, sizeof pair, "%02X", bytes[i]);
        expected += pair;
      }
      std::string text(offset + 2 * length + 32, '#');

      WriteHexUpper(bytes.data() + offset, length, text.data() + offset);

      ASSERT_EQ(expected + std::string(32, '#'), text);
    }
  }
}

TEST(WriteHexUpper, WritesEveryByte) {
  std::vector<std::uint8_t> bytes;
  std::string expected;
  for (unsigned high = 0; high < 16; ++high) {
    for (unsigned low = 0; low < 16; ++low) {
      bytes.push_back(static_cast<std::uint8_t>(high << 4 | low));
      expected += "0123456789ABCDEF"[high];
      expected += "0123456789ABCDEF"[low];
    }
  }
  std::string text(512, '#');

  WriteHexUpper(bytes.data(), bytes.size(), text.data());

  EXPECT_EQ(expected, text);
}

TEST(WriteHexUpper, StaysWithinItsInputAndOutput) {
  const GuardedBlock in, out;
  for (std::size_t length = 0; length <= 100; ++length) {
    WriteHexUpper(in.Last(length), length, reinterpret_cast<char*>(out.Last(2 * length)));

    EXPECT_EQ(std::string(2 * length, '0'),
              std::string(reinterpret_cast<char*>(out.Last(2 * length)), 2 * length));
  }
}
