// What every byte of a card answer means.
#ifndef QUILLONID_TOOLS_QLID_BYTE_MEANINGS_H
#define QUILLONID_TOOLS_QLID_BYTE_MEANINGS_H

#include <cjson/cJSON.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "tools/qlid/card_view.h"
#include "tools/qlid/json_document.h"

namespace qlid {

struct ByteMeaning {
  std::size_t offset = 0;
  std::vector<std::uint8_t> bytes;
  std::string meaning;
  std::string value;
  bool personal = false;    // the bytes identify the holder
  bool impossible = false;  // no card module sends this here
};

// Whether a card answer may have this many bytes.
bool IsAnswerSize(std::size_t size);

// Whether an answer of this many bytes carries fingerprint templates.
bool HasTemplates(std::size_t size);

// The answer in `card.native`, whose size is that of an answer, from its first byte to its last
// without a gap. Values are those of the card's record, so that a redacted card stays redacted.
std::vector<ByteMeaning> ByteMeanings(const Card& card);

// A line for each: offset, bytes, meaning, value. Personal bytes are masked when `redact` is set.
void PrintByteMeanings(const std::vector<ByteMeaning>& meanings, bool redact);

// The same as a JSON array.
cJSON* ByteMeaningsArray(const std::vector<ByteMeaning>& meanings, bool redact);

// The same in a JSON document, which says nothing more where there are none.
Json ByteMeaningsDocument(const Card& card, const std::vector<ByteMeaning>& meanings, bool redact);

}  // namespace qlid

#endif
