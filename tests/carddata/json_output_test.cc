#include <cjson/cJSON.h>
#include <gtest/gtest.h>

#include <memory>

#include "quillonid/carddata.h"
#include "quillonid/reader.h"
#include "quillonid/support.h"
#include "tests/carddata/json_fixture.h"
#include "tests/testing/hex_text.h"

namespace {

// The four packers under one signature.
int Pack(const PERSONINFO_CHA_FP& record, char* out) { return tFuncPackChinaJson(record, out); }
int Pack(const PERSONINFO_FOR_FP& record, char* out) { return tFuncPackForeignJson(record, out); }
int Pack(const PERSONINFO_GAT_FP& record, char* out) { return tFuncPackGATJson(record, out); }
int Pack(const PERSONINFO_COLLECT_FP& record, char* out) {
  return tFuncPackCollectJson(&record, out);
}

template <typename Record>
std::string Packed(const Record& record) {
  JsonBuffer out;
  EXPECT_EQ(0, Pack(record, out.data()));
  EXPECT_TRUE(out.IsWholeBehind());
  return out.text();
}

const auto kChina = Filled<PERSONINFO_CHA_FP>(kChinaKeys);
const auto kForeign = Filled<PERSONINFO_FOR_FP>(kForeignKeys);
const auto kGat = Filled<PERSONINFO_GAT_FP>(kGatKeys);
const auto kCollect = Filled<PERSONINFO_COLLECT_FP>(kCollectKeys);

std::vector<unsigned char> Photo() {
  std::vector<unsigned char> photo(1024);
  for (std::size_t i = 0; i < photo.size(); ++i) photo[i] = static_cast<unsigned char>(i * 5 + 1);
  return photo;
}

std::string HexDigits(const std::vector<unsigned char>& bytes) {
  std::string digits = HexText(bytes);
  std::erase(digits, ' ');
  return digits;
}

std::string Base64(const std::vector<unsigned char>& bytes) {
  constexpr char kAlphabet[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
  std::string text;
  for (std::size_t i = 0; i < bytes.size(); i += 3) {
    unsigned group = 0;
    for (std::size_t j = i; j < i + 3; ++j) group = group << 8 | (j < bytes.size() ? bytes[j] : 0);
    for (int shift = 18; shift >= 0; shift -= 6) text += kAlphabet[group >> shift & 63];
  }
  for (std::size_t missing = (3 - bytes.size() % 3) % 3; missing > 0; --missing) {
    text[text.size() - missing] = '=';
  }
  return text;
}

// Keeps native data with the photo, as a read in this mode would leave it.
void KeepNativeData(int mode, int length, int photo_length = 1024) {
  int ignored = 0;
  unsigned char data[4096] = {};
  tFuncReadIdNativeData("no device", "", 9600, 1, mode, data, &ignored);  // only sets the mode
  data[10] = 1;
  data[12] = static_cast<unsigned char>(photo_length >> 8);
  data[13] = static_cast<unsigned char>(photo_length);
  const std::vector<unsigned char> photo = Photo();
  std::memcpy(data + 256 + (mode == 1 ? 16 : 14), photo.data(), photo.size());
  tFunc_SetIdNativeData(data, length);
}

std::string WithPhoto(KeyValues values, const std::string& photo) {
  values.emplace_back("PhotoNativeData", photo);
  return JsonOf(values);
}

// Puts one more byte of text into the record than fits with its zero.
template <std::size_t kWidth>
void FillToTheLastByte(char (&field)[kWidth], char filling) {
  std::memset(field, filling, kWidth);
}

}  // namespace

TEST(PackJson, WritesTheKeysOfEachKindInTheirOrder) {
  EXPECT_EQ(JsonOf(ValuesOf(kChina, kChinaKeys)), Packed(kChina));
  EXPECT_EQ(JsonOf(ValuesOf(kForeign, kForeignKeys)), Packed(kForeign));
  EXPECT_EQ(JsonOf(ValuesOf(kGat, kGatKeys)), Packed(kGat));
  EXPECT_EQ(JsonOf(ValuesOf(kCollect, kCollectKeys)), Packed(kCollect));
}

TEST(PackJson, WritesWhatTheJsonLibraryPrints) {
  const std::unique_ptr<cJSON, void (*)(cJSON*)> object(cJSON_CreateObject(), cJSON_Delete);
  for (const auto& [key, value] : ValuesOf(kCollect, kCollectKeys)) {
    cJSON_AddItemToObject(object.get(), key.c_str(), cJSON_CreateString(value.c_str()));
  }
  const std::unique_ptr<char, void (*)(void*)> text(cJSON_Print(object.get()), cJSON_free);

  EXPECT_EQ(text.get(), Packed(kCollect));
}

TEST(PackJson, WritesEmptyFieldsAsEmptyTexts) {
  PERSONINFO_GAT_FP empty = {};
  KeyValues values;
  for (const Key& key : kGatKeys) values.emplace_back(key.key, "");
  values[2].second = "-";

  EXPECT_EQ(JsonOf(values), Packed(empty));
}

TEST(PackJson, EscapesWhatJsonMustEscape) {
  PERSONINFO_CHA_FP record = {};
  SetMember(record, kChinaKeys[0].member, "a\"b\\c\n\t\x01\x1F\x7F/\xE6\xA0\xB7");

  EXPECT_NE(
      std::string::npos,
      Packed(record).find("\"Address\":\t\"a\\\"b\\\\c\\n\\t\\u0001\\u001f\x7F/\xE6\xA0\xB7\""));
}

TEST(PackJson, ReadsNoFieldPastItsWidth) {
  auto record = kCollect;
  FillToTheLastByte(record.name, 'n');
  FillToTheLastByte(record.cardType, 't');
  FillToTheLastByte(record.validStart, 's');
  FillToTheLastByte(record.validEnd, 'e');
  FillToTheLastByte(record.fingerData2, 'F');

  const std::string text = Packed(record);

  const auto has = [&](const std::string& key, const std::string& value) {
    return text.find("\"" + key + "\":\t\"" + value + "\"") != std::string::npos;
  };
  EXPECT_TRUE(has("ChinaName", std::string(80, 'n')));
  EXPECT_TRUE(has("CardType", std::string(10, 't')));
  EXPECT_TRUE(has("CardActivityStart", std::string(30, 's')));
  EXPECT_TRUE(has("CardActivity", std::string(29, 's') + "-" + std::string(29, 'e')));
  EXPECT_TRUE(has("FingerTemp2", std::string(1025, 'F')));
}

TEST(PackJson, WritesNoTerminatingZeroButForCollect) {
  JsonBuffer china('x');
  JsonBuffer collect('x');

  ASSERT_EQ(0, Pack(kChina, china.data()));
  ASSERT_EQ(0, Pack(kCollect, collect.data()));

  const std::string china_text = JsonOf(ValuesOf(kChina, kChinaKeys));
  const std::string collect_text = JsonOf(ValuesOf(kCollect, kCollectKeys));
  EXPECT_EQ(china_text + "xxx", china.bytes().substr(0, china_text.size() + 3));
  EXPECT_EQ(collect_text + std::string("\0\0x", 3),
            collect.bytes().substr(0, collect_text.size() + 3));
}

TEST(PackJson, RefusesATextThatPassesTheBuffer) {
  // A control character takes six characters. Fields enough to pass 8,192.
  auto collect = kCollect;
  FillToTheLastByte(collect.fingerData1, '\x01');
  FillToTheLastByte(collect.fingerData2, '\x01');
  auto china = kChina;
  FillToTheLastByte(china.fingerData1, '\x01');
  FillToTheLastByte(china.fingerData2, '\x01');
  JsonBuffer out('x');

  EXPECT_EQ(-1, Pack(collect, out.data()));
  EXPECT_EQ(-1, Pack(china, out.data()));
  EXPECT_EQ(-1, tFuncConvertIdInfoStruct(&china, nullptr, nullptr, nullptr, nullptr, out.data()));

  EXPECT_EQ(std::string(QL_JSON_SIZE, 'x'), out.bytes().substr(0, QL_JSON_SIZE));
  EXPECT_TRUE(out.IsWholeBehind());
}

TEST(PackJson, TakesATextThatFillsTheBuffer) {
  auto record = kCollect;
  const std::size_t most = QL_JSON_SIZE - 2;
  FillToTheLastByte(record.fingerData1, '\x01');
  FillToTheLastByte(record.address, '\x01');
  std::memset(record.fingerData2, 0, sizeof record.fingerData2);
  const std::size_t missing = most - Packed(record).size();
  ASSERT_LT(missing, sizeof record.fingerData2);
  for (const bool fits : {true, false}) {
    std::memset(record.fingerData2, 'F', missing + (fits ? 0 : 1));
    JsonBuffer out;

    EXPECT_EQ(fits ? 0 : -1, Pack(record, out.data()));

    EXPECT_EQ(fits ? most : 0, out.text().size());
    EXPECT_TRUE(out.IsWholeBehind());
  }
}

TEST(PackJson, RefusesNull) {
  JsonBuffer out;

  EXPECT_EQ(-1, tFuncPackCollectJson(nullptr, out.data()));
  EXPECT_EQ(-1, tFuncPackCollectJson(&kCollect, nullptr));
  EXPECT_EQ(-1, tFuncPackChinaJson(kChina, nullptr));

  EXPECT_EQ("", out.text());
}

TEST(PackJson, AddsThePhotoOnce) {
  for (const int mode : {0, 1}) {
    SCOPED_TRACE(mode);
    KeepNativeData(mode, mode == 1 ? 2321 : 1295);
    const std::string hex = HexDigits(Photo());

    tFunc_SetAddPhotoDataToJsonFlag(1);
    EXPECT_EQ(WithPhoto(ValuesOf(kChina, kChinaKeys), hex), Packed(kChina));
    EXPECT_EQ(JsonOf(ValuesOf(kChina, kChinaKeys)), Packed(kChina));

    tFunc_SetAddPhotoDataToJsonFlag(1);
    EXPECT_EQ(WithPhoto(ValuesOf(kForeign, kForeignKeys), hex), Packed(kForeign));
    EXPECT_EQ(JsonOf(ValuesOf(kForeign, kForeignKeys)), Packed(kForeign));

    tFunc_SetAddPhotoDataToJsonFlag(-1);
    EXPECT_EQ(WithPhoto(ValuesOf(kGat, kGatKeys), hex), Packed(kGat));
    EXPECT_EQ(JsonOf(ValuesOf(kGat, kGatKeys)), Packed(kGat));

    tFunc_SetAddPhotoDataToJsonFlag(2);
    EXPECT_EQ(WithPhoto(ValuesOf(kCollect, kCollectKeys), Base64(Photo())), Packed(kCollect));
    EXPECT_EQ(JsonOf(ValuesOf(kCollect, kCollectKeys)), Packed(kCollect));
  }
}

TEST(PackJson, LeavesThePhotoOfARefusedTextToTheNextPacker) {
  KeepNativeData(0, 1295);
  auto long_china = kChina;
  FillToTheLastByte(long_china.fingerData1, '\x01');
  auto long_collect = kCollect;
  FillToTheLastByte(long_collect.fingerData1, '\x01');
  FillToTheLastByte(long_collect.fingerData2, '\x01');
  JsonBuffer out;
  tFunc_SetAddPhotoDataToJsonFlag(1);

  EXPECT_EQ(-1, Pack(long_china, out.data()));
  EXPECT_EQ(-1, Pack(long_collect, out.data()));

  EXPECT_EQ(WithPhoto(ValuesOf(kCollect, kCollectKeys), Base64(Photo())), Packed(kCollect));
  EXPECT_EQ(JsonOf(ValuesOf(kCollect, kCollectKeys)), Packed(kCollect));
}

TEST(PackJson, AddsNoPhotoUnlessAsked) {
  KeepNativeData(0, 1295);
  tFunc_SetAddPhotoDataToJsonFlag(1);
  tFunc_SetAddPhotoDataToJsonFlag(0);

  EXPECT_EQ(0, tFunc_SetAddNativeDataToJsonFlag());

  EXPECT_EQ(JsonOf(ValuesOf(kChina, kChinaKeys)), Packed(kChina));
}

TEST(PackJson, AddsZerosWithoutAPhotoButForCollect) {
  const std::string zeros(2048, '0');
  const auto add_zeros = [&] {
    tFunc_SetAddPhotoDataToJsonFlag(1);
    EXPECT_EQ(WithPhoto(ValuesOf(kChina, kChinaKeys), zeros), Packed(kChina));
    tFunc_SetAddPhotoDataToJsonFlag(1);
    EXPECT_EQ(WithPhoto(ValuesOf(kForeign, kForeignKeys), zeros), Packed(kForeign));
    tFunc_SetAddPhotoDataToJsonFlag(1);
    EXPECT_EQ(WithPhoto(ValuesOf(kGat, kGatKeys), zeros), Packed(kGat));
  };

  add_zeros();  // nothing kept
  KeepNativeData(0, 1295, 1023);
  add_zeros();  // a photo of another length
}

TEST(PackCollectJson, FailsWithoutAPhotoAndKeepsTheFlag) {
  JsonBuffer out('x');
  tFunc_SetAddPhotoDataToJsonFlag(1);

  EXPECT_EQ(-1, Pack(kCollect, out.data()));  // nothing kept
  KeepNativeData(0, 1295, 1023);
  EXPECT_EQ(-1, Pack(kCollect, out.data()));  // a photo of another length
  EXPECT_EQ(std::string(QL_JSON_SIZE, 'x'), out.bytes().substr(0, QL_JSON_SIZE));

  KeepNativeData(0, 1295);
  EXPECT_EQ(WithPhoto(ValuesOf(kCollect, kCollectKeys), Base64(Photo())), Packed(kCollect));
}

TEST(PackJson, HasRoomForAnOrdinaryRecordWithEverything) {
  auto record = kCollect;
  KeepNativeData(1, 2321);
  tFunc_SetAddPhotoDataToJsonFlag(1);
  for (const Key& key : kCollectKeys) {
    if (key.use == kBothWays) SetMember(record, key.member, std::string(key.member.width - 1, 'W'));
  }

  EXPECT_EQ(WithPhoto(ValuesOf(record, kCollectKeys), Base64(Photo())), Packed(record));
}

TEST(ConvertIdInfoStruct, PacksEveryRecordOverTheOneBefore) {
  // The shorter text leaves the end of the longer one.
  auto long_china = kChina;
  SetMember(long_china, kChinaKeys[0].member, std::string(179, 'a'));
  const std::string china = JsonOf(ValuesOf(long_china, kChinaKeys));
  const std::string gat = JsonOf(ValuesOf(kGat, kGatKeys));
  JsonBuffer out;

  ASSERT_EQ(0, tFuncConvertIdInfoStruct(&long_china, nullptr, &kGat, nullptr, nullptr, out.data()));

  ASSERT_LT(gat.size(), china.size());
  EXPECT_EQ(gat + china.substr(gat.size()), out.text());
}

TEST(ConvertIdInfoStruct, EndsWithTheCollectRecord) {
  JsonBuffer out;

  ASSERT_EQ(0, tFuncConvertIdInfoStruct(&kChina, &kForeign, &kGat, nullptr, &kCollect, out.data()));

  EXPECT_EQ(JsonOf(ValuesOf(kCollect, kCollectKeys)), out.text());
}

TEST(ConvertIdInfoStruct, GivesZeroForNothing) {
  JsonBuffer out;

  EXPECT_EQ(0, tFuncConvertIdInfoStruct(nullptr, nullptr, nullptr, nullptr, nullptr, out.data()));

  EXPECT_EQ("", out.text());
}

TEST(ConvertIdInfoStruct, SplitsTheCombinedRecordByItsMark) {
  auto foreign = kForeign;
  SetMember(foreign, kForeignKeys[5].member, "I");
  PERSONINFO_FP person = {};
  auto china = kChina;
  ASSERT_EQ(0, ConverStruct(&china, nullptr, &person));
  JsonBuffer resident;
  ASSERT_EQ(0,
            tFuncConvertIdInfoStruct(nullptr, nullptr, nullptr, &person, nullptr, resident.data()));
  EXPECT_EQ(JsonOf(ValuesOf(kChina, kChinaKeys)), resident.text());

  person = {};
  ASSERT_EQ(0, ConverStruct(nullptr, &foreign, &person));
  JsonBuffer foreigner;
  ASSERT_EQ(
      0, tFuncConvertIdInfoStruct(nullptr, nullptr, nullptr, &person, nullptr, foreigner.data()));
  EXPECT_EQ(JsonOf(ValuesOf(foreign, kForeignKeys)), foreigner.text());
}

TEST(ConvertIdInfoStruct, ReturnsTheFirstNegativeResult) {
  PERSONINFO_FP person = {};
  SetMember(person, Member{offsetof(PERSONINFO_FP, name), 80}, "name");
  SetMember(person, Member{offsetof(PERSONINFO_FP, cardType), 10}, "J");
  JsonBuffer out;

  EXPECT_EQ(-1,
            tFuncConvertIdInfoStruct(nullptr, nullptr, nullptr, &person, &kCollect, out.data()));
  EXPECT_EQ("", out.text());

  PERSONINFO_FP nameless = {};
  SetMember(nameless, Member{offsetof(PERSONINFO_FP, cardType), 10}, " ");
  EXPECT_EQ(-1,
            tFuncConvertIdInfoStruct(nullptr, nullptr, nullptr, &nameless, nullptr, out.data()));

  tFunc_SetAddPhotoDataToJsonFlag(1);
  EXPECT_EQ(-1,
            tFuncConvertIdInfoStruct(nullptr, nullptr, nullptr, nullptr, &kCollect, out.data()));
}

TEST(ConvertIdInfoStruct, GivesTheMarkOfAPermitAndNoNation) {
  auto gat = kGat;
  SetMember(gat, kGatKeys[5].member, "J");
  PERSONINFO_COLLECT_FP collect = {};
  tFuncConvertStruct2Collect(nullptr, nullptr, &gat, &collect);
  JsonBuffer out;

  ASSERT_EQ(0, tFuncConvertIdInfoStruct(nullptr, nullptr, nullptr, nullptr, &collect, out.data()));

  EXPECT_NE(std::string::npos, out.text().find("\t\"CardType\":\t\"J\",\n"));
  for (const char* key : {"Ethnicity", "NationCode", "CountryCode"}) {
    EXPECT_NE(std::string::npos, out.text().find("\t\"" + std::string(key) + "\":\t\"\",\n"));
  }
}
