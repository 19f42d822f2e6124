// Kinds of records that the image services take, and what a record must hold to be one of its kind.
#ifndef QUILLONID_IMAGE_CARD_KINDS_H
#define QUILLONID_IMAGE_CARD_KINDS_H

#include <cstddef>
#include <string_view>

#include "quillonid/carddata.h"
#include "quillonid/records.h"

// Each kind: record without and with fingerprint templates, the conversion from the one to the
// other (which gives -2004 for null), the marks that `cardType` may begin with.
struct CombinedKind {
  using Plain = PERSONINFO;
  using WithTemplates = PERSONINFO_FP;
  static constexpr auto kAddTemplates = tFuncConvertPerson;
  static constexpr std::string_view kMarks = " I";
};

struct ChinaKind {
  using Plain = PERSONINFO_CHA;
  using WithTemplates = PERSONINFO_CHA_FP;
  static constexpr auto kAddTemplates = tFuncConvertChina;
};

struct ForeignKind {
  using Plain = PERSONINFO_FOR;
  using WithTemplates = PERSONINFO_FOR_FP;
  static constexpr auto kAddTemplates = tFuncConvertForeign;
  static constexpr std::string_view kMarks = "I";
};

struct GatKind {
  using Plain = PERSONINFO_GAT;
  using WithTemplates = PERSONINFO_GAT_FP;
  static constexpr auto kAddTemplates = tFuncConvertGat;
  static constexpr std::string_view kMarks = "J";
};

struct CollectKind {
  using Plain = PERSONINFO_COLLECT;
  using WithTemplates = PERSONINFO_COLLECT_FP;
  static constexpr auto kAddTemplates = tFuncConvertCollect;
  static constexpr std::string_view kMarks = " IJ";
};

// True for a record of the kind, with or without templates. Resident cards carry no mark: a nation
// code stands for it.
template <typename Kind, typename Record>
bool IsOfKind(const Record* record) {
  if (record == nullptr || record->cardId[0] == '\0') return false;
  if constexpr (requires { record->cardType; }) {
    return Kind::kMarks.find(record->cardType[0]) != std::string_view::npos;
  } else {
    return record->nationCode[0] != '\0';
  }
}

// The part of a record with templates that the record without them has, too.
template <typename Kind>
const typename Kind::Plain* WithoutTemplates(const typename Kind::WithTemplates* record) {
  static_assert(sizeof(typename Kind::Plain) <=
                offsetof(typename Kind::WithTemplates, fingerData1));
  return reinterpret_cast<const typename Kind::Plain*>(record);
}

#endif
