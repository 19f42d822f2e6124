#include "simulator/faults.h"

#include <charconv>
#include <cstdio>

namespace simulator {
namespace {

constexpr FaultRow kFaults[] = {
    {FaultId::kSilent,       "silent",         "",        0,    -5,   "nothing answers"                             },
    {FaultId::kNoCard,       "no-card",        "",        0,    -5,   "search and select find no card"              },
    {FaultId::kCardAfter,    "card-after",     "SECONDS", 3,    0,
     "the card comes so long after the host's first request"                                                        },
    {FaultId::kSelectNoCard, "select-no-card", "",        0,    -10,  "search finds a card, select does not"        },
    {FaultId::kIcPowerOn,    "ic-power-on",    "",        0,    -100, "select answers with its IC power-on status"  },
    {FaultId::kUnsupported,  "unsupported",    "",        0,    -5,
     "the read is answered with the unsupported status"                                                             },
    {FaultId::kReadFailed,   "read-failed",    "",        0,    -5,   "the read is answered with the failed status" },
    {FaultId::kBadCheck,     "bad-check",      "",        0,    -5,   "the check byte of every read reply is wrong" },
    {FaultId::kBadCheckOnce, "bad-check-once", "",        0,    0,
     "the check byte of the first read reply is wrong"                                                              },
    {FaultId::kLength,       "length",         "BYTES",   1296, -5,   "a read reply of this length, right in itself"},
    {FaultId::kCut,          "cut",            "BYTES",   700,  -5,   "the read reply stops after so many bytes"    },
    {FaultId::kGarbage,      "garbage",        "BYTES",   7,    -5,   "so many bytes FF before every reply"         },
    {FaultId::kSlow,         "slow",           "BYTES/S", 1000, 0,
     "replies trickle; a read reply that takes over 5 s is not read"                                                },
    {FaultId::kLate,         "late",           "SECONDS", 2,    0,
     "every reply is late; over 3 s the host gives up first"                                                        },
    {FaultId::kHangUp,       "hang-up",        "BYTES",   700,  -5,
     "the line goes dead after so many bytes of replies"                                                            },
    {FaultId::kOtherKind,    "other-kind",     "",        0,    -11,  "a card of another kind lies there"           },
    {FaultId::kUnknownKind,  "unknown-kind",   "",        0,    -11,
     "the card's kind mark is an X, which no kind has"                                                              },
    {FaultId::kPhotoLength,  "photo-length",   "BYTES",   1023, -100,
     "the card states this photo length instead of 1024"                                                            },
    {FaultId::kPhotoRefused, "photo-refused",  "",        0,    -7,   "a photo that the decoder refuses"            },
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
    std::snprintf(line, sizeof line, "%-20s  %-64s  -> %d\n", name.c_str(), row.about, row.result);
    help += line;
  }
  return help;
}

}  // namespace simulator
