#include "simulator/faults.h"

#include <charconv>

namespace simulator {
namespace {

// A row to a line.
// clang-format off
constexpr FaultRow kFaults[] = {
    {FaultId::kSilent,          -5,   "silent",           "",        0,    "nothing answers",                            "没有任何应答"},
    {FaultId::kNoCard,          -5,   "no-card",          "",        0,    "search and select find no card",             "寻卡和选卡都找不到卡"},
    {FaultId::kCardAfter,       0,    "card-after",       "SECONDS", 3,    "the card comes so long after the start",     "开始后过这么久才放上卡"},
    {FaultId::kSelectNoCard,    -10,  "select-no-card",   "",        0,    "search finds a card, select does not",       "寻卡找到卡，选卡却没有"},
    {FaultId::kSelectUnknown,   -2,   "select-unknown",   "",        0,    "select answers with an unknown status",      "选卡应答为未知状态"},
    {FaultId::kIcPowerOn,       -100, "ic-power-on",      "",        0,    "select answers with its IC power-on status", "选卡应答为 IC 上电状态"},
    {FaultId::kUnsupported,     -5,   "unsupported",      "",        0,    "a read gets the unsupported status",         "读卡得到不支持状态"},
    {FaultId::kUnsupportedCard, -12,  "unsupported-card", "",        0,    "that status as long as a card",              "不支持状态，长度却与卡应答相同"},
    {FaultId::kReadFailed,      -5,   "read-failed",      "",        0,    "a read gets the failed status",              "读卡得到读取失败状态"},
    {FaultId::kBadCheck,        -5,   "bad-check",        "",        0,    "every read reply has a wrong check byte",    "每个读卡应答的校验字节都错误"},
    {FaultId::kBadCheckOnce,    0,    "bad-check-once",   "",        0,    "one wrong check byte, then right ones",      "校验字节错一次，之后正确"},
    {FaultId::kLength,          -5,   "length",           "BYTES",   1296, "read replies of this length",                "读卡应答为此长度"},
    {FaultId::kCut,             -5,   "cut",              "BYTES",   700,  "read replies stop after so many bytes",      "读卡应答发出这么多字节后中断"},
    {FaultId::kGarbage,         -5,   "garbage",          "BYTES",   7,    "so many bytes FF before every reply",        "每个应答之前有这么多个 FF 字节"},
    {FaultId::kSlow,            0,    "slow",             "BYTES/S", 1000, "replies trickle; the host waits 5 s",        "应答缓慢到达；主机等待 5 秒"},
    {FaultId::kLate,            0,    "late",             "SECONDS", 1,    "replies come late; the host waits 3 s",      "应答迟到；主机等待 3 秒"},
    {FaultId::kHangUp,          -5,   "hang-up",          "BYTES",   700,  "the line goes dead after so many bytes",     "应答这么多字节后线路断开"},
    {FaultId::kBlocked,         -3,   "blocked",          "",        0,    "a tty that takes nothing behind the search", "寻卡之后 tty 不再接收数据"},
    {FaultId::kOtherKind,       -11,  "other-kind",       "",        0,    "a card of another kind lies there",          "放着的是另一种证件"},
    {FaultId::kUnknownKind,     -11,  "unknown-kind",     "",        0,    "the card's kind mark is of no kind",         "卡的种类标记不属于任何种类"},
    {FaultId::kPhotoLength,     -100, "photo-length",     "BYTES",   1023, "a photo length other than 1024",             "照片长度不是 1024"},
    {FaultId::kPhotoRefused,    -7,   "photo-refused",    "",        0,    "a photo that no decoder can decode",         "任何解码器都无法解码的照片"},
};
// clang-format on

bool HasUnit(const FaultRow& row) { return row.unit[0] != '\0'; }

}  // namespace

std::span<const FaultRow> FaultTable() { return kFaults; }

std::optional<Fault> ParseFault(std::string_view text, std::string* why) {
  const auto refuse = [&](const std::string& reason) {
    if (why != nullptr) *why = reason;
    return std::nullopt;
  };
  const std::size_t equals = text.find('=');
  const std::string name(text.substr(0, equals));
  for (const FaultRow& row : kFaults) {
    if (name != row.name) continue;
    if (equals == std::string_view::npos) return Fault{row.id, row.value};
    if (!HasUnit(row)) return refuse("\"" + name + "\" takes no value");

    const std::string_view digits = text.substr(equals + 1);
    long value = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
    if (error != std::errc{} || end != digits.data() + digits.size() || value < 0 ||
        value > 1'000'000) {
      return refuse("\"" + name + "\" takes a number from 0 to 1000000 (" + row.unit + ")");
    }
    return Fault{row.id, value};
  }
  return refuse("there is no fault \"" + name + "\"");
}

std::string FaultText(const Fault& fault) {
  for (const FaultRow& row : kFaults) {
    if (row.id != fault.id) continue;
    return HasUnit(row) ? std::string(row.name) + "=" + std::to_string(fault.value) : row.name;
  }
  return "";
}

}  // namespace simulator
