#include "simulator/faults.h"

#include <charconv>
#include <cstdio>

namespace simulator {
namespace {

constexpr FaultRow kFaults[] = {
    {FaultId::kSilent,          -5,   "silent",           "",        0,    "nothing answers"                           },
    {FaultId::kNoCard,          -5,   "no-card",          "",        0,    "search and select find no card"            },
    {FaultId::kCardAfter,       0,    "card-after",       "SECONDS", 3,    "the card comes so long after the start"    },
    {FaultId::kSelectNoCard,    -10,  "select-no-card",   "",        0,    "search finds a card, select does not"      },
    {FaultId::kSelectUnknown,   -2,   "select-unknown",   "",        0,    "select answers with an unknown status"     },
    {FaultId::kIcPowerOn,       -100, "ic-power-on",      "",        0,    "select answers with its IC power-on status"},
    {FaultId::kUnsupported,     -5,   "unsupported",      "",        0,    "a read gets the unsupported status"        },
    {FaultId::kUnsupportedCard, -12,  "unsupported-card", "",        0,    "that status as long as a card"             },
    {FaultId::kReadFailed,      -5,   "read-failed",      "",        0,    "a read gets the failed status"             },
    {FaultId::kBadCheck,        -5,   "bad-check",        "",        0,    "every read reply has a wrong check byte"   },
    {FaultId::kBadCheckOnce,    0,    "bad-check-once",   "",        0,    "one wrong check byte, then right ones"     },
    {FaultId::kLength,          -5,   "length",           "BYTES",   1296, "read replies of this length"               },
    {FaultId::kCut,             -5,   "cut",              "BYTES",   700,  "read replies stop after so many bytes"     },
    {FaultId::kGarbage,         -5,   "garbage",          "BYTES",   7,    "so many bytes FF before every reply"       },
    {FaultId::kSlow,            0,    "slow",             "BYTES/S", 1000, "replies trickle; the host waits 5 s"       },
    {FaultId::kLate,            0,    "late",             "SECONDS", 1,    "replies come late; the host waits 3 s"     },
    {FaultId::kHangUp,          -5,   "hang-up",          "BYTES",   700,  "the line goes dead after so many bytes"    },
    {FaultId::kBlocked,         -3,   "blocked",          "",        0,    "a tty that takes nothing behind the search"},
    {FaultId::kOtherKind,       -11,  "other-kind",       "",        0,    "a card of another kind lies there"         },
    {FaultId::kUnknownKind,     -11,  "unknown-kind",     "",        0,    "the card's kind mark is of no kind"        },
    {FaultId::kPhotoLength,     -100, "photo-length",     "BYTES",   1023, "a photo length other than 1024"            },
    {FaultId::kPhotoRefused,    -7,   "photo-refused",    "",        0,    "a photo that no decoder can decode"        },
};

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

std::string FaultHelp() {
  std::string help;
  for (const FaultRow& row : kFaults) {
    std::string name = row.name;
    if (HasUnit(row)) name += std::string("=") + row.unit;
    char line[160];
    std::snprintf(line, sizeof line, "%-20s  %-42s  -> %d\n", name.c_str(), row.about, row.result);
    help += line;
  }
  return help;
}

}  // namespace simulator
