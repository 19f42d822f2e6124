// Native data to records: four parsers, known and unknown modes, fields as a plain model makes
// them.
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

#include "carddata/layout.h"
#include "fuzz/card_text.h"
#include "fuzz/check.h"
#include "fuzz/guarded.h"
#include "fuzz/input.h"
#include "fuzz/templates_model.h"
#include "quillonid/carddata.h"
#include "tests/carddata/expected_names.h"

namespace {

struct Card {
  int mode;
  Bytes native;
  Exact<unsigned char> block;

  const unsigned char* Text() const {
    return native.data() + (mode == 0 ? 14 : mode == 1 ? 16 : 0);
  }
};

// GB/T 3304, and the two codes behind it.
std::string NationOf(const char* code) {
  static const std::vector<Name> names = NamesOf(kExpectedNations);
  const long number = std::strtol(code, nullptr, 10);
  if (number >= 1 && number <= 56) return names[static_cast<std::size_t>(number) - 1].text;
  return number == 97 ? "其他" : number == 98 ? "外国血统中国籍人士" : "";
}

// ISO 3166-1 alpha-3, whatever follows the three letters.
std::string CountryOf(const std::string& code) {
  static const std::vector<Name> names = NamesOf(kExpectedCountries);
  for (const Name& name : names) {
    if (code.starts_with(name.code)) return name.text;
  }
  return "";
}

template <typename Record>
void CheckRest(const Card& card, const Record& record) {
  const bool male = std::strtol(record.sexCode, nullptr, 10) == 1;
  FUZZ_CHECK(std::strcmp(record.sex, male ? "\xE7\x94\xB7" : "\xE5\xA5\xB3") == 0);  // 男, 女
  const bool with_templates = card.mode == 1;
  FUZZ_CHECK(record.fingerData1 == (with_templates ? templates::TextOf(card.native, 0) : ""));
  FUZZ_CHECK(record.fingerData2 == (with_templates ? templates::TextOf(card.native, 1) : ""));
}

void ParseChina(const Card& card) {
  GuardedRecord<PERSONINFO_CHA_FP> record(0);
  FUZZ_CHECK(GetPersonChinaInfo(card.mode, card.block.get(), record.get()) == 0);
  card_text::CheckTerminated(kChinaRecord, record.get());
  card_text::CheckFields(kChinaText, card.Text(), record.get());
  FUZZ_CHECK(record->nation == NationOf(record->nationCode));
  CheckRest(card, *record.get());
}

void ParseForeign(const Card& card) {
  GuardedRecord<PERSONINFO_FOR_FP> record(0);
  FUZZ_CHECK(GetPersonForeignInfo(card.mode, card.block.get(), record.get()) == 0);
  card_text::CheckTerminated(kForeignRecord, record.get());
  card_text::CheckFields(kForeignText, card.Text(), record.get());
  FUZZ_CHECK(record->nation == CountryOf(record->nationCode));
  CheckRest(card, *record.get());
}

void ParseGat(const Card& card) {
  GuardedRecord<PERSONINFO_GAT_FP> record(0);
  FUZZ_CHECK(GetPersonGATInfo(card.mode, card.block.get(), record.get()) == 0);
  card_text::CheckTerminated(kGatRecord, record.get());
  card_text::CheckFields(kGatText, card.Text(), record.get());
  CheckRest(card, *record.get());
}

// What a card of the kind has, as a text up to its first zero, for each field of the combined
// record in the order of the card.
template <std::size_t kCount>
void CheckTexts(const Card& card, const TextField (&fields)[kCount],
                const char* const (&texts)[kCount]) {
  for (std::size_t i = 0; i < kCount; ++i) {
    const auto& [offset, size, field] = fields[i];
    if (texts[i] == nullptr) continue;
    const std::string whole = card_text::FieldOf(card.Text() + offset, size, field.width);
    FUZZ_CHECK(std::string(texts[i]) == whole.c_str());
  }
}

void CheckPerson(const Card& card, const PERSONINFO_FP& r) {
  CheckTexts(card, kChinaText,
             {r.name, r.sexCode, r.nationCode, r.birthday, r.address, r.cardId, r.police,
              r.validStart, r.validEnd, r.reserved});
  for (const char* const other : {r.EngName, r.version, r.govCode, r.otherData}) {
    FUZZ_CHECK(other[0] == '\0');
  }
  FUZZ_CHECK(std::strcmp(r.cardType, " ") == 0 && r.personType == 0);
  FUZZ_CHECK(r.nation == NationOf(r.nationCode));
}

void CheckForeigner(const Card& card, const PERSONINFO_FP& r) {
  // On purpose: the mark of the combined record does not depend on the card's.
  const std::string mark = card_text::FieldOf(card.Text() + 248, 2, sizeof r.cardType);
  FUZZ_CHECK(r.cardType[0] == 'I' && std::strcmp(r.cardType + 1, mark.c_str() + 1) == 0);
  CheckTexts(card, kForeignText,
             {r.EngName, r.sexCode, r.cardId, r.nationCode, r.name, r.validStart, r.validEnd,
              r.birthday, r.version, r.govCode, nullptr, r.otherData});
  for (const char* const other : {r.address, r.police, r.reserved}) FUZZ_CHECK(other[0] == '\0');
  FUZZ_CHECK(r.personType == 1);
  FUZZ_CHECK(r.nation == CountryOf(r.nationCode));
}

// The combined record takes texts up to their first zero; a name that begins with one ends it.
void ParsePerson(const Card& card, bool foreigner) {
  GuardedRecord<PERSONINFO_FP> record(0);
  const int result = GetPersonInfo(foreigner ? 1 : 0, card.mode, card.block.get(), record.get());
  card_text::CheckTerminated(kPersonRecord, record.get());
  const int name_at = foreigner ? 158 : 0;
  const std::string name = card_text::FieldOf(card.Text() + name_at, 30, sizeof record->name);
  FUZZ_CHECK(result == (name[0] == '\0' ? -1 : 0));
  if (result != 0) return;
  if (foreigner) {
    CheckForeigner(card, *record.get());
  } else {
    CheckPerson(card, *record.get());
  }
  CheckRest(card, *record.get());
}

void CheckKind(const Card& card) {
  const int kind = GetIdCardTypeFromNativeData(card.mode, card.block.get());
  int expected = -1;
  if (card.mode == 0 || card.mode == 1) {
    const unsigned mark = card.Text()[248] + card.Text()[249] * 256U;
    expected = mark == ' ' ? 0 : mark == 'I' ? 1 : mark == 'J' ? 2 : -1;
  }
  FUZZ_CHECK(kind == expected);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  Input input(data, size);
  const int mode = input.Between(-1, 3);
  Bytes native = input.Take(templates::kNativeSize);
  native.resize(templates::kNativeSize);
  const Card card = {mode, native, Exact<unsigned char>(native)};

  ParseChina(card);
  ParseForeign(card);
  ParseGat(card);
  ParsePerson(card, false);
  ParsePerson(card, true);
  CheckKind(card);
  return 0;
}
