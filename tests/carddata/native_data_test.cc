// Native data to records: the kind of card, each field of each kind, names and sexes, and lengths
// that lie.
#include "tests/carddata/native_data.h"

#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <vector>

#include "quillonid/carddata.h"
#include "quillonid/results.h"
#include "tests/carddata/record_fields.h"
#include "tests/testing/hex_text.h"
#include "tests/testing/private_root.h"

namespace {

constexpr RecordKind kCardKinds[] = {RecordKind::kChina, RecordKind::kForeign, RecordKind::kGat};

std::string Name(RecordKind kind) {
  return kind == RecordKind::kChina ? "china" : kind == RecordKind::kForeign ? "foreign" : "gat";
}

int ParseAs(RecordKind kind, int mode, const Bytes& native, RawRecord* record) {
  switch (kind) {
    case RecordKind::kChina:
      return GetPersonChinaInfo(mode, native.data(), record->As<PERSONINFO_CHA_FP>());
    case RecordKind::kForeign:
      return GetPersonForeignInfo(mode, native.data(), record->As<PERSONINFO_FOR_FP>());
    default:
      return GetPersonGATInfo(mode, native.data(), record->As<PERSONINFO_GAT_FP>());
  }
}

RawRecord Parsed(RecordKind kind, int mode, const Bytes& native) {
  RawRecord record(kind, true);
  EXPECT_EQ(0, ParseAs(kind, mode, native, &record));
  EXPECT_TRUE(record.IsTailUntouched());
  return record;
}

RawRecord Parsed(RecordKind kind, const CardTexts& texts) {
  return Parsed(kind, 0, NativeData(0, CardText(kind, texts)));
}

std::string Combined(int foreigner, const CardTexts& texts, const std::string& field) {
  const RecordKind kind = foreigner != 0 ? RecordKind::kForeign : RecordKind::kChina;
  RawRecord record(RecordKind::kPerson, true);
  EXPECT_EQ(0, GetPersonInfo(foreigner, 0, NativeData(0, CardText(kind, texts)).data(),
                             record.As<PERSONINFO_FP>()));
  return record.Text(field);
}

// Fills the field's units with different digits and letters.
std::u16string Filling(std::size_t units, char16_t first) {
  std::u16string text;
  while (text.size() < units) text += static_cast<char16_t>(u'!' + (first + text.size()) % 90);
  return text;
}

std::string Narrow(const std::u16string& text) { return {text.begin(), text.end()}; }

int KindOf(const std::u16string& mark, int mode) {
  Bytes text = CardText(RecordKind::kGat, {
                                              {"cardType", mark}
  });
  return GetIdCardTypeFromNativeData(mode, NativeData(mode, text).data());
}

std::string Sex(const char* code) {
  char dest[12] = "###########";
  EXPECT_EQ(0, tFuncGetSex(code, dest));
  EXPECT_EQ("########", std::string(dest + 4, 7) + "#");
  return dest;
}

}  // namespace

TEST(GetIdCardTypeFromNativeData, KnowsThreeMarksInBothModes) {
  for (const int mode : {0, 1}) {
    EXPECT_EQ(0, KindOf(u" ", mode));
    EXPECT_EQ(1, KindOf(u"I", mode));
    EXPECT_EQ(2, KindOf(u"J", mode));
  }
}

TEST(GetIdCardTypeFromNativeData, KnowsNoOtherMark) {
  for (unsigned unit = 0; unit < 0x10000; ++unit) {
    if (unit == ' ' || unit == 'I' || unit == 'J') continue;
    const auto mark = static_cast<char16_t>(unit);
    ASSERT_EQ(-1, KindOf({mark}, unit % 2)) << unit;
  }
}

TEST(GetIdCardTypeFromNativeData, KnowsNoOtherMode) {
  const Bytes native(4096, ' ');
  for (const int mode : {2, -1, INT_MAX, INT_MIN}) {
    EXPECT_EQ(-1, GetIdCardTypeFromNativeData(mode, native.data())) << mode;
  }
  EXPECT_EQ(-1, GetIdCardTypeFromNativeData(0, nullptr));
}

