// The JSON texts of records, printed by the JSON library from a tree of its own, as the model of
// carddata/json.cc, which lays the items out itself.
#ifndef QUILLONID_FUZZ_JSON_MODEL_H
#define QUILLONID_FUZZ_JSON_MODEL_H

#include <cjson/cJSON.h>

#include <cstring>
#include <memory>
#include <span>
#include <string>

#include "carddata/json_fields.h"

namespace json_model {

struct DeleteTree {
  void operator()(cJSON* tree) const { cJSON_Delete(tree); }
};
using Tree = std::unique_ptr<cJSON, DeleteTree>;
using Fields = std::span<const JsonField>;

inline std::string TextOf(const Field& field, const void* record) {
  return {field.In(record), strnlen(field.In(record), field.width)};
}

inline std::string Packed(Fields fields, const void* record) {
  const Tree tree(cJSON_CreateObject());
  for (const JsonField& row : fields) {
    std::string value = row.use == JsonUse::kBlank ? " " : TextOf(row.field, record);
    if (row.use == JsonUse::kValidity) {
      const Field end = {
          {}, static_cast<std::uint16_t>(row.field.offset + row.field.width), row.field.width};
      value = value.substr(0, 29) + "-" + TextOf(end, record).substr(0, 29);
    }
    cJSON_AddStringToObject(tree.get(), row.key, value.c_str());
  }
  char* const printed = cJSON_Print(tree.get());
  std::string text(printed);
  cJSON_free(printed);
  return text;
}

}  // namespace json_model

#endif
