#include "simulator/packets.h"

#include <gtest/gtest.h>

#include <ostream>

#include "tests/testing/hex_text.h"

namespace simulator {
namespace {

struct Known {
  const char* bytes;
  RequestKind kind;
  const char* meaning;
};

void PrintTo(const Known& known, std::ostream* out) { *out << known.bytes; }

class TakeRequestOf : public testing::TestWithParam<Known> {};

TEST_P(TakeRequestOf, KnowsTheRequest) {
  Bytes received = FromHex(GetParam().bytes);

  const auto request = TakeRequest(&received);

  ASSERT_TRUE(request.has_value());
  EXPECT_EQ(GetParam().kind, request->kind);
  EXPECT_EQ(GetParam().meaning, request->meaning);
  EXPECT_EQ(GetParam().bytes, HexText(request->bytes));
  EXPECT_TRUE(received.empty());
}

TEST_P(TakeRequestOf, WaitsForItsLastByte) {
  const Bytes whole = FromHex(GetParam().bytes);
  for (std::size_t size = 1; size < whole.size(); ++size) {
    Bytes received(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(size));
    EXPECT_FALSE(TakeRequest(&received).has_value()) << size;
    EXPECT_EQ(size, received.size());
  }
}

INSTANTIATE_TEST_SUITE_P(
    EveryKind, TakeRequestOf,
    testing::Values(
        Known{"AA AA AA 96 69 00 03 11 FF ED", RequestKind::kDeviceCheck, "device check"},
        Known{"AA AA AA 96 69 00 03 20 01 22", RequestKind::kSearch, "search card"},
        Known{"AA AA AA 96 69 00 03 20 02 21", RequestKind::kSelect, "select card"},
        Known{"AA AA AA 96 69 00 03 30 01 32", RequestKind::kRead, "read"},
        Known{"AA AA AA 96 69 00 03 30 10 23", RequestKind::kReadFingerprints,
              "read with fingerprints"},
        Known{"AA AA AA 96 69 00 03 30 20 13", RequestKind::kReadOneCommand, "one-command read"},
        Known{"AA AA AA 96 69 00 03 30 01 33", RequestKind::kOtherFrame,
              "frame with a wrong check byte"},
        Known{"AA AA AA 96 69 00 03 12 34 25", RequestKind::kOtherFrame, "unknown command"},
        Known{"1B 25 53 31", RequestKind::kSpeed, "speed 115200 bit/s"},
        Known{"1B 25 53 32", RequestKind::kSpeed, "speed 38400 bit/s"},
        Known{"1B 25 53 33", RequestKind::kSpeed, "speed 19200 bit/s"},
        Known{"1B 25 53 34", RequestKind::kSpeed, "speed 9600 bit/s"},
        Known{"1B 25 42", RequestKind::kSpeed, "back to the reader's speed"},
        Known{"1B 25 4B", RequestKind::kExtension, "extension K"},
        Known{"02 30 30 30 34 33 32 33 30 30 30 30 31 30 33 03", RequestKind::kPacket,
              "card check"},
        Known{"01 30 30 30 31 3A 3F 3A 3F 04", RequestKind::kPacket, "channel data"},
        Known{"02 30 30 30 30 30 30 03", RequestKind::kPacket, "card check"},
        Known{"02 30 30 30 31 3A 3F 3A 3E 03", RequestKind::kOtherPacket,
              "packet that does not hold together"}));

TEST(TakeRequest, GivesNoiseAsFarAsItGoes) {
  for (const char* noise : {"00", "FF FF FF", "1B 41", "1B 25 61", "AA 55"}) {
    Bytes received = FromHex(noise);

    const auto request = TakeRequest(&received);

    ASSERT_TRUE(request.has_value()) << noise;
    EXPECT_EQ(RequestKind::kNoise, request->kind);
    EXPECT_EQ(noise, HexText(request->bytes));
  }
}

TEST(TakeRequest, GivesThePayloadOfAPacket) {
  Bytes received = FromHex("02 30 30 30 34 33 32 33 30 30 30 30 31 30 33 03");

  EXPECT_EQ("32 30 00 01", HexText(TakeRequest(&received)->content));
}

TEST(TakeRequest, TakesOneRequestAfterTheOther) {
  // The device check as hosts send it, with a zero byte behind it, then a search after line noise.
  Bytes received = FromHex("AA AA AA 96 69 00 03 11 FF ED 00 FF AA AA AA 96 69 00 03 20 01 22 AA");

  EXPECT_EQ("device check", TakeRequest(&received)->meaning);
  EXPECT_EQ("00 FF", HexText(TakeRequest(&received)->bytes));
  EXPECT_EQ("search card", TakeRequest(&received)->meaning);
  EXPECT_FALSE(TakeRequest(&received).has_value());
  EXPECT_EQ("AA", HexText(received));
}

TEST(TakeRequest, FindsAFrameBehindABrokenOne) {
  // Cut after its preamble, and one whose length no command has.
  Bytes received = FromHex("AA AA AA 96 AA AA AA 96 69 10 00 AA AA AA 96 69 00 03 20 01 22");

  std::optional<Request> last;
  while (auto request = TakeRequest(&received)) last = std::move(request);

  ASSERT_TRUE(last.has_value());
  EXPECT_EQ("search card", last->meaning);
}

TEST(ModuleFrame, CountsAndChecksWhatFollowsTheLength) {
  EXPECT_EQ("AA AA AA 96 69 00 04 00 00 90 94", HexText(ModuleFrame(FromHex("00 00 90"))));
  EXPECT_EQ("AA AA AA 96 69 00 01 01", HexText(ModuleFrame({})));
}

TEST(PacketReply, SplitsLengthStatusPayloadAndCheck) {
  // Length 3: status 90 00 and payload 04; XOR 94.
  EXPECT_EQ("02 30 30 30 33 39 30 30 30 30 34 39 34 03",
            HexText(PacketReply(0x02, 0x03, 0x9000, FromHex("04"))));
  EXPECT_EQ("01 30 30 30 32 30 30 30 30 30 30 04", HexText(PacketReply(0x01, 0x04, 0, {})));
}

}  // namespace
}  // namespace simulator