TEST(GetIdCardTypeFromNativeData, LooksWhereTheModePutsTheMark) {
  const Bytes native = NativeData(0, CardText(RecordKind::kGat, {
                                                                    {"cardType", u"J"}
  }));

  EXPECT_EQ(2, GetIdCardTypeFromNativeData(0, native.data()));
  EXPECT_EQ(0, GetIdCardTypeFromNativeData(1, native.data()));  // the blank behind it
}

TEST(NativeDataParsers, PutEveryFieldOfACardIntoItsOwn) {
  for (const RecordKind kind : kCardKinds) {
    CardTexts texts;
    for (const CardField& field : CardFields(kind)) {
      texts[field.name] = Filling(field.size / 2, static_cast<char16_t>(7 * texts.size()));
    }
    for (const int mode : {0, 1}) {
      const RawRecord record = Parsed(kind, mode, NativeData(mode, CardText(kind, texts)));

      for (const CardField& field : CardFields(kind)) {
        const std::size_t width = FieldNamed(record.fields(), field.name).width;
        std::string expected = Narrow(texts[field.name]).substr(0, width - 1);
        expected.resize(width);
        EXPECT_EQ(expected, record.Get(field.name)) << Name(kind) << ' ' << field.name << mode;
      }
    }
  }
}

TEST(NativeDataParsers, LeaveFieldsEmptyThatACardDoesNotCarry) {
  const RawRecord record = Parsed(RecordKind::kForeign, {
                                                            {"sexCode", u"1"}
  });
  for (const char* field : {"address", "police", "reserved", "nation", "fingerData1"}) {
    const std::string bytes = record.Get(field);
    EXPECT_EQ(std::string(bytes.size(), '\0'), bytes) << field;
  }
}

TEST(NativeDataParsers, KeepTheBlanksThatPadAField) {
  const RawRecord record =
      Parsed(RecordKind::kChina, {
                                     {"name",     u"张三"},
                                     {"validEnd", u"长期"}
  });

  EXPECT_EQ("张三             ", record.Text("name"));  // 13 blanks
  EXPECT_EQ("长期      ", record.Text("validEnd"));
}

// A field may end inside a character.
TEST(NativeDataParsers, CutFieldsAtTheirWidth) {
  const auto expect_cut = [](RecordKind kind, const char* field, std::size_t units,
                             std::size_t cut) {
    const RawRecord record = Parsed(kind, {
                                              {field, std::u16string(units, u'京')}
    });
    std::string expected;
    while (expected.size() < cut) expected += "京";
    EXPECT_EQ(expected.substr(0, cut), record.Text(field));
  };
  expect_cut(RecordKind::kForeign, "EngName", 60, 119);
  expect_cut(RecordKind::kForeign, "govCode", 4, 9);
  expect_cut(RecordKind::kChina, "cardId", 18, 49);
  expect_cut(RecordKind::kForeign, "otherData", 3, 9);
  expect_cut(RecordKind::kChina, "address", 35, 105);
}

TEST(NativeDataParsers, ClearEachFieldBeforeFillingIt) {
  for (const RecordKind kind : kCardKinds) {
    const Bytes native = NativeData(0, CardText(kind, {
                                                          {"sexCode", u"2"}
    }));
    RawRecord dirty(kind, true, '#');
    ASSERT_EQ(0, ParseAs(kind, 0, native, &dirty));

    const RawRecord clean = Parsed(kind, 0, native);
    for (const CardField& field : CardFields(kind)) {
      EXPECT_EQ(clean.Get(field.name), dirty.Get(field.name)) << Name(kind) << ' ' << field.name;
    }
    EXPECT_EQ(std::string(1025, '#'), dirty.Get("fingerData1"));  // not without fingerprints
  }
}

TEST(NativeDataParsers, ParseFromTheStartInAnUnknownMode) {
  for (const RecordKind kind : kCardKinds) {
    const Bytes text = CardText(kind, {
                                          {"cardId", u"110101"},
                                          {"name",   u"李四"}
    });
    Bytes native = text;
    native.resize(4096);
    for (const int mode : {2, -1, INT_MIN}) {
      const RawRecord record = Parsed(kind, mode, native);
      EXPECT_EQ("李四", record.Text("name").substr(0, 6));
      EXPECT_EQ("110101 ", record.Text("cardId").substr(0, 7));
    }
  }
}

