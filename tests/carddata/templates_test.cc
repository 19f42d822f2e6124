// Fingerprint templates: where they are taken from, and every value of the lengths that say so.
#include <gtest/gtest.h>
#include <sys/mman.h>

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>

#include "quillonid/carddata.h"
#include "tests/carddata/native_data.h"
#include "tests/carddata/record_fields.h"
#include "tests/testing/hex_text.h"
#include "tests/testing/valgrind.h"

namespace {

const unsigned kStep = StepThroughEverything();

constexpr std::size_t kTextLengthAt = 10;
constexpr std::size_t kPhotoLengthAt = 12;
constexpr std::size_t kFingerLengthAt = 14;

Bytes Counting(std::size_t size) {
  Bytes bytes(size);
  for (std::size_t i = 0; i < size; ++i) bytes[i] = static_cast<std::uint8_t>(i * 167 + i / 256);
  return bytes;
}

// Hexadecimal digits without blanks.
std::string Digits(const Bytes& bytes, std::size_t first, std::size_t count) {
  std::string text;
  for (std::size_t i = 0; i < count; ++i) {
    const unsigned byte = bytes.at(first + i / 2);
    text += "0123456789ABCDEF"[i % 2 == 0 ? byte / 16 : byte % 16];
  }
  return text;
}

// Native data that ends where readable memory ends.
class NativeBuffer {
 public:
  NativeBuffer()
      : memory_(
            mmap(nullptr, 2 * kPage, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0)) {
    EXPECT_NE(MAP_FAILED, memory_);
    EXPECT_EQ(0, mprotect(bytes() + kSize, kPage, PROT_NONE));
  }
  NativeBuffer(const NativeBuffer&) = delete;
  NativeBuffer& operator=(const NativeBuffer&) = delete;
  ~NativeBuffer() { munmap(memory_, 2 * kPage); }

  unsigned char* bytes() const { return static_cast<unsigned char*>(memory_) + kPage - kSize; }
  void Fill(const Bytes& native) const { std::memcpy(bytes(), native.data(), kSize); }

  void Put(std::size_t at, unsigned value) const {
    bytes()[at] = static_cast<unsigned char>(value >> 8);
    bytes()[at + 1] = static_cast<unsigned char>(value);
  }

 private:
  static constexpr std::size_t kPage = 65536;  // of the machine with the largest pages
  static constexpr std::size_t kSize = 4096;

  void* memory_;
};

struct Templates {
  std::string first;
  std::string second;
};

// Into fields of 1,025 bytes, whose neighbours must stay as they are.
Templates Get(const unsigned char* native) {
  struct {
    char first[1025];
    char between[64];
    char second[1025];
    char behind[64];
  } memory;
  std::memset(&memory, '#', sizeof memory);
  tFuncGetFpTemplate(native, memory.first, memory.second);
  EXPECT_EQ(std::string(64, '#'), std::string(memory.between, 64));
  EXPECT_EQ(std::string(64, '#'), std::string(memory.behind, 64));
  return {memory.first, memory.second};
}

// What the lengths ask for, as far as it can be had.
std::string Expected(const Bytes& native, std::size_t first, std::size_t digits) {
  const std::size_t count = std::min<std::size_t>(digits, 1024);
  if (first + (count + 1) / 2 > native.size()) return "";
  return Digits(native, first, count);
}

}  // namespace

TEST(tFuncGetFpTemplate, WritesTwoTemplatesOfHalfTheBlock) {
  const Bytes block = Counting(1024);
  const Bytes native = NativeData(1, Bytes(256), block);

  const Templates templates = Get(native.data());

  EXPECT_EQ(Digits(block, 0, 1024), templates.first);
  EXPECT_EQ(Digits(block, 512, 1024), templates.second);
}

TEST(tFuncGetFpTemplate, LeavesBothEmptyWithoutFingerprints) {
  const Templates templates = Get(NativeData(1, Bytes(256)).data());
  EXPECT_EQ("", templates.first);
  EXPECT_EQ("", templates.second);
}

TEST(tFuncGetFpTemplate, WritesAsManyDigitsAsTheBlockHasBytes) {
  const Bytes block = Counting(1024);
  for (unsigned length = 0; length <= 1024; ++length) {
    Bytes native = NativeData(1, Bytes(256), block);
    PutBigEndian16(&native, kFingerLengthAt, length);

    const Templates templates = Get(native.data());

    ASSERT_EQ(Digits(block, 0, length), templates.first) << length;
    ASSERT_EQ(Digits(block, length / 2, length), templates.second) << length;
  }
}

