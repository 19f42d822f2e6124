#include <gtest/gtest.h>

#include "quillonid/carddata.h"
#include "quillonid/records.h"
#include "tests/carddata/json_fixture.h"
#include "tests/testing/hex_text.h"
#include "tests/testing/private_root.h"

namespace {

constexpr char kUntouched[] = "untouched";

std::string CardLine(const std::string& text) { return "  TIME  INFO:    BusiId:  " + text; }

std::string ParsedLine(const std::string& key, const std::string& value) {
  return CardLine("parse szTag " + key + " Value :" + value);
}

struct Read {
  int result;
  std::string text;
};

Read GetString(const char* json, const char* key) {
  char text[8192] = "untouched";
  const int result = tFuncGetStringFromJson(json, key, text);
  return {result, text};
}

int Convert(const char* json, PERSONINFO_CHA_FP* record) {
  return tFuncConvertJsontoChinaStruct(json, record);
}
int Convert(const char* json, PERSONINFO_FOR_FP* record) {
  return tFuncConvertJsontoForeignStruct(json, record);
}
int Convert(const char* json, PERSONINFO_GAT_FP* record) {
  return tFuncConvertJsontoGatStruct(json, record);
}
int Convert(const char* json, PERSONINFO_COLLECT_FP* record) {
  return tFuncConvertJsontoCollectStruct(json, record);
}

// Reads a text in which every key has a value of its own. The fields of the keys that the reader
// leaves out, and all that has no key, keep what they had.
template <typename Record>
void ReadsWhatItShould(const std::vector<Key>& keys) {
  KeyValues values;
  for (const Key& key : keys) {
    values.emplace_back(key.key, "v" + std::to_string(values.size()));
  }
  values.emplace_back("PhotoNativeData", "00");
  Record expected;
  std::memset(static_cast<void*>(&expected), 'x', sizeof expected);
  Record record = expected;
  for (std::size_t i = 0; i < keys.size(); ++i) {
    if (keys[i].use != kBothWays) continue;
    // The text and its zero, no more.
    std::memcpy(reinterpret_cast<char*>(&expected) + keys[i].member.offset,
                values[i].second.c_str(), values[i].second.size() + 1);
  }

  EXPECT_EQ(0, Convert(JsonOf(values).c_str(), &record));

  EXPECT_EQ(HexText(&expected, sizeof expected), HexText(&record, sizeof record));
}

// Gives every key a text of `length` characters: each field is cut at its width.
template <typename Record>
void CutsLongValues(const std::vector<Key>& keys, std::size_t factor) {
  KeyValues values;
  for (const Key& key : keys) {
    values.emplace_back(key.key, std::string(key.member.width * factor,
                                             static_cast<char>('a' + values.size() % 26)));
  }
  // Canaries on both sides.
  struct {
    char before[64];
    Record record;
    char behind[64];
  } guarded;
  std::memset(static_cast<void*>(&guarded), 0x5A, sizeof guarded);

  EXPECT_EQ(0, Convert(JsonOf(values).c_str(), &guarded.record));

  for (std::size_t i = 0; i < keys.size(); ++i) {
    if (keys[i].use != kBothWays) continue;
    EXPECT_EQ(values[i].second.substr(0, keys[i].member.width - 1),
              MemberText(guarded.record, keys[i].member))
        << keys[i].key;
  }
  EXPECT_EQ(std::string(64, 0x5A), std::string(guarded.before, 64));
  EXPECT_EQ(std::string(64, 0x5A), std::string(guarded.behind, 64));
}

template <typename Record>
void LeavesFieldsAlone(const char* json) {
  Record record;
  std::memset(static_cast<void*>(&record), 'x', sizeof record);
  const std::string before(reinterpret_cast<const char*>(&record), sizeof record);

  EXPECT_EQ(0, Convert(json, &record));

  EXPECT_EQ(before, std::string(reinterpret_cast<const char*>(&record), sizeof record));
}

std::string WithMark(const std::vector<Key>& keys, const std::string& mark) {
  KeyValues values;
  for (const Key& key : keys) {
    const bool is_mark = std::string(key.key) == "CardType";
    values.emplace_back(key.key, is_mark ? mark : "v" + std::to_string(values.size()));
  }
  return JsonOf(values);
}

struct Kinds {
  PERSONINFO_CHA china;
  PERSONINFO_FOR foreign;
  PERSONINFO_GAT gat;
  Kinds() { std::memset(static_cast<void*>(this), 'x', sizeof *this); }
};

int ReadKinds(const std::string& json, Kinds* kinds) {
  return tFuncConvertIdInfotoStruct(json.c_str(), &kinds->china, &kinds->foreign, &kinds->gat);
}

bool IsUntouched(const void* record, std::size_t size) {
  const std::string bytes(static_cast<const char*>(record), size);
  return bytes.find_first_not_of('x') == std::string::npos;
}

}  // namespace

