// Keys of the JSON texts and the record field of each, in the order in which they are packed. The
// photo comes last and is no record field.
#ifndef QUILLONID_CARDDATA_JSON_FIELDS_H
#define QUILLONID_CARDDATA_JSON_FIELDS_H

#include <cstddef>
#include <cstdint>

#include "quillonid/records.h"

enum class JsonUse : std::uint8_t {
  kBothWays,  // packed, and read back
  kPacked,    // packed; a reader leaves the field alone
  kValidity,  // packed: start and end of validity, joined
  kBlank,     // packed: one blank, whatever the record holds
};

// Key, offset and width in the record with fingerprint templates, use.
struct JsonField {
  char key[18];
  std::uint16_t offset;
  std::uint16_t width;
  JsonUse use;
};

#define JSON_FIELD(kind, member) \
  offsetof(PERSONINFO_##kind##_FP, member), sizeof(PERSONINFO_##kind##_FP::member)

constexpr JsonField kChinaJson[] = {
    {"Address",           JSON_FIELD(CHA, address),     JsonUse::kBothWays},
    {"Birth",             JSON_FIELD(CHA, birthday),    JsonUse::kBothWays},
    {"CardActivity",      JSON_FIELD(CHA, validStart),  JsonUse::kValidity},
    {"CardActivityStart", JSON_FIELD(CHA, validStart),  JsonUse::kBothWays},
    {"CardActivityExp",   JSON_FIELD(CHA, validEnd),    JsonUse::kBothWays},
    {"NationCode",        JSON_FIELD(CHA, nationCode),  JsonUse::kBothWays},
    {"Ethnicity",         JSON_FIELD(CHA, nation),      JsonUse::kBothWays},
    {"IDNumber",          JSON_FIELD(CHA, cardId),      JsonUse::kBothWays},
    {"ChinaName",         JSON_FIELD(CHA, name),        JsonUse::kBothWays},
    {"Remark",            JSON_FIELD(CHA, reserved),    JsonUse::kBothWays},
    {"Sex",               JSON_FIELD(CHA, sex),         JsonUse::kBothWays},
    {"SexCode",           JSON_FIELD(CHA, sexCode),     JsonUse::kBothWays},
    {"Signatory",         JSON_FIELD(CHA, police),      JsonUse::kBothWays},
    {"CardType",          0,              0,            JsonUse::kBlank   },
    {"FingerTemp1",       JSON_FIELD(CHA, fingerData1), JsonUse::kBothWays},
    {"FingerTemp2",       JSON_FIELD(CHA, fingerData2), JsonUse::kBothWays},
};

constexpr JsonField kForeignJson[] = {
    {"Address",           JSON_FIELD(FOR, address),     JsonUse::kBothWays},
    {"Birth",             JSON_FIELD(FOR, birthday),    JsonUse::kBothWays},
    {"CardActivity",      JSON_FIELD(FOR, validStart),  JsonUse::kValidity},
    {"CardActivityStart", JSON_FIELD(FOR, validStart),  JsonUse::kBothWays},
    {"CardActivityExp",   JSON_FIELD(FOR, validEnd),    JsonUse::kBothWays},
    {"CardType",          JSON_FIELD(FOR, cardType),    JsonUse::kBothWays},
    {"CountryCode",       JSON_FIELD(FOR, nationCode),  JsonUse::kBothWays},
    {"EngName",           JSON_FIELD(FOR, EngName),     JsonUse::kBothWays},
    {"GovCode",           JSON_FIELD(FOR, govCode),     JsonUse::kBothWays},
    {"Reserved",          JSON_FIELD(FOR, otherData),   JsonUse::kBothWays},
    {"Version",           JSON_FIELD(FOR, version),     JsonUse::kBothWays},
    {"Ethnicity",         JSON_FIELD(FOR, nation),      JsonUse::kBothWays},
    {"IDNumber",          JSON_FIELD(FOR, cardId),      JsonUse::kBothWays},
    {"ChinaName",         JSON_FIELD(FOR, name),        JsonUse::kBothWays},
    {"Remark",            JSON_FIELD(FOR, reserved),    JsonUse::kPacked  },
    {"Sex",               JSON_FIELD(FOR, sex),         JsonUse::kBothWays},
    {"SexCode",           JSON_FIELD(FOR, sexCode),     JsonUse::kBothWays},
    {"Signatory",         JSON_FIELD(FOR, police),      JsonUse::kPacked  },
    {"FingerTemp1",       JSON_FIELD(FOR, fingerData1), JsonUse::kBothWays},
    {"FingerTemp2",       JSON_FIELD(FOR, fingerData2), JsonUse::kBothWays},
};

constexpr JsonField kGatJson[] = {
    {"Address",           JSON_FIELD(GAT, address),      JsonUse::kBothWays},
    {"Birth",             JSON_FIELD(GAT, birthday),     JsonUse::kBothWays},
    {"CardActivity",      JSON_FIELD(GAT, validStart),   JsonUse::kValidity},
    {"CardActivityStart", JSON_FIELD(GAT, validStart),   JsonUse::kBothWays},
    {"CardActivityExp",   JSON_FIELD(GAT, validEnd),     JsonUse::kBothWays},
    {"CardType",          JSON_FIELD(GAT, cardType),     JsonUse::kBothWays},
    {"IDNumber",          JSON_FIELD(GAT, cardId),       JsonUse::kBothWays},
    {"ChinaName",         JSON_FIELD(GAT, name),         JsonUse::kBothWays},
    {"AppendMsg1",        JSON_FIELD(GAT, gatReserved1), JsonUse::kBothWays},
    {"AppendMsg2",        JSON_FIELD(GAT, gatReserved2), JsonUse::kBothWays},
    {"AppendMsg3",        JSON_FIELD(GAT, gatReserved3), JsonUse::kBothWays},
    {"PassNumber",        JSON_FIELD(GAT, passNumber),   JsonUse::kBothWays},
    {"SignTimes",         JSON_FIELD(GAT, signTimes),    JsonUse::kBothWays},
    {"Sex",               JSON_FIELD(GAT, sex),          JsonUse::kBothWays},
    {"SexCode",           JSON_FIELD(GAT, sexCode),      JsonUse::kBothWays},
    {"Signatory",         JSON_FIELD(GAT, police),       JsonUse::kBothWays},
    {"FingerTemp1",       JSON_FIELD(GAT, fingerData1),  JsonUse::kBothWays},
    {"FingerTemp2",       JSON_FIELD(GAT, fingerData2),  JsonUse::kBothWays},
};

constexpr JsonField kCollectJson[] = {
    {"Address",           JSON_FIELD(COLLECT, address),      JsonUse::kBothWays},
    {"Birth",             JSON_FIELD(COLLECT, birthday),     JsonUse::kBothWays},
    {"CardActivity",      JSON_FIELD(COLLECT, validStart),   JsonUse::kValidity},
    {"CardActivityStart", JSON_FIELD(COLLECT, validStart),   JsonUse::kBothWays},
    {"CardActivityExp",   JSON_FIELD(COLLECT, validEnd),     JsonUse::kBothWays},
    {"CardType",          JSON_FIELD(COLLECT, cardType),     JsonUse::kBothWays},
    {"ChinaName",         JSON_FIELD(COLLECT, name),         JsonUse::kBothWays},
    {"EngName",           JSON_FIELD(COLLECT, EngName),      JsonUse::kBothWays},
    {"GovCode",           JSON_FIELD(COLLECT, govCode),      JsonUse::kBothWays},
    {"Reserved",          JSON_FIELD(COLLECT, otherData),    JsonUse::kBothWays},
    {"Version",           JSON_FIELD(COLLECT, version),      JsonUse::kBothWays},
    {"Ethnicity",         JSON_FIELD(COLLECT, nation),       JsonUse::kBothWays},
    {"NationCode",        JSON_FIELD(COLLECT, nationCode),   JsonUse::kBothWays},
    {"CountryCode",       JSON_FIELD(COLLECT, nationCode),   JsonUse::kPacked  },
    {"IDNumber",          JSON_FIELD(COLLECT, cardId),       JsonUse::kBothWays},
    {"Remark",            JSON_FIELD(COLLECT, reserved),     JsonUse::kBothWays},
    {"Sex",               JSON_FIELD(COLLECT, sex),          JsonUse::kBothWays},
    {"SexCode",           JSON_FIELD(COLLECT, sexCode),      JsonUse::kBothWays},
    {"Signatory",         JSON_FIELD(COLLECT, police),       JsonUse::kBothWays},
    {"FingerTemp1",       JSON_FIELD(COLLECT, fingerData1),  JsonUse::kBothWays},
    {"FingerTemp2",       JSON_FIELD(COLLECT, fingerData2),  JsonUse::kBothWays},
    {"AppendMsg1",        JSON_FIELD(COLLECT, gatReserved1), JsonUse::kBothWays},
    {"AppendMsg2",        JSON_FIELD(COLLECT, gatReserved2), JsonUse::kBothWays},
    {"AppendMsg3",        JSON_FIELD(COLLECT, gatReserved3), JsonUse::kBothWays},
    {"PassNumber",        JSON_FIELD(COLLECT, passNumber),   JsonUse::kBothWays},
    {"SignTimes",         JSON_FIELD(COLLECT, signTimes),    JsonUse::kBothWays},
};

#undef JSON_FIELD

#endif
