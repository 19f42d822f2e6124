// Records of every kind that pass the image services, or do not.
#ifndef QUILLONID_TESTS_IMAGE_CARD_RECORDS_H
#define QUILLONID_TESTS_IMAGE_CARD_RECORDS_H

#include <cstring>
#include <string>

#include "quillonid/records.h"

template <std::size_t kWidth>
void SetText(char (&field)[kWidth], const std::string& text) {
  text.copy(field, kWidth - 1);
}

// A record whose members are the ones that the services look at.
template <typename Record>
Record MakeRecord(const char* card_id, const char* mark, const char* nation_code) {
  Record record = {};
  SetText(record.name, "name");
  SetText(record.cardId, card_id);
  if constexpr (requires { record.cardType; }) SetText(record.cardType, mark);
  if constexpr (requires { record.nationCode; }) SetText(record.nationCode, nation_code);
  return record;
}

// One record of each kind; the pointers are the arguments of the services.
class Records {
 public:
  // Records that pass.
  Records()
      : Records(MakeRecord<PERSONINFO_FP>("123", " ", "01"),
                MakeRecord<PERSONINFO_CHA_FP>("123", "", "01"),
                MakeRecord<PERSONINFO_FOR_FP>("123", "I", "DEU"),
                MakeRecord<PERSONINFO_GAT_FP>("123", "J", ""),
                MakeRecord<PERSONINFO_COLLECT_FP>("123", "J", ""),
                R"({"IDNumber": "123", "CardType": "J"})") {}

  // Records of another kind, and a JSON text without a number.
  static Records OfAnotherKind() {
    return {MakeRecord<PERSONINFO_FP>("123", "J", "01"),
            MakeRecord<PERSONINFO_CHA_FP>("123", "", ""),
            MakeRecord<PERSONINFO_FOR_FP>("123", " ", "DEU"),
            MakeRecord<PERSONINFO_GAT_FP>("123", "I", ""),
            MakeRecord<PERSONINFO_COLLECT_FP>("123", "K", ""),
            "{}"};
  }

  PERSONINFO_FP person_fp;
  PERSONINFO_CHA_FP china_fp;
  PERSONINFO_FOR_FP foreign_fp;
  PERSONINFO_GAT_FP gat_fp;
  PERSONINFO_COLLECT_FP collect_fp;
  PERSONINFO person;
  PERSONINFO_CHA china;
  PERSONINFO_FOR foreign;
  PERSONINFO_GAT gat;
  PERSONINFO_COLLECT collect;
  const char* json;

 private:
  // A record without templates is the beginning of the one with them.
  Records(const PERSONINFO_FP& person_given, const PERSONINFO_CHA_FP& china_given,
          const PERSONINFO_FOR_FP& foreign_given, const PERSONINFO_GAT_FP& gat_given,
          const PERSONINFO_COLLECT_FP& collect_given, const char* json_given)
      : person_fp(person_given),
        china_fp(china_given),
        foreign_fp(foreign_given),
        gat_fp(gat_given),
        collect_fp(collect_given),
        json(json_given) {
    std::memcpy(&person, &person_fp, sizeof person);
    std::memcpy(&china, &china_fp, sizeof china);
    std::memcpy(&foreign, &foreign_fp, sizeof foreign);
    std::memcpy(&gat, &gat_fp, sizeof gat);
    std::memcpy(&collect, &collect_fp, sizeof collect);
  }
};

#endif
