// Conversions between records: every field of every pair, what they leave alone, and their log.
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

#include "quillonid/carddata.h"
#include "quillonid/results.h"
#include "tests/carddata/record_fields.h"
#include "tests/testing/private_root.h"

namespace {

// A text of its own for each field, shorter than the field.
std::string TextFor(const ExpectedField& field) { return field.name.substr(0, field.width - 3); }

RawRecord Filled(RecordKind kind, bool with_templates) {
  RawRecord record(kind, with_templates);
  for (const ExpectedField& field : record.fields()) record.Put(field.name, TextFor(field));
  return record;
}

bool IsTemplate(const std::string& name) { return name.starts_with("finger"); }

// Copies of fields from one record to another: these and no other byte. Bytes that a text does not
// reach stay as they were in `before`.
RawRecord Copied(const RawRecord& source, const std::set<std::string>& names, RawRecord before) {
  for (const std::string& name : names) before.Put(name, source.Text(name));
  return before;
}

std::set<std::string> TextNames(const RawRecord& record) {
  std::set<std::string> names;
  for (const ExpectedField& field : record.fields()) {
    if (!IsTemplate(field.name)) names.insert(field.name);
  }
  return names;
}

std::set<std::string> AllNames(const RawRecord& record) {
  std::set<std::string> names = TextNames(record);
  return names.insert("fingerData1"), names.insert("fingerData2"), names;
}

// One variant conversion: `kind` from or to the record with templates.
struct Variant {
  const char* name;
  RecordKind kind;
  bool from_templates;
  int (*convert)(RawRecord* source, RawRecord* dest);
};

template <auto kConvert, typename Source, typename Dest>
int Call(RawRecord* source, RawRecord* dest) {
  return kConvert(source != nullptr ? source->As<Source>() : nullptr,
                  dest != nullptr ? dest->As<Dest>() : nullptr);
}

const Variant kVariants[] = {
    {"ChinaFp",   RecordKind::kChina,   true,
     Call<tFuncConvertChinaFp,                                            PERSONINFO_CHA_FP,     PERSONINFO_CHA>       },
    {"China",     RecordKind::kChina,   false,
     Call<tFuncConvertChina,                                              PERSONINFO_CHA,        PERSONINFO_CHA_FP>    },
    {"ForeignFp", RecordKind::kForeign, true,
     Call<tFuncConvertForeignFp,                                          PERSONINFO_FOR_FP,     PERSONINFO_FOR>       },
    {"Foreign",   RecordKind::kForeign, false,
     Call<tFuncConvertForeign,                                            PERSONINFO_FOR,        PERSONINFO_FOR_FP>    },
    {"GatFp",     RecordKind::kGat,     true,  Call<tFuncConvertGatFp,    PERSONINFO_GAT_FP,     PERSONINFO_GAT>       },
    {"Gat",       RecordKind::kGat,     false, Call<tFuncConvertGat,      PERSONINFO_GAT,        PERSONINFO_GAT_FP>    },
    {"CollectFp", RecordKind::kCollect, true,
     Call<tFuncConvertCollectFp,                                          PERSONINFO_COLLECT_FP, PERSONINFO_COLLECT>   },
    {"Collect",   RecordKind::kCollect, false,
     Call<tFuncConvertCollect,                                            PERSONINFO_COLLECT,    PERSONINFO_COLLECT_FP>},
    {"PersonFp",  RecordKind::kPerson,  true,  Call<tFuncConvertPersonFp, PERSONINFO_FP,         PERSONINFO>           },
    {"Person",    RecordKind::kPerson,  false, Call<tFuncConvertPerson,   PERSONINFO,            PERSONINFO_FP>        },
};

class VariantConversion : public testing::TestWithParam<Variant> {};

INSTANTIATE_TEST_SUITE_P(Records, VariantConversion, testing::ValuesIn(kVariants),
                         [](const auto& test) { return test.param.name; });

RawRecord ChinaNamed(const char* name) {
  RawRecord record(RecordKind::kChina, true);
  record.Put("name", name);
  return record;
}

RawRecord ForeignNamed(const char* name) {
  RawRecord record(RecordKind::kForeign, true);
  record.Put("name", name);
  return record;
}

int Combine(RawRecord* china, RawRecord* foreign, RawRecord* person) {
  return ConverStruct(china != nullptr ? china->As<PERSONINFO_CHA_FP>() : nullptr,
                      foreign != nullptr ? foreign->As<PERSONINFO_FOR_FP>() : nullptr,
                      person != nullptr ? person->As<PERSONINFO_FP>() : nullptr);
}

int Collect(RawRecord* china, RawRecord* foreign, RawRecord* gat, RawRecord* collect) {
  return tFuncConvertStruct2Collect(
      china != nullptr ? china->As<PERSONINFO_CHA_FP>() : nullptr,
      foreign != nullptr ? foreign->As<PERSONINFO_FOR_FP>() : nullptr,
      gat != nullptr ? gat->As<PERSONINFO_GAT_FP>() : nullptr,
      collect != nullptr ? collect->As<PERSONINFO_COLLECT_FP>() : nullptr);
}

}  // namespace

