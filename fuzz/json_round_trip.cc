// Records of any content packed as JSON and read back. The texts are those that the JSON library
// prints of a tree; the fields that are packed both ways come back, cut to leave room for the zero.
#include <cstring>

#include "fuzz/check.h"
#include "fuzz/guarded.h"
#include "fuzz/input.h"
#include "fuzz/json_model.h"
#include "quillonid/carddata.h"

namespace {

template <typename Record>
struct Kind {
  json_model::Fields fields;
  int (*pack)(const Record& record, char* out);
  int (*read)(const char* json, Record* record);
};

template <typename Record>
void RoundTrip(const Kind<Record>& kind, const Bytes& content) {
  Record record;
  std::memset(&record, 0, sizeof record);
  for (std::size_t i = 0; i < sizeof record && !content.empty(); ++i) {
    reinterpret_cast<std::uint8_t*>(&record)[i] = content[i % content.size()];
  }
  Guarded out(QL_JSON_SIZE, 0);

  const int result = kind.pack(record, out.text());

  const std::string expected = json_model::Packed(kind.fields, &record);
  if (expected.size() + 2 > QL_JSON_SIZE) {
    FUZZ_CHECK(result == -1 && out.UntouchedFrom(0, 0));
    return;
  }
  FUZZ_CHECK(result == 0);
  FUZZ_CHECK(out.Text() == expected && out.UntouchedFrom(expected.size(), 0));

  GuardedRecord<Record> back;
  const Exact<char> json(expected);
  FUZZ_CHECK(kind.read(json.get(), back.get()) == 0);
  Bytes fields(sizeof(Record), kUntouched);
  for (const JsonField& row : kind.fields) {
    if (row.use != JsonUse::kBothWays) continue;
    const std::string text = json_model::TextOf(row.field, &record).substr(0, row.field.width - 1U);
    std::memcpy(fields.data() + row.field.offset, text.c_str(), text.size() + 1);
  }
  FUZZ_CHECK(back.bytes().First(sizeof(Record)) == fields);
}

const Kind<PERSONINFO_CHA_FP> kChina = {
    kChinaJson, [](const auto& record, char* out) { return tFuncPackChinaJson(record, out); },
    tFuncConvertJsontoChinaStruct};
const Kind<PERSONINFO_FOR_FP> kForeign = {
    kForeignJson, [](const auto& record, char* out) { return tFuncPackForeignJson(record, out); },
    tFuncConvertJsontoForeignStruct};
const Kind<PERSONINFO_GAT_FP> kGat = {
    kGatJson, [](const auto& record, char* out) { return tFuncPackGATJson(record, out); },
    tFuncConvertJsontoGatStruct};
const Kind<PERSONINFO_COLLECT_FP> kCollect = {
    kCollectJson, [](const auto& record, char* out) { return tFuncPackCollectJson(&record, out); },
    tFuncConvertJsontoCollectStruct};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Input input(data, size);
  const int kind = input.Between(0, 3);
  const Bytes content = input.Rest();
  if (kind == 0) RoundTrip(kChina, content);
  if (kind == 1) RoundTrip(kForeign, content);
  if (kind == 2) RoundTrip(kGat, content);
  if (kind == 3) RoundTrip(kCollect, content);
  return 0;
}
