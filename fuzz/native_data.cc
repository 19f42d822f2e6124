// Native data to records: four parsers, known and unknown modes, fields as a plain model makes
// them.
#include <cstdlib>
#include <cstring>

#include "carddata/layout.h"
#include "fuzz/card_text.h"
#include "fuzz/check.h"
#include "fuzz/guarded.h"
#include "fuzz/input.h"
#include "fuzz/templates_model.h"
#include "quillonid/carddata.h"

namespace {

struct Card {
  int mode;
  Bytes native;
  Exact<unsigned char> block;

  const unsigned char* Text() const {
    return native.data() + (mode == 0 ? 14 : mode == 1 ? 16 : 0);
  }
};

template <typename Record>
void CheckNames(const Card& card, const Record& record) {
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
  CheckNames(card, *record.get());
}

void ParseForeign(const Card& card) {
  GuardedRecord<PERSONINFO_FOR_FP> record(0);
  FUZZ_CHECK(GetPersonForeignInfo(card.mode, card.block.get(), record.get()) == 0);
  card_text::CheckTerminated(kForeignRecord, record.get());
  card_text::CheckFields(kForeignText, card.Text(), record.get());
  CheckNames(card, *record.get());
}

void ParseGat(const Card& card) {
  GuardedRecord<PERSONINFO_GAT_FP> record(0);
  FUZZ_CHECK(GetPersonGATInfo(card.mode, card.block.get(), record.get()) == 0);
  card_text::CheckTerminated(kGatRecord, record.get());
  card_text::CheckFields(kGatText, card.Text(), record.get());
  CheckNames(card, *record.get());
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
  FUZZ_CHECK(std::strcmp(record->name, name.c_str()) == 0);
  FUZZ_CHECK(record->cardType[0] == (foreigner ? 'I' : ' '));
  FUZZ_CHECK(record->personType == (foreigner ? 1 : 0));
  CheckNames(card, *record.get());
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
