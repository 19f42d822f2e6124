// Specimen cards, and the answer that a card module gives when it reads one. Written apart from the
// library's parser, so that the two can be held against each other.
#ifndef QUILLONID_SIMULATOR_CARD_H
#define QUILLONID_SIMULATOR_CARD_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "simulator/specimen_photo.h"

namespace simulator {

using Bytes = std::vector<std::uint8_t>;

enum class Kind { kResident, kForeigner, kPermit };

inline constexpr std::size_t kTextSize = 256;      // bytes of card text
inline constexpr std::size_t kPhotoSize = 1024;    // bytes of the compressed photo
inline constexpr std::size_t kTemplateSize = 512;  // bytes of one fingerprint template

// Where a field stands in the card text, in bytes of UCS-2, and the record member it ends up in.
struct TextField {
  const char* name;
  std::size_t offset;
  std::size_t size;
};

// The fields of a card of this kind, in card order, without a gap.
std::span<const TextField> TextFields(Kind kind);

// What is printed on a card. Nobody real: names are marked as specimens, numbers carry the area
// code 999999 of no place.
struct Specimen {
  std::string id;     // "resident-rare": how people ask for it
  std::string about;  // one line for people
  std::string about_chinese;
  Kind kind = Kind::kResident;
  std::map<std::string, std::string> text;  // field name, UTF-8 without padding; absent: blanks
  std::string sex;                          // the sex code in words
  std::string nation;                       // nation or country in words, empty if there is none
  PortraitStyle portrait{};
};

// Every specimen, the kinds in turn; the first of a kind is the plain one and bears its name:
// "resident", "foreigner", "permit".
std::span<const Specimen> Specimens();

// Null when there is none with this id.
const Specimen* FindSpecimen(std::string_view id);

struct Card {
  Specimen person;
  bool fingerprints = false;           // carries two templates
  Bytes photo;                         // kPhotoSize bytes
  char mark = '\0';                    // a card-kind mark of no kind, or zero for the right one
  unsigned photo_length = kPhotoSize;  // what the answer's head says, whatever the size of `photo`
};

// The specimen's card with its photo. Throws std::invalid_argument for an unknown id.
Card MakeCard(std::string_view id, bool fingerprints = false);
Card MakeCard(const Specimen& person, bool fingerprints = false);

// UTF-8 as UCS-2, little-endian, the way cards store it: a character outside the basic plane is two
// units. Throws std::invalid_argument for text that is not UTF-8.
Bytes Ucs2(std::string_view utf8);

// The card's text, kTextSize bytes, fields padded with blanks. Throws std::invalid_argument for a
// text that does not fit its field.
Bytes CardText(const Card& card);

// Template 1 or 2: made from the specimen's id, every one different.
Bytes FingerTemplate(const Card& card, int number);

// The module's whole answer to a read: 1,295 bytes without fingerprints, with them 1,297 for a card
// that carries none and 2,321 for one that does.
Bytes NativeData(const Card& card, bool with_fingerprints);

}  // namespace simulator

#endif
