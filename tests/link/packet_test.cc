// Reader packets: building a request frame, taking a response frame apart.
#include <gtest/gtest.h>

#include <climits>
#include <ostream>
#include <string>
#include <vector>

#include "quillonid/link.h"
#include "tests/link/log_text.h"
#include "tests/testing/hex_text.h"
#include "tests/testing/private_root.h"

namespace {

using Bytes = std::vector<unsigned char>;

std::string Split(const Bytes& bytes) {
  std::string text;
  for (const unsigned char byte : bytes) {
    text += "0123456789:;<=>?"[byte / 16];
    text += "0123456789:;<=>?"[byte % 16];
  }
  return text;
}

// A response frame around status and payload, its length and check byte as they must be.
std::string Response(const Bytes& status_and_payload) {
  Bytes merged = {static_cast<unsigned char>(status_and_payload.size() / 256),
                  static_cast<unsigned char>(status_and_payload.size() % 256)};
  unsigned char lrc = 0;
  for (const unsigned char byte : status_and_payload) {
    merged.push_back(byte);
    lrc ^= byte;
  }
  merged.push_back(lrc);
  return "\x02" + Split(merged) + "\x03";
}

struct Parsed {
  int result;
  std::string payload;
  std::uint32_t length;
  std::uint32_t status;
};

constexpr std::uint32_t kKeptStatus = 0x7777;
constexpr std::uint32_t kKeptLength = 0xAAAA;

Parsed Parse(const std::string& packet, std::uint8_t head = 0x02, std::uint8_t end = 0x03) {
  Bytes out(1021, 0xEE);
  std::uint32_t length = kKeptLength;
  COMM_Zel_SetRecStatus(kKeptStatus);
  const int result =
      Str_ZEL_ParsePacket(head, end, reinterpret_cast<const unsigned char*>(packet.data()),
                          static_cast<std::uint32_t>(packet.size()), out.data(), &length);
  const std::size_t written = result == 0 ? length : 0;
  EXPECT_EQ(0xEE, out[written]) << "wrote too much";
  out.resize(written);
  return {result, HexText(out), length, COMM_Zel_GetRecStatus()};
}

void ExpectMalformed(const std::string& packet) {
  const Parsed parsed = Parse(packet);
  EXPECT_EQ(-4, parsed.result) << packet;
  EXPECT_EQ(kKeptLength, parsed.length) << packet;
  EXPECT_EQ(kKeptStatus, parsed.status) << packet;
}

}  // namespace

TEST(StrZelMakePacket, FramesAFourBytePayload) {
  const Bytes payload = {0x32, 0x30, 0x00, 0x01};
  unsigned char out[17] = {};
  out[16] = 0xEE;

  EXPECT_EQ(16u, Str_ZEL_MakePacket(0x02, 0x03, payload.data(), 4, out));

  EXPECT_EQ("02 30 30 30 34 33 32 33 30 30 30 30 31 30 33 03 EE", HexText(out));
}

TEST(StrZelMakePacket, FramesAnEmptyPayload) {
  unsigned char out[9] = {};
  out[8] = 0xEE;

  EXPECT_EQ(8u, Str_ZEL_MakePacket(0x01, 0x04, nullptr, 0, out));

  EXPECT_EQ("01 30 30 30 30 30 30 04 EE", HexText(out));
}

TEST(StrZelMakePacket, SendsHighNibblesAsColonToQuestionMark) {
  const Bytes payload = {0xAB, 0xCD, 0xEF};
  unsigned char out[14] = {};

  EXPECT_EQ(14u, Str_ZEL_MakePacket(0x02, 0x03, payload.data(), 3, out));

  EXPECT_EQ(
      "\x02"
      "0003:;<=>?89\x03",
      std::string(out, out + 14));
}

TEST(StrZelMakePacket, TakesHeadAndEndOfAnyValue) {
  const Bytes payload = {0x00};
  unsigned char out[10] = {};

  EXPECT_EQ(10u, Str_ZEL_MakePacket(0xFE, 0xFF, payload.data(), 1, out));

  EXPECT_EQ("FE 30 30 30 31 30 30 30 30 FF", HexText(out));
}

