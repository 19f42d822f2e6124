// What the tests of qlid share: the program, a simulated reader with a specimen card, JSON.
#ifndef QUILLONID_TESTS_QLID_BENCH_H
#define QUILLONID_TESTS_QLID_BENCH_H

#include <cjson/cJSON.h>
#include <sys/stat.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "simulator/tty_reader.h"
#include "tests/testing/program.h"

inline std::vector<std::string> Qlid(std::vector<std::string> arguments) {
  arguments.insert(arguments.begin(), QLID_PROGRAM);
  return arguments;
}

inline Output RunQlid(std::vector<std::string> arguments,
                      const std::vector<std::string>& environment = {}) {
  return RunProgram(Qlid(std::move(arguments)), environment);
}

inline bool Contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

using Json = std::unique_ptr<cJSON, decltype(&cJSON_Delete)>;

inline Json Parse(const std::string& text) { return {cJSON_Parse(text.c_str()), cJSON_Delete}; }

inline std::string Member(const cJSON* object, const char* key) {
  const cJSON* item = cJSON_GetObjectItemCaseSensitive(object, key);
  if (cJSON_IsString(item)) return item->valuestring;
  if (cJSON_IsBool(item)) return cJSON_IsTrue(item) ? "true" : "false";
  if (cJSON_IsNumber(item)) return std::to_string(item->valueint);
  return "";
}

inline const cJSON* Child(const Json& document, const char* key) {
  return cJSON_GetObjectItemCaseSensitive(document.get(), key);
}

// Permission bits of a file, or -1.
inline int Mode(const std::string& path) {
  struct stat status = {};
  return stat(path.c_str(), &status) == 0 ? static_cast<int>(status.st_mode & 0777) : -1;
}

inline std::string Text(const simulator::Bytes& bytes) { return {bytes.begin(), bytes.end()}; }

// A simulated reader with a specimen card, and the arguments that read it.
struct Bench {
  explicit Bench(const std::string& id = "resident", bool fingerprints = false)
      : card(simulator::MakeCard(id, fingerprints)) {
    reader.PutCard(card);
  }
  std::vector<std::string> Read(std::vector<std::string> more = {}) const {
    std::vector<std::string> arguments = {"read", "--device", reader.path()};
    arguments.insert(arguments.end(), more.begin(), more.end());
    return arguments;
  }
  simulator::Card card;
  simulator::TtyReader reader;
};

#endif
