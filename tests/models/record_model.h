// Records copied field by field, the plain way.
#ifndef QUILLONID_TESTS_MODELS_RECORD_MODEL_H
#define QUILLONID_TESTS_MODELS_RECORD_MODEL_H

#include <cstring>

#include "quillonid/records.h"

namespace model {

// The bytes up to the zero, without it.
template <std::size_t kDest, std::size_t kSource>
void CopyText(char (&dest)[kDest], const char (&source)[kSource]) {
  std::memcpy(dest, source, std::strlen(source));
}

// What a resident's card fills in every record that can hold one.
template <typename Dest, typename Source>
void CopyResident(Dest& dest, const Source& source) {
  CopyText(dest.name, source.name);
  CopyText(dest.sex, source.sex);
  CopyText(dest.nation, source.nation);
  CopyText(dest.birthday, source.birthday);
  CopyText(dest.address, source.address);
  CopyText(dest.cardId, source.cardId);
  CopyText(dest.police, source.police);
  CopyText(dest.validStart, source.validStart);
  CopyText(dest.validEnd, source.validEnd);
  CopyText(dest.sexCode, source.sexCode);
  CopyText(dest.nationCode, source.nationCode);
  CopyText(dest.reserved, source.reserved);
}

template <typename Dest, typename Source>
void CopyForeigner(Dest& dest, const Source& source) {
  CopyResident(dest, source);
  CopyText(dest.EngName, source.EngName);
  CopyText(dest.version, source.version);
  CopyText(dest.govCode, source.govCode);
  CopyText(dest.cardType, source.cardType);
  CopyText(dest.otherData, source.otherData);
}

template <typename Dest, typename Source>
void CopyPermit(Dest& dest, const Source& source) {
  CopyText(dest.name, source.name);
  CopyText(dest.sexCode, source.sexCode);
  CopyText(dest.sex, source.sex);
  CopyText(dest.gatReserved1, source.gatReserved1);
  CopyText(dest.birthday, source.birthday);
  CopyText(dest.address, source.address);
  CopyText(dest.cardId, source.cardId);
  CopyText(dest.police, source.police);
  CopyText(dest.validStart, source.validStart);
  CopyText(dest.validEnd, source.validEnd);
  CopyText(dest.passNumber, source.passNumber);
  CopyText(dest.signTimes, source.signTimes);
  CopyText(dest.gatReserved2, source.gatReserved2);
  CopyText(dest.cardType, source.cardType);
  CopyText(dest.gatReserved3, source.gatReserved3);
}

template <typename Dest, typename Source>
void CopyCollect(Dest& dest, const Source& source) {
  CopyForeigner(dest, source);
  CopyText(dest.passNumber, source.passNumber);
  CopyText(dest.signTimes, source.signTimes);
  CopyText(dest.gatReserved1, source.gatReserved1);
  CopyText(dest.gatReserved2, source.gatReserved2);
  CopyText(dest.gatReserved3, source.gatReserved3);
}

template <typename Dest, typename Source>
void CopyTemplates(Dest& dest, const Source& source) {
  CopyText(dest.fingerData1, source.fingerData1);
  CopyText(dest.fingerData2, source.fingerData2);
}

int ConverStruct(PERSONINFO_CHA_FP* china, PERSONINFO_FOR_FP* foreign, PERSONINFO_FP* person);
void ConvertToCollect(const PERSONINFO_CHA_FP* china, const PERSONINFO_FOR_FP* foreign,
                      const PERSONINFO_GAT_FP* gat, PERSONINFO_COLLECT_FP* collect);

}  // namespace model

#endif