// Against an unsigned length read as a negative one, against digits behind the field, and against
// bytes from behind the native data.
TEST(tFuncGetFpTemplate, StaysInsideForEveryValueOfEveryLength) {
  struct Lengths {
    std::size_t at;     // the length that takes every value
    unsigned usual[3];  // text, photo and fingerprints
  };
  const Lengths kCases[] = {
      {kTextLengthAt,   {0, 1024, 1024}},
      {kTextLengthAt,   {0, 1024, 1023}}, // an odd number of digits
      {kPhotoLengthAt,  {256, 0, 1024} },
      {kFingerLengthAt, {256, 1024, 0} }
  };
  const Bytes plain = Counting(4096);
  NativeBuffer buffer;
  for (const auto& [at, usual] : kCases) {
    Bytes native = plain;
    for (std::size_t i = 0; i < 3; ++i) PutBigEndian16(&native, kTextLengthAt + 2 * i, usual[i]);
    const std::size_t sum = usual[0] + usual[1];
    for (unsigned value = 0; value <= 0xFFFF; value += kStep) {
      PutBigEndian16(&native, at, value);
      buffer.Fill(native);
      const std::size_t first = 16 + sum + (at == kFingerLengthAt ? 0 : value);
      const std::size_t digits = at == kFingerLengthAt ? value : usual[2];

      const Templates templates = Get(buffer.bytes());

      ASSERT_EQ(Expected(native, first, digits), templates.first) << at << ' ' << value;
      ASSERT_EQ(Expected(native, first + digits / 2, digits), templates.second)
          << at << ' ' << value;
    }
  }
}

TEST(tFuncGetFpTemplate, IgnoresNull) {
  const Bytes native = NativeData(1, Bytes(256), Counting(1024));
  char field[1025] = "#";

  tFuncGetFpTemplate(nullptr, field, field);
  tFuncGetFpTemplate(native.data(), nullptr, field);
  tFuncGetFpTemplate(native.data(), field, nullptr);
  GetGATFpTemplate(native.data(), nullptr);

  EXPECT_STREQ("#", field);
}

namespace {

const std::string kNumber = "999999199001010";

Bytes CardOf(RecordKind kind) {
  CardTexts texts = {
      {"name",    u"张三"         },
      {"sexCode", u"1"              },
      {"cardId",  u"999999199001010"}
  };
  if (kind == RecordKind::kChina) texts["nationCode"] = u"01";
  if (kind == RecordKind::kForeign) texts["nationCode"] = u"USA";
  return CardText(kind, texts);
}

// Every value of every length, in both modes: no length moves a text or a byte outside the record.
template <typename Record, typename Parse>
void ExpectTheSameText(RecordKind kind, const Bytes& text, Parse parse) {
  NativeBuffer buffer;
  for (const int mode : {0, 1}) {
    const Bytes native = NativeData(mode, text, mode == 1 ? Counting(1024) : Bytes());
    buffer.Fill(native);
    RawRecord clean(kind, true);
    ASSERT_EQ(0, parse(mode, buffer.bytes(), clean.As<Record>()));
    ASSERT_EQ(kNumber, clean.Text("cardId").substr(0, kNumber.size()));
    ASSERT_EQ("男", clean.Text("sex"));
    const std::size_t texts = FieldNamed(clean.fields(), "fingerData1").offset;
    RawRecord raw(kind, true);
    Record* const record = raw.As<Record>();
    for (std::size_t at = kTextLengthAt; at <= (mode == 1 ? kFingerLengthAt : kPhotoLengthAt);
         at += 2) {
      for (unsigned value = 0; value <= 0xFFFF; value += kStep) {
        buffer.Put(at, value);
        std::memset(record, 0, sizeof *record);

        ASSERT_EQ(0, parse(mode, buffer.bytes(), record));

        ASSERT_EQ(0, std::memcmp(clean.As<Record>(), record, texts)) << at << ' ' << value;
        ASSERT_EQ('\0', record->fingerData1[1024]);
        ASSERT_EQ('\0', record->fingerData2[1024]);
      }
      ASSERT_TRUE(raw.IsTailUntouched()) << at;
      buffer.Fill(native);
    }
  }
}

}  // namespace

// The text block is found by the mode alone.
TEST(EveryNativeLength, GivesTheSameTextOfAResidentsCard) {
  ExpectTheSameText<PERSONINFO_CHA_FP>(RecordKind::kChina, CardOf(RecordKind::kChina),
                                       GetPersonChinaInfo);
}

TEST(EveryNativeLength, GivesTheSameTextOfAForeignersCard) {
  ExpectTheSameText<PERSONINFO_FOR_FP>(RecordKind::kForeign, CardOf(RecordKind::kForeign),
                                       GetPersonForeignInfo);
}

