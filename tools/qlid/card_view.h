// A card that was read or decoded, as people and programs see it.
#ifndef QUILLONID_TOOLS_QLID_CARD_VIEW_H
#define QUILLONID_TOOLS_QLID_CARD_VIEW_H

#include <cstdint>
#include <string>
#include <vector>

#include "quillonid/records.h"

struct cJSON;

namespace qlid {

enum class CardKind { kUnknown = -1, kResident = 0, kForeigner = 1, kPermit = 2 };

const char* KindName(CardKind kind);  // for programs: "resident", "foreigner", "gat"
const char* KindText(CardKind kind);  // for people

struct Card {
  CardKind kind = CardKind::kUnknown;
  PERSONINFO_COLLECT_FP record = {};
  std::vector<std::uint8_t> native;  // the card module's read reply
  bool fingerprints_asked = false;   // the layout of `native`
};

// Takes a saved or kept read reply apart. False when it is none, with the reason in `problem`.
bool DecodeCard(const std::vector<std::uint8_t>& native, Card* card, std::string* problem);

// Replaces what identifies the holder. A field that is not known to be harmless is emptied.
void Redact(Card* card);

// One line of what is shown: a label and its text.
struct Row {
  std::string label;
  std::string text;
};
std::vector<Row> CardRows(const Card& card);

// Labels in one column, texts behind them.
void PrintRows(const std::vector<Row>& rows);

// Short facts for programs: "expired", "not-yet-valid", "check-digit-right", "check-digit-wrong".
std::vector<std::string> Remarks(const Card& card);

// The library's own JSON object of the card, key for key; with `photo`, for the card read last,
// also its photo block in base64. The caller owns it; null when there is no memory.
cJSON* CardObject(const Card& card, bool photo);

}  // namespace qlid

#endif
