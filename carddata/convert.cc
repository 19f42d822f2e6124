// Conversions between records: texts of same-named fields. Every copy stays inside its two fields,
// writes no terminating zero and clears nothing; a destination is passed zero-filled.
#include <algorithm>
#include <array>
#include <cstring>
#include <iterator>
#include <string_view>

#include "carddata/layout.h"
#include "quillonid/carddata.h"
#include "quillonid/results.h"
#include "support/log.h"

namespace {

constexpr char kResidentMark = ' ';
constexpr char kForeignerMark = 'I';

// A field of one record and the same-named field of another.
struct Pair {
  Field from;
  Field to;
};

// Every field of `from` with its namesake among `to`; one that has none does not compile.
template <std::size_t kFrom, std::size_t kTo>
consteval auto SameNamed(const Field (&from)[kFrom], const Field (&to)[kTo]) {
  std::array<Pair, kFrom> pairs = {};
  for (std::size_t i = 0; i < kFrom; ++i) {
    const auto* const found = std::find_if(std::begin(to), std::end(to), [&](const Field& field) {
      return std::string_view(field.name) == from[i].name;
    });
    pairs[i] = {from[i], *found};
  }
  return pairs;
}

constexpr auto kChinaToPerson = SameNamed(kChinaRecord, kPersonRecord);
constexpr auto kForeignToPerson = SameNamed(kForeignRecord, kPersonRecord);
constexpr auto kChinaToCollect = SameNamed(kChinaRecord, kCollectRecord);
constexpr auto kForeignToCollect = SameNamed(kForeignRecord, kCollectRecord);
constexpr auto kGatToCollect = SameNamed(kGatRecord, kCollectRecord);

void CopyText(const void* source, const Field& from, void* dest, const Field& to) {
  const char* const text = from.In(source);
  const std::size_t length = std::min<std::size_t>(strnlen(text, from.width), to.width - 1U);
  std::memcpy(to.In(dest), text, length);
}

template <std::size_t kCount>
void CopyPairs(const std::array<Pair, kCount>& pairs, const void* source, void* dest) {
  for (const auto& [from, to] : pairs) CopyText(source, from, dest, to);
}

template <std::size_t kCount>
void CopyBack(const std::array<Pair, kCount>& pairs, const void* source, void* dest) {
  for (const auto& [to, from] : pairs) CopyText(source, from, dest, to);
}

// Between a record and its variant with fingerprint templates, either way.
template <std::size_t kCount>
int CopyVariant(const Field (&fields)[kCount], const void* source, void* dest) {
  if (source == nullptr || dest == nullptr) return RET_BUSI_ID_CARD_TYPE_ERR;
  for (const Field& field : WithoutTemplates(fields)) CopyText(source, field, dest, field);
  return RET_PUB_SUCCESS;
}

// Logs each source field as "pChina->name 张三 " and copies it.
template <std::size_t kCount>
void Collect(const char* source_name, const std::array<Pair, kCount>& pairs, const void* source,
             void* dest) {
  for (const auto& [from, to] : pairs) {
    LOG_CARD("%s->%s %.*s ", source_name, from.name, from.width, from.In(source));
    CopyText(source, from, dest, to);
  }
}

}  // namespace

int tFuncConvertChinaFp(const PERSONINFO_CHA_FP* source, PERSONINFO_CHA* dest) {
  return CopyVariant(kChinaRecord, source, dest);
}

int tFuncConvertChina(const PERSONINFO_CHA* source, PERSONINFO_CHA_FP* dest) {
  return CopyVariant(kChinaRecord, source, dest);
}

int tFuncConvertForeignFp(const PERSONINFO_FOR_FP* source, PERSONINFO_FOR* dest) {
  return CopyVariant(kForeignRecord, source, dest);
}

int tFuncConvertForeign(const PERSONINFO_FOR* source, PERSONINFO_FOR_FP* dest) {
  return CopyVariant(kForeignRecord, source, dest);
}

int tFuncConvertGatFp(const PERSONINFO_GAT_FP* source, PERSONINFO_GAT* dest) {
  return CopyVariant(kGatRecord, source, dest);
}

int tFuncConvertGat(const PERSONINFO_GAT* source, PERSONINFO_GAT_FP* dest) {
  return CopyVariant(kGatRecord, source, dest);
}

int tFuncConvertCollectFp(const PERSONINFO_COLLECT_FP* source, PERSONINFO_COLLECT* dest) {
  return CopyVariant(kCollectRecord, source, dest);
}

int tFuncConvertCollect(const PERSONINFO_COLLECT* source, PERSONINFO_COLLECT_FP* dest) {
  return CopyVariant(kCollectRecord, source, dest);
}

// On purpose: `personType` is copied from the record with templates only.
int tFuncConvertPerson(const PERSONINFO* source, PERSONINFO_FP* dest) {
  return CopyVariant(kPersonRecord, source, dest);
}

int tFuncConvertPersonFp(const PERSONINFO_FP* source, PERSONINFO* dest) {
  const int result = CopyVariant(kPersonRecord, source, dest);
  if (result == RET_PUB_SUCCESS) dest->personType = source->personType;
  return result;
}

int ConverStruct(PERSONINFO_CHA_FP* china, PERSONINFO_FOR_FP* foreign, PERSONINFO_FP* person) {
  if ((china == nullptr && foreign == nullptr) || person == nullptr) return -1;

  if (china != nullptr && china->name[0] != '\0') {
    CopyPairs(kChinaToPerson, china, person);
    person->cardType[0] = kResidentMark;
    return RET_PUB_SUCCESS;
  }
  if (foreign != nullptr && foreign->name[0] != '\0') {
    CopyPairs(kForeignToPerson, foreign, person);
    person->cardType[0] = kForeignerMark;
    return RET_PUB_SUCCESS;
  }

  if (person->name[0] == '\0') return -1;
  if (person->cardType[0] == kResidentMark && china != nullptr) {
    CopyBack(kChinaToPerson, person, china);
  } else if (person->cardType[0] == kForeignerMark && foreign != nullptr) {
    CopyBack(kForeignToPerson, person, foreign);
  }
  return RET_PUB_SUCCESS;
}

int tFuncConvertStruct2Collect(const PERSONINFO_CHA_FP* china, const PERSONINFO_FOR_FP* foreign,
                               const PERSONINFO_GAT_FP* gat, PERSONINFO_COLLECT_FP* collect) {
  if (collect == nullptr) return RET_PUB_SUCCESS;
  if (china != nullptr) {
    LOG_CARD("China to Collect");
    Collect("pChina", kChinaToCollect, china, collect);
    collect->cardType[0] = kResidentMark;
  } else if (foreign != nullptr) {
    LOG_CARD("pForeign to Collect");
    Collect("pForeign", kForeignToCollect, foreign, collect);
  } else if (gat != nullptr) {
    LOG_CARD("Gat to Collect");
    Collect("pGat", kGatToCollect, gat, collect);
  }
  return RET_PUB_SUCCESS;
}