TEST(NativeDataParsers, RefuseNull) {
  RawRecord china(RecordKind::kChina, true, '#');
  RawRecord foreign(RecordKind::kForeign, true, '#');
  RawRecord gat(RecordKind::kGat, true, '#');
  RawRecord person(RecordKind::kPerson, true, '#');
  const Bytes native(4096);

  EXPECT_EQ(RET_PUB_INVAL_PARAM, GetPersonChinaInfo(0, nullptr, china.As<PERSONINFO_CHA_FP>()));
  EXPECT_EQ(RET_PUB_INVAL_PARAM, GetPersonForeignInfo(0, nullptr, foreign.As<PERSONINFO_FOR_FP>()));
  EXPECT_EQ(RET_PUB_INVAL_PARAM, GetPersonGATInfo(1, nullptr, gat.As<PERSONINFO_GAT_FP>()));
  EXPECT_EQ(RET_PUB_INVAL_PARAM, GetPersonInfo(1, 1, nullptr, person.As<PERSONINFO_FP>()));
  EXPECT_EQ(RET_PUB_INVAL_PARAM, GetPersonChinaInfo(0, native.data(), nullptr));
  EXPECT_EQ(RET_PUB_INVAL_PARAM, GetPersonForeignInfo(0, native.data(), nullptr));
  EXPECT_EQ(RET_PUB_INVAL_PARAM, GetPersonGATInfo(0, native.data(), nullptr));
  EXPECT_EQ(RET_PUB_INVAL_PARAM, GetPersonInfo(0, 0, native.data(), nullptr));
  EXPECT_EQ(RET_PUB_INVAL_PARAM, IdChinaParam(nullptr, 0, china.As<PERSONINFO_CHA_FP>()));
  EXPECT_EQ(RET_PUB_INVAL_PARAM, IdGATParam_FP(2321, native.data(), 0, nullptr));
}

TEST(GetPersonChinaInfo, NamesTheGroupByTheNumberOnTheCard) {
  const auto nation = [](const char16_t* code) {
    return Parsed(RecordKind::kChina,
                  {
                      {"nationCode", code}
    })
        .Text("nation");
  };
  EXPECT_EQ("汉", nation(u"01"));
  EXPECT_EQ("汉", nation(u"1"));
  EXPECT_EQ("基诺", nation(u"56"));
  EXPECT_EQ("其他", nation(u"97"));
  EXPECT_EQ("外国血统中国籍人士", nation(u"98"));
  EXPECT_EQ("", nation(u"57"));
  EXPECT_EQ("", nation(u"00"));
  EXPECT_EQ("", nation(u"  "));
  EXPECT_EQ("", nation(u"ab"));
}

TEST(GetPersonForeignInfo, NamesTheCountry) {
  const auto record = Parsed(RecordKind::kForeign, {
                                                       {"nationCode", u"USA"}
  });
  EXPECT_EQ("美利坚合众国", record.Text("nation"));
  EXPECT_EQ("USA", record.Text("nationCode"));
}

// A field that is passed zero-filled keeps a longest name within it.
TEST(GetPersonForeignInfo, LeavesTheCountryUntouchedForAnUnknownCode) {
  const Bytes native = NativeData(0, CardText(RecordKind::kForeign, {
                                                                        {"nationCode", u"ZZZ"}
  }));
  RawRecord record(RecordKind::kForeign, true);
  record.Put("nation", "before");

  EXPECT_EQ(0, ParseAs(RecordKind::kForeign, 0, native, &record));

  EXPECT_EQ("before", record.Text("nation"));
}

TEST(NativeDataParsers, TellTheSexInWords) {
  for (const RecordKind kind : kCardKinds) {
    EXPECT_EQ("男", Parsed(kind,
                           {
                               {"sexCode", u"1"}
    })
                        .Text("sex"))
        << Name(kind);
    EXPECT_EQ("女", Parsed(kind,
                           {
                               {"sexCode", u"2"}
    })
                        .Text("sex"))
        << Name(kind);
    EXPECT_EQ("女", Parsed(kind,
                           {
                               {"sexCode", u"0"}
    })
                        .Text("sex"))
        << Name(kind);
    EXPECT_EQ("女", Parsed(kind,
                           {
                               {"sexCode", u"9"}
    })
                        .Text("sex"))
        << Name(kind);
  }
}

