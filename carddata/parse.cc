// Native data to records. Where text, photo and fingerprints lie in it: docs/protocol.md.
#include <algorithm>
#include <climits>
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "carddata/gbk_table.h"
#include "carddata/layout.h"
#include "carddata/text.h"
#include "link/str.h"
#include "quillonid/carddata.h"
#include "quillonid/results.h"

namespace {

enum ReadMode { kWithoutFingerprints = 0, kWithFingerprints = 1 };

constexpr int kTextLengthAt = 10;
constexpr int kPhotoLengthAt = 12;
constexpr int kFingerLengthAt = 14;
constexpr int kTextAt = 14;
constexpr int kTextAtWithFingerprints = 16;

constexpr int kMarkAt = 248;     // card-kind mark in the card text
constexpr int kMarkSize = 2;     // one unit
constexpr int kFieldSize = 256;  // of a field's UCS-2, and of the UTF-8 made of it, with its zero

constexpr int kTemplateSize = 512;
constexpr int kTemplateTextSize = sizeof(ChinaRecord::fingerData1);
constexpr int kMaxDigits = kTemplateTextSize - 1;
constexpr int kShortReply = 1297;  // the longest answer without templates

int BigEndian16(const unsigned char* bytes) { return bytes[0] * 256 + bytes[1]; }

// On purpose: an unknown mode parses from the start of the buffer.
int TextAt(int nType) {
  if (nType == kWithoutFingerprints) return kTextAt;
  return nType == kWithFingerprints ? kTextAtWithFingerprints : 0;
}

// The value of leading digits; a number beyond int becomes the nearest.
int DecimalValue(const char* text) {
  const long value = text != nullptr ? std::strtol(text, nullptr, 10) : 0;
  return static_cast<int>(std::clamp<long>(value, INT_MIN, INT_MAX));
}

// Parses the text block at `text`. Returns 0, or the negative result of the field that ends it.
template <std::size_t kCount>
int ParseText(const TextField (&fields)[kCount], const unsigned char* text, void* record) {
  for (const auto& [offset, size, field] : fields) {
    const int result = GetPersonParam(text + offset, field.In(record), field.width, size, 0);
    if (result < 0) return result;
  }
  return RET_PUB_SUCCESS;
}

template <std::size_t kCount>
int ParseTextAt(const TextField (&fields)[kCount], const unsigned char* native, int offset,
                void* record) {
  if (native == nullptr || record == nullptr) return RET_PUB_INVAL_PARAM;
  return ParseText(fields, native + offset, record);
}

// Writes `digits` hexadecimal digits of the bytes at `offset`; none when native data ends before.
void GetTemplate(const unsigned char* native, int offset, int digits, char* dest) {
  const int count = std::min(digits, kMaxDigits);
  const bool is_inside = offset + (count + 1) / 2 <= QL_NATIVE_DATA_SIZE;
  Str_HexToAsc(native + (is_inside ? offset : 0), is_inside ? count : 0, dest);
}

template <typename Record>
void GetTemplates(int nType, const unsigned char* native, Record* record) {
  if (nType != kWithFingerprints) return;
  tFuncGetFpTemplate(native, record->fingerData1, record->fingerData2);
}

}  // namespace

int GetPersonParam(const unsigned char* source, char* dest, int nDesLen, int nLen, int bRaw) {
  if (dest == nullptr || nDesLen < 1) return -1;
  if (source == nullptr || nLen < 1) {
    std::memset(dest, 0, static_cast<std::size_t>(nDesLen));
    return -1;
  }
  const int size = std::min(nLen, kFieldSize);
  constexpr int kPerUnit = 3;  // UTF-8 bytes, at most
  if ((size + 1) / 2 * kPerUnit < std::min(nDesLen, kFieldSize) - 1) {
    // Whatever the text is, it fits untrimmed: it needs no room of its own.
    const int length = Ucs2ToUtf8(source, size, dest, nDesLen).bytes;
    std::memset(dest + length, 0, static_cast<std::size_t>(nDesLen - length));
    return nLen;
  }
  char text[kFieldSize + kUtf8Overshoot];
  int length = Ucs2ToUtf8(source, size, text, kFieldSize).bytes;
  length = std::min(length, kFieldSize - 1);

  if (bRaw != 0) {
    length = std::min(length, nDesLen);
  } else if (length >= nDesLen - 1) {
    // Only a text that fills the field is trimmed: the others keep the card's blanks.
    length = Str_GetDataDeleteChar(reinterpret_cast<unsigned char*>(text), nDesLen - 1, ' ');
  }
  std::memcpy(dest, text, static_cast<std::size_t>(length));
  std::memset(dest + length, 0, static_cast<std::size_t>(nDesLen - length));
  return nLen;
}

int GetIdCardTypeFromNativeData(int nType, const unsigned char* native) {
  if (nType != kWithoutFingerprints && nType != kWithFingerprints) return -1;
  if (native == nullptr) return -1;
  char mark[10];
  const int result =
      GetPersonParam(native + TextAt(nType) + kMarkAt, mark, sizeof mark, kMarkSize, 1);
  if (result < 0) return result;

  constexpr char kMarks[][8] = {" ", "I", "J"};
  for (int kind = 0; kind < 3; ++kind) {
    if (std::memcmp(mark, kMarks[kind], sizeof kMarks[kind]) == 0) return kind;
  }
  return -1;
}