TEST(StrZelMakePacket, FramesTheLargestPayloadOfAFrameBuffer) {
  Bytes payload(508);
  for (std::size_t i = 0; i < payload.size(); ++i) payload[i] = static_cast<unsigned char>(7 * i);
  unsigned char lrc = 0;
  for (const unsigned char byte : payload) lrc ^= byte;
  Bytes out(1025, 0xEE);

  EXPECT_EQ(1024u, Str_ZEL_MakePacket(0x02, 0x03, payload.data(), 508, out.data()));

  EXPECT_EQ(
      "\x02"
      "01?<" +
          Split(payload) + Split({lrc}) + "\x03\xEE",
      std::string(out.begin(), out.end()));
}

TEST(StrZelMakePacket, EncodesTheLow16BitsOfTheLength) {
  const Bytes payload(0x10203, 0x00);
  Bytes out(2 * payload.size() + 8);

  EXPECT_EQ(out.size(), Str_ZEL_MakePacket(0x02, 0x03, payload.data(), 0x10203, out.data()));

  EXPECT_EQ("02 30 32 30 33", HexText(out.data(), 5));
}

TEST(StrZelMakePacket, BuildsNothingWithoutPayloadOrOutput) {
  unsigned char out[8] = {0xEE};
  const unsigned char payload = 1;

  EXPECT_EQ(0u, Str_ZEL_MakePacket(0x02, 0x03, nullptr, 1, out));
  EXPECT_EQ(0u, Str_ZEL_MakePacket(0x02, 0x03, &payload, 1, nullptr));
  EXPECT_EQ(0u, Str_ZEL_MakePacket(0x02, 0x03, &payload, UINT_MAX, out));

  EXPECT_EQ(0xEE, out[0]);
}

TEST(StrZelParsePacket, TakesPayloadAndStatus) {
  const Parsed parsed = Parse(Response({0x90, 0x81, 0x04, 0xAB, 0xFF}));

  EXPECT_EQ(0, parsed.result);
  EXPECT_EQ("04 AB FF", parsed.payload);
  EXPECT_EQ(3u, parsed.length);
  EXPECT_EQ(0x9081u, parsed.status);
}

TEST(StrZelParsePacket, TakesAnEmptyPayload) {
  const Parsed parsed = Parse(Response({0x12, 0x34}));

  EXPECT_EQ(0, parsed.result);
  EXPECT_EQ(0u, parsed.length);
  EXPECT_EQ(0x1234u, parsed.status);
}

TEST(StrZelParsePacket, IgnoresWhatIsAroundTheFrame) {
  const std::string frame = Response({0x00, 0x00, 0x41});

  EXPECT_EQ("41", Parse("\x03garbage\x03" + frame).payload);
  EXPECT_EQ("41", Parse(frame + "garbage\x02\x03").payload);
}

TEST(StrZelParsePacket, FindsHeadAndEndBytesAbove7F) {
  std::string frame = Response({0x00, 0x00, 0x41});
  frame.front() = '\xFE';
  frame.back() = '\x80';

  EXPECT_EQ("41", Parse(frame, 0xFE, 0x80).payload);
}

TEST(StrZelParsePacket, TakesTheLargestBody) {
  Bytes content(509);
  for (std::size_t i = 0; i < content.size(); ++i) content[i] = static_cast<unsigned char>(3 * i);

  const Parsed parsed = Parse(Response(content));

  EXPECT_EQ(0, parsed.result);
  EXPECT_EQ(507u, parsed.length);
  EXPECT_EQ(HexText(Bytes(content.begin() + 2, content.end())), parsed.payload);
}

TEST(StrZelParsePacket, RefusesALargerBody) {
  ExpectMalformed(Response(Bytes(510)));
  ExpectMalformed("\x02" + std::string(1026, '0') + "\x03");
  ExpectMalformed("\x02" + std::string(4094, '0') + "\x03");
}

TEST(StrZelParsePacket, RefusesAFrameWithoutBody) {
  ExpectMalformed("");
  ExpectMalformed("no frame");
  ExpectMalformed(
      "\x02"
      "000200000\x04");
  ExpectMalformed("000200000\x03");
  ExpectMalformed("\x02\x03");
  ExpectMalformed("\x02\x03" + Response({0x00, 0x00}));
  ExpectMalformed("0\x02");
}