TEST_P(VariantConversion, CopiesEveryTextAndNothingElse) {
  const Variant& variant = GetParam();
  RawRecord source = Filled(variant.kind, variant.from_templates);
  RawRecord dest(variant.kind, !variant.from_templates, '#');
  if (variant.kind == RecordKind::kPerson && variant.from_templates) {
    source.As<PERSONINFO_FP>()->personType = 0x23232323;  // the number that `dest` has
  }
  const RawRecord expected = Copied(source, TextNames(source), dest);

  EXPECT_EQ(RET_PUB_SUCCESS, variant.convert(&source, &dest));

  EXPECT_EQ(expected.bytes(), dest.bytes());
}

TEST_P(VariantConversion, LeavesTheFieldsThatAreEmptyInTheSource) {
  const Variant& variant = GetParam();
  RawRecord source(variant.kind, variant.from_templates);
  RawRecord dest(variant.kind, !variant.from_templates, '\0');
  for (const std::string& name : TextNames(dest)) dest.Put(name, "old");
  const std::string before = dest.bytes();

  EXPECT_EQ(RET_PUB_SUCCESS, variant.convert(&source, &dest));

  EXPECT_EQ(before, dest.bytes());
}

// Against a text without a zero that runs into the fields behind it.
TEST_P(VariantConversion, CutsAFullFieldAtItsWidthLessOne) {
  const Variant& variant = GetParam();
  RawRecord source(variant.kind, variant.from_templates, 'x');
  RawRecord dest(variant.kind, !variant.from_templates);
  RawRecord expected = dest;
  for (const std::string& name : TextNames(dest)) {
    expected.Put(name, std::string(FieldNamed(dest.fields(), name).width - 1, 'x'));
  }

  EXPECT_EQ(RET_PUB_SUCCESS, variant.convert(&source, &dest));

  for (const std::string& name : TextNames(dest)) EXPECT_EQ(expected.Get(name), dest.Get(name));
  EXPECT_TRUE(dest.IsTailUntouched());
}

TEST_P(VariantConversion, RefusesNull) {
  const Variant& variant = GetParam();
  RawRecord source(variant.kind, variant.from_templates, 'x');
  RawRecord dest(variant.kind, !variant.from_templates, '#');
  const std::string before = dest.bytes();

  EXPECT_EQ(RET_BUSI_ID_CARD_TYPE_ERR, variant.convert(nullptr, &dest));
  EXPECT_EQ(RET_BUSI_ID_CARD_TYPE_ERR, variant.convert(&source, nullptr));
  EXPECT_EQ(RET_BUSI_ID_CARD_TYPE_ERR, variant.convert(nullptr, nullptr));
  EXPECT_EQ(before, dest.bytes());
}

TEST(VariantConversions, CopyPersonTypeFromTheRecordWithTemplatesOnly) {
  PERSONINFO plain = {};
  PERSONINFO_FP with_templates = {};
  with_templates.personType = 1;
  EXPECT_EQ(0, tFuncConvertPersonFp(&with_templates, &plain));
  EXPECT_EQ(1, plain.personType);

  plain.personType = 5;
  EXPECT_EQ(0, tFuncConvertPerson(&plain, &with_templates));
  EXPECT_EQ(1, with_templates.personType);
}

TEST(ConverStruct, CopiesAResidentIntoTheCombinedRecord) {
  RawRecord china = Filled(RecordKind::kChina, true);
  RawRecord person(RecordKind::kPerson, true, '#');
  RawRecord expected = Copied(china, AllNames(china), person);
  expected.Put("cardType", " ");

  EXPECT_EQ(0, Combine(&china, nullptr, &person));

  EXPECT_EQ(expected.bytes(), person.bytes());
}

TEST(ConverStruct, CopiesAForeignerIntoTheCombinedRecord) {
  RawRecord foreign = Filled(RecordKind::kForeign, true);
  RawRecord person(RecordKind::kPerson, true, '#');
  RawRecord expected = Copied(foreign, AllNames(foreign), person);
  expected.Put("cardType", "I");

  EXPECT_EQ(0, Combine(nullptr, &foreign, &person));

  EXPECT_EQ(expected.bytes(), person.bytes());
}

