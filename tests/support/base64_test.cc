// Base64, against the vectors of RFC 4648 and against plain loops.
#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <cstring>
#include <random>
#include <string>
#include <vector>

#include "quillonid/support.h"
#include "tests/support/guarded_block.h"
#include "tests/testing/hex_text.h"

namespace {

using Bytes = std::vector<unsigned char>;

const std::string kAlphabet = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
constexpr unsigned char kUntouched = 0x5A;

Bytes RandomBytes(std::size_t count) {
  static std::mt19937 generator(20010203);
  Bytes bytes(count);
  for (auto& byte : bytes) byte = static_cast<unsigned char>(generator());
  return bytes;
}

// Bit by bit.
std::string PlainEncode(const Bytes& bytes, const std::string& alphabet) {
  std::string bits;
  for (const unsigned char byte : bytes) {
    for (int bit = 7; bit >= 0; --bit) bits += (byte >> bit & 1) ? '1' : '0';
  }
  while (bits.size() % 6 != 0) bits += '0';
  std::string text;
  for (std::size_t i = 0; i < bits.size(); i += 6) {
    text += alphabet[std::stoul(bits.substr(i, 6), nullptr, 2)];
  }
  while (text.size() % 4 != 0) text += '=';
  return text;
}

int PlainIndex(char c, const std::string& alphabet) {
  const std::size_t at = alphabet.find(c);
  return c == '=' ? 0 : at == std::string::npos ? -1 : static_cast<int>(at);
}

int Floor(int value, int divisor) { return value < 0 ? -1 : value / divisor; }  // for -1 to 63

struct Decoded {
  int result;
  Bytes buffer;
};

bool operator==(const Decoded& a, const Decoded& b) {
  return a.result == b.result && a.buffer == b.buffer;
}

void PrintTo(const Decoded& decoded, std::ostream* out) {
  *out << decoded.result << ": " << HexText(decoded.buffer);
}

// With multiplication and division for the shifts; `room` bytes of buffer.
Decoded PlainDecode(const std::string& text, int out_size, std::size_t room,
                    const std::string& alphabet = kAlphabet) {
  Decoded decoded = {0, Bytes(room, kUntouched)};
  for (std::size_t group = 0; group + 4 <= text.size(); group += 4) {
    const int left[] = {4, 16, 64}, right[] = {16, 4, 1};
    for (std::size_t j = 0; j < 3; ++j) {
      const char first = text[group + j], second = text[group + j + 1];
      if (first == '=' || second == '=') return decoded;
      if (decoded.result > out_size) {
        decoded.result = -1;
        return decoded;
      }
      const int high = (PlainIndex(first, alphabet) * left[j] + 256) % 256;
      const int low = (Floor(PlainIndex(second, alphabet), right[j]) + 256) % 256;
      decoded.buffer[static_cast<std::size_t>(decoded.result++)] =
          static_cast<unsigned char>(high | low);
    }
  }
  return decoded;
}

using Decoder = int (*)(const char*, int, unsigned char*, int);

Decoded Decode(const std::string& text, int out_size, std::size_t room,
               Decoder decoder = Base64_DecData) {
  Decoded decoded = {0, Bytes(room, kUntouched)};
  decoded.result =
      decoder(text.data(), static_cast<int>(text.size()), decoded.buffer.data(), out_size);
  return decoded;
}

using Encoder = int (*)(const unsigned char*, int, char*, int);

std::string Encode(const Bytes& bytes, Encoder encoder = Base64_EncData) {
  std::string text((bytes.size() + 2) / 3 * 4, '#');
  const auto room = static_cast<int>(text.size());
  EXPECT_EQ(room, encoder(bytes.data(), static_cast<int>(bytes.size()), text.data(), room));
  return text;
}

struct Vector {
  const char* bytes;
  const char* text;
};

constexpr Vector kVectors[] = {
  // RFC 4648, section 10
    {"",       ""        },
    {"f",      "Zg=="    },
    {"fo",     "Zm8="    },
    {"foo",    "Zm9v"    },
    {"foob",   "Zm9vYg=="},
    {"fooba",  "Zm9vYmE="},
    {"foobar", "Zm9vYmFy"},
    {"Man",    "TWFu"    },
};

std::string Reversed(std::string text) { return {text.rbegin(), text.rend()}; }

}  // namespace