TEST(StrZelParsePacket, RefusesAnOddBody) {
  ExpectMalformed(
      "\x02"
      "0\x03");
  ExpectMalformed(
      "\x02"
      "00020000001\x03");
}

TEST(StrZelParsePacket, RefusesAWrongCheckByte) {
  std::string frame = Response({0x90, 0x00, 0x41});
  ++frame[frame.size() - 2];

  ExpectMalformed(frame);
}

TEST(StrZelParsePacket, RefusesNull) {
  const std::string frame = Response({0x00, 0x00});
  const auto* packet = reinterpret_cast<const unsigned char*>(frame.data());
  const auto len = static_cast<std::uint32_t>(frame.size());
  unsigned char out[4] = {};
  std::uint32_t out_len = 0;

  EXPECT_EQ(-4, Str_ZEL_ParsePacket(0x02, 0x03, nullptr, len, out, &out_len));
  EXPECT_EQ(-4, Str_ZEL_ParsePacket(0x02, 0x03, packet, len, nullptr, &out_len));
  EXPECT_EQ(-4, Str_ZEL_ParsePacket(0x02, 0x03, packet, len, out, nullptr));
}

// The length is taken as sent: its frame is accepted once the check byte is right.
TEST(StrZelParsePacket, BelievesTheLengthField) {
  // D: length, status 9000, payload 41 42, check 93.
  const Parsed shorter = Parse(
      "\x02"
      "000390004142"
      "93\x03");
  const Parsed longer = Parse(
      "\x02"
      "000890004142"
      "93\x03");

  EXPECT_EQ("41", shorter.payload);
  EXPECT_EQ("41 42 93 00 00 00", longer.payload);
}

TEST(StrZelParsePacket, ReportsAtMost1020Bytes) {
  const Parsed parsed = Parse(
      "\x02"
      "????00\x03");

  EXPECT_EQ(0, parsed.result);
  EXPECT_EQ(1020u, parsed.length);
  EXPECT_EQ(HexText(Bytes(1020)), parsed.payload);
  EXPECT_EQ(0u, parsed.status);
}

// With too few bytes for a status, those missing are zeros; over nothing the check byte is 0.
TEST(StrZelParsePacket, TakesVeryShortBodies) {
  const Parsed two = Parse(
      "\x02"
      "0500\x03");
  const Parsed three = Parse(
      "\x02"
      "000200\x03");
  const Parsed four = Parse(
      "\x02"
      "00029090\x03");

  EXPECT_EQ(0, two.result);
  EXPECT_EQ(1020u, two.length);
  EXPECT_EQ(0u, two.status);
  EXPECT_EQ(0, three.result);
  EXPECT_EQ(0u, three.length);
  EXPECT_EQ(0u, three.status);
  EXPECT_EQ(0, four.result);
  EXPECT_EQ(0u, four.length);
  EXPECT_EQ(0x9090u, four.status);
  ExpectMalformed(
      "\x02"
      "0501\x03");
  ExpectMalformed(
      "\x02"
      "000201\x03");
  ExpectMalformed(
      "\x02"
      "00029091\x03");
}

TEST(StrZelParsePacket, RefusesALengthThatHasNoRoomForTheStatus) {
  ExpectMalformed(
      "\x02"
      "00\x03");
  ExpectMalformed(
      "\x02"
      "0000\x03");
  ExpectMalformed(
      "\x02"
      "000000\x03");
  ExpectMalformed(
      "\x02"
      "000100\x03");
  ExpectMalformed(
      "\x02"
      "00019000"
      "90\x03");
}

TEST(StrZelParsePacket, LogsItsSteps) {
  NEEDS_PRIVATE_ROOT();
  const std::string frame =
      "\x02"
      "0003900041"
      ";"
      "1\x03";
  unsigned char out[1020] = {};
  std::uint32_t out_len = 0;
  const auto* packet = reinterpret_cast<const unsigned char*>(frame.data());
  SwitchLogging(true);

  EXPECT_EQ(-4, Str_ZEL_ParsePacket(0x02, 0x0F, packet, 3, out, &out_len));
  EXPECT_EQ(-4, Str_ZEL_ParsePacket(0x02, 0x03, packet, 0, out, &out_len));
  EXPECT_EQ(-4, Str_ZEL_ParsePacket(0x02, 0x03, packet, 14, out, &out_len));

  EXPECT_EQ((Lines{
                "2: [Str_ZEL_ParsePacket] Start nPacketLen = 3 ",
                "2:  cHead = 02 cEnd = 0f  ",
                "2: nBodyLen = -1 ",
                "2: [Str_ZEL_ParsePacket] Start nPacketLen = 0 ",
                "2:  cHead = 02 cEnd = 03  ",
                "2: [Str_ZEL_ParsePacket] Start nPacketLen = 14 ",
                "2:  cHead = 02 cEnd = 03  ",
                "2: nBodyLen = 12 ",
                "ucBody: 00 03 90 00 41 B1",
            }),
            Logged());
}