TEST(ConverStruct, PrefersAResidentThatHasAName) {
  RawRecord china = ChinaNamed("c");
  RawRecord unnamed = ChinaNamed("");
  RawRecord foreign = ForeignNamed("f");
  RawRecord person(RecordKind::kPerson, true);

  EXPECT_EQ(0, Combine(&china, &foreign, &person));
  EXPECT_EQ("c", person.Text("name"));
  EXPECT_EQ(" ", person.Text("cardType"));

  EXPECT_EQ(0, Combine(&unnamed, &foreign, &person));
  EXPECT_EQ("f", person.Text("name"));
  EXPECT_EQ("I", person.Text("cardType"));
}

TEST(ConverStruct, GivesAResidentBackAsItWas) {
  RawRecord china = Filled(RecordKind::kChina, true);
  RawRecord person(RecordKind::kPerson, true);
  RawRecord back(RecordKind::kChina, true);
  ASSERT_EQ(0, Combine(&china, nullptr, &person));

  EXPECT_EQ(0, Combine(&back, nullptr, &person));

  EXPECT_EQ(china.bytes(), back.bytes());
}

TEST(ConverStruct, GivesAForeignerBackAsItWas) {
  RawRecord foreign = Filled(RecordKind::kForeign, true);
  foreign.Put("cardType", std::string("I\0\0\0\0\0\0", 7));
  RawRecord person(RecordKind::kPerson, true);
  RawRecord back(RecordKind::kForeign, true);
  ASSERT_EQ(0, Combine(nullptr, &foreign, &person));

  EXPECT_EQ(0, Combine(nullptr, &back, &person));

  EXPECT_EQ(foreign.bytes(), back.bytes());
}

TEST(ConverStruct, GivesBackNothingToARecordOfAnotherKind) {
  RawRecord person(RecordKind::kPerson, true);
  person.Put("name", "n");
  for (const char* mark : {" ", "I", "J", "\x80"}) {
    person.Put("cardType", mark);
    RawRecord china(RecordKind::kChina, true);
    RawRecord foreign(RecordKind::kForeign, true);

    EXPECT_EQ(0, Combine(&china, nullptr, &person));
    EXPECT_EQ(mark == std::string(" ") ? "n" : "", china.Text("name")) << mark;
    EXPECT_EQ(0, Combine(nullptr, &foreign, &person));
    EXPECT_EQ(mark == std::string("I") ? "n" : "", foreign.Text("name")) << mark;
  }
}

// Its Chinese name decides, so that a foreigner without one is taken as a wish for the reverse.
TEST(ConverStruct, DoesNotCopyAForeignerWithoutAChineseName) {
  RawRecord foreign(RecordKind::kForeign, true);
  foreign.Put("EngName", "SPECIMEN");
  RawRecord person(RecordKind::kPerson, true);

  EXPECT_EQ(-1, Combine(nullptr, &foreign, &person));

  EXPECT_EQ("", person.Text("EngName"));
}

TEST(ConverStruct, RefusesNullAndNamelessRecords) {
  RawRecord china = ChinaNamed("c");
  RawRecord foreign = ForeignNamed("f");
  RawRecord unnamed = ChinaNamed("");
  RawRecord person(RecordKind::kPerson, true);
  person.Put("cardType", " ");

  EXPECT_EQ(-1, Combine(nullptr, nullptr, &person));
  EXPECT_EQ(-1, Combine(nullptr, nullptr, nullptr));
  EXPECT_EQ(-1, Combine(&china, nullptr, nullptr));
  EXPECT_EQ(-1, Combine(nullptr, &foreign, nullptr));
  EXPECT_EQ(-1, Combine(&unnamed, nullptr, nullptr));
  EXPECT_EQ(-1, Combine(&unnamed, nullptr, &person));
}

TEST(ConverStruct, NeverSetsPersonType) {
  RawRecord china = ChinaNamed("c");
  RawRecord foreign = ForeignNamed("f");
  RawRecord person(RecordKind::kPerson, true);
  person.As<PERSONINFO_FP>()->personType = 5;

  Combine(&china, nullptr, &person);
  Combine(nullptr, &foreign, &person);

  EXPECT_EQ(5, person.As<PERSONINFO_FP>()->personType);
}

TEST(tFuncConvertStruct2Collect, CopiesAResidentAndMarksIt) {
  RawRecord china = Filled(RecordKind::kChina, true);
  RawRecord collect(RecordKind::kCollect, true, '#');
  RawRecord expected = Copied(china, AllNames(china), collect);
  expected.Put("cardType", " ");

  EXPECT_EQ(0, Collect(&china, nullptr, nullptr, &collect));

  EXPECT_EQ(expected.bytes(), collect.bytes());
}

TEST(tFuncConvertStruct2Collect, CopiesAForeignerWithItsMark) {
  RawRecord foreign = Filled(RecordKind::kForeign, true);
  RawRecord collect(RecordKind::kCollect, true, '#');
  const RawRecord expected = Copied(foreign, AllNames(foreign), collect);

  EXPECT_EQ(0, Collect(nullptr, &foreign, nullptr, &collect));

  EXPECT_EQ(expected.bytes(), collect.bytes());
}