TEST(GetStringFromJson, CopiesTheText) {
  const Read read = GetString(R"({"a": "1", "b": "two", "c": "3"})", "b");

  EXPECT_EQ(0, read.result);
  EXPECT_EQ("two", read.text);
}

TEST(GetStringFromJson, SaysWhyThereIsNone) {
  const std::pair<const char*, int> texts[] = {
      {"",                -2   },
      {"{",               -2   },
      {"nonsense",        -2   },
      {R"({"b": "x"})",   -2   },
      {"{}",              -2   },
      {R"({"a": 1})",     -2004},
      {R"({"a": null})",  -2004},
      {R"({"a": true})",  -2004},
      {R"({"a": ["x"]})", -2004},
      {R"({"a": {}})",    -2004},
      {R"(["a", "x"])",   -2   },
      {R"("a")",          -2   },
      {"12",              -2   },
  };
  for (const auto& [json, result] : texts) {
    const Read read = GetString(json, "a");
    EXPECT_EQ(result, read.result) << json;
    EXPECT_EQ(kUntouched, read.text) << json;
  }
}

TEST(GetStringFromJson, RefusesNull) {
  EXPECT_EQ(-2, GetString(nullptr, "a").result);
  EXPECT_EQ(-2, GetString(R"({"a": "x"})", nullptr).result);
  EXPECT_EQ(-2, tFuncGetStringFromJson(R"({"a": "x"})", "a", nullptr));
}

TEST(GetStringFromJson, CopiesATextOfAnyLength) {
  const std::string value(8000, 'v');

  EXPECT_EQ(value, GetString(("{\"a\":\"" + value + "\"}").c_str(), "a").text);
}

TEST(GetStringFromJson, ReportsWhatItFound) {
  NEEDS_PRIVATE_ROOT();
  SwitchLogging(true);

  GetString(R"({"a": "x", "b": 1})", "a");
  GetString(R"({"a": "x", "b": 1})", "b");
  GetString(R"({"a": "x", "b": 1})", "c");
  GetString("{", "a");

  // The text of a value ends its line twice.
  EXPECT_EQ((std::vector<std::string>{ParsedLine("a", "x"), "", CardLine("Get Json Tag Fail")}),
            LogLines());
}

// What the JSON library accepts reaches applications: a change there must be noticed.
TEST(GetStringFromJson, TakesWhatTheJsonLibraryTakes) {
  EXPECT_EQ("x", GetString(R"({"NAME": "x"})", "name").text) << "keys match in any letter case";
  EXPECT_EQ("1", GetString(R"({"a": "1", "a": "2"})", "a").text) << "the first of equal keys";
  EXPECT_EQ("x", GetString(R"({"a": "x"} trailing)", "a").text) << "text behind the object";
  EXPECT_EQ("x", GetString(R"({"a": "x\u0000y"})", "a").text) << "an escaped zero ends the text";
  EXPECT_EQ("x", GetString(R"({"a": "x\uZZZZy"})", "a").text) << "as does a bad escape";
  EXPECT_EQ("\xE6\xA0\xB7", GetString(R"({"a": "\u6837"})", "a").text);
  EXPECT_EQ("\xF0\xA0\xAE\xB7", GetString(R"({"a": "\uD842\uDFB7"})", "a").text);
  EXPECT_EQ("\"\\/\b\f\n\r\t", GetString(R"({"a": "\"\\\/\b\f\n\r\t"})", "a").text);
}