TEST(EveryNativeLength, GivesTheSameTextOfAPermit) {
  ExpectTheSameText<PERSONINFO_GAT_FP>(RecordKind::kGat, CardOf(RecordKind::kGat),
                                       GetPersonGATInfo);
}

TEST(EveryNativeLength, GivesTheSameTextOfAnyCard) {
  for (const int foreigner : {0, 1}) {
    const RecordKind kind = foreigner == 0 ? RecordKind::kChina : RecordKind::kForeign;
    ExpectTheSameText<PERSONINFO_FP>(
        RecordKind::kPerson, CardOf(kind),
        [=](int mode, const unsigned char* native, PERSONINFO_FP* record) {
          return GetPersonInfo(foreigner, mode, native, record);
        });
  }
}

TEST(NativeDataParsers, TakeTemplatesInModeOneOnly) {
  const Bytes block = Counting(1024);
  const auto first = [&](RecordKind kind, int mode) {
    const Bytes text = CardText(kind == RecordKind::kPerson ? RecordKind::kChina : kind, {});
    const Bytes native = NativeData(1, text, block);
    RawRecord record(kind, true);
    switch (kind) {
      case RecordKind::kChina:
        GetPersonChinaInfo(mode, native.data(), record.As<PERSONINFO_CHA_FP>());
        break;
      case RecordKind::kForeign:
        GetPersonForeignInfo(mode, native.data(), record.As<PERSONINFO_FOR_FP>());
        break;
      case RecordKind::kGat:
        GetPersonGATInfo(mode, native.data(), record.As<PERSONINFO_GAT_FP>());
        break;
      default:
        GetPersonInfo(0, mode, native.data(), record.As<PERSONINFO_FP>());
        break;
    }
    return std::pair(record.Text("fingerData1"), record.Text("fingerData2"));
  };
  for (const RecordKind kind :
       {RecordKind::kChina, RecordKind::kForeign, RecordKind::kGat, RecordKind::kPerson}) {
    EXPECT_EQ(std::pair(Digits(block, 0, 1024), Digits(block, 512, 1024)), first(kind, 1));
    EXPECT_EQ(std::pair(std::string(), std::string()), first(kind, 0));
    EXPECT_EQ(std::pair(std::string(), std::string()), first(kind, 2));
  }
}

TEST(GetGATFpTemplate, FillsAPermitsTemplatesAlone) {
  const Bytes block = Counting(1024);
  const Bytes native = NativeData(1,
                                  CardText(RecordKind::kGat,
                                           {
                                               {"name", u"张三"}
  }),
                                  block);
  RawRecord record(RecordKind::kGat, true);

  GetGATFpTemplate(native.data(), record.As<PERSONINFO_GAT_FP>());

  EXPECT_EQ("", record.Text("name"));
  EXPECT_EQ(Digits(block, 0, 1024), record.Text("fingerData1"));
  EXPECT_EQ(Digits(block, 512, 1024), record.Text("fingerData2"));
}

// The pieces behind the text are converted as if they were text, as far as a field's text goes.
TEST(IdGATParam_FP, ConvertsTwoPiecesBehindTheTextOfALongAnswer) {
  Bytes native = CardText(RecordKind::kGat, {
                                                {"name", u"张三"}
  });
  for (const char piece : {'x', 'y'}) {
    for (int unit = 0; unit < 256; ++unit) {
      native.insert(native.end(), {static_cast<std::uint8_t>(piece), 0});
    }
  }
  native.resize(4096);
  RawRecord record(RecordKind::kGat, true, '#');

  EXPECT_EQ(0, IdGATParam_FP(1298, native.data(), 0, record.As<PERSONINFO_GAT_FP>()));

  EXPECT_EQ("张三             ", record.Text("name"));
  EXPECT_EQ(std::string(128, 'x') + std::string(897, '\0'), record.Get("fingerData1"));
  EXPECT_EQ(std::string(128, 'y') + std::string(897, '\0'), record.Get("fingerData2"));
  EXPECT_TRUE(record.IsTailUntouched());
}

TEST(IdGATParam_FP, ConvertsTheTextAloneOfAShortAnswer) {
  const Bytes native = NativeData(1, CardText(RecordKind::kGat, {
                                                                    {"name", u"张三"}
  }));
  for (const int total : {1297, 1295, 0, -1}) {
    RawRecord record(RecordKind::kGat, true, '#');
    EXPECT_EQ(0, IdGATParam_FP(total, native.data(), 16, record.As<PERSONINFO_GAT_FP>()));
    EXPECT_EQ("张三             ", record.Text("name"));
    EXPECT_EQ(std::string(1025, '#'), record.Get("fingerData1"));
  }
}