TEST(tFuncConvertStruct2Collect, CopiesAPermitWithItsMark) {
  RawRecord gat = Filled(RecordKind::kGat, true);
  RawRecord collect(RecordKind::kCollect, true, '#');
  const RawRecord expected = Copied(gat, AllNames(gat), collect);

  EXPECT_EQ(0, Collect(nullptr, nullptr, &gat, &collect));

  EXPECT_EQ(expected.bytes(), collect.bytes());
}

TEST(tFuncConvertStruct2Collect, TakesTheFirstRecordGiven) {
  RawRecord china = ChinaNamed("");
  RawRecord foreign = ForeignNamed("f");
  RawRecord gat = Filled(RecordKind::kGat, true);
  RawRecord collect(RecordKind::kCollect, true);

  EXPECT_EQ(0, Collect(&china, &foreign, &gat, &collect));
  EXPECT_EQ("", collect.Text("name"));  // a resident without a name is a resident
  EXPECT_EQ(" ", collect.Text("cardType"));

  EXPECT_EQ(0, Collect(nullptr, &foreign, &gat, &collect));
  EXPECT_EQ("f", collect.Text("name"));
}

TEST(tFuncConvertStruct2Collect, DoesNothingForNull) {
  RawRecord china = ChinaNamed("c");
  RawRecord collect(RecordKind::kCollect, true, '#');
  const std::string before = collect.bytes();

  EXPECT_EQ(0, Collect(&china, nullptr, nullptr, nullptr));
  EXPECT_EQ(0, Collect(nullptr, nullptr, nullptr, &collect));

  EXPECT_EQ(before, collect.bytes());
}

// The permit's mark is the one field that is narrower than the collect record's.
TEST(tFuncConvertStruct2Collect, CopiesAFullFieldUpToTheNarrowerWidth) {
  RawRecord gat(RecordKind::kGat, true, 'x');
  RawRecord collect(RecordKind::kCollect, true);

  EXPECT_EQ(0, Collect(nullptr, nullptr, &gat, &collect));

  EXPECT_EQ(std::string(8, 'x'), collect.Text("cardType"));
  EXPECT_EQ(std::string(9, 'x'), collect.Text("gatReserved3"));
}

TEST(tFuncConvertStruct2Collect, LogsEveryFieldOfTheSource) {
  NEEDS_PRIVATE_ROOT();
  struct {
    RecordKind kind;
    const char* title;
    const char* source;
  } const kCases[] = {
      {RecordKind::kChina,   "China to Collect",    "pChina"  },
      {RecordKind::kForeign, "pForeign to Collect", "pForeign"},
      {RecordKind::kGat,     "Gat to Collect",      "pGat"    },
  };
  for (const auto& [kind, title, name] : kCases) {
    SwitchLogging(true);
    RawRecord source = Filled(kind, true);
    RawRecord collect(RecordKind::kCollect, true);

    Collect(kind == RecordKind::kChina ? &source : nullptr,
            kind == RecordKind::kForeign ? &source : nullptr,
            kind == RecordKind::kGat ? &source : nullptr, &collect);

    const std::string prefix = "  TIME  INFO:    BusiId:  ";
    std::vector<std::string> expected = {prefix + title};
    for (const ExpectedField& field : source.fields()) {
      expected.push_back(prefix + name + "->" + field.name + " " + TextFor(field) + " ");
    }
    EXPECT_EQ(expected, LogLines());
  }
}

// Against a line that runs behind a field without a zero.
TEST(tFuncConvertStruct2Collect, LogsAFullFieldUpToItsWidth) {
  NEEDS_PRIVATE_ROOT();
  SwitchLogging(true);
  RawRecord china(RecordKind::kChina, true, 'x');
  RawRecord collect(RecordKind::kCollect, true);

  Collect(&china, nullptr, nullptr, &collect);

  const auto lines = LogLines();
  ASSERT_EQ(15u, lines.size());
  EXPECT_EQ("  TIME  INFO:    BusiId:  pChina->sex " + std::string(10, 'x') + " ", lines[2]);
}

TEST(Conversions, LogNothingElse) {
  NEEDS_PRIVATE_ROOT();
  SwitchLogging(true);
  RawRecord china = Filled(RecordKind::kChina, true);
  RawRecord plain(RecordKind::kChina, false);
  RawRecord person(RecordKind::kPerson, true);

  EXPECT_EQ(0, tFuncConvertChinaFp(china.As<PERSONINFO_CHA_FP>(), plain.As<PERSONINFO_CHA>()));
  EXPECT_EQ(0, Combine(&china, nullptr, &person));

  EXPECT_TRUE(LogLines().empty());
}
