// Any kind of card as JSON text over a real line, byte for byte as cJSON prints it.
#include <gtest/gtest.h>

#include "quillonid/quillonid.h"
#include "simulator/tty_reader.h"
#include "tests/testing/private_root.h"
#include "tests/whole/expected.h"

namespace whole {
namespace {

using simulator::Card;
using simulator::MakeCard;
using simulator::TtyReader;

struct Key {
  const char* key;
  const char* member;
};
constexpr Key kKeys[] = {
    {"Address",           "address"     },
    {"Birth",             "birthday"    },
    {"CardActivity",      ""            }, // from validStart and validEnd
    {"CardActivityStart", "validStart"  },
    {"CardActivityExp",   "validEnd"    },
    {"CardType",          "cardType"    },
    {"ChinaName",         "name"        },
    {"EngName",           "EngName"     },
    {"GovCode",           "govCode"     },
    {"Reserved",          "otherData"   },
    {"Version",           "version"     },
    {"Ethnicity",         "nation"      },
    {"NationCode",        "nationCode"  },
    {"CountryCode",       "nationCode"  },
    {"IDNumber",          "cardId"      },
    {"Remark",            "reserved"    },
    {"Sex",               "sex"         },
    {"SexCode",           "sexCode"     },
    {"Signatory",         "police"      },
    {"FingerTemp1",       "fingerData1" },
    {"FingerTemp2",       "fingerData2" },
    {"AppendMsg1",        "gatReserved1"},
    {"AppendMsg2",        "gatReserved2"},
    {"AppendMsg3",        "gatReserved3"},
    {"PassNumber",        "passNumber"  },
    {"SignTimes",         "signTimes"   },
};

// RFC 4648.
std::string Base64(const simulator::Bytes& bytes) {
  constexpr char kDigits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    const std::size_t size = std::min<std::size_t>(3, bytes.size() - i);
    unsigned group = 0;
    for (std::size_t j = 0; j < 3; ++j) group = group << 8 | (j < size ? bytes[i + j] : 0U);
    for (std::size_t j = 0; j < 4; ++j) {
      text.push_back(j <= size ? kDigits[group >> (18 - 6 * j) & 0x3F] : '=');
    }
  }
  return text;
}

// RFC 8259; no card here has a quotation mark or a backslash.
std::string Escaped(const std::string& text) {
  std::string escaped;
  for (const char c : text) {
    escaped += c == '\x01' ? "\\u0001" : std::string(1, c);
  }
  return escaped;
}

std::string ExpectedJson(const Card& card, bool fingerprints, bool photo) {
  const auto texts = RecordTexts(card, Members<PERSONINFO_COLLECT_FP>(), fingerprints, true);
  std::string json = "{";
  const auto add = [&](const std::string& key, const std::string& value) {
    json += std::string(json.size() > 1 ? "," : "") + "\n\t\"" + key + "\":\t\"" + Escaped(value) +
            "\"";
  };
  for (const Key& row : kKeys) {
    add(row.key, row.member[0] != '\0' ? texts.at(row.member)
                                       : texts.at("validStart") + "-" + texts.at("validEnd"));
  }
  if (photo) add("PhotoNativeData", Base64(card.photo));
  return json + "\n}";
}

class WholeJson : public testing::TestWithParam<const char*> {};

TEST_P(WholeJson, SaysWhatTheCardSays) {
  NEEDS_PRIVATE_ROOT();
  TtyReader reader;
  char no_photo[] = "";
  for (const bool fingerprints : {false, true}) {
    const Card card = MakeCard(GetParam(), true);
    reader.PutCard(card);
    char json[8192] = {};

    ASSERT_EQ(0, APP_ID_ReadCollectIDCardInfo(reader.path().c_str(), "", 9600, 10, fingerprints,
                                              no_photo, json));
    EXPECT_EQ(ExpectedJson(card, fingerprints, false), json);

    APP_ID_IDCardAddPhotoDataToJsonFlag(1);
    ASSERT_EQ(0, Linux_QL_ID_ReadCollectCardInfo(reader.path().c_str(), 9600, 10, fingerprints,
                                                 no_photo, json));
    EXPECT_EQ(ExpectedJson(card, fingerprints, true), json);

    // The flag holds for one text.
    ASSERT_EQ(0, Linux_QL_ID_ReadCollectCardInfo(reader.path().c_str(), 9600, 10, fingerprints,
                                                 no_photo, json));
    EXPECT_EQ(ExpectedJson(card, fingerprints, false), json);
  }
}

std::vector<const char*> SpecimenIds() {
  std::vector<const char*> ids;
  for (const auto& specimen : simulator::Specimens()) ids.push_back(specimen.id.c_str());
  return ids;
}

std::string TestName(const testing::TestParamInfo<const char*>& info) {
  std::string name = info.param;
  std::replace(name.begin(), name.end(), '-', '_');
  return name;
}

INSTANTIATE_TEST_SUITE_P(EverySpecimen, WholeJson, testing::ValuesIn(SpecimenIds()), TestName);

// A card of this kind whose text is as long as any card's: nothing takes more room than a control
// character, six for one unit of the card, but the longest name of the nation or country.
Card GreatestCard(simulator::Kind kind) {
  simulator::Specimen person;
  person.kind = kind;
  for (const simulator::TextField& field : simulator::TextFields(kind)) {
    person.text[field.name] = std::string(field.size / 2, '\x01');
  }
  person.sex = "女";
  if (kind == simulator::Kind::kResident) {
    person.text["reserved"][14] = ' ';  // the mark's place
    person.text["nationCode"] = "98";
    person.nation = "外国血统中国籍人士";
  } else if (kind == simulator::Kind::kForeigner) {
    person.text["nationCode"] = "LBY";
    person.nation = "大阿拉伯利比亚人民社会主义民众国";
    person.text["cardType"] = "I";
  } else {
    person.text["cardType"] = "J";
  }
  return MakeCard(person, true);
}

TEST(WholeJson, OfAnyCardTakesAtMost4811Characters) {
  NEEDS_PRIVATE_ROOT();
  TtyReader reader;
  char no_photo[] = "";
  std::vector<std::size_t> sizes;
  for (const auto kind :
       {simulator::Kind::kResident, simulator::Kind::kForeigner, simulator::Kind::kPermit}) {
    const Card card = GreatestCard(kind);
    reader.PutCard(card);
    std::string json(8192, 'x');
    APP_ID_IDCardAddPhotoDataToJsonFlag(1);

    EXPECT_EQ(0, APP_ID_ReadCollectIDCardInfo(reader.path().c_str(), "", 9600, 10, 1, no_photo,
                                              json.data()));

    const std::string expected = ExpectedJson(card, true, true);
    EXPECT_EQ(expected + std::string("\0\0x", 3), json.substr(0, expected.size() + 3));
    sizes.push_back(expected.size());
  }

  EXPECT_EQ((std::vector<std::size_t>{4795, 4811, 4775}), sizes);
}

TEST(WholeJson, WritesThePhotoFileToo) {
  NEEDS_PRIVATE_ROOT();
  InstallDecoder();
  TtyReader reader;
  const Card card = MakeCard("permit");
  reader.PutCard(card);
  std::string photo = TemporaryFolder() + "/photo.bmp";
  char json[8192] = {};

  ASSERT_EQ(
      0, APP_ID_ReadCollectIDCardInfo(reader.path().c_str(), "", 9600, 10, 0, photo.data(), json));

  EXPECT_EQ(PhotoFile(card), ReadWholeFile(photo));
  EXPECT_EQ(ExpectedJson(card, false, false), json);
}

TEST(WholeJson, StaysEmptyWhenTheReadFails) {
  NEEDS_PRIVATE_ROOT();
  TtyReader reader;
  reader.PutCard(MakeCard("permit"));
  reader.SetFault(*simulator::ParseFault("select-no-card"));
  char no_photo[] = "";
  char json[8192] = {};

  EXPECT_EQ(-10,
            APP_ID_ReadCollectIDCardInfo(reader.path().c_str(), "", 9600, 10, 0, no_photo, json));

  EXPECT_STREQ("", json);
}

}  // namespace
}  // namespace whole
