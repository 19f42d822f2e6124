#include "simulator/faults.h"

#include <gtest/gtest.h>

#include <set>

namespace simulator {
namespace {

TEST(FaultTable, IsInTheOrderOfItsIdsWithNamesOfTheirOwn) {
  std::set<std::string> names;
  int position = 0;
  for (const FaultRow& row : FaultTable()) {
    EXPECT_EQ(position++, static_cast<int>(row.id)) << row.name;
    names.insert(row.name);
  }
  EXPECT_EQ(FaultTable().size(), names.size());
}

TEST(ParseFault, TakesEveryNameOfTheTable) {
  for (const FaultRow& row : FaultTable()) {
    const auto fault = ParseFault(row.name);

    ASSERT_TRUE(fault.has_value()) << row.name;
    EXPECT_EQ(row.id, fault->id);
    EXPECT_EQ(row.value, fault->value);
    EXPECT_EQ(0U, FaultText(*fault).find(row.name));
  }
}

TEST(ParseFault, TakesAValue) {
  const auto fault = ParseFault("length=1298");

  ASSERT_TRUE(fault.has_value());
  EXPECT_EQ(FaultId::kLength, fault->id);
  EXPECT_EQ(1298, fault->value);
  EXPECT_EQ("length=1298", FaultText(*fault));
  EXPECT_EQ("silent", FaultText(*ParseFault("silent")));
  EXPECT_EQ(0, ParseFault("cut=0")->value);
}

TEST(ParseFault, SaysWhatIsWrong) {
  const auto why = [](const char* text) {
    std::string reason;
    EXPECT_FALSE(ParseFault(text, &reason).has_value()) << text;
    return reason;
  };
  EXPECT_EQ("there is no fault \"broken\"", why("broken"));
  EXPECT_EQ("there is no fault \"\"", why(""));
  EXPECT_EQ("\"silent\" takes no value", why("silent=1"));
  for (const char* text :
       {"cut=", "cut=x", "cut=1x", "cut=-1", "cut=1000001", "cut=99999999999999999999"}) {
    EXPECT_EQ("\"cut\" takes a number from 0 to 1000000 (BYTES)", why(text));
  }
}

}  // namespace
}  // namespace simulator