TEST(tFuncGetSex, LooksAtTheNumber) {
  EXPECT_EQ("E7 94 B7", HexText(Sex("1")));
  EXPECT_EQ("E5 A5 B3", HexText(Sex("2")));
  for (const char* code : {"01", " 1", "+1", "1x", "1.9"}) EXPECT_EQ("男", Sex(code)) << code;
  for (const char* code : {"", " ", "x", "0", "9", "11", "-1", "x1"}) {
    EXPECT_EQ("女", Sex(code)) << code;
  }
}

// Against a number that wraps around to 1.
TEST(tFuncGetSex, TakesANumberBeyondItsRangeAsTheNearest) {
  for (const char* code : {"4294967297", "18446744073709551617", "-4294967295",
                           "340282366920938463463374607431768211457"}) {
    EXPECT_EQ("女", Sex(code)) << code;
  }
  EXPECT_EQ("女", Sex(nullptr));
  EXPECT_EQ(0, tFuncGetSex("1", nullptr));
}

TEST(GetPersonInfo, FillsTheCombinedRecordFromAResidentsCard) {
  const Bytes native =
      NativeData(0, CardText(RecordKind::kChina, {
                                                     {"name",       u"张三"            },
                                                     {"sexCode",    u"1"                 },
                                                     {"nationCode", u"05"                },
                                                     {"birthday",   u"19800101"          },
                                                     {"address",    u"北京市"         },
                                                     {"cardId",     u"999999198001010010"},
                                                     {"police",     u"公安局"         },
                                                     {"validStart", u"20200101"          },
                                                     {"validEnd",   u"20400101"          },
                                                     {"reserved",   u"x"                 }
  }));
  RawRecord record(RecordKind::kPerson, true);
  record.As<PERSONINFO_FP>()->personType = 7;

  ASSERT_EQ(0, GetPersonInfo(0, 0, native.data(), record.As<PERSONINFO_FP>()));

  EXPECT_EQ("张三             ", record.Text("name"));
  EXPECT_EQ("男", record.Text("sex"));
  EXPECT_EQ("维吾尔", record.Text("nation"));
  EXPECT_EQ("05", record.Text("nationCode"));
  EXPECT_EQ("19800101", record.Text("birthday"));
  EXPECT_EQ("北京市" + std::string(32, ' '), record.Text("address"));
  EXPECT_EQ("999999198001010010", record.Text("cardId"));
  EXPECT_EQ("公安局" + std::string(12, ' '), record.Text("police"));
  EXPECT_EQ("20200101", record.Text("validStart"));
  EXPECT_EQ("20400101", record.Text("validEnd"));
  EXPECT_EQ("x" + std::string(17, ' '), record.Text("reserved"));
  EXPECT_EQ(" ", record.Text("cardType"));
  EXPECT_EQ("", record.Text("EngName"));
  EXPECT_EQ(0, record.As<PERSONINFO_FP>()->personType);
  EXPECT_TRUE(record.IsTailUntouched());
}