TEST(StrZelParsePacket, LogsTheStatusItSets) {
  NEEDS_PRIVATE_ROOT();
  const std::string frame = Response({0x90, 0x00, 0x41});
  unsigned char out[1020] = {};
  std::uint32_t out_len = 0;
  SwitchLogging(true);

  EXPECT_EQ(0, Str_ZEL_ParsePacket(0x02, 0x03, reinterpret_cast<const unsigned char*>(frame.data()),
                                   static_cast<std::uint32_t>(frame.size()), out, &out_len));

  EXPECT_EQ((Lines{
                "2: [Str_ZEL_ParsePacket] Start nPacketLen = 14 ",
                "2:  cHead = 02 cEnd = 03  ",
                "2: nBodyLen = 12 ",
                "ucBody: 00 03 90 00 41 D1",
                "2: [COMM_Zel_SetRecStatus] Start ",
                "2: status = 9000 ",
            }),
            Logged());
}

struct Body {
  const char* buffer;  // "(" is the head, ")" the end
  const char* body;    // null: none
};

void PrintTo(const Body& row, std::ostream* out) { *out << '"' << row.buffer << '"'; }

class StrGetPacketBody : public testing::TestWithParam<Body> {};

TEST_P(StrGetPacketBody, CopiesWhatIsStrictlyBetween) {
  const std::string buffer = GetParam().buffer;
  std::string out(buffer.size() + 1, '#');

  const int length = Str_GetPacketBody(
      '(', ')', reinterpret_cast<const unsigned char*>(buffer.data()),
      static_cast<int>(buffer.size()), reinterpret_cast<unsigned char*>(out.data()));

  const std::string expected = GetParam().body != nullptr ? GetParam().body : "";
  EXPECT_EQ(GetParam().body != nullptr ? static_cast<int>(expected.size()) : -1, length);
  EXPECT_EQ(expected, out.substr(0, out.find('#')));
}

INSTANTIATE_TEST_SUITE_P(Buffers, StrGetPacketBody,
                         testing::Values(Body{"(abc)", "abc"}, Body{"x)(abc)y", "abc"},
                                         Body{"(a(b)c)", "a(b"}, Body{"(a)", "a"},
                                         Body{"", nullptr}, Body{"abc)", nullptr},
                                         Body{"(abc", nullptr}, Body{")abc(", nullptr},
                                         Body{"abc()", nullptr}, Body{"()abc)", nullptr},
                                         Body{"abc(", nullptr}, Body{"abc(d", nullptr}));

TEST(StrGetPacketBodyBytes, MayHaveTheSameHeadAndEndAbove7F) {
  const unsigned char buffer[] = {0x80, 1, 0xFF, 2, 3, 0xFF, 4};
  unsigned char out[7] = {};

  EXPECT_EQ(2, Str_GetPacketBody(0xFF, 0xFF, buffer, 7, out));

  EXPECT_EQ("02 03 00", HexText(out, 3));
}

TEST(StrGetPacketBodyBytes, AreNoneWithoutBuffers) {
  const unsigned char buffer[] = {1, 2, 3};
  unsigned char out[3] = {};

  EXPECT_EQ(-1, Str_GetPacketBody(1, 3, buffer, 0, out));
  EXPECT_EQ(-1, Str_GetPacketBody(1, 3, buffer, -1, out));
  EXPECT_EQ(-1, Str_GetPacketBody(1, 3, nullptr, 3, out));
  EXPECT_EQ(-1, Str_GetPacketBody(1, 3, buffer, 3, nullptr));
}
