// JSON while memory runs out: the allocations of the JSON library fail from a chosen one on, or
// that one alone.

#include <cjson/cJSON.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>

#include "quillonid/carddata.h"
#include "tests/carddata/json_fixture.h"

namespace {

int s_calls;        // allocations so far
int s_failing;      // this one fails; 0: none
bool s_persistent;  // and all behind it
int s_held;         // blocks that were not freed yet

void* Allocate(std::size_t size) {
  ++s_calls;
  if (s_failing != 0 && (s_calls == s_failing || (s_persistent && s_calls > s_failing))) {
    return nullptr;
  }
  ++s_held;
  return std::malloc(size);
}

void Free(void* block) {
  if (block != nullptr) --s_held;
  std::free(block);
}

// Counts the allocations of a call, then makes each of them fail; `check` sees every failed call.
template <typename Call, typename Check>
void FailEveryAllocation(Call call, Check check) {
  cJSON_Hooks hooks = {Allocate, Free};
  cJSON_InitHooks(&hooks);
  s_failing = 0;
  s_calls = 0;
  call();
  const int allocations = s_calls;
  ASSERT_GT(allocations, 0);
  EXPECT_EQ(0, s_held);
  for (const bool persistent : {false, true}) {
    for (int failing = 1; failing <= allocations; ++failing) {
      SCOPED_TRACE(testing::Message() << "allocation " << failing << (persistent ? " and on" : ""));
      s_failing = failing;
      s_persistent = persistent;
      s_calls = 0;
      check();
      EXPECT_GE(s_calls, failing);
      EXPECT_EQ(0, s_held);
    }
  }
  s_failing = 0;
  cJSON_InitHooks(nullptr);
}

// A record whose text grows past the room made for it, for its characters must be escaped.
template <typename Record>
Record Growing(const std::vector<Key>& keys) {
  auto record = Filled<Record>(keys);
  std::memset(record.fingerData1, '\x01', sizeof record.fingerData1);
  return record;
}

template <typename Pack>
void ExpectNothingButAnEmptyText(Pack pack) {
  FailEveryAllocation(
      [&] {
        JsonBuffer out;
        EXPECT_EQ(0, pack(out.data()));
        EXPECT_NE("", out.text());
      },
      [&] {
        JsonBuffer out('x');
        EXPECT_EQ(-1, pack(out.data()));
        EXPECT_EQ("", out.text());
        EXPECT_EQ('x', out.bytes()[1]);
      });
}

}  // namespace

TEST(PackJsonWithoutMemory, GivesAnEmptyText) {
  const auto china = Growing<PERSONINFO_CHA_FP>(kChinaKeys);
  const auto foreign = Growing<PERSONINFO_FOR_FP>(kForeignKeys);
  const auto gat = Growing<PERSONINFO_GAT_FP>(kGatKeys);
  const auto collect = Growing<PERSONINFO_COLLECT_FP>(kCollectKeys);

  ExpectNothingButAnEmptyText([&](char* out) { return tFuncPackChinaJson(china, out); });
  ExpectNothingButAnEmptyText([&](char* out) { return tFuncPackForeignJson(foreign, out); });
  ExpectNothingButAnEmptyText([&](char* out) { return tFuncPackGATJson(gat, out); });
  ExpectNothingButAnEmptyText([&](char* out) { return tFuncPackCollectJson(&collect, out); });
  ExpectNothingButAnEmptyText([&](char* out) {
    return tFuncConvertIdInfoStruct(nullptr, nullptr, nullptr, nullptr, &collect, out);
  });
}

TEST(PackJsonWithoutMemory, LeavesThePhotoToTheNextPacker) {
  const auto china = Filled<PERSONINFO_CHA_FP>(kChinaKeys);

  FailEveryAllocation(
      [&] {
        JsonBuffer out;
        EXPECT_EQ(0, tFuncPackChinaJson(china, out.data()));
      },
      [&] {
        JsonBuffer out;
        tFunc_SetAddPhotoDataToJsonFlag(1);
        EXPECT_EQ(-1, tFuncPackChinaJson(china, out.data()));

        const int failing = s_failing;
        s_failing = 0;
        EXPECT_EQ(0, tFuncPackChinaJson(china, out.data()));
        EXPECT_NE(std::string::npos, out.text().find("\"PhotoNativeData\""));
        s_failing = failing;
      });
}

TEST(JsonInputWithoutMemory, FailsAndLeavesTheRecord) {
  const std::string json =
      JsonOf(ValuesOf(Filled<PERSONINFO_COLLECT_FP>(kCollectKeys), kCollectKeys));

  FailEveryAllocation(
      [&] {
        char name[80] = {};
        EXPECT_EQ(0, tFuncGetStringFromJson(json.c_str(), "ChinaName", name));
      },
      [&] {
        char name[80] = "before";
        EXPECT_EQ(-2, tFuncGetStringFromJson(json.c_str(), "ChinaName", name));
        EXPECT_STREQ("before", name);
      });
  FailEveryAllocation(
      [&] {
        PERSONINFO_COLLECT_FP record = {};
        EXPECT_EQ(0, tFuncConvertJsontoCollectStruct(json.c_str(), &record));
      },
      [&] {
        PERSONINFO_COLLECT_FP record;
        std::memset(&record, 'x', sizeof record);
        const PERSONINFO_COLLECT_FP before = record;
        EXPECT_EQ(0, tFuncConvertJsontoCollectStruct(json.c_str(), &record));
        EXPECT_EQ(0, std::memcmp(&before, &record, sizeof record));
      });
}

// With memory enough: whatever a text is refused for.
TEST(JsonInput, FreesTheTextsTreeWhateverItFinds) {
  cJSON_Hooks hooks = {Allocate, Free};
  cJSON_InitHooks(&hooks);
  PERSONINFO_CHA_FP record = {};
  char text[80] = {};

  EXPECT_EQ(-2, tFuncGetStringFromJson(R"({"Name": "x"})", "Missing", text));
  EXPECT_EQ(-2004, tFuncGetStringFromJson(R"({"Name": 5})", "Name", text));
  EXPECT_EQ(-2, tFuncGetStringFromJson(R"({"Name": "x")", "Name", text));
  EXPECT_EQ(-2, tFuncGetStringFromJson(R"({"Name": "x"})", "Name", nullptr));
  EXPECT_EQ(0, tFuncConvertJsontoChinaStruct(R"({"Address": 5})", &record));
  const auto kind_of = [](const char* json) {
    return tFuncConvertIdInfotoStruct(json, nullptr, nullptr, nullptr);
  };
  EXPECT_EQ(-2, kind_of(R"({"Name": "x"})"));
  EXPECT_EQ(-2004, kind_of(R"({"CardType": 5})"));
  EXPECT_EQ(-1, kind_of(R"({"CardType": "X"})"));
  EXPECT_EQ(-1, kind_of(R"({"CardType": "I"})"));  // no record for it

  EXPECT_GT(s_calls, 0);
  EXPECT_EQ(0, s_held);
  cJSON_InitHooks(nullptr);
}
