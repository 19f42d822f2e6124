#include "tools/qlid/byte_meanings.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstring>
#include <iterator>
#include <span>
#include <string_view>

#include "carddata/layout.h"
#include "simulator/packets.h"
#include "tools/qlid/json_document.h"
#include "tools/qlid/terminal.h"

namespace qlid {
namespace {

constexpr std::array<std::uint8_t, 3> kReadDone = {0x00, 0x00, 0x90};
constexpr std::size_t kPhotoSize = 1024;
constexpr std::size_t kTemplatesSize = 1024;
constexpr std::size_t kChecked = 5;  // the check byte is the exclusive-or from here on
constexpr std::size_t kBytesShown = 8;

constexpr std::size_t kSizePlain = 1295;        // read without fingerprints
constexpr std::size_t kSizeNoTemplates = 1297;  // with them, of a card that carries none
constexpr std::size_t kSizeWithTemplates = 2321;

// How a text field is called, and whether it identifies the holder.
struct Label {
  const char* member;  // of the record
  const char* english;
  const char* chinese;
  bool personal;
};
constexpr Label kLabels[] = {
    {"name",         "name",                     "姓名",                true },
    {"EngName",      "English name",             "英文姓名",          true },
    {"sexCode",      "sex code",                 "性别代码",          false},
    {"nationCode",   "nation or country code",   "民族或国籍代码", false},
    {"birthday",     "date of birth",            "出生日期",          true },
    {"address",      "address",                  "住址",                true },
    {"cardId",       "number",                   "号码",                true },
    {"police",       "issuing authority",        "签发机关",          false},
    {"validStart",   "valid from",               "有效期起始",       false},
    {"validEnd",     "valid to",                 "有效期截止",       false},
    {"reserved",     "reserved",                 "预留",                true },
    {"version",      "card version",             "证件版本",          false},
    {"govCode",      "issuing authority's code", "签发机关代码",    false},
    {"cardType",     "kind of card",             "证件类型标识",    false},
    {"otherData",    "reserved",                 "预留",                true },
    {"passNumber",   "pass number",              "通行证号码",       true },
    {"signTimes",    "times issued",             "签发次数",          false},
    {"gatReserved1", "reserved",                 "预留",                true },
    {"gatReserved2", "reserved",                 "预留",                true },
    {"gatReserved3", "reserved",                 "预留",                true },
};

const Label& LabelOf(std::string_view member) {
  const auto* row = std::find_if(std::begin(kLabels), std::end(kLabels),
                                 [&](const Label& label) { return label.member == member; });
  static constexpr Label kUnknown = {"", "text", "文字", true};
  return row == std::end(kLabels) ? kUnknown : *row;
}

// The field's text in the record that all kinds share, without the card's padding.
std::string RecordText(const PERSONINFO_COLLECT_FP& record, std::string_view member) {
  for (const Field& field : kCollectRecord) {
    if (field.name != member) continue;
    std::string text(field.In(&record), strnlen(field.In(&record), field.width));
    text.erase(text.find_last_not_of(' ') + 1);
    return text;
  }
  return "";
}

std::string ValueOf(const Card& card, std::string_view member) {
  std::string value = RecordText(card.record, member);
  if (member == "sexCode") value.append(" ").append(RecordText(card.record, "sex"));
  if (member == "nationCode") value.append(" ").append(RecordText(card.record, "nation"));
  if (member == "cardType")
    value = Format("\"%s\", %s", value.empty() ? " " : value.c_str(), KindText(card.kind));
  return Printable(value);
}

std::span<const TextField> TextFieldsOf(CardKind kind) {
  switch (kind) {
    case CardKind::kResident:
      return kChinaText;
    case CardKind::kForeigner:
      return kForeignText;
    case CardKind::kPermit:
      return kGatText;
    case CardKind::kUnknown:
      break;
  }
  return {};
}

// Walks the answer from front to back: each step takes the next bytes.
class Walk {
 public:
  explicit Walk(const Card& card) : card_(card) {}

  ByteMeaning& Take(std::size_t size, std::string meaning, std::string value = "") {
    const auto first = card_.native.begin() + static_cast<std::ptrdiff_t>(offset_);
    meanings_.push_back({
        offset_,
        {first, first + static_cast<std::ptrdiff_t>(size)},
        std::move(meaning),
        std::move(value)
    });
    offset_ += size;
    return meanings_.back();
  }

  // Bytes that are always the same.
  void TakeFixed(std::span<const std::uint8_t> expected, const char* meaning) {
    ByteMeaning& row = Take(expected.size(), meaning);
    if (std::equal(expected.begin(), expected.end(), row.bytes.begin())) return;
    row.impossible = true;
    row.value = Tr("impossible:", "不可能：应为");
    for (const std::uint8_t byte : expected) row.value += Format(" %02X", byte);
    row.value += Tr(" belongs here", "");
  }

  // A length in two bytes, big-endian, and what it can only be in an answer of this size.
  void TakeLength(std::size_t possible, const char* meaning) {
    ByteMeaning& row = Take(2, meaning);
    const std::size_t length = row.bytes[0] * 256U + row.bytes[1];
    row.value = Format(Tr("%zu bytes", "%zu 字节"), length);
    if (length == possible) return;
    row.impossible = true;
    row.value += Format(Tr(", impossible: %zu belongs here", "，不可能：应为 %zu"), possible);
  }

  std::vector<ByteMeaning> Done() { return std::move(meanings_); }

