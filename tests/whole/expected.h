// What a whole read of a specimen card shall leave behind, worked out from the specimen's own text.
#ifndef QUILLONID_TESTS_WHOLE_EXPECTED_H
#define QUILLONID_TESTS_WHOLE_EXPECTED_H

#include <cstddef>
#include <map>
#include <string>
#include <vector>

#include "quillonid/records.h"
#include "simulator/card.h"

namespace whole {

// A member of a record.
struct Member {
  const char* name;
  std::size_t offset;
  std::size_t size;
};

// The text members of each record type, those of an _FP record with its two templates.
template <typename Record>
std::vector<Member> Members();

template <>
std::vector<Member> Members<PERSONINFO_CHA>();
template <>
std::vector<Member> Members<PERSONINFO_CHA_FP>();
template <>
std::vector<Member> Members<PERSONINFO_FOR>();
template <>
std::vector<Member> Members<PERSONINFO_FOR_FP>();
template <>
std::vector<Member> Members<PERSONINFO_GAT>();
template <>
std::vector<Member> Members<PERSONINFO_GAT_FP>();
template <>
std::vector<Member> Members<PERSONINFO>();
template <>
std::vector<Member> Members<PERSONINFO_FP>();
template <>
std::vector<Member> Members<PERSONINFO_COLLECT>();
template <>
std::vector<Member> Members<PERSONINFO_COLLECT_FP>();

// The card's text of `size` bytes in a record member of `width` bytes: padded as on the card, each
// unit in UTF-8 on its own, cut at width - 1 bytes, blanks kept unless they reach that far.
std::string FieldText(const std::string& printed, std::size_t size, std::size_t width);

// Every member's text by its name: what a record with these members holds after a read of `card`.
// `marked`: the record tells the kinds apart, so a resident's card type is a blank.
std::map<std::string, std::string> RecordTexts(const simulator::Card& card,
                                               const std::vector<Member>& members,
                                               bool with_fingerprints, bool marked);

// The same from a record's bytes; a member that is not terminated is an "(unterminated)".
std::map<std::string, std::string> TextsOf(const void* record, const std::vector<Member>& members);

// Bytes as the library writes templates: upper-case pairs without separator.
std::string PlainHex(const simulator::Bytes& bytes);

// The BMP file that the specimen decoder's pixels make.
std::string PhotoFile(const simulator::Card& card);

// Puts the specimen decoder where the library looks for its photo decoder.
void InstallDecoder();

}  // namespace whole

#endif
