// The JSON documents that the commands print.
#ifndef QUILLONID_TOOLS_QLID_JSON_DOCUMENT_H
#define QUILLONID_TOOLS_QLID_JSON_DOCUMENT_H

#include <cjson/cJSON.h>

#include <memory>
#include <string>

namespace qlid {

struct DeleteJson {
  void operator()(cJSON* item) const { cJSON_Delete(item); }
};
using Json = std::unique_ptr<cJSON, DeleteJson>;

// A document that says nothing yet but its schema's name.
Json NewDocument(const char* schema);

void AddText(cJSON* object, const char* key, const std::string& text);

// For people, on several lines, and for programs that read line by line; both end in a line feed.
std::string IndentedText(const Json& document);
std::string LineText(const Json& document);

// The text of several lines on standard output.
void PrintJson(const Json& document);

}  // namespace qlid

#endif
