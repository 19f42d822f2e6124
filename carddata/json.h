// JSON texts of records, as long as they need to be; the exported packers copy them into buffers of
// a stated size. The state is at the top of json.cc.
#ifndef QUILLONID_CARDDATA_JSON_H
#define QUILLONID_CARDDATA_JSON_H

#include <cstddef>
#include <memory>

#include "quillonid/records.h"

struct FreeJsonText {
  void operator()(char* text) const;
};
struct JsonText {
  std::unique_ptr<char[], FreeJsonText> text;  // null unless a record was packed
  bool no_memory = false;                      // that was why
};

// Each packs one record into a new `*json`. Returns 0, or a negative result and no text.
int PackJson(const PERSONINFO_CHA_FP& record, JsonText* json);
int PackJson(const PERSONINFO_FOR_FP& record, JsonText* json);
int PackJson(const PERSONINFO_GAT_FP& record, JsonText* json);
int PackJson(const PERSONINFO_FP& record, JsonText* json);  // as the kind that `cardType` marks
int PackJson(const PERSONINFO_COLLECT_FP& record, JsonText* json);

// As tFuncGetStringFromJson(), cut at `size` - 1 bytes.
int GetJsonString(const char* json, const char* key, char* dest, std::size_t size);

#endif