TEST(GetStringFromJson, StopsAtTheJsonLibrarysDepth) {
  const auto nested = [](std::size_t depth) {
    return R"({"a": "x", "b": )" + std::string(depth - 1, '[') + std::string(depth - 1, ']') + "}";
  };

  EXPECT_EQ(0, GetString(nested(1000).c_str(), "a").result);
  EXPECT_EQ(-2, GetString(nested(1001).c_str(), "a").result);
}

TEST(JsonToRecord, ReadsTheKeysOfEachKind) {
  ReadsWhatItShould<PERSONINFO_CHA_FP>(kChinaKeys);
  ReadsWhatItShould<PERSONINFO_FOR_FP>(kForeignKeys);
  ReadsWhatItShould<PERSONINFO_GAT_FP>(kGatKeys);
  ReadsWhatItShould<PERSONINFO_COLLECT_FP>(kCollectKeys);
}

TEST(JsonToRecord, CutsAValueAtItsField) {
  for (const std::size_t factor : {1U, 4U}) {
    CutsLongValues<PERSONINFO_CHA_FP>(kChinaKeys, factor);
    CutsLongValues<PERSONINFO_FOR_FP>(kForeignKeys, factor);
    CutsLongValues<PERSONINFO_GAT_FP>(kGatKeys, factor);
    CutsLongValues<PERSONINFO_COLLECT_FP>(kCollectKeys, factor);
  }
}

TEST(JsonToRecord, LeavesAFieldWithoutAText) {
  for (const char* json : {"{}", "", "[]", R"({"Address": 1, "Sex": null})"}) {
    SCOPED_TRACE(json);
    LeavesFieldsAlone<PERSONINFO_CHA_FP>(json);
    LeavesFieldsAlone<PERSONINFO_FOR_FP>(json);
    LeavesFieldsAlone<PERSONINFO_GAT_FP>(json);
    LeavesFieldsAlone<PERSONINFO_COLLECT_FP>(json);
  }
}

TEST(JsonToRecord, GivesZeroForNull) {
  PERSONINFO_CHA_FP record = {};

  EXPECT_EQ(0, tFuncConvertJsontoChinaStruct(nullptr, &record));
  EXPECT_EQ(0, tFuncConvertJsontoChinaStruct("{}", nullptr));
}

TEST(JsonToRecord, ReportsEveryKeyThatItReads) {
  NEEDS_PRIVATE_ROOT();
  PERSONINFO_GAT_FP record = {};
  SwitchLogging(true);

  tFuncConvertJsontoGatStruct(R"({"Sex": "s", "Address": "a", "SexCode": 1, "CardActivity": "c"})",
                              &record);

  EXPECT_EQ((std::vector<std::string>{ParsedLine("Address", "a"), "", ParsedLine("Sex", "s"), "",
                                      CardLine("Get Json Tag Fail")}),
            LogLines());
}

TEST(ConvertIdInfotoStruct, ReadsAResidentCard) {
  Kinds kinds;

  EXPECT_EQ(0, ReadKinds(WithMark(kChinaKeys, " "), &kinds));

  EXPECT_STREQ("v0", kinds.china.address);
  EXPECT_STREQ("v8", kinds.china.name);
  EXPECT_EQ(std::string(78, '\0'), std::string(kinds.china.name + 2, 78));  // cleared first
  EXPECT_TRUE(IsUntouched(&kinds.foreign, sizeof kinds.foreign));
  EXPECT_TRUE(IsUntouched(&kinds.gat, sizeof kinds.gat));
}

TEST(ConvertIdInfotoStruct, ReadsAForeignersCard) {
  Kinds kinds;

  EXPECT_EQ(1, ReadKinds(WithMark(kForeignKeys, "I"), &kinds));

  EXPECT_STREQ("I", kinds.foreign.cardType);
  EXPECT_STREQ("v7", kinds.foreign.EngName);
  EXPECT_STREQ("", kinds.foreign.police);
  EXPECT_TRUE(IsUntouched(&kinds.china, sizeof kinds.china));
  EXPECT_TRUE(IsUntouched(&kinds.gat, sizeof kinds.gat));
}