int IdChinaParam(const unsigned char* native, int offset, PERSONINFO_CHA_FP* record) {
  return ParseTextAt(kChinaText, native, offset, record);
}

int IdForeignParam(const unsigned char* native, int offset, PERSONINFO_FOR_FP* record) {
  return ParseTextAt(kForeignText, native, offset, record);
}

int IdGatParam(const unsigned char* native, int offset, PERSONINFO_GAT_FP* record) {
  return ParseTextAt(kGatText, native, offset, record);
}

int IdParam_FP(const unsigned char* native, int offset, PERSONINFO_FP* record) {
  return ParseTextAt(kPersonText, native, offset, record);
}

int IdGATParam_FP(int total, const unsigned char* native, int offset, PERSONINFO_GAT_FP* record) {
  if (const int result = IdGatParam(native, offset, record)) return result;
  if (total <= kShortReply) return RET_PUB_SUCCESS;
  // On purpose: converted as text, which templates are not. No read comes here.
  const unsigned char* piece = native + offset + kCardTextSize;
  for (char* const dest : {record->fingerData1, record->fingerData2}) {
    const int result = GetPersonParam(piece, dest, kTemplateTextSize, kTemplateSize, 0);
    if (result < 0) return result;
    piece += result;
  }
  return RET_PUB_SUCCESS;
}

int tFuncGetSex(const char* sexCode, char* dest) {
  static constexpr GbkText<8> kMale = u"男";
  static constexpr GbkText<8> kFemale = u"女";
  GBKToUTF8((DecimalValue(sexCode) == 1 ? kMale : kFemale).bytes, dest, 8);
  return RET_PUB_SUCCESS;
}

void tFuncGetFpTemplate(const unsigned char* native, char* first, char* second) {
  if (native == nullptr || first == nullptr || second == nullptr) return;
  const int digits = BigEndian16(native + kFingerLengthAt);
  const int offset = kTextAtWithFingerprints + BigEndian16(native + kTextLengthAt) +
                     BigEndian16(native + kPhotoLengthAt);
  GetTemplate(native, offset, digits, first);
  GetTemplate(native, offset + digits / 2, digits, second);
}

void GetGATFpTemplate(const unsigned char* native, PERSONINFO_GAT_FP* record) {
  if (record == nullptr) return;
  tFuncGetFpTemplate(native, record->fingerData1, record->fingerData2);
}

int GetPersonChinaInfo(int nType, const unsigned char* native, PERSONINFO_CHA_FP* record) {
  if (native == nullptr || record == nullptr) return RET_PUB_INVAL_PARAM;
  GetTemplates(nType, native, record);
  IdChinaParam(native, TextAt(nType), record);  // On purpose: its result is not looked at.
  GetNation(DecimalValue(record->nationCode), record->nation, sizeof record->nation);
  tFuncGetSex(record->sexCode, record->sex);
  return RET_PUB_SUCCESS;
}

int GetPersonForeignInfo(int nType, const unsigned char* native, PERSONINFO_FOR_FP* record) {
  if (native == nullptr || record == nullptr) return RET_PUB_INVAL_PARAM;
  GetTemplates(nType, native, record);
  if (const int result = IdForeignParam(native, TextAt(nType), record)) return result;
  GetCountry(record->nationCode, record->nation);
  tFuncGetSex(record->sexCode, record->sex);
  return RET_PUB_SUCCESS;
}

int GetPersonGATInfo(int nType, const unsigned char* native, PERSONINFO_GAT_FP* record) {
  if (native == nullptr || record == nullptr) return RET_PUB_INVAL_PARAM;
  GetTemplates(nType, native, record);
  if (const int result = IdGatParam(native, TextAt(nType), record)) return result;
  tFuncGetSex(record->sexCode, record->sex);
  return RET_PUB_SUCCESS;
}

int GetPersonInfo(int bForeigner, int nType, const unsigned char* native, PERSONINFO_FP* record) {
  if (native == nullptr || record == nullptr) return RET_PUB_INVAL_PARAM;
  GetTemplates(nType, native, record);
  if (bForeigner == 0) {
    PERSONINFO_CHA_FP china = {};
    if (const int result = IdChinaParam(native, TextAt(nType), &china)) return result;
    if (const int result = ConverStruct(&china, nullptr, record)) return result;
    GetNation(DecimalValue(record->nationCode), record->nation, sizeof record->nation);
    record->personType = 0;
  } else {
    PERSONINFO_FOR_FP foreign = {};
    if (const int result = IdForeignParam(native, TextAt(nType), &foreign)) return result;
    if (const int result = ConverStruct(nullptr, &foreign, record)) return result;
    GetCountry(record->nationCode, record->nation);
    record->personType = 1;
  }
  tFuncGetSex(record->sexCode, record->sex);
  return RET_PUB_SUCCESS;
}
