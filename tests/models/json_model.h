// JSON texts the plain way: records with any text, what a text of each kind holds, how it is spelt.
#ifndef QUILLONID_TESTS_MODELS_JSON_MODEL_H
#define QUILLONID_TESTS_MODELS_JSON_MODEL_H

#include <cstring>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "quillonid/records.h"
#include "tests/models/model.h"

namespace model {

inline constexpr std::uint64_t kTexts = 10000;  // a JSON text takes long

using KeyValues = std::vector<std::pair<std::string_view, std::string>>;

// RFC 8259 with the short escapes, everything above 7F as it is.
void AppendQuoted(std::string* out, std::string_view text);
std::string Quoted(std::string_view text);

// What the text of a record holds, in its order.
KeyValues ValuesOf(const PERSONINFO_CHA_FP& r);
KeyValues ValuesOf(const PERSONINFO_FOR_FP& r);
KeyValues ValuesOf(const PERSONINFO_GAT_FP& r);
KeyValues ValuesOf(const PERSONINFO_COLLECT_FP& r);

// A text that may fill a field to its zero.
std::string AnyText(Random& random, std::size_t width);

// Fills every field of a record of any kind.
class Filler {
 public:
  explicit Filler(Random& random) : random_(random) {}

  template <std::size_t kWidth>
  void operator()(char (&field)[kWidth]) {
    WriteText(AnyText(random_, kWidth), field);
  }

 private:
  Random& random_;
};

template <typename Record>
Record AnyRecord(Random& random) {
  Record r = {};
  Filler fill(random);
  fill(r.name);
  fill(r.sex);
  fill(r.birthday);
  fill(r.address);
  fill(r.cardId);
  fill(r.police);
  fill(r.validStart);
  fill(r.validEnd);
  fill(r.sexCode);
  fill(r.fingerData1);
  fill(r.fingerData2);
  if constexpr (requires { r.nation; }) {
    fill(r.nation);
    fill(r.nationCode);
    fill(r.reserved);
  }
  if constexpr (requires { r.EngName; }) {
    fill(r.EngName);
    fill(r.version);
    fill(r.govCode);
    fill(r.otherData);
  }
  if constexpr (requires { r.cardType; }) fill(r.cardType);
  if constexpr (requires { r.passNumber; }) {
    fill(r.passNumber);
    fill(r.signTimes);
    fill(r.gatReserved1);
    fill(r.gatReserved2);
    fill(r.gatReserved3);
  }
  return r;
}

}  // namespace model

#endif
