#include "tests/models/record_model.h"

namespace model {

int ConverStruct(PERSONINFO_CHA_FP* china, PERSONINFO_FOR_FP* foreign, PERSONINFO_FP* person) {
  if (china == nullptr && foreign == nullptr) return -1;
  if (china != nullptr && china->name[0] != '\0') {
    CopyResident(*person, *china);
    CopyTemplates(*person, *china);
    person->cardType[0] = ' ';
    return 0;
  }
  if (foreign != nullptr && foreign->name[0] != '\0') {
    CopyForeigner(*person, *foreign);
    CopyTemplates(*person, *foreign);
    person->cardType[0] = 'I';
    return 0;
  }
  if (person == nullptr || person->name[0] == '\0') return -1;
  if (person->cardType[0] == ' ' && china != nullptr) {
    CopyResident(*china, *person);
    CopyTemplates(*china, *person);
  } else if (person->cardType[0] == 'I' && foreign != nullptr) {
    CopyForeigner(*foreign, *person);
    CopyTemplates(*foreign, *person);
  }
  return 0;
}

void ConvertToCollect(const PERSONINFO_CHA_FP* china, const PERSONINFO_FOR_FP* foreign,
                      const PERSONINFO_GAT_FP* gat, PERSONINFO_COLLECT_FP* collect) {
  if (china != nullptr) {
    CopyResident(*collect, *china);
    CopyTemplates(*collect, *china);
    collect->cardType[0] = ' ';
  } else if (foreign != nullptr) {
    CopyForeigner(*collect, *foreign);
    CopyTemplates(*collect, *foreign);
  } else if (gat != nullptr) {
    CopyPermit(*collect, *gat);
    CopyTemplates(*collect, *gat);
  }
}

}  // namespace model
