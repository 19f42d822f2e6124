#include "tools/qlid/json_document.h"

#include <cstdio>

namespace qlid {
namespace {

std::string Taken(char* text) {
  std::string line = text ? text : "{}";
  cJSON_free(text);
  return line + "\n";
}

}  // namespace

Json NewDocument(const char* schema) {
  Json document(cJSON_CreateObject());
  cJSON_AddStringToObject(document.get(), "schema", schema);
  return document;
}

void AddText(cJSON* object, const char* key, const std::string& text) {
  cJSON_AddStringToObject(object, key, text.c_str());
}

std::string IndentedText(const Json& document) { return Taken(cJSON_Print(document.get())); }

std::string LineText(const Json& document) { return Taken(cJSON_PrintUnformatted(document.get())); }

void PrintJson(const Json& document) { std::fputs(IndentedText(document).c_str(), stdout); }

}  // namespace qlid
