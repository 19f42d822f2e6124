// A read that failed, in words: what happened, where, and what to do next. To tell, the reader is
// looked at once more.
#ifndef QUILLONID_TOOLS_QLID_READ_FAILURE_H
#define QUILLONID_TOOLS_QLID_READ_FAILURE_H

#include "tools/qlid/reading.h"
#include "tools/qlid/report.h"

namespace qlid {

// Reasons in a word that programs may rely on, beside the names of the codes.
inline constexpr char kReasonNoCard[] = "no-card";
inline constexpr char kReasonUnread[] = "unread";  // a card lies there
inline constexpr char kReasonSilent[] = "silent";
inline constexpr char kReasonUnplugged[] = "unplugged";
inline constexpr char kReasonNoDevice[] = "no-device";
inline constexpr char kReasonNoPermission[] = "no-permission";
inline constexpr char kReasonHeld[] = "held";
inline constexpr char kReasonNotOpened[] = "not-opened";

Report ReadReport(const ReadRequest& request, const Reading& reading);

// A reader that was opened and says nothing; a card that is found and whose reading fails.
Report SilentReport(const ReadRequest& request);
Report UnreadReport(const ReadRequest& request);

// A reader that could not be opened.
Report OpenReport(const ReadRequest& request);

// A card of another kind than --kind asks for.
Report OtherKindReport(const std::string& wanted, CardKind kind);

// Why a device that is named or found does not open.
enum class OpenFailure { kNoNode, kNoPermission, kHeld, kOther };
struct OpenProblem {
  OpenFailure failure;
  std::string node;               // empty: no reader was found
  std::vector<Holder> holders;    // for kHeld
  std::vector<std::string> next;  // what to do, a step in a line
};
OpenProblem ExplainOpening(const ReadRequest& request);

}  // namespace qlid

#endif
