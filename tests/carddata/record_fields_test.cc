// The tables of fields and the records' structures against plain lists of names and widths.
#include "tests/carddata/record_fields.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <span>

#include "carddata/layout.h"
#include "quillonid/records.h"

namespace {

void ExpectFields(RecordKind kind, std::span<const Field> table) {
  const RecordFields expected = FieldsOf(kind, true);
  ASSERT_EQ(expected.size(), table.size());
  for (std::size_t i = 0; i < table.size(); ++i) {
    EXPECT_EQ(expected[i].name, table[i].name);
    EXPECT_EQ(expected[i].offset, table[i].offset) << table[i].name;
    EXPECT_EQ(expected[i].width, table[i].width) << table[i].name;
  }
}

}  // namespace

TEST(RecordTables, HaveEveryFieldAtItsPlace) {
  ExpectFields(RecordKind::kChina, kChinaRecord);
  ExpectFields(RecordKind::kForeign, kForeignRecord);
  ExpectFields(RecordKind::kGat, kGatRecord);
  ExpectFields(RecordKind::kPerson, kPersonRecord);
  ExpectFields(RecordKind::kCollect, kCollectRecord);
}

TEST(CombinedRecord, HasItsNumberBeforeTheTemplates) {
  EXPECT_EQ(900u, offsetof(PERSONINFO, personType));
  EXPECT_EQ(900u, offsetof(PERSONINFO_FP, personType));
  EXPECT_EQ(904u, offsetof(PERSONINFO_FP, fingerData1));
}

TEST(CardTextTables, StartWhereTheFieldBeforeEnds) {
  EXPECT_TRUE(IsGapless(kChinaText, 256));
  constexpr TextField kGap[] = {
      {0,  30,  QL_FIELD(China, name)},
      {32, 224, QL_FIELD(China, sex) }
  };
  EXPECT_FALSE(IsGapless(kGap, 256));
  EXPECT_FALSE(IsGapless(kChinaText, 258));
}