TEST(Base64EncData, GivesTheKnownTexts) {
  for (const Vector& each : kVectors) {
    const std::string bytes = each.bytes;

    EXPECT_EQ(each.text, Encode(Bytes(bytes.begin(), bytes.end())));
    EXPECT_EQ(each.text, Encode(Bytes(bytes.begin(), bytes.end()), EncryptBase64));
  }
}

TEST(Base64EncData, EqualsThePlainLoopAtEveryLengthAndAlignment) {
  for (std::size_t length = 1; length <= 100; ++length) {
    for (std::size_t offset = 0; offset < 16; ++offset) {
      const Bytes bytes = RandomBytes(length);
      std::vector<unsigned char> in(offset);
      in.insert(in.end(), bytes.begin(), bytes.end());
      const std::string expected = PlainEncode(bytes, kAlphabet);
      std::string text(16 - offset + expected.size() + 16, '#');

      const int got = Base64_EncData(in.data() + offset, static_cast<int>(length),
                                     text.data() + 16 - offset, static_cast<int>(expected.size()));

      ASSERT_EQ(static_cast<int>(expected.size()), got);
      ASSERT_EQ(std::string(16 - offset, '#') + expected + std::string(16, '#'), text);
    }
  }
}

TEST(Base64EncData, GivesEveryIndexAtEveryPlace) {
  Bytes bytes;
  for (unsigned value = 0; value < 64; ++value) {
    for (unsigned place = 0; place < 4; ++place) {
      const unsigned group = value << (6 * place);
      for (const unsigned shift : {16U, 8U, 0U}) {
        bytes.push_back(static_cast<unsigned char>(group >> shift));
      }
    }
  }

  EXPECT_EQ(PlainEncode(bytes, kAlphabet), Encode(bytes));
  EXPECT_EQ(HexText(bytes), HexText(Decode(Encode(bytes), 768, 768).buffer));
}

TEST(Base64EncData, WantsRoomForTheWholeText) {
  const unsigned char bytes[] = {1, 2, 3, 4};
  char text[8];

  EXPECT_EQ(-1, Base64_EncData(bytes, 1, text, 3));
  EXPECT_EQ(4, Base64_EncData(bytes, 1, text, 4));
  EXPECT_EQ(-1, Base64_EncData(bytes, 4, text, 7));
  EXPECT_EQ(8, Base64_EncData(bytes, 4, text, 8));
  EXPECT_EQ(-1, Base64_EncData(bytes, 0, text, -1));
}

TEST(Base64EncData, GivesNothingForNoBytes) {
  const unsigned char byte = 1;
  char text[] = "#";

  EXPECT_EQ(0, Base64_EncData(&byte, 0, text, 0));
  EXPECT_EQ(0, Base64_EncData(&byte, -1, text, 0));
  EXPECT_EQ(0, Base64_EncData(&byte, INT_MIN, text, 0));
  EXPECT_EQ(0, Base64_EncData(nullptr, 1, text, 4));
  EXPECT_STREQ("#", text);
}

