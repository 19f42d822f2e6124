#include "carddata/json.h"

#include <cjson/cJSON.h>

#include <algorithm>
#include <array>
#include <cstring>
#include <span>

#include "carddata/json_fields.h"
#include "image/photo_block.h"
#include "quillonid/carddata.h"
#include "quillonid/results.h"
#include "reader/native_data.h"
#include "support/hex_text.h"
#include "support/log.h"

namespace {

// Non-zero: the next packer adds the photo. Set by tFunc_SetAddPhotoDataToJsonFlag, cleared by the
// packer that adds it.
int s_bJsonPhotoData;

using JsonFields = std::span<const JsonField>;

constexpr char kPhotoKey[] = "PhotoNativeData";
constexpr std::size_t kPhotoTextSize = 2 * kPhotoBlockSize + 1;  // base64 takes less
constexpr std::size_t kDateSize = 29;                            // of a date, at most
constexpr std::size_t kValiditySize = 64;
static_assert(kDateSize + 1 + kDateSize < kValiditySize);

constexpr std::size_t ValuesSize(JsonFields fields) {
  std::size_t size = kPhotoTextSize;
  for (const JsonField& row : fields) {
    size += std::max(std::size_t{row.field.width} + 1, kValiditySize);
  }
  return size;
}

// The collect record has every field of the others.
constexpr std::size_t kMaxValues = std::size(kCollectJson) + 1;
constexpr std::size_t kMaxValuesSize = ValuesSize(kCollectJson);
static_assert(ValuesSize(kChinaJson) <= kMaxValuesSize && std::size(kChinaJson) < kMaxValues);
static_assert(ValuesSize(kForeignJson) <= kMaxValuesSize && std::size(kForeignJson) < kMaxValues);
static_assert(ValuesSize(kGatJson) <= kMaxValuesSize && std::size(kGatJson) < kMaxValues);

// A JSON object of strings. Its items and their texts lie in the object itself, in the form that
// the JSON library prints, so that packing allocates nothing but the printed text.
class JsonObject {
 public:
  // cppcheck-suppress uninitMemberVar; what Add() has not filled is not read.
  JsonObject() = default;
  JsonObject(const JsonObject&) = delete;
  JsonObject& operator=(const JsonObject&) = delete;

  // Adds at most `limit` bytes of `value`, up to its zero.
  void Add(const char* key, const char* value, std::size_t limit) {
    const std::size_t length = strnlen(value, limit);
    char* const copy = values_ + values_size_;
    std::memcpy(copy, value, length);
    copy[length] = '\0';
    values_size_ += length + 1;

    cJSON& item = items_[count_];
    item = {};
    item.type = cJSON_String;
    item.string = const_cast<char*>(key);
    item.valuestring = copy;
    if (count_ > 0) {
      items_[count_ - 1].next = &item;
      item.prev = &items_[count_ - 1];
    }
    ++count_;
  }

  // Null when there is no memory.
  char* Print() {
    cJSON object = {};
    object.type = cJSON_Object;
    object.child = items_;
    // Enough for texts without escapes; the library makes room for the others.
    const std::size_t expected = values_size_ + count_ * sizeof "\n\t\"CardActivityStart\":\t\"\",";
    return cJSON_PrintBuffered(&object, static_cast<int>(expected), cJSON_True);
  }

