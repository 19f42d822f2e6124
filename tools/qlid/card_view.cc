#include "tools/qlid/card_view.h"

#include <cjson/cJSON.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <string_view>

#include "carddata/layout.h"
#include "quillonid/carddata.h"
#include "tools/qlid/byte_meanings.h"
#include "tools/qlid/terminal.h"

namespace qlid {
namespace {

// Without the card's padding.
std::string Trimmed(std::string text) {
  text.erase(text.find_last_not_of(' ') + 1);
  return text;
}

template <std::size_t kWidth>
std::string Text(const char (&field)[kWidth]) {
  return Trimmed(std::string(field, strnlen(field, kWidth)));
}

bool IsDate(const std::string& text) {
  return text.size() == 8 &&
         std::all_of(text.begin(), text.end(), [](unsigned char c) { return std::isdigit(c); });
}

// YYYYMMDD as YYYY-MM-DD; anything else ("长期", without limit) as it stands.
std::string Date(const std::string& text) {
  if (!IsDate(text)) return text;
  return text.substr(0, 4) + "-" + text.substr(4, 2) + "-" + text.substr(6, 2);
}

std::string Today() {
  const time_t now = time(nullptr);
  tm local = {};
  localtime_r(&now, &local);
  char text[16];
  strftime(text, sizeof text, "%Y%m%d", &local);
  return text;
}

bool Expired(const Card& card) {
  const std::string end = Text(card.record.validEnd);
  return IsDate(end) && end < Today();
}

bool NotYetValid(const Card& card) {
  const std::string start = Text(card.record.validStart);
  return IsDate(start) && start > Today();
}

enum class CheckDigit { kNone, kRight, kWrong };

// 18-character numbers end in a check character by ISO 7064 MOD 11-2, as GB 11643 uses it.
CheckDigit CheckDigitOf(const std::string& number) {
  if (number.size() != 18) return CheckDigit::kNone;
  int sum = 0;
  for (std::size_t i = 0; i < 18; ++i) {
    const char c = number[i];
    int value = c - '0';
    if (i == 17 && (c == 'X' || c == 'x')) value = 10;
    if (value < 0 || value > 10 || (value == 10 && i != 17)) return CheckDigit::kWrong;
    sum += value * ((1 << (17 - i)) % 11);
  }
  return sum % 11 == 1 ? CheckDigit::kRight : CheckDigit::kWrong;
}

std::string WithCode(const std::string& text, const std::string& code) {
  if (code.empty()) return text;
  return text.empty() ? code : text + " (" + code + ")";
}

void Append(std::vector<Row>* rows, const char* label, const std::string& text) {
  if (!text.empty()) rows->push_back({label, Printable(text)});
}

// The first character stays, the others become "*".
std::string MaskedName(const std::string& name) {
  if (name.empty()) return name;
  std::string masked;
  bool first = true;
  for (std::size_t i = 0; i < name.size();) {
    std::size_t size = 1;
    while (i + size < name.size() && (static_cast<unsigned char>(name[i + size]) >> 6) == 0x2)
      ++size;
    masked += first ? name.substr(i, size) : "*";
    first = false;
    i += size;
  }
  return masked;
}

// The issuer's part in front and what tells cards of one day apart at the end stay, the date of
// birth between them does not: the number of a card of today has 18 characters, 8 of them the date;
// the former foreigner's number has 15, 6 of them the date and two behind it.
std::string MaskedNumber(const std::string& number) {
  constexpr std::size_t kFront = 6;
  const std::size_t end = number.size() == 18 ? 4 : 2;
  if (number.size() < 14) return std::string(number.size(), '*');
  return number.substr(0, kFront) + std::string(number.size() - kFront - end, '*') +
         number.substr(number.size() - end);
}

std::string Stars(const std::string& text) { return std::string(text.size(), '*'); }
std::string Starred(const std::string& text) { return text.empty() ? "" : "***"; }

// What --redact leaves of a field. One that has no row here is emptied.
struct Mask {
  std::string_view member;
  std::string (*left)(const std::string& text);  // null: all of it
};
constexpr Mask kMasks[] = {
    {"name",       MaskedName  },
    {"EngName",    MaskedName  },
    {"birthday",   Stars       },
    {"cardId",     MaskedNumber},
    {"passNumber", MaskedNumber},
    {"address",    Starred     },
    {"version",    nullptr     },
    {"govCode",    nullptr     },
    {"cardType",   nullptr     },
    {"sex",        nullptr     },
    {"nation",     nullptr     },
    {"police",     nullptr     },
    {"validStart", nullptr     },
    {"validEnd",   nullptr     },
    {"sexCode",    nullptr     },
    {"nationCode", nullptr     },
    {"signTimes",  nullptr     },
};

void AppendTemplates(std::vector<Row>* rows, const Card& card) {
  if (!card.fingerprints_asked) return;
  const int templates = (card.record.fingerData1[0] ? 1 : 0) + (card.record.fingerData2[0] ? 1 : 0);
  if (templates == 0 && HasTemplates(card.native.size())) {
    Append(rows, Tr("Fingers", "指纹"), Tr("masked", "已遮盖"));
    return;
  }
  Append(rows, Tr("Fingers", "指纹"),
         templates ? Format(Tr("%d templates", "%d 个模板"), templates)
                   : Tr("none on this card", "卡内无指纹"));
}

}  // namespace

const char* KindName(CardKind kind) {
  switch (kind) {
    case CardKind::kResident:
      return "resident";
    case CardKind::kForeigner:
      return "foreigner";
    case CardKind::kPermit:
      return "gat";
    case CardKind::kUnknown:
      break;
  }
  return "unknown";
}

const char* KindText(CardKind kind) {
  switch (kind) {
    case CardKind::kResident:
      return Tr("resident identity card", "居民身份证");
    case CardKind::kForeigner:
      return Tr("foreigner's permanent residence card", "外国人永久居留身份证");
    case CardKind::kPermit:
      return Tr("residence permit for Hong Kong, Macau and Taiwan residents", "港澳台居民居住证");
    case CardKind::kUnknown:
      break;
  }
  return Tr("unknown kind of card", "未知卡片");
}

bool DecodeCard(const std::vector<std::uint8_t>& native, Card* card, std::string* problem) {
  if (!IsAnswerSize(native.size())) {
    *problem = Format(Tr("%zu bytes; an answer has 1295, 1297 or 2321",
                         "%zu 字节；应答应为 1295、1297 或 2321 字节"),
                      native.size());
    return false;
  }
  *card = {};
  card->native = native;
  card->fingerprints_asked = native.size() != 1295;
  const int mode = card->fingerprints_asked ? 1 : 0;
  unsigned char data[QL_NATIVE_DATA_SIZE] = {};
  std::copy(native.begin(), native.end(), data);

  PERSONINFO_CHA_FP china = {};
  PERSONINFO_FOR_FP foreigner = {};
  PERSONINFO_GAT_FP permit = {};
  card->kind = static_cast<CardKind>(std::max(-1, GetIdCardTypeFromNativeData(mode, data)));
  switch (card->kind) {
    case CardKind::kResident:
      GetPersonChinaInfo(mode, data, &china);
      tFuncConvertStruct2Collect(&china, nullptr, nullptr, &card->record);
      return true;
    case CardKind::kForeigner:
      GetPersonForeignInfo(mode, data, &foreigner);
      tFuncConvertStruct2Collect(nullptr, &foreigner, nullptr, &card->record);
      return true;
    case CardKind::kPermit:
      GetPersonGATInfo(mode, data, &permit);
      tFuncConvertStruct2Collect(nullptr, nullptr, &permit, &card->record);
      return true;
    case CardKind::kUnknown:
      break;
  }
  *problem = Tr("it carries the mark of no known kind of card", "没有已知卡片类型的标记");
  return false;
}

void Redact(Card* card) {
  for (const Field& field : kCollectRecord) {
    const auto* mask = std::find_if(std::begin(kMasks), std::end(kMasks),
                                    [&](const Mask& row) { return row.member == field.name; });
    const bool known = mask != std::end(kMasks);
    if (known && !mask->left) continue;
    char* written = field.In(&card->record);
    const std::string text = Trimmed(std::string(written, strnlen(written, field.width)));
    const std::string left = known ? mask->left(text) : "";
    std::memset(written, 0, field.width);
    std::memcpy(written, left.data(), std::min<std::size_t>(left.size(), field.width - 1U));
  }
}

std::vector<Row> CardRows(const Card& card) {
  const PERSONINFO_COLLECT_FP& record = card.record;
  std::vector<Row> rows;
  Append(&rows, Tr("Kind", "类型"), KindText(card.kind));
  Append(&rows, Tr("Name", "姓名"), Text(record.name));
  Append(&rows, Tr("English", "英文姓名"), Text(record.EngName));
  Append(&rows, Tr("Sex", "性别"), WithCode(Text(record.sex), Text(record.sexCode)));
  Append(&rows, card.kind == CardKind::kForeigner ? Tr("Country", "国籍") : Tr("Nation", "民族"),
         WithCode(Text(record.nation), Text(record.nationCode)));
  Append(&rows, Tr("Born", "出生"), Date(Text(record.birthday)));
  Append(&rows, Tr("Address", "住址"), Text(record.address));

  std::string number = Text(record.cardId);
  const CheckDigit check = CheckDigitOf(number);
  if (check == CheckDigit::kRight) number += Tr("   check digit right", "   校验码正确");
  if (check == CheckDigit::kWrong && number.find('*') == std::string::npos) {
    number += Tr("   check digit wrong", "   校验码错误");
  }
  Append(&rows, Tr("Number", "号码"), number);

  std::string pass = Text(record.passNumber);
  const std::string times = Text(record.signTimes);
  if (!pass.empty() && !times.empty()) {
    pass += Format(Tr(", issued %s time(s)", "，签发次数 %s"), times.c_str());
  }
  Append(&rows, Tr("Pass", "通行证"), pass);
  Append(&rows, Tr("Issued by", "签发机关"),
         Text(record.police).empty() ? Text(record.govCode) : Text(record.police));

  std::string valid =
      Date(Text(record.validStart)) + Tr(" to ", " 至 ") + Date(Text(record.validEnd));
  if (Expired(card)) valid += Tr("   expired", "   已过期");
  if (NotYetValid(card)) valid += Tr("   not yet valid", "   尚未生效");
  Append(&rows, Tr("Valid", "有效期"), valid);
  Append(&rows, Tr("Version", "版本"), Text(record.version));
  AppendTemplates(&rows, card);
  return rows;
}

void PrintRows(const std::vector<Row>& rows) {
  int width = 10;
  for (const Row& row : rows) width = std::max(width, DisplayWidth(row.label));
  for (const Row& row : rows) {
    std::printf("%s  %s\n", Paint(Ink::kDim, PaddedTo(row.label, width), 1).c_str(),
                row.text.c_str());
  }
}

std::vector<std::string> Remarks(const Card& card) {
  std::vector<std::string> remarks;
  if (Expired(card)) remarks.emplace_back("expired");
  if (NotYetValid(card)) remarks.emplace_back("not-yet-valid");
  const std::string number = Text(card.record.cardId);
  const CheckDigit check = CheckDigitOf(number);
  if (check == CheckDigit::kRight) remarks.emplace_back("check-digit-right");
  if (check == CheckDigit::kWrong && number.find('*') == std::string::npos) {
    remarks.emplace_back("check-digit-wrong");
  }
  return remarks;
}

cJSON* CardObject(const Card& card, bool photo) {
  if (photo) tFunc_SetAddPhotoDataToJsonFlag(1);
  char text[QL_JSON_SIZE] = {};
  if (tFuncPackCollectJson(&card.record, text) != 0) return nullptr;
  return cJSON_Parse(text);
}

}  // namespace qlid