 private:
  const Card& card_;
  std::size_t offset_ = 0;
  std::vector<ByteMeaning> meanings_;
};

void WalkText(const Card& card, Walk* walk) {
  const std::span<const TextField> fields = TextFieldsOf(card.kind);
  if (fields.empty()) {
    ByteMeaning& row =
        walk->Take(kCardTextSize, Tr("text of an unknown kind of card", "未知类型卡片的文字"));
    row.personal = row.impossible = true;
    return;
  }
  for (const TextField& field : fields) {
    const Label& label = LabelOf(field.field.name);
    ByteMeaning& row = walk->Take(field.size,
                                  Format(Tr("%s, %d bytes UCS-2", "%s，%d 字节 UCS-2"),
                                         Tr(label.english, label.chinese), field.size),
                                  ValueOf(card, field.field.name));
    row.personal = label.personal;
  }
}

void WalkCheckByte(const std::vector<std::uint8_t>& native, Walk* walk) {
  const std::uint8_t right =
      simulator::Xor(std::span(native).subspan(kChecked, native.size() - 1 - kChecked));
  ByteMeaning& row = walk->Take(1, Tr("check byte", "校验字节"), Tr("right", "正确"));
  if (row.bytes[0] == right) return;
  row.impossible = true;
  row.value = Format(Tr("wrong: %02X would be right", "错误：应为 %02X"), right);
}

// The bytes in hexadecimal, at most `limit` of them.
std::string HexOf(const ByteMeaning& row, std::size_t limit, bool masked) {
  std::string text;
  for (std::size_t i = 0; i < row.bytes.size() && i < limit; ++i) {
    if (i > 0) text += ' ';
    text += masked ? "**" : Format("%02X", row.bytes[i]);
  }
  if (row.bytes.size() > limit) text += " …";
  return text;
}

}  // namespace

bool IsAnswerSize(std::size_t size) {
  return size == kSizePlain || size == kSizeNoTemplates || size == kSizeWithTemplates;
}

bool HasTemplates(std::size_t size) { return size == kSizeWithTemplates; }

std::vector<ByteMeaning> ByteMeanings(const Card& card) {
  const std::size_t size = card.native.size();
  const std::size_t templates = HasTemplates(size) ? kTemplatesSize : 0;
  Walk walk(card);
  walk.TakeFixed(simulator::kPreamble, Tr("preamble", "前导"));
  walk.TakeLength(size - 7, Tr("length of what follows, big-endian", "其后长度，大端"));
  walk.TakeFixed(kReadDone, Tr("status: read done", "状态：读取完成"));
  walk.TakeLength(kCardTextSize, Tr("length of the text", "文字长度"));
  walk.TakeLength(kPhotoSize, Tr("length of the photo", "照片长度"));
  if (size != kSizePlain)
    walk.TakeLength(templates, Tr("length of the fingerprint templates", "指纹模板长度"));
  WalkText(card, &walk);
  walk.Take(kPhotoSize, Tr("photo, compressed, 1024 bytes", "照片，压缩，1024 字节")).personal =
      true;
  for (int number = 1; templates != 0 && number <= 2; ++number) {
    walk.Take(templates / 2,
              Format(Tr("fingerprint template %d, 512 bytes", "指纹模板 %d，512 字节"), number))
        .personal = true;
  }
  WalkCheckByte(card.native, &walk);
  return walk.Done();
}

void PrintByteMeanings(const std::vector<ByteMeaning>& meanings, bool redact) {
  constexpr int kBytesColumn = 3 * kBytesShown + 1;
  int meaning_column = 0;
  for (const ByteMeaning& row : meanings)
    meaning_column = std::max(meaning_column, DisplayWidth(row.meaning));
  std::printf("%s  %s  %s\n", PaddedTo(Tr("offset", "偏移"), 6).c_str(),
              PaddedTo(Tr("bytes", "字节"), kBytesColumn).c_str(), Tr("meaning", "含义"));
  for (const ByteMeaning& row : meanings) {
    std::printf("%6zu  %s  ", row.offset,
                PaddedTo(HexOf(row, kBytesShown, redact && row.personal), kBytesColumn).c_str());
    if (row.value.empty()) {
      std::printf("%s\n", row.meaning.c_str());
    } else {
      std::printf("%s  %s\n", PaddedTo(row.meaning, meaning_column).c_str(),
                  Paint(row.impossible ? Ink::kRed : Ink::kPlain, row.value, 1).c_str());
    }
  }
}

cJSON* ByteMeaningsArray(const std::vector<ByteMeaning>& meanings, bool redact) {
  cJSON* rows = cJSON_CreateArray();
  for (const ByteMeaning& row : meanings) {
    cJSON* object = cJSON_CreateObject();
    cJSON_AddItemToArray(rows, object);
    cJSON_AddNumberToObject(object, "offset", static_cast<double>(row.offset));
    cJSON_AddNumberToObject(object, "size", static_cast<double>(row.bytes.size()));
    const std::string hex = HexOf(row, row.bytes.size(), redact && row.personal);
    AddText(object, "hex", hex);
    AddText(object, "meaning", row.meaning);
    AddText(object, "value", row.value);
    cJSON_AddBoolToObject(object, "possible", !row.impossible);
  }
  return rows;
}

Json ByteMeaningsDocument(const Card& card, const std::vector<ByteMeaning>& meanings, bool redact) {
  Json document = NewDocument("qlid.explain/1");
  if (meanings.empty()) return document;
  cJSON_AddStringToObject(document.get(), "kind", KindName(card.kind));
  cJSON_AddItemToObject(document.get(), "bytes", ByteMeaningsArray(meanings, redact));
  return document;
}

}  // namespace qlid
