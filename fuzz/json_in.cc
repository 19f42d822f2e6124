// JSON texts of any content, read into records: what the JSON library finds under a key, cut to the
// field's width, and nothing else.
#include <cstring>

#include "fuzz/check.h"
#include "fuzz/guarded.h"
#include "fuzz/input.h"
#include "fuzz/json_model.h"
#include "quillonid/carddata.h"

namespace {

using json_model::Tree;

const char* StringOf(const Tree& tree, const char* key) {
  const cJSON* const item = cJSON_GetObjectItem(tree.get(), key);
  return item != nullptr && cJSON_IsString(item) ? item->valuestring : nullptr;
}

template <typename Record>
void ReadRecord(json_model::Fields fields, int read(const char*, Record*), const std::string& json,
                const Tree& tree) {
  Bytes expected(sizeof(Record), kUntouched);
  for (const JsonField& row : fields) {
    const char* const value = StringOf(tree, row.key);
    if (row.use != JsonUse::kBothWays || value == nullptr) continue;
    const std::string text = std::string(value).substr(0, row.field.width - 1U);
    std::memcpy(expected.data() + row.field.offset, text.c_str(), text.size() + 1);
  }
  const Exact<char> block(json);
  GuardedRecord<Record> record;
  FUZZ_CHECK(read(block.get(), record.get()) == 0);
  FUZZ_CHECK(record.bytes().First(sizeof(Record)) == expected);
}

void GetString(const std::string& key, const std::string& json, const Tree& tree) {
  const cJSON* const item = cJSON_GetObjectItem(tree.get(), key.c_str());
  const char* const value = StringOf(tree, key.c_str());
  const std::string expected = value != nullptr ? value : "";
  const Exact<char> block(json), key_block(key);
  Guarded out(expected.size() + 1);
  const int result = tFuncGetStringFromJson(block.get(), key_block.get(), out.text());
  FUZZ_CHECK(result == (item == nullptr ? -2 : value == nullptr ? -2004 : 0));
  if (value != nullptr) {
    FUZZ_CHECK(out.Text() == expected);
  } else {
    FUZZ_CHECK(out.UntouchedFrom(0));
  }
}

// A plain record of a kind holds exactly the texts that a reader of that kind gives.
template <typename Plain, typename WithTemplates>
void CheckPlain(GuardedRecord<Plain>& plain, const std::string& json,
                int read(const char*, WithTemplates*)) {
  GuardedRecord<WithTemplates> whole(0);
  read(json.c_str(), whole.get());
  FUZZ_CHECK(std::memcmp(plain.get(), whole.get(), sizeof(Plain)) == 0);
}

void ReadByMark(const std::string& json, const Tree& tree) {
  const cJSON* const item = cJSON_GetObjectItem(tree.get(), "CardType");
  const char* const value = StringOf(tree, "CardType");
  const std::string mark = value != nullptr ? value : "";
  const int expected = item == nullptr    ? -2
                       : value == nullptr ? -2004
                       : mark == " "      ? 0
                       : mark == "I"      ? 1
                       : mark == "J"      ? 2
                                          : -1;
  const Exact<char> block(json);
  GuardedRecord<PERSONINFO_CHA> china;
  GuardedRecord<PERSONINFO_FOR> foreign;
  GuardedRecord<PERSONINFO_GAT> gat;

  FUZZ_CHECK(tFuncConvertIdInfotoStruct(block.get(), china.get(), foreign.get(), gat.get()) ==
             expected);

  if (expected == 0) CheckPlain(china, json, tFuncConvertJsontoChinaStruct);
  if (expected == 1) CheckPlain(foreign, json, tFuncConvertJsontoForeignStruct);
  if (expected == 2) CheckPlain(gat, json, tFuncConvertJsontoGatStruct);
  FUZZ_CHECK(expected == 0 || china.bytes().UntouchedFrom(0));
  FUZZ_CHECK(expected == 1 || foreign.bytes().UntouchedFrom(0));
  FUZZ_CHECK(expected == 2 || gat.bytes().UntouchedFrom(0));
  FUZZ_CHECK(tFuncConvertIdInfotoStruct(block.get(), nullptr, nullptr, nullptr) ==
             std::min(expected, -1));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Input input(data, size);
  const std::string key = input.Text(32);
  const std::string json = input.RestAsText();
  const Tree tree(cJSON_Parse(json.c_str()));
  GetString(key, json, tree);
  ReadByMark(json, tree);
  ReadRecord(kChinaJson, tFuncConvertJsontoChinaStruct, json, tree);
  ReadRecord(kForeignJson, tFuncConvertJsontoForeignStruct, json, tree);
  ReadRecord(kGatJson, tFuncConvertJsontoGatStruct, json, tree);
  ReadRecord(kCollectJson, tFuncConvertJsontoCollectStruct, json, tree);
  return 0;
}
