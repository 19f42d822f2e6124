#include "fuzz/data_calls.h"

#include <algorithm>
#include <cstring>
#include <string>

#include "fuzz/allowed.h"
#include "fuzz/check.h"
#include "fuzz/guarded.h"
#include "quillonid/carddata.h"
#include "quillonid/image.h"
#include "quillonid/images.h"
#include "quillonid/quillonid.h"
#include "quillonid/reader.h"
#include "quillonid/support.h"

namespace {

template <std::size_t kWidth>
void SetField(const std::string& text, char (&field)[kWidth]) {
  std::memcpy(field, text.c_str(), std::min(text.size(), kWidth - 1));
}

template <typename Record>
void FillRecord(Input& input, Record* record) {
  constexpr char kMarks[] = " IJK";
  SetField(input.Text(30), record->name);
  SetField(input.Text(30), record->cardId);
  record->cardType[0] = kMarks[input.Byte() % 4];
}

bool HasMark(char mark) { return mark == ' ' || mark == 'I' || mark == 'J'; }

// Every field of the record comes back, and the card that its mark names.
void CheckJsonReadBack(const std::string& json, const PERSONINFO_COLLECT_FP& packed) {
  GuardedRecord<PERSONINFO_COLLECT_FP> whole(0);
  FUZZ_CHECK(tFuncConvertJsontoCollectStruct(json.c_str(), whole.get()) == 0);
  FUZZ_CHECK(std::memcmp(whole.get(), &packed, sizeof packed) == 0);

  GuardedRecord<PERSONINFO_CHA> china;
  GuardedRecord<PERSONINFO_FOR> foreign;
  GuardedRecord<PERSONINFO_GAT> gat;
  const char mark = packed.cardType[0];
  const int kind = tFuncConvertIdInfotoStruct(json.c_str(), china.get(), foreign.get(), gat.get());
  FUZZ_CHECK(kind == (mark == ' ' ? 0 : mark == 'I' ? 1 : mark == 'J' ? 2 : -1));
  FUZZ_CHECK(kind == 0 ? china->cardId == std::string(packed.cardId)
                       : china.bytes().UntouchedFrom(0));
  FUZZ_CHECK(kind == 1 ? foreign->cardId == std::string(packed.cardId)
                       : foreign.bytes().UntouchedFrom(0));
  FUZZ_CHECK(kind == 2 ? gat->cardId == std::string(packed.cardId) : gat.bytes().UntouchedFrom(0));
}

}  // namespace

namespace data_calls {

void PackAndReadJson(Input& input) {
  GuardedRecord<PERSONINFO_COLLECT_FP> record(0);
  FillRecord(input, record.get());
  Guarded out(QL_JSON_SIZE, 0);
  const int result = tFuncPackCollectJson(record.get(), out.text());
  FUZZ_CHECK(result == 0 || result == -1);
  if (result != 0) {
    FUZZ_CHECK(out.UntouchedFrom(0, 0));
    return;
  }
  const std::string json = out.Text();
  FUZZ_CHECK(json.front() == '{' && json.back() == '}');
  CheckJsonReadBack(json, *record.get());
}

void SaveImage(Input& input) {
  GuardedRecord<PERSONINFO_COLLECT_FP> record(0);
  FillRecord(input, record.get());
  const int type = input.Between(-1, 4);
  const bool is_type = type >= 0 && type <= 3;
  const bool passes = record->cardId[0] != '\0' && HasMark(record->cardType[0]);
  Guarded path(QL_IMAGE_PATH_SIZE, 0);
  constexpr char kFolder[] = "/none/";
  std::memcpy(path.text(), kFolder, sizeof kFolder);

  const int saved = tFunc_SaveCollectImgEx_FP(type, record.get(), path.text(), "", 0);
  // A side cannot be packed when a photo is asked for and no card was read.
  const bool unpacked = passes && type > 0 && saved == (type == 3 ? -1 : -2004);
  FUZZ_CHECK(saved == (!is_type ? -2 : passes ? 0 : -2004) || unpacked);
  const std::string head = std::string(kFolder) + record->cardId + "-head.bmp";
  FUZZ_CHECK(path.Text() == (saved == 0 && type == 0 ? head : kFolder));

  Guarded json(QL_JSON_SIZE, 0), out(QL_JSON_SIZE);
  if (tFuncPackCollectJson(record.get(), json.text()) != 0) return;
  const int coded =
      tFunc_GetImgCollectInfoBase64(type, json.text(), out.text(), static_cast<int>(out.size()));
  FUZZ_CHECK(coded == (!is_type ? -2 : passes ? -2005 : -2004));
  FUZZ_CHECK(out.UntouchedFrom(0));
}

void Base64(Input& input) {
  const Bytes bytes = input.Take(input.Byte());
  const Exact<unsigned char> source(bytes);
  const int size = static_cast<int>(bytes.size());
  const int text_size = (size + 2) / 3 * 4;
  const int room = std::max(text_size + input.Between(-1, 1), 0);
  Guarded text(static_cast<std::size_t>(room));

  const int encoded = Base64_EncData(source.get(), size, text.text(), room);
  FUZZ_CHECK(encoded == (size < 1 ? 0 : room < text_size ? -1 : text_size));
  FUZZ_CHECK(text.UntouchedFrom(encoded < 0 ? 0 : static_cast<std::size_t>(encoded)));
  if (encoded < 1) return;

  Guarded back(bytes.size() + 1);
  FUZZ_CHECK(Base64_DecData(text.text(), encoded, back.bytes(), size) == size);
  FUZZ_CHECK(back.First(bytes.size()) == bytes);
}

void KeepNativeData(Input& input) {
  constexpr int kLengths[] = {1295, 1297, 2321, 0, 1294, 1296, 4096, -1};
  const int length = kLengths[input.Byte() % 8];
  const bool kept = length == 1295 || length == 1297 || length == 2321;
  Bytes native(4096);
  for (std::size_t i = 0; i < native.size(); ++i) native[i] = static_cast<std::uint8_t>(i % 253);
  const Bytes first = input.Take(64);
  std::copy(first.begin(), first.end(), native.begin());

  FUZZ_CHECK(tFunc_SetIdNativeData(native.data(), length) == 0);

  Guarded out(4096);
  FUZZ_CHECK(APP_ID_GetIdNativeData(out.bytes(), 4096) == (kept ? length : 0));
  const auto count = static_cast<std::size_t>(kept ? length : 0);
  native.resize(count);
  FUZZ_CHECK(out.First(count) == native);
  FUZZ_CHECK(out.UntouchedFrom(count));
  if (kept) FUZZ_CHECK(APP_ID_GetIdNativeData(out.bytes(), length - 1) == 0);
}

}  // namespace data_calls
