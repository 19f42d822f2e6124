// Named misbehaviour of the simulated reader: one table for `qlid simulate --fault`, the tests and
// the manual.
#ifndef QUILLONID_SIMULATOR_FAULTS_H
#define QUILLONID_SIMULATOR_FAULTS_H

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace simulator {

enum class FaultId {
  kSilent,
  kNoCard,
  kCardAfter,
  kSelectNoCard,
  kSelectUnknown,
  kIcPowerOn,
  kUnsupported,
  kUnsupportedCard,
  kReadFailed,
  kBadCheck,
  kBadCheckOnce,
  kLength,
  kCut,
  kGarbage,
  kSlow,
  kLate,
  kHangUp,
  kBlocked,
  kOtherKind,
  kUnknownKind,
  kPhotoLength,
  kPhotoRefused,
};

struct FaultRow {
  FaultId id;
  int result;  // published, of reading a resident card with the table's value
  const char* name;
  const char* unit;  // of the value, "" for a fault without one
  long value;        // when none is given
  const char* about;
  const char* about_chinese;
};

// Every fault, in the order of FaultId.
std::span<const FaultRow> FaultTable();

struct Fault {
  FaultId id;
  long value;
};

// "cut=700", or "cut" for the table's value. None: `why` says what is wrong in words for people.
std::optional<Fault> ParseFault(std::string_view text, std::string* why = nullptr);

// "cut=700"
std::string FaultText(const Fault& fault);

}  // namespace simulator

#endif