 private:
  cJSON items_[kMaxValues];
  std::size_t count_ = 0;
  char values_[kMaxValuesSize];
  std::size_t values_size_ = 0;
};

void AddFields(JsonFields fields, const void* record, JsonObject* object) {
  for (const JsonField& row : fields) {
    const char* const value = row.field.In(record);
    switch (row.use) {
      case JsonUse::kBothWays:
      case JsonUse::kPacked:
        object->Add(row.key, value, row.field.width);
        break;
      case JsonUse::kValidity: {  // `validEnd` follows `validStart` in every record.
        char validity[kValiditySize] = {};
        const std::size_t length = strnlen(value, kDateSize);
        std::memcpy(validity, value, length);
        validity[length] = '-';
        const char* const end = value + row.field.width;
        std::memcpy(validity + length + 1, end, strnlen(end, kDateSize));
        object->Add(row.key, validity, sizeof validity);
        break;
      }
      case JsonUse::kBlank:
        object->Add(row.key, " ", 1);
        break;
    }
  }
}

using PhotoBlock = std::array<unsigned char, kPhotoBlockSize>;
using PhotoText = std::array<char, kPhotoTextSize>;

// Photo block of the last read; zeros when there is none. False unless a read was kept whole.
bool GetLastPhoto(PhotoBlock* photo) {
  std::array<unsigned char, QL_NATIVE_DATA_SIZE> native = {};
  const int length = tFunc_GetIdNativeData(native.data(), static_cast<int>(native.size()));
  const int photo_length = tFunc_GetPhotoData(LastReadMode(), native.data(), photo->data());
  return IsReadReplyLength(length) && photo_length == kPhotoBlockSize;
}

// The two ways of writing the photo. Each returns 0 or a negative result.
int PhotoAsHex(PhotoText* text) {
  PhotoBlock photo = {};
  GetLastPhoto(&photo);  // On purpose: without a photo the zeros are packed.
  WriteHexUpper(photo.data(), photo.size(), text->data());
  return RET_PUB_SUCCESS;
}

int PhotoAsBase64(PhotoText* text) {
  PhotoBlock photo = {};
  if (!GetLastPhoto(&photo)) return -1;
  Base64_EncData(photo.data(), kPhotoBlockSize, text->data(), static_cast<int>(text->size()));
  return RET_PUB_SUCCESS;
}

int Pack(JsonFields fields, const void* record, int photo_as(PhotoText*), JsonText* json) {
  JsonObject object;
  AddFields(fields, record, &object);
  if (s_bJsonPhotoData != 0) {
    PhotoText photo = {};
    if (const int result = photo_as(&photo)) return result;
    object.Add(kPhotoKey, photo.data(), photo.size());
  }
  json->text.reset(object.Print());
  json->no_memory = json->text == nullptr;
  if (json->no_memory) return -1;  // The next packer adds the photo.
  s_bJsonPhotoData = 0;
  return RET_PUB_SUCCESS;
}

// Packs a record and copies its text, without its zero, to an output buffer of QL_JSON_SIZE bytes.
// `tail` zeros follow. A text that does not fit, with two bytes to spare, is not copied. Where
// there is no memory for the text, an empty one is written. Either leaves the photo asked for.
template <typename Record>
int PackInto(const Record& record, std::size_t tail, char* out) {
  if (out == nullptr) return -1;
  const int photo_asked = s_bJsonPhotoData;
  JsonText json;
  if (const int result = PackJson(record, &json)) {
    if (json.no_memory) out[0] = '\0';
    return result;
  }
  const std::size_t length = std::strlen(json.text.get());
  if (length + 2 > QL_JSON_SIZE) {
    s_bJsonPhotoData = photo_asked;  // Nobody has seen the photo.
    return -1;
  }
  std::memcpy(out, json.text.get(), length);
  std::memset(out + length, 0, tail);
  return RET_PUB_SUCCESS;
}

struct DeleteJson {
  void operator()(cJSON* json) const { cJSON_Delete(json); }
};
using JsonTree = std::unique_ptr<cJSON, DeleteJson>;

// Sets `*value` to the text of `key`, which lives as long as the tree.
int FindString(const JsonTree& tree, const char* key, const char** value) {
  const cJSON* const item = cJSON_GetObjectItem(tree.get(), key);
  if (item == nullptr) return RET_PUB_INVAL_PARAM;
  if (!cJSON_IsString(item) || item->valuestring == nullptr) {
    LOG_CARD("Get Json Tag Fail");
    return RET_BUSI_ID_CARD_TYPE_ERR;
  }
  *value = item->valuestring;
  return RET_PUB_SUCCESS;
}

// Copies and reports the text of `key`, cut at `size` - 1 bytes.
void CopyString(const char* key, const char* value, char* dest, std::size_t size) {
  const std::size_t length = strnlen(value, size - 1);
  std::memcpy(dest, value, length);
  dest[length] = '\0';
  LOG_CARD("parse szTag %s Value :%s\r\n", key, value);
}

// Reads what the table says; keys that are missing or no texts leave their field as it was.
void ReadFields(const JsonTree& tree, JsonFields fields, void* record) {
  for (const JsonField& row : fields) {
    const char* value = nullptr;
    if (row.use != JsonUse::kBothWays || FindString(tree, row.key, &value) != 0) continue;
    CopyString(row.key, value, row.field.In(record), row.field.width);
  }
}

int ReadText(const char* json, JsonFields fields, void* record) {
  if (record == nullptr) return RET_PUB_SUCCESS;
  const JsonTree tree(cJSON_Parse(json));
  if (tree != nullptr) ReadFields(tree, fields, record);
  return RET_PUB_SUCCESS;
}

// Reads the fields and gives those of the plain record. Returns `kind`, or -1 for a null record.
template <typename WithTemplates, typename Plain>
int ReadPlain(const JsonTree& tree, JsonFields fields, int convert(const WithTemplates*, Plain*),
              int kind, Plain* record) {
  if (record == nullptr) return -1;
  std::memset(record, 0, sizeof *record);
  WithTemplates work = {};
  ReadFields(tree, fields, &work);
  convert(&work, record);
  return kind;
}

}  // namespace

void FreeJsonText::operator()(char* text) const { cJSON_free(text); }

int PackJson(const PERSONINFO_CHA_FP& record, JsonText* json) {
  return Pack(kChinaJson, &record, PhotoAsHex, json);
}