TEST(GetPersonInfo, FillsTheCombinedRecordFromAForeignersCard) {
  const Bytes native =
      NativeData(1, CardText(RecordKind::kForeign, {
                                                       {"EngName",    u"SPECIMEN, JANE" },
                                                       {"name",       u"简"            },
                                                       {"sexCode",    u"2"              },
                                                       {"nationCode", u"CAN"            },
                                                       {"version",    u"01"             },
                                                       {"govCode",    u"1100"           },
                                                       {"cardType",   u"I"              },
                                                       {"otherData",  u"abc"            },
                                                       {"cardId",     u"CAN110099010112"},
                                                       {"birthday",   u"19990101"       }
  }));
  RawRecord record(RecordKind::kPerson, true);

  ASSERT_EQ(0, GetPersonInfo(1, 1, native.data(), record.As<PERSONINFO_FP>()));

  EXPECT_EQ("SPECIMEN, JANE" + std::string(46, ' '), record.Text("EngName"));
  EXPECT_EQ("简" + std::string(14, ' '), record.Text("name"));
  EXPECT_EQ("女", record.Text("sex"));
  EXPECT_EQ("加拿大", record.Text("nation"));
  EXPECT_EQ("I", record.Text("cardType"));
  EXPECT_EQ("01", record.Text("version"));
  EXPECT_EQ("1100", record.Text("govCode"));
  EXPECT_EQ("abc", record.Text("otherData"));
  EXPECT_EQ("CAN110099010112", record.Text("cardId"));
  EXPECT_EQ("19990101", record.Text("birthday"));
  EXPECT_EQ("", record.Text("address"));
  EXPECT_EQ(1, record.As<PERSONINFO_FP>()->personType);
  EXPECT_TRUE(record.IsTailUntouched());
}

TEST(GetPersonInfo, TakesAnyNonZeroFlagAsForeigner) {
  const CardTexts texts = {
      {"name",       u"简"},
      {"nationCode", u"CAN"}
  };
  for (const int flag : {1, 2, -1}) EXPECT_EQ("加拿大", Combined(flag, texts, "nation")) << flag;
}

// The conversion of the record refuses it; the steps behind are not reached.
TEST(GetPersonInfo, FailsForANameOfZeros) {
  for (const int foreigner : {0, 1}) {
    const RecordKind kind = foreigner != 0 ? RecordKind::kForeign : RecordKind::kChina;
    const Bytes text = CardText(kind, {
                                          {"name", std::u16string(15, u'\0')},
                                          {"sexCode",      u"1"              }
    });
    RawRecord record(RecordKind::kPerson, true);

    EXPECT_EQ(-1,
              GetPersonInfo(foreigner, 0, NativeData(0, text).data(), record.As<PERSONINFO_FP>()));

    EXPECT_EQ("", record.Text("sex"));
  }
}

TEST(IdParams, ParseACardTextAtAnyOffset) {
  const Bytes china =
      CardText(RecordKind::kChina, {
                                       {"name",     u"张三"  },
                                       {"validEnd", u"20400101"}
  });
  Bytes native(4096);
  std::copy(china.begin(), china.end(), native.begin() + 101);
  RawRecord plain(RecordKind::kChina, true);
  RawRecord combined(RecordKind::kPerson, true);

  EXPECT_EQ(0, IdChinaParam(native.data(), 101, plain.As<PERSONINFO_CHA_FP>()));
  EXPECT_EQ(0, IdParam_FP(native.data(), 101, combined.As<PERSONINFO_FP>()));

  for (const CardField& field : CardFields(RecordKind::kChina)) {
    EXPECT_EQ(plain.Get(field.name), combined.Get(field.name)) << field.name;
  }
  EXPECT_EQ("20400101", combined.Text("validEnd"));
  EXPECT_EQ("", combined.Text("sex"));  // a parser's further steps are not its own
  EXPECT_EQ("", combined.Text("cardType"));
}

// Answers read in the other mode are accepted, two bytes off: no harm may come of it.
TEST(NativeDataParsers, ReadDataOfTheOtherModeTwoBytesOff) {
  for (const RecordKind kind : kCardKinds) {
    const Bytes text = CardText(kind, {
                                          {"name",     u"张三"  },
                                          {"validEnd", u"20400101"}
    });
    EXPECT_EQ("0400101", Parsed(kind, 1, NativeData(0, text)).Text("validEnd").substr(0, 7));
    EXPECT_EQ("2040010", Parsed(kind, 0, NativeData(1, text)).Text("validEnd").substr(1, 7));
  }
}

TEST(GetPersonChinaInfo, LogsNothingButTheNameLookUp) {
  NEEDS_PRIVATE_ROOT();
  SwitchLogging(true);

  Parsed(RecordKind::kChina, {
                                 {"nationCode", u"01"}
  });

  const std::vector<std::string> expected = {"  TIME  INFO:    BusiId:  [GetNation] Start "};
  EXPECT_EQ(expected, LogLines());
}
