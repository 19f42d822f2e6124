#include "simulator/card.h"

#include <gtest/gtest.h>
#include <iconv.h>

#include <numeric>
#include <set>
#include <stdexcept>

#include "tests/testing/hex_text.h"

namespace simulator {
namespace {

Bytes Part(const Bytes& bytes, std::size_t offset, std::size_t size) {
  return {bytes.begin() + static_cast<std::ptrdiff_t>(offset),
          bytes.begin() + static_cast<std::ptrdiff_t>(offset + size)};
}

unsigned XorFromLength(const Bytes& frame) {
  return std::accumulate(frame.begin() + 5, frame.end(), 0U,
                         [](unsigned sum, std::uint8_t byte) { return sum ^ byte; });
}

std::string ByIconv(const std::string& utf8) {
  iconv_t converter = iconv_open("UTF-16LE", "UTF-8");
  std::string in = utf8;
  std::string out(4 * utf8.size() + 4, '\0');
  char* from = in.data();
  char* to = out.data();
  std::size_t in_left = in.size();
  std::size_t out_left = out.size();
  EXPECT_EQ(0U, iconv(converter, &from, &in_left, &to, &out_left)) << utf8;
  iconv_close(converter);
  out.resize(out.size() - out_left);
  return out;
}

TEST(Specimens, AreOfThreeKindsEachWithItsPlainOne) {
  EXPECT_EQ(Kind::kResident, FindSpecimen("resident")->kind);
  EXPECT_EQ(Kind::kForeigner, FindSpecimen("foreigner")->kind);
  EXPECT_EQ(Kind::kPermit, FindSpecimen("permit")->kind);
  EXPECT_EQ(nullptr, FindSpecimen("resident "));
  EXPECT_THROW(MakeCard("nobody"), std::invalid_argument);

  std::set<std::string> ids;
  for (const Specimen& specimen : Specimens()) ids.insert(specimen.id);
  EXPECT_EQ(Specimens().size(), ids.size());
}

TEST(Specimens, NameFieldsOfTheirKindOnly) {
  for (const Specimen& specimen : Specimens()) {
    std::set<std::string> names;
    for (const TextField& field : TextFields(specimen.kind)) names.insert(field.name);
    for (const auto& [name, text] : specimen.text) {
      EXPECT_EQ(1U, names.count(name)) << specimen.id << " " << name;
    }
  }
}

// Nobody's number can be meant: 999999 is no area. The check digit is ISO 7064 MOD 11-2.
TEST(Specimens, HaveIdentityNumbersOfNoPlaceThatCheck) {
  for (const Specimen& specimen : Specimens()) {
    const std::string number = specimen.text.at("cardId");
    if (specimen.kind == Kind::kForeigner || number.size() != 18) continue;

    const std::string area = specimen.kind == Kind::kResident ? "999999" : number.substr(0, 6);
    EXPECT_EQ(area, number.substr(0, 6));
    EXPECT_EQ(specimen.text.at("birthday"), number.substr(6, 8)) << specimen.id;
    unsigned rest = 0;
    for (const char digit : number) {
      rest = (rest * 2 + (digit == 'X' ? 10U : static_cast<unsigned>(digit - '0'))) % 11;
    }
    EXPECT_EQ(1U, rest) << specimen.id;
  }
}

TEST(Specimens, AreMarkedInTheName) {
  for (const Specimen& specimen : Specimens()) {
    std::string names;
    if (specimen.text.count("name") != 0) names += specimen.text.at("name");
    if (specimen.text.count("EngName") != 0) names += specimen.text.at("EngName");
    EXPECT_TRUE(names.find("样本") != std::string::npos ||
                names.find("SPECIMEN") != std::string::npos)
        << specimen.id;
  }
}

TEST(Specimens, FillEveryFieldOfEachKindToItsEnd) {
  for (const Kind kind : {Kind::kResident, Kind::kForeigner, Kind::kPermit}) {
    for (const TextField& field : TextFields(kind)) {
      bool full = false;
      for (const Specimen& specimen : Specimens()) {
        const auto text = specimen.text.find(field.name);
        if (specimen.kind != kind || text == specimen.text.end()) continue;
        full = full || Ucs2(text->second).size() == field.size;
      }
      EXPECT_TRUE(full) << field.name;
    }
  }
}

TEST(Specimens, LookDifferent) {
  std::set<std::string> photos;
  for (const Specimen& specimen : Specimens()) {
    const Card card = MakeCard(specimen);
    ASSERT_EQ(1024U, card.photo.size());
    PortraitStyle style;
    ASSERT_TRUE(ReadSpecimenPhotoBlock(card.photo.data(), &style)) << specimen.id;
    EXPECT_EQ(specimen.portrait, style);
    photos.insert(HexText(card.photo));
  }
  EXPECT_EQ(Specimens().size(), photos.size());
}

TEST(TextFields, CoverTheTextWithoutAGap) {
  for (const Kind kind : {Kind::kResident, Kind::kForeigner, Kind::kPermit}) {
    std::size_t offset = 0;
    for (const TextField& field : TextFields(kind)) {
      EXPECT_EQ(offset, field.offset) << field.name;
      offset += field.size;
    }
    EXPECT_EQ(kTextSize, offset);
  }
}

TEST(Ucs2, IsLittleEndianWithTwoUnitsOutsideTheBasicPlane) {
  EXPECT_EQ("41 00", HexText(Ucs2("A")));
  EXPECT_EQ("B7 00", HexText(Ucs2("\u00B7")));
  EXPECT_EQ("37 68 2C 67 32 75", HexText(Ucs2("样本甲")));
  EXPECT_EQ("42 D8 B7 DF", HexText(Ucs2("𠮷")));
  EXPECT_EQ("", HexText(Ucs2("")));
}

TEST(Ucs2, AgreesWithIconvOnEverySpecimen) {
  for (const Specimen& specimen : Specimens()) {
    for (const auto& [name, text] : specimen.text) {
      EXPECT_EQ(HexText(ByIconv(text)), HexText(Ucs2(text))) << specimen.id << " " << name;
    }
  }
}

TEST(Ucs2, RefusesWhatIsNotUtf8) {
  for (const char* text : {"\x80", "\xC0\x80", "\xE6\xA0", "\xE6\x41\x41", "\xF5\x80\x80\x80"}) {
    EXPECT_THROW(Ucs2(text), std::invalid_argument) << HexText(std::string(text));
  }
}

TEST(CardText, PadsWithBlanksAndCarriesTheMark) {
  const Bytes resident = CardText(MakeCard("resident"));
  ASSERT_EQ(256U, resident.size());
  EXPECT_EQ("37 68 2C 67 32 75 20 00 20 00", HexText(Part(resident, 0, 10)));
  EXPECT_EQ("20 00 32 00 30 00 31 00", HexText(Part(resident, 28, 8)));
  EXPECT_EQ("31 00 39 00 39 00 30 00", HexText(Part(resident, 36, 8)));
  EXPECT_EQ("20 00", HexText(Part(resident, 248, 2)));

  EXPECT_EQ("49 00", HexText(Part(CardText(MakeCard("foreigner")), 248, 2)));
  EXPECT_EQ("4A 00", HexText(Part(CardText(MakeCard("permit")), 248, 2)));
  EXPECT_EQ("20 00", HexText(Part(CardText(MakeCard("resident-full")), 248, 2)));
}

TEST(CardText, RefusesATextThatDoesNotFit) {
  Card card = MakeCard("resident");
  card.person.text["name"] = "样本一二三四五六七八九十一二三四";

  EXPECT_THROW(CardText(card), std::invalid_argument);
}

TEST(NativeData, OfAPlainReadHas1295Bytes) {
  const Card card = MakeCard("resident", true);

  const Bytes data = NativeData(card, false);

  ASSERT_EQ(1295U, data.size());
  EXPECT_EQ("AA AA AA 96 69 05 08 00 00 90 01 00 04 00", HexText(Part(data, 0, 14)));
  EXPECT_EQ(HexText(CardText(card)), HexText(Part(data, 14, 256)));
  EXPECT_EQ(HexText(card.photo), HexText(Part(data, 270, 1024)));
  EXPECT_EQ(0U, XorFromLength(data));
}

TEST(NativeData, WithoutTemplatesHas1297Bytes) {
  const Card card = MakeCard("permit");

  const Bytes data = NativeData(card, true);

  ASSERT_EQ(1297U, data.size());
  EXPECT_EQ("AA AA AA 96 69 05 0A 00 00 90 01 00 04 00 00 00", HexText(Part(data, 0, 16)));
  EXPECT_EQ(HexText(CardText(card)), HexText(Part(data, 16, 256)));
  EXPECT_EQ(HexText(card.photo), HexText(Part(data, 272, 1024)));
  EXPECT_EQ(0U, XorFromLength(data));
}

TEST(NativeData, WithTemplatesHas2321Bytes) {
  const Card card = MakeCard("foreigner", true);

  const Bytes data = NativeData(card, true);

  ASSERT_EQ(2321U, data.size());
  EXPECT_EQ("AA AA AA 96 69 09 0A 00 00 90 01 00 04 00 04 00", HexText(Part(data, 0, 16)));
  EXPECT_EQ(HexText(card.photo), HexText(Part(data, 272, 1024)));
  EXPECT_EQ(HexText(FingerTemplate(card, 1)), HexText(Part(data, 1296, 512)));
  EXPECT_EQ(HexText(FingerTemplate(card, 2)), HexText(Part(data, 1808, 512)));
  EXPECT_EQ(0U, XorFromLength(data));
}

TEST(NativeData, CanBeBuiltForEverySpecimen) {
  for (const Specimen& specimen : Specimens()) {
    EXPECT_EQ(1295U, NativeData(MakeCard(specimen), false).size()) << specimen.id;
    EXPECT_EQ(2321U, NativeData(MakeCard(specimen, true), true).size()) << specimen.id;
  }
}

TEST(FingerTemplate, DiffersByPersonAndFinger) {
  std::set<std::string> templates;
  for (const Specimen& specimen : Specimens()) {
    for (const int number : {1, 2}) {
      const Bytes bytes = FingerTemplate(MakeCard(specimen), number);
      EXPECT_EQ(512U, bytes.size());
      templates.insert(HexText(bytes));
    }
  }
  EXPECT_EQ(2 * Specimens().size(), templates.size());
}

}  // namespace
}  // namespace simulator
