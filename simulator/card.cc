#include "simulator/card.h"

#include <algorithm>
#include <stdexcept>

#include "simulator/packets.h"

namespace simulator {
namespace {

constexpr TextField kResidentFields[] = {
    {"name",       0,   30},
    {"sexCode",    30,  2 },
    {"nationCode", 32,  4 },
    {"birthday",   36,  16},
    {"address",    52,  70},
    {"cardId",     122, 36},
    {"police",     158, 30},
    {"validStart", 188, 16},
    {"validEnd",   204, 16},
    {"reserved",   220, 36},
};

constexpr TextField kForeignerFields[] = {
    {"EngName",    0,   120},
    {"sexCode",    120, 2  },
    {"cardId",     122, 30 },
    {"nationCode", 152, 6  },
    {"name",       158, 30 },
    {"validStart", 188, 16 },
    {"validEnd",   204, 16 },
    {"birthday",   220, 16 },
    {"version",    236, 4  },
    {"govCode",    240, 8  },
    {"cardType",   248, 2  },
    {"otherData",  250, 6  },
};

constexpr TextField kPermitFields[] = {
    {"name",         0,   30},
    {"sexCode",      30,  2 },
    {"gatReserved1", 32,  4 },
    {"birthday",     36,  16},
    {"address",      52,  70},
    {"cardId",       122, 36},
    {"police",       158, 30},
    {"validStart",   188, 16},
    {"validEnd",     204, 16},
    {"passNumber",   220, 18},
    {"signTimes",    238, 4 },
    {"gatReserved2", 242, 6 },
    {"cardType",     248, 2 },
    {"gatReserved3", 250, 6 },
};

constexpr std::size_t kMarkOffset = 248;  // of the card-kind mark in the text

// One character from the front of `text`.
char32_t TakeCharacter(std::string_view* text) {
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>((*text)[i]); };
  const unsigned char lead = byte(0);
  const std::size_t size = lead < 0x80   ? 1
                           : lead < 0xC2 ? 0
                           : lead < 0xE0 ? 2
                           : lead < 0xF0 ? 3
                                         : 4;
  if (size == 0 || lead > 0xF4 || text->size() < size) throw std::invalid_argument("not UTF-8");

  char32_t character = size == 1 ? lead : lead & (0x7FU >> size);
  for (std::size_t i = 1; i < size; ++i) {
    if ((byte(i) & 0xC0) != 0x80) throw std::invalid_argument("not UTF-8");
    character = character << 6 | (byte(i) & 0x3F);
  }
  text->remove_prefix(size);
  return character;
}

void AppendUnit(Bytes* bytes, char32_t unit) {
  bytes->push_back(static_cast<std::uint8_t>(unit & 0xFF));
  bytes->push_back(static_cast<std::uint8_t>(unit >> 8 & 0xFF));
}

void AppendLength(Bytes* bytes, std::size_t length) {
  bytes->push_back(static_cast<std::uint8_t>(length >> 8 & 0xFF));
  bytes->push_back(static_cast<std::uint8_t>(length & 0xFF));
}

// Bytes that look like nothing in particular; the same seed gives the same bytes.
Bytes Pattern(std::string_view seed, std::size_t size) {
  std::uint32_t state = 2166136261U;
  for (const char c : seed) state = (state ^ static_cast<unsigned char>(c)) * 16777619U;
  Bytes bytes(size);
  for (std::uint8_t& byte : bytes) {
    state = state * 1664525U + 1013904223U;
    byte = static_cast<std::uint8_t>(state >> 24);
  }
  return bytes;
}

}  // namespace

std::span<const TextField> TextFields(Kind kind) {
  switch (kind) {
    case Kind::kResident:
      return kResidentFields;
    case Kind::kForeigner:
      return kForeignerFields;
    case Kind::kPermit:
      return kPermitFields;
  }
  return {};
}

Card MakeCard(std::string_view id, bool fingerprints) {
  const Specimen* person = FindSpecimen(id);
  if (person == nullptr) throw std::invalid_argument("no specimen \"" + std::string(id) + "\"");
  return MakeCard(*person, fingerprints);
}

Card MakeCard(const Specimen& person, bool fingerprints) {
  Card card;
  card.person = person;
  card.fingerprints = fingerprints;
  const PhotoBlock photo = SpecimenPhotoBlock(person.portrait);
  card.photo.assign(photo.begin(), photo.end());
  return card;
}

Bytes Ucs2(std::string_view utf8) {
  Bytes units;
  while (!utf8.empty()) {
    const char32_t character = TakeCharacter(&utf8);
    if (character < 0x10000) {
      AppendUnit(&units, character);
    } else {
      AppendUnit(&units, 0xD800 + ((character - 0x10000) >> 10));
      AppendUnit(&units, 0xDC00 + ((character - 0x10000) & 0x3FF));
    }
  }
  return units;
}

Bytes CardText(const Card& card) {
  Bytes text;
  for (const TextField& field : TextFields(card.person.kind)) {
    const auto printed = card.person.text.find(field.name);
    Bytes units = Ucs2(printed == card.person.text.end() ? "" : printed->second);
    if (units.size() > field.size) {
      throw std::invalid_argument(card.person.id + ": " + field.name + " is too long");
    }
    while (units.size() < field.size) AppendUnit(&units, ' ');
    text.insert(text.end(), units.begin(), units.end());
  }
  if (card.mark != '\0') text[kMarkOffset] = static_cast<std::uint8_t>(card.mark);
  return text;
}

Bytes FingerTemplate(const Card& card, int number) {
  return Pattern(card.person.id + " finger " + std::to_string(number), kTemplateSize);
}

Bytes NativeData(const Card& card, bool with_fingerprints) {
  Bytes content = {0x00, 0x00, 0x90};  // status: read
  AppendLength(&content, kTextSize);
  AppendLength(&content, card.photo_length);
  if (with_fingerprints) AppendLength(&content, card.fingerprints ? 2 * kTemplateSize : 0);

  const auto append = [&](const Bytes& bytes) {
    content.insert(content.end(), bytes.begin(), bytes.end());
  };
  append(CardText(card));
  append(card.photo);
  if (with_fingerprints && card.fingerprints) {
    append(FingerTemplate(card, 1));
    append(FingerTemplate(card, 2));
  }
  return ModuleFrame(content);
}

}  // namespace simulator