int PackJson(const PERSONINFO_FOR_FP& record, JsonText* json) {
  return Pack(kForeignJson, &record, PhotoAsHex, json);
}

int PackJson(const PERSONINFO_GAT_FP& record, JsonText* json) {
  return Pack(kGatJson, &record, PhotoAsHex, json);
}

int PackJson(const PERSONINFO_COLLECT_FP& record, JsonText* json) {
  return Pack(kCollectJson, &record, PhotoAsBase64, json);
}

int PackJson(const PERSONINFO_FP& record, JsonText* json) {
  PERSONINFO_FP person = record;
  if (person.cardType[0] == ' ') {
    PERSONINFO_CHA_FP china = {};
    if (const int result = ConverStruct(&china, nullptr, &person)) return result;
    return PackJson(china, json);
  }
  if (person.cardType[0] == 'I') {
    PERSONINFO_FOR_FP foreign = {};
    if (const int result = ConverStruct(nullptr, &foreign, &person)) return result;
    return PackJson(foreign, json);
  }
  return -1;
}

int tFunc_SetAddPhotoDataToJsonFlag(int bFlag) {
  s_bJsonPhotoData = bFlag;
  return RET_PUB_SUCCESS;
}

int tFunc_SetAddNativeDataToJsonFlag() { return RET_PUB_SUCCESS; }

int tFuncPackChinaJson(PERSONINFO_CHA_FP record, char* out) { return PackInto(record, 0, out); }

int tFuncPackForeignJson(PERSONINFO_FOR_FP record, char* out) { return PackInto(record, 0, out); }

int tFuncPackGATJson(PERSONINFO_GAT_FP record, char* out) { return PackInto(record, 0, out); }

int tFuncPackCollectJson(const PERSONINFO_COLLECT_FP* record, char* out) {
  return record != nullptr ? PackInto(*record, 2, out) : -1;
}

int tFuncConvertIdInfoStruct(const PERSONINFO_CHA_FP* china, const PERSONINFO_FOR_FP* foreign,
                             const PERSONINFO_GAT_FP* gat, const PERSONINFO_FP* person,
                             const PERSONINFO_COLLECT_FP* collect, char* out) {
  int result = RET_PUB_SUCCESS;
  if (china != nullptr) result = PackInto(*china, 0, out);
  if (foreign != nullptr && result >= 0) result = PackInto(*foreign, 0, out);
  if (gat != nullptr && result >= 0) result = PackInto(*gat, 0, out);
  if (person != nullptr && result >= 0) result = PackInto(*person, 0, out);
  if (collect != nullptr && result >= 0) result = PackInto(*collect, 2, out);
  return result;
}

int GetJsonString(const char* json, const char* key, char* dest, std::size_t size) {
  const JsonTree tree(cJSON_Parse(json));
  if (tree == nullptr || dest == nullptr) return RET_PUB_INVAL_PARAM;
  const char* value = nullptr;
  if (const int result = FindString(tree, key, &value)) return result;
  CopyString(key, value, dest, size);
  return RET_PUB_SUCCESS;
}

int tFuncGetStringFromJson(const char* json, const char* key, char* dest) {
  return GetJsonString(json, key, dest, SIZE_MAX);  // On purpose: no bound.
}

int tFuncConvertJsontoChinaStruct(const char* json, PERSONINFO_CHA_FP* record) {
  return ReadText(json, kChinaJson, record);
}

int tFuncConvertJsontoForeignStruct(const char* json, PERSONINFO_FOR_FP* record) {
  return ReadText(json, kForeignJson, record);
}

int tFuncConvertJsontoGatStruct(const char* json, PERSONINFO_GAT_FP* record) {
  return ReadText(json, kGatJson, record);
}

int tFuncConvertJsontoCollectStruct(const char* json, PERSONINFO_COLLECT_FP* record) {
  return ReadText(json, kCollectJson, record);
}

int tFuncConvertIdInfotoStruct(const char* json, PERSONINFO_CHA* china, PERSONINFO_FOR* foreign,
                               PERSONINFO_GAT* gat) {
  const JsonTree tree(cJSON_Parse(json));
  if (tree == nullptr) return RET_PUB_INVAL_PARAM;
  const char* value = nullptr;
  if (const int result = FindString(tree, "CardType", &value)) return result;
  char mark[16];
  CopyString("CardType", value, mark, sizeof mark);

  if (std::strcmp(mark, " ") == 0) {
    return ReadPlain(tree, kChinaJson, tFuncConvertChinaFp, 0, china);
  }
  if (std::strcmp(mark, "I") == 0) {
    return ReadPlain(tree, kForeignJson, tFuncConvertForeignFp, 1, foreign);
  }
  if (std::strcmp(mark, "J") == 0) return ReadPlain(tree, kGatJson, tFuncConvertGatFp, 2, gat);
  return -1;
}