TEST(ConvertIdInfotoStruct, ReadsAPermit) {
  Kinds kinds;

  EXPECT_EQ(2, ReadKinds(WithMark(kGatKeys, "J"), &kinds));

  EXPECT_STREQ("J", kinds.gat.cardType);
  EXPECT_STREQ("v11", kinds.gat.passNumber);
  EXPECT_TRUE(IsUntouched(&kinds.china, sizeof kinds.china));
  EXPECT_TRUE(IsUntouched(&kinds.foreign, sizeof kinds.foreign));
}

TEST(ConvertIdInfotoStruct, SaysWhyThereIsNoRecord) {
  const std::string long_mark = R"({"CardType": ")" + std::string(5000, 'J') + "\"}";
  const std::pair<const char*, int> texts[] = {
      {long_mark.c_str(),       -1   },
      {"",                      -2   },
      {"{}",                    -2   },
      {R"({"CardType": 1})",    -2004},
      {R"({"CardType": ""})",   -1   },
      {R"({"CardType": "K"})",  -1   },
      {R"({"CardType": "JX"})", -1   },
      {R"({"CardType": "  "})", -1   },
      {R"({"CardType": "i"})",  -1   },
  };
  for (const auto& [json, result] : texts) {
    Kinds kinds;
    EXPECT_EQ(result, ReadKinds(json, &kinds)) << json;
    EXPECT_TRUE(IsUntouched(&kinds, sizeof kinds)) << json;
  }
}

TEST(ConvertIdInfotoStruct, NeedsTheRecordOfTheKind) {
  Kinds kinds;
  const auto read = [](const char* json, PERSONINFO_CHA* china, PERSONINFO_FOR* foreign,
                       PERSONINFO_GAT* gat) {
    return tFuncConvertIdInfotoStruct(json, china, foreign, gat);
  };

  EXPECT_EQ(-1, read(R"({"CardType": " "})", nullptr, &kinds.foreign, &kinds.gat));
  EXPECT_EQ(-1, read(R"({"CardType": "I"})", &kinds.china, nullptr, &kinds.gat));
  EXPECT_EQ(-1, read(R"({"CardType": "J"})", &kinds.china, &kinds.foreign, nullptr));
  EXPECT_EQ(0, read(R"({"CardType": " "})", &kinds.china, nullptr, nullptr));
  EXPECT_EQ(1, read(R"({"CardType": "I"})", nullptr, &kinds.foreign, nullptr));
  EXPECT_EQ(2, read(R"({"CardType": "J"})", nullptr, nullptr, &kinds.gat));
}

TEST(ConvertIdInfotoStruct, RestoresWhatWasPacked) {
  auto china = Filled<PERSONINFO_CHA_FP>(kChinaKeys);
  SetMember(china, kChinaKeys[0].member, "a\"\\\n\x01\xE6\xA0\xB7");
  PERSONINFO_CHA plain = {};
  ASSERT_EQ(0, tFuncConvertChinaFp(&china, &plain));
  JsonBuffer json;
  ASSERT_EQ(0, tFuncPackChinaJson(china, json.data()));
  Kinds kinds;

  ASSERT_EQ(0, ReadKinds(json.text(), &kinds));

  EXPECT_EQ(HexText(&plain, sizeof plain), HexText(&kinds.china, sizeof kinds.china));
}

TEST(ConvertIdInfotoStruct, ReportsTheMarkBeforeTheFields) {
  NEEDS_PRIVATE_ROOT();
  Kinds kinds;
  SwitchLogging(true);

  ReadKinds(R"({"CardType": "J", "Sex": "s"})", &kinds);

  const std::vector<std::string> lines = LogLines();
  ASSERT_LE(6U, lines.size());
  EXPECT_EQ((std::vector<std::string>{ParsedLine("CardType", "J"), "", ParsedLine("CardType", "J"),
                                      "", ParsedLine("Sex", "s"), ""}),
            std::vector<std::string>(lines.begin(), lines.begin() + 6));
}
