// Hex, BCD and the characters of the reader's line, against models of their own.
#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cstring>
#include <ostream>
#include <string>
#include <vector>

#include "quillonid/link.h"
#include "tests/testing/hex_text.h"

namespace {

using Bytes = std::vector<unsigned char>;

Bytes AllBytes() {
  Bytes bytes(256);
  for (std::size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<unsigned char>(i);
  return bytes;
}

int Size(const Bytes& bytes) { return static_cast<int>(bytes.size()); }

constexpr char kUpper[] = "0123456789ABCDEF";
constexpr char kLower[] = "0123456789abcdef";

// Two characters a byte.
std::string Printed(const Bytes& bytes, const char* digits) {
  std::string text;
  for (const unsigned char byte : bytes) {
    text += digits[byte / 16];
    text += digits[byte % 16];
  }
  return text;
}

std::string AscToHex(const std::string& text) {
  Bytes out(text.size() + 2, 0xEE);
  EXPECT_EQ(0, Str_AscToHex(text.data(), static_cast<int>(text.size()), out.data()));
  const std::size_t used = (text.size() + 1) / 2;
  EXPECT_EQ(0xEE, out[used]) << "wrote too much";
  out.resize(used);
  return HexText(out);
}

std::string HexToAsc(const Bytes& bytes, int count) {
  std::string out(64, '#');
  EXPECT_EQ(0, Str_HexToAsc(bytes.data(), count, out.data()));
  EXPECT_EQ('#', out[out.find('\0') + 1]) << "wrote too much";
  return out.substr(0, out.find('\0'));
}

using Padded = int (*)(const char*, int, unsigned char*, int);

std::string Pad(Padded function, const std::string& text, int n) {
  Bytes out(static_cast<std::size_t>(n) + 1, 0xEE);
  EXPECT_EQ(n, function(text.data(), static_cast<int>(text.size()), out.data(), n));
  EXPECT_EQ(0xEE, out.back()) << "wrote too much";
  out.pop_back();
  return HexText(out);
}

}  // namespace

TEST(StrZelModeSplitData, WritesEachNibblePlus30) {
  unsigned char out[5] = {0xEE, 0xEE, 0xEE, 0xEE, 0xEE};
  const unsigned char in[] = {0xAB, 0x09};

  Str_ZelModeSplitData(in, 2, out);

  EXPECT_EQ("3A 3B 30 39 EE", HexText(out));
}

TEST(StrZelModeSplitData, SplitsEveryByte) {
  const Bytes in = AllBytes();
  Bytes out(512);

  Str_ZelModeSplitData(in.data(), 256, out.data());

  for (std::size_t i = 0; i < 256; ++i) {
    EXPECT_EQ("0123456789:;<=>?"[i / 16], out[2 * i]);
    EXPECT_EQ("0123456789:;<=>?"[i % 16], out[2 * i + 1]);
  }
}

TEST(StrZelModeSplitData, DoesNothingWithoutBytes) {
  unsigned char out[2] = {0xEE, 0xEE};
  const unsigned char in[] = {0xAB};

  Str_ZelModeSplitData(in, 0, out);
  Str_ZelModeSplitData(in, -1, out);
  Str_ZelModeSplitData(nullptr, 1, out);
  Str_ZelModeSplitData(in, 1, nullptr);

  EXPECT_EQ("EE EE", HexText(out));
}

TEST(StrZelModeMergeData, MergesWhatWasSplit) {
  const Bytes in = AllBytes();
  Bytes split(512);
  Bytes merged(257, 0xEE);
  Str_ZelModeSplitData(in.data(), 256, split.data());

  Str_ZelModeMergeData(split.data(), 512, merged.data());

  EXPECT_EQ(0xEE, merged.back());
  merged.pop_back();
  EXPECT_EQ(HexText(in), HexText(merged));
}

TEST(StrZelModeMergeData, UsesTheLowNibblesOfEveryPair) {
  unsigned char out = 0;

  const unsigned char letter[] = {'A', '0'};
  Str_ZelModeMergeData(letter, 2, &out);
  EXPECT_EQ(0x10, out);

  for (unsigned a = 0; a < 256; ++a) {
    for (unsigned b = 0; b < 256; ++b) {
      const unsigned char pair[] = {static_cast<unsigned char>(a), static_cast<unsigned char>(b)};
      Str_ZelModeMergeData(pair, 2, &out);
      ASSERT_EQ(a % 16 * 16 + b % 16, out);
    }
  }
}

TEST(StrZelModeMergeData, DoesNothingForAnOddLength) {
  unsigned char out[2] = {0xEE, 0xEE};
  const unsigned char in[] = {0x31, 0x32, 0x33, 0x34};

  for (const int len : {3, 1, 0, -1, -2}) Str_ZelModeMergeData(in, len, out);
  Str_ZelModeMergeData(nullptr, 2, out);
  Str_ZelModeMergeData(in, 2, nullptr);

  EXPECT_EQ("EE EE", HexText(out));
}

TEST(StrLocalSplitHex2Asc, WritesBothNibbles) {
  for (unsigned byte = 0; byte < 256; ++byte) {
    unsigned char high = 0;
    unsigned char low = 0;
    EXPECT_EQ(0, Str_localSplitHex2Asc(static_cast<unsigned char>(byte), &high, &low));
    EXPECT_EQ(byte / 16 + 0x30, high);
    EXPECT_EQ(byte % 16 + 0x30, low);
  }
  unsigned char one = 7;
  EXPECT_EQ(0, Str_localSplitHex2Asc(0x12, nullptr, &one));
  EXPECT_EQ(0, Str_localSplitHex2Asc(0x12, &one, nullptr));
  EXPECT_EQ(7, one);
}

TEST(StrLocalMergeAsc2Hex, AddsTheLowCharacterLess30) {
  for (unsigned high = 0; high < 256; ++high) {
    for (unsigned low = 0; low < 256; ++low) {
      unsigned char out = 0;
      ASSERT_EQ(0, Str_localMergeAsc2Hex(&out, static_cast<unsigned char>(high),
                                         static_cast<unsigned char>(low)));
      ASSERT_EQ((high % 16 * 16 + low + 256 - 0x30) % 256, out);
    }
  }
  EXPECT_EQ(0, Str_localMergeAsc2Hex(nullptr, 0x31, 0x32));
}

TEST(StrByteToBcd, PacksTwoDigits) {
  for (int value = 0; value <= 99; ++value) {
    unsigned char out = 0xEE;
    EXPECT_EQ(0, Str_ByteToBcd(value, &out));
    EXPECT_EQ((value < 10 ? "0" : "") + std::to_string(value), HexText(&out, 1));
  }
}

TEST(StrByteToBcd, RefusesOtherValues) {
  unsigned char out = 0xEE;

  for (const int value : {-1, 100, INT_MIN, INT_MAX}) EXPECT_EQ(-1, Str_ByteToBcd(value, &out));
  EXPECT_EQ(-1, Str_ByteToBcd(1, nullptr));

  EXPECT_EQ(0xEE, out);
}

struct FourBcd {
  int value;
  const char* bytes;  // in a buffer that held EE
};

void PrintTo(const FourBcd& row, std::ostream* out) { *out << row.value; }

class StrIntTo4Bcd : public testing::TestWithParam<FourBcd> {};

TEST_P(StrIntTo4Bcd, LeavesBytesWhoseQuotientExceeds99) {
  unsigned char out[4] = {0xEE, 0xEE, 0xEE, 0xEE};
  int length = 0;

  EXPECT_EQ(0, Str_IntTo4Bcd(GetParam().value, out, &length));

  EXPECT_EQ(GetParam().bytes, HexText(out));
  EXPECT_EQ(4, length);
}

INSTANTIATE_TEST_SUITE_P(
    Values, StrIntTo4Bcd,
    testing::Values(FourBcd{0, "00 00 00 00"}, FourBcd{7, "00 00 00 07"},
                    FourBcd{99, "00 00 00 99"}, FourBcd{1234, "00 00 12 34"},
                    FourBcd{9999, "00 00 99 99"}, FourBcd{10000, "00 01 EE 00"},
                    FourBcd{123456, "00 12 EE 56"}, FourBcd{999999, "00 99 EE 99"},
                    FourBcd{1000000, "01 EE EE 00"}, FourBcd{12345678, "12 EE EE 78"},
                    FourBcd{99999999, "99 EE EE 99"}));

TEST(StrIntTo4BcdRange, IsEightDigits) {
  unsigned char out[4] = {0xEE, 0xEE, 0xEE, 0xEE};
  int length = 7;

  for (const int value : {-1, 100000000, INT_MIN, INT_MAX}) {
    EXPECT_EQ(-1, Str_IntTo4Bcd(value, out, &length));
  }
  EXPECT_EQ(-1, Str_IntTo4Bcd(1, nullptr, &length));
  EXPECT_EQ(-1, Str_IntTo4Bcd(1, out, nullptr));

  EXPECT_EQ("EE EE EE EE", HexText(out));
  EXPECT_EQ(7, length);
}

TEST(StrBcdtoUint64, IsTheDecimalValue) {
  const unsigned char bcd[] = {0x12, 0x34, 0x56, 0x78, 0x90, 0x12, 0x34, 0x56, 0x78, 0x90};

  EXPECT_EQ(12u, Str_BcdtoUint64(bcd, 1));
  EXPECT_EQ(12345678u, Str_BcdtoUint64(bcd, 4));
  EXPECT_EQ(123456789012345678u, Str_BcdtoUint64(bcd, 9));
}

TEST(StrBcdtoUint64, CountsNibblesAboveNineAsTheyAre) {
  const unsigned char bcd[] = {0x9A, 0xF1};

  EXPECT_EQ(100u, Str_BcdtoUint64(bcd, 1));
  EXPECT_EQ(10151u, Str_BcdtoUint64(bcd, 2));
}

TEST(StrBcdtoUint64, OfNothingIsZero) {
  const unsigned char bcd[] = {0x12};

  EXPECT_EQ(0u, Str_BcdtoUint64(bcd, 0));
  EXPECT_EQ(0u, Str_BcdtoUint64(bcd, -1));
  EXPECT_EQ(0u, Str_BcdtoUint64(nullptr, 1));
}

TEST(StrAscToHex, PacksHexCharacters) {
  EXPECT_EQ("01 23 45 67 89 AB CD EF", AscToHex("0123456789ABCDEF"));
  EXPECT_EQ("AB CD EF", AscToHex("abcdef"));
  EXPECT_EQ("BC D5", AscToHex("bCd5"));
}

TEST(StrAscToHex, LeavesAnOddLastNibbleInTheHighHalf) {
  EXPECT_EQ("A0", AscToHex("A"));
  EXPECT_EQ("12 30", AscToHex("123"));
}

// Every byte has a value by the range it is in, on machines of either plain char.
TEST(StrAscToHex, TakesEveryByteByItsRange) {
  for (int c = 0; c < 256; ++c) {
    const int value = c >= 0x61 ? c - 0x57 : c > 0x40 ? c - 0x37 : c > 0x2F ? c - 0x30 : c % 16;
    const auto low = static_cast<unsigned char>(value);
    const auto high = static_cast<unsigned char>(value * 16);

    EXPECT_EQ(HexText(&low, 1), AscToHex(std::string("0") + static_cast<char>(c))) << c;
    EXPECT_EQ(HexText(&high, 1), AscToHex(static_cast<char>(c) + std::string("0"))) << c;
  }
  EXPECT_EQ("6D", AscToHex("0\xC4"));
}

TEST(StrAscToHex, FailsForNullAlone) {
  unsigned char out = 0xEE;

  EXPECT_EQ(-1, Str_AscToHex(nullptr, 2, &out));
  EXPECT_EQ(-1, Str_AscToHex("12", 2, nullptr));
  EXPECT_EQ(0, Str_AscToHex("12", 0, &out));
  EXPECT_EQ(-1, Str_AscToHex("12", -1, &out));

  EXPECT_EQ(0xEE, out);
}

TEST(StrAsciiToBcd, PadsOnTheLeft) {
  EXPECT_EQ("00 01 23", Pad(Str_AsciiToBcd, "123", 3));
  EXPECT_EQ("12 34", Pad(Str_AsciiToBcd, "1234", 2));
  EXPECT_EQ("00 00", Pad(Str_AsciiToBcd, "", 2));
}

TEST(StrAsciiToBcd, CutsToTheFirstCharacters) {
  EXPECT_EQ("12 34", Pad(Str_AsciiToBcd, "123456", 2));
}

TEST(StrAsciiToCn, PadsOnTheRightWithF) {
  EXPECT_EQ("12 3F FF", Pad(Str_AsciiToCn, "123", 3));
  EXPECT_EQ("12 34", Pad(Str_AsciiToCn, "1234", 2));
  EXPECT_EQ("FF FF", Pad(Str_AsciiToCn, "", 2));
}

TEST(StrAsciiToCn, CutsToTheFirstCharacters) {
  EXPECT_EQ("12 34", Pad(Str_AsciiToCn, "123456", 2));
}

TEST(StrAsciiToBcd, TakesOutputsOfAnySize) {
  constexpr int kBytes = 100000;
  std::string text(std::size_t{2} * kBytes, '7');
  Bytes out(kBytes + 1, 0xEE);

  for (const Padded function : {Str_AsciiToBcd, Str_AsciiToCn}) {
    std::fill(out.begin(), out.end(), 0xEE);
    EXPECT_EQ(kBytes, function(text.data(), 2 * kBytes, out.data(), kBytes));
    EXPECT_EQ(kBytes, std::count(out.begin(), out.end(), 0x77));
    EXPECT_EQ(0xEE, out.back());
  }
}

TEST(StrAsciiToBcd, WritesNothingWithoutRoom) {
  unsigned char out = 0xEE;

  for (const Padded function : {Str_AsciiToBcd, Str_AsciiToCn}) {
    EXPECT_EQ(0, function("12", 2, &out, 0));
    EXPECT_EQ(0, function("12", 2, &out, -1));
    EXPECT_EQ(0, function("12", 2, &out, INT_MIN));
    EXPECT_EQ(0, function("12", -1, &out, 1));
    EXPECT_EQ(0, function(nullptr, 2, &out, 1));
    EXPECT_EQ(0, function("12", 2, nullptr, 1));
  }

  EXPECT_EQ(0xEE, out);
}

TEST(StrHexToAsc, WritesUpperCaseAndAZero) {
  const Bytes bytes = {0x01, 0xAB, 0xFF};

  EXPECT_EQ("01ABFF", HexToAsc(bytes, 6));
  EXPECT_EQ("01ABF", HexToAsc(bytes, 5));
  EXPECT_EQ("0", HexToAsc(bytes, 1));
}

TEST(StrHexToAsc, WritesOnlyTheZeroForACountBelowOne) {
  const Bytes bytes = {0x01};

  EXPECT_EQ("", HexToAsc(bytes, 0));
  EXPECT_EQ("", HexToAsc(bytes, -5));
}

TEST(StrHexToAsc, WritesEveryCountOfEveryByte) {
  const Bytes bytes = AllBytes();
  const std::string all = Printed(bytes, kUpper);
  for (int count = 1; count <= 512; ++count) {
    std::string out(514, '#');
    EXPECT_EQ(0, Str_HexToAsc(bytes.data(), count, out.data()));
    EXPECT_EQ(all.substr(0, static_cast<std::size_t>(count)), out.c_str());
    EXPECT_EQ('#', out[static_cast<std::size_t>(count) + 1]);
  }
}

TEST(StrHexToAsc, FailsForNull) {
  char out[2] = {'#', '#'};
  const unsigned char byte = 1;

  EXPECT_EQ(-1, Str_HexToAsc(nullptr, 2, out));
  EXPECT_EQ(-1, Str_HexToAsc(&byte, 2, nullptr));

  EXPECT_EQ('#', out[0]);
}

TEST(StrSplitHexToBCD, WritesUpperCaseWithoutAZero) {
  const Bytes bytes = AllBytes();
  std::string out(513, '#');

  Str_SplitHexToBCD(bytes.data(), Size(bytes), out.data());

  EXPECT_EQ(Printed(bytes, kUpper) + "#", out);
}

TEST(StrSplitHexToBCD, DoesNothingWithoutBytes) {
  char out[] = "####";
  const unsigned char byte = 1;

  Str_SplitHexToBCD(nullptr, 1, out);
  Str_SplitHexToBCD(&byte, 0, out);
  Str_SplitHexToBCD(&byte, -1, out);
  Str_SplitHexToBCD(&byte, 1, nullptr);

  EXPECT_STREQ("####", out);
}

TEST(StrLocalSplitHexToBCD, WritesLowerCaseAndAZero) {
  const Bytes bytes = AllBytes();
  std::string out(514, '#');

  EXPECT_EQ(0, Str_localSplitHexToBCD(bytes.data(), Size(bytes), out.data()));

  EXPECT_EQ(Printed(bytes, kLower) + '\0' + "#", out);
}

TEST(StrLocalSplitHexToBCD, FailsForNull) {
  char out[] = "####";
  const unsigned char byte = 0xAB;

  EXPECT_EQ(-1, Str_localSplitHexToBCD(nullptr, 1, out));
  EXPECT_EQ(-1, Str_localSplitHexToBCD(&byte, 1, nullptr));
  EXPECT_EQ(-1, Str_localSplitHexToBCD(&byte, -1, out));
  EXPECT_EQ(0, Str_localSplitHexToBCD(&byte, 0, out));

  EXPECT_STREQ("####", out);
}

TEST(StrLocalHexCharToNum, KnowsTheHexCharactersAlone) {
  for (int c = 0; c < 256; ++c) {
    const std::string digits = "0123456789ABCDEFabcdef";
    const std::size_t at = digits.find(static_cast<char>(c));
    const int expected = at == digits.npos ? -1 : static_cast<int>(at < 16 ? at : at - 6);
    EXPECT_EQ(expected, Str_localHexCharToNum(static_cast<char>(c))) << c;
  }
}

TEST(StrMergeBcdToHex, MergesPairsOfEitherCase) {
  const Bytes bytes = AllBytes();
  for (const char* digits : {kUpper, kLower}) {
    const std::string text = Printed(bytes, digits);
    Bytes out(256);

    EXPECT_EQ(256, Str_MergeBcdToHex(text.data(), 512, out.data()));
    EXPECT_EQ(HexText(bytes), HexText(out));

    std::fill(out.begin(), out.end(), 0);
    EXPECT_EQ(256, Str_localMergeBcdToHex(text.data(), 512, out.data()));
    EXPECT_EQ(HexText(bytes), HexText(out));
  }
}

TEST(StrMergeBcdToHex, DoesNothingForAnOddLength) {
  unsigned char out[2] = {0xEE, 0xEE};

  for (const int len : {3, 1, 0, -1, -2}) EXPECT_EQ(0, Str_MergeBcdToHex("1234", len, out));
  EXPECT_EQ(0, Str_MergeBcdToHex(nullptr, 2, out));
  EXPECT_EQ(0, Str_MergeBcdToHex("12", 2, nullptr));

  EXPECT_EQ("EE EE", HexText(out));
}

TEST(StrLocalMergeBcdToHex, LeavesAnOddLastCharacterOut) {
  unsigned char out[2] = {0xEE, 0xEE};

  EXPECT_EQ(1, Str_localMergeBcdToHex("123", 3, out));

  EXPECT_EQ("12 EE", HexText(out));
}

TEST(StrLocalMergeBcdToHex, RefusesASingleCharacterAndNull) {
  unsigned char out = 0xEE;

  EXPECT_EQ(-1, Str_localMergeBcdToHex("1", 1, &out));
  EXPECT_EQ(-1, Str_localMergeBcdToHex(nullptr, 2, &out));
  EXPECT_EQ(-1, Str_localMergeBcdToHex("12", 2, nullptr));
  EXPECT_EQ(-1, Str_localMergeBcdToHex("12", -2, &out));
  EXPECT_EQ(0, Str_localMergeBcdToHex("12", 0, &out));

  EXPECT_EQ(0xEE, out);
}

TEST(StrLocalMergeBcdToHex, CountsOtherCharactersAsAllOnes) {
  unsigned char out[2] = {};

  EXPECT_EQ(2, Str_localMergeBcdToHex("G53 ", 4, out));

  EXPECT_EQ("F5 FF", HexText(out));
}

TEST(StrChar4ToInt, IsBigEndian) {
  unsigned int value = 0;
  const unsigned char bytes[] = {0x9A, 0xBC, 0xDE, 0xF0};

  Str_Char4ToInt(&value, bytes);
  EXPECT_EQ(0x9ABCDEF0u, value);

  Str_Char4ToInt(&value, nullptr);
  Str_Char4ToInt(nullptr, bytes);
  EXPECT_EQ(0x9ABCDEF0u, value);
}

TEST(StrDesNumtoHex, WritesTheLowBytesBigEndian) {
  struct {
    int n;
    const char* bytes;
  } const rows[] = {
      {1,  "F0 EE EE EE EE EE EE"},
      {2,  "DE F0 EE EE EE EE EE"},
      {3,  "BC DE F0 EE EE EE EE"},
      {4,  "9A BC DE F0 EE EE EE"},
      {6,  "00 00 9A BC DE F0 EE"},
      {0,  "EE EE EE EE EE EE EE"},
      {-1, "EE EE EE EE EE EE EE"},
  };
  for (const auto& [n, bytes] : rows) {
    unsigned char out[7];
    std::memset(out, 0xEE, sizeof out);
    EXPECT_EQ(0, Str_DesNumtoHex(0x9ABCDEF0, out, n));
    EXPECT_EQ(bytes, HexText(out));
  }
  EXPECT_EQ(0, Str_DesNumtoHex(1, nullptr, 4));
}