TEST(Base64EncData, RefusesSizesWhoseTextIsBeyondInt) {
  const unsigned char byte = 1;
  char text[] = "#";

  EXPECT_EQ(-1, Base64_EncData(&byte, 1'610'612'737, text, INT_MAX));
  EXPECT_EQ(-1, Base64_EncData(&byte, INT_MAX, text, INT_MAX));
  EXPECT_STREQ("#", text);
}

TEST(Base64DecData, ReadsTheKnownTexts) {
  for (const Vector& each : kVectors) {
    const std::string bytes = each.bytes;
    const auto count = static_cast<int>(bytes.size());

    for (const Decoder decoder : {Base64_DecData, DecryptBase64}) {
      const Decoded decoded = Decode(each.text, count, bytes.size() + 1, decoder);

      EXPECT_EQ(count, decoded.result);
      EXPECT_EQ(HexText(bytes) + (count ? " 5A" : "5A"), HexText(decoded.buffer));
    }
  }
}

TEST(Base64DecData, IgnoresAnIncompleteGroup) {
  EXPECT_EQ((Decoded{0, Bytes(4, kUntouched)}), Decode("TWF", 4, 4));
  EXPECT_EQ((Decoded{
                3, {'M', 'a', 'n', kUntouched, kUntouched, kUntouched}
  }),
            Decode("TWFuTWF", 6, 6));
  EXPECT_EQ(0, Base64_DecData("TWFu", -4, nullptr, 3));
  EXPECT_EQ(0, Base64_DecData(nullptr, 4, nullptr, 3));
}

TEST(Base64DecData, StopsAtPaddingAnywhere) {
  for (std::size_t place = 0; place < 32; ++place) {
    std::string text = Encode(RandomBytes(24));
    text[place] = '=';

    const Decoded decoded = Decode(text, 24, 25);

    EXPECT_EQ(PlainDecode(text, 24, 25), decoded) << text;
  }
  EXPECT_EQ(0, Decode("=WFuTWFu", 6, 7).result);
  EXPECT_EQ(0, Decode("T=FuTWFu", 6, 7).result);
  EXPECT_EQ(1, Decode("TW==TWFu", 6, 7).result);
  EXPECT_EQ(2, Decode("TWF=TWFu", 6, 7).result);
}

TEST(Base64DecData, MayWriteOneByteMoreThanTheSizeGiven) {
  EXPECT_EQ((Decoded{
                3, {'M', 'a', 'n'}
  }),
            Decode("TWFu", 2, 3));
  EXPECT_EQ((Decoded{
                -1, {'M', 'a', kUntouched}
  }),
            Decode("TWFu", 1, 3));
  EXPECT_EQ((Decoded{
                2, {'M', 'a', kUntouched}
  }),
            Decode("TWE=", 1, 3));
  EXPECT_EQ((Decoded{-1, Bytes(3, kUntouched)}), Decode("TWFu", -1, 3));
}

TEST(Base64DecData, TakesStrangersAsIndexMinusOne) {
  EXPECT_EQ("FC 00 00", HexText(Decode("!AAA", 3, 3).buffer));
  EXPECT_EQ("FF F0 00", HexText(Decode("A!AA", 3, 3).buffer));
  EXPECT_EQ("00 FF C0", HexText(Decode("AA!A", 3, 3).buffer));
  EXPECT_EQ("00 00 FF", HexText(Decode("AAA!", 3, 3).buffer));
  EXPECT_EQ("FF FF FF", HexText(Decode("\x80\xFF\n ", 3, 3).buffer));
}

TEST(Base64DecData, EqualsThePlainLoopForEveryCharacterAtEveryPlace) {
  for (int value = 0; value < 256; ++value) {
    for (std::size_t place = 0; place < 20; ++place) {
      std::string text = Encode(RandomBytes(15));
      text[place] = static_cast<char>(value);

      ASSERT_EQ(PlainDecode(text, 15, 16), Decode(text, 15, 16)) << text;
    }
  }
}

TEST(Base64DecData, EqualsThePlainLoopAtEveryLengthAlignmentAndSize) {
  for (std::size_t length = 0; length <= 72; ++length) {
    for (int out_size = 0; out_size <= 60; ++out_size) {
      const std::string longer = PlainEncode(RandomBytes(90), kAlphabet);
      const std::string text = longer.substr(0, length);
      const std::size_t offset = static_cast<std::size_t>(out_size) % 16;
      const std::string moved = std::string(offset, ' ') + longer;
      Decoded decoded = {0, Bytes(offset + 64, kUntouched)};

      decoded.result = Base64_DecData(moved.data() + offset, static_cast<int>(length),
                                      decoded.buffer.data() + offset, out_size);

      decoded.buffer.erase(decoded.buffer.begin(),
                           decoded.buffer.begin() + static_cast<std::ptrdiff_t>(offset));
      ASSERT_EQ(PlainDecode(text, out_size, 64), decoded) << length << " " << out_size;
    }
  }
}

TEST(Base64, ReadsNothingBehindItsInput) {
  const GuardedBlock block;
  char text[136];
  unsigned char bytes[100];
  for (int length = 1; length <= 100; ++length) {
    const auto count = static_cast<std::size_t>(length);
    std::memset(block.Last(count), 'A', count);

    EXPECT_EQ((length + 2) / 3 * 4, Base64_EncData(block.Last(count), length, text, 136));
    EXPECT_EQ(length / 4 * 3,
              Base64_DecData(reinterpret_cast<const char*>(block.Last(count)), length, bytes, 100));
  }
}

TEST(Base64DecData, DecodesInPlace) {
  const Bytes bytes = RandomBytes(300);
  std::string text = Encode(bytes);

  const int got = Base64_DecData(text.data(), static_cast<int>(text.size()),
                                 reinterpret_cast<unsigned char*>(text.data()), 300);

  EXPECT_EQ(300, got);
  EXPECT_EQ(HexText(bytes), HexText(text.data(), 300));
}

TEST(GetIndexFromTable, IsThePositionInTheAlphabet) {
  for (int value = 0; value < 256; ++value) {
    const auto c = static_cast<unsigned char>(value);
    const int expected = PlainIndex(static_cast<char>(c), kAlphabet + '\xFF') % 64;
    const int index = value == 0xFF ? -1 : expected;

    EXPECT_EQ(index, GetIndexFromTable(c)) << value;
    EXPECT_EQ(index, GetIndexFromBase64Table(c)) << value;
  }
}

TEST(IniBase64Table, GivesTheStandardAlphabetToWriteTo) {
  char* const table = IniBase64Table();
  ASSERT_EQ(kAlphabet, std::string(table, 64));
  const std::string reversed = Reversed(kAlphabet);
  std::memcpy(table, reversed.data(), 64);
  const Bytes bytes = RandomBytes(100);

  const std::string text = Encode(bytes, EncryptBase64);

  EXPECT_EQ(PlainEncode(bytes, reversed), text);
  EXPECT_EQ(PlainEncode(bytes, kAlphabet), Encode(bytes));
  EXPECT_EQ(PlainDecode(text, 100, 101, reversed), Decode(text, 100, 101, DecryptBase64));
  EXPECT_EQ(63, GetIndexFromBase64Table('A'));
  EXPECT_EQ(0, GetIndexFromTable('A'));
  EXPECT_EQ(0, GetIndexFromBase64Table('='));

  EXPECT_EQ(table, IniBase64Table());
  EXPECT_EQ(PlainEncode(bytes, kAlphabet), Encode(bytes, EncryptBase64));
  EXPECT_EQ(0, GetIndexFromBase64Table('A'));
}

TEST(DecryptBase64, TakesTheFirstOfEqualCharacters) {
  char* const table = IniBase64Table();
  table[63] = 'A';

  EXPECT_EQ(0, GetIndexFromBase64Table('A'));
  EXPECT_EQ(-1, GetIndexFromBase64Table('/'));
  EXPECT_EQ("00 00 00", HexText(Decode("AAAA", 3, 3, DecryptBase64).buffer));
  EXPECT_EQ("00 00 FF", HexText(Decode("AAA/", 3, 3, DecryptBase64).buffer));
}
