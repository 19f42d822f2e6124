#include "tests/whole/expected.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <filesystem>

#include "tests/testing/hex_text.h"
#include "tests/testing/private_root.h"

namespace whole {
namespace {

#define QL_MEMBER(field) \
  Member { #field, offsetof(Record, field), sizeof(Record::field) }

template <typename Record>
std::vector<Member> ResidentMembers() {
  return {QL_MEMBER(name),     QL_MEMBER(sex),     QL_MEMBER(nation),     QL_MEMBER(birthday),
          QL_MEMBER(address),  QL_MEMBER(cardId),  QL_MEMBER(police),     QL_MEMBER(validStart),
          QL_MEMBER(validEnd), QL_MEMBER(sexCode), QL_MEMBER(nationCode), QL_MEMBER(reserved)};
}

template <typename Record>
std::vector<Member> ForeignerMembers() {
  std::vector<Member> members = ResidentMembers<Record>();
  members.insert(members.end(), {QL_MEMBER(EngName), QL_MEMBER(version), QL_MEMBER(govCode),
                                 QL_MEMBER(cardType), QL_MEMBER(otherData)});
  return members;
}

template <typename Record>
std::vector<Member> PermitMembers() {
  return {QL_MEMBER(name),         QL_MEMBER(sexCode),    QL_MEMBER(sex),
          QL_MEMBER(gatReserved1), QL_MEMBER(birthday),   QL_MEMBER(address),
          QL_MEMBER(cardId),       QL_MEMBER(police),     QL_MEMBER(validStart),
          QL_MEMBER(validEnd),     QL_MEMBER(passNumber), QL_MEMBER(signTimes),
          QL_MEMBER(gatReserved2), QL_MEMBER(cardType),   QL_MEMBER(gatReserved3)};
}

template <typename Record>
std::vector<Member> CollectMembers() {
  std::vector<Member> members = ForeignerMembers<Record>();
  members.insert(members.end(),
                 {QL_MEMBER(passNumber), QL_MEMBER(signTimes), QL_MEMBER(gatReserved1),
                  QL_MEMBER(gatReserved2), QL_MEMBER(gatReserved3)});
  return members;
}

template <typename Record>
std::vector<Member> WithTemplates(std::vector<Member> members) {
  members.insert(members.end(), {QL_MEMBER(fingerData1), QL_MEMBER(fingerData2)});
  return members;
}

std::string Utf8OfUnit(unsigned unit) {
  const auto byte = [](unsigned value) { return static_cast<char>(value); };
  if (unit < 0x80) return {byte(unit)};
  if (unit < 0x800) return {byte(0xC0 | unit >> 6), byte(0x80 | (unit & 0x3F))};
  return {byte(0xE0 | unit >> 12), byte(0x80 | (unit >> 6 & 0x3F)), byte(0x80 | (unit & 0x3F))};
}

void AppendNumber(std::string* bytes, unsigned value, int size) {
  for (int i = 0; i < size; ++i) bytes->push_back(static_cast<char>(value >> (8 * i) & 0xFF));
}

}  // namespace

template <>
std::vector<Member> Members<PERSONINFO_CHA>() {
  return ResidentMembers<PERSONINFO_CHA>();
}
template <>
std::vector<Member> Members<PERSONINFO_CHA_FP>() {
  return WithTemplates<PERSONINFO_CHA_FP>(ResidentMembers<PERSONINFO_CHA_FP>());
}
template <>
std::vector<Member> Members<PERSONINFO_FOR>() {
  return ForeignerMembers<PERSONINFO_FOR>();
}
template <>
std::vector<Member> Members<PERSONINFO_FOR_FP>() {
  return WithTemplates<PERSONINFO_FOR_FP>(ForeignerMembers<PERSONINFO_FOR_FP>());
}
template <>
std::vector<Member> Members<PERSONINFO_GAT>() {
  return PermitMembers<PERSONINFO_GAT>();
}
template <>
std::vector<Member> Members<PERSONINFO_GAT_FP>() {
  return WithTemplates<PERSONINFO_GAT_FP>(PermitMembers<PERSONINFO_GAT_FP>());
}
template <>
std::vector<Member> Members<PERSONINFO>() {
  return ForeignerMembers<PERSONINFO>();
}
template <>
std::vector<Member> Members<PERSONINFO_FP>() {
  return WithTemplates<PERSONINFO_FP>(ForeignerMembers<PERSONINFO_FP>());
}
template <>
std::vector<Member> Members<PERSONINFO_COLLECT>() {
  return CollectMembers<PERSONINFO_COLLECT>();
}
template <>
std::vector<Member> Members<PERSONINFO_COLLECT_FP>() {
  return WithTemplates<PERSONINFO_COLLECT_FP>(CollectMembers<PERSONINFO_COLLECT_FP>());
}

std::string FieldText(const std::string& printed, std::size_t size, std::size_t width) {
  const simulator::Bytes units = simulator::Ucs2(printed);
  std::string text;
  for (std::size_t i = 0; i < size; i += 2) {
    text += Utf8OfUnit(i < units.size() ? units[i] + units[i + 1] * 256U : ' ');
  }
  if (text.size() < width - 1) return text;
  text.resize(width - 1);
  text.erase(text.find_last_not_of(' ') + 1);
  return text;
}

std::map<std::string, std::string> RecordTexts(const simulator::Card& card,
                                               const std::vector<Member>& members,
                                               bool with_fingerprints, bool marked) {
  std::map<std::string, std::string> texts;
  for (const Member& member : members) texts[member.name] = "";
  for (const simulator::TextField& field : simulator::TextFields(card.person.kind)) {
    for (const Member& member : members) {
      if (member.name != std::string(field.name)) continue;
      const auto printed = card.person.text.find(field.name);
      texts[field.name] = FieldText(printed == card.person.text.end() ? "" : printed->second,
                                    field.size, member.size);
    }
  }
  texts["sex"] = card.person.sex;
  if (texts.count("nation") != 0) texts["nation"] = card.person.nation;
  if (marked && card.person.kind == simulator::Kind::kResident) texts["cardType"].assign(1, ' ');
  if (with_fingerprints && card.fingerprints && texts.count("fingerData1") != 0) {
    texts["fingerData1"] = PlainHex(simulator::FingerTemplate(card, 1));
    texts["fingerData2"] = PlainHex(simulator::FingerTemplate(card, 2));
  }
  return texts;
}

std::map<std::string, std::string> TextsOf(const void* record, const std::vector<Member>& members) {
  std::map<std::string, std::string> texts;
  for (const Member& member : members) {
    const char* text = static_cast<const char*>(record) + member.offset;
    const std::size_t length = strnlen(text, member.size);
    texts[member.name] = length < member.size ? std::string(text, length) : "(unterminated)";
  }
  return texts;
}

std::string PlainHex(const simulator::Bytes& bytes) {
  std::string text = HexText(bytes);
  text.erase(std::remove(text.begin(), text.end(), ' '), text.end());
  return text;
}

std::string PhotoFile(const simulator::Card& card) {
  constexpr unsigned kWidth = 102;
  constexpr unsigned kHeight = 126;
  constexpr std::size_t kRow = 3UL * kWidth;
  std::vector<unsigned char> pixels(kRow * kHeight);
  void* decoder = dlopen(QL_SPECIMEN_DECODER, RTLD_NOW);
  if (decoder == nullptr) return "no specimen decoder";
  using Unpack = int (*)(const unsigned char*, unsigned char*, int);
  const auto unpack = reinterpret_cast<Unpack>(dlsym(decoder, "unpack"));
  const int unpacked = unpack(card.photo.data(), pixels.data(), 608);
  dlclose(decoder);
  if (unpacked == 0) return "photo refused";

  std::string file = "BM";
  AppendNumber(&file, 38862, 4);
  AppendNumber(&file, 0, 4);
  AppendNumber(&file, 54, 4);
  AppendNumber(&file, 40, 4);
  AppendNumber(&file, kWidth, 4);
  AppendNumber(&file, kHeight, 4);
  AppendNumber(&file, 1, 2);
  AppendNumber(&file, 24, 2);
  file.append(24, '\0');
  for (std::size_t i = 0; i < pixels.size(); i += 3) {
    for (const std::size_t colour : {2U, 1U, 0U}) {
      file.push_back(static_cast<char>(pixels[i + colour]));
    }
    if ((i + 3) % kRow == 0) file += "\x96\x08";
  }
  return file;
}

void InstallDecoder() {
  std::filesystem::copy_file(QL_SPECIMEN_DECODER, kDecoderFile,
                             std::filesystem::copy_options::overwrite_existing);
}

}  // namespace whole
