// A read that failed, in words: what happened, where, and what to do next. To tell, the reader is
// looked at once more.
#ifndef QUILLONID_TOOLS_QLID_READ_FAILURE_H
#define QUILLONID_TOOLS_QLID_READ_FAILURE_H

#include "tools/qlid/reading.h"
#include "tools/qlid/report.h"

namespace qlid {

Report ReadReport(const ReadRequest& request, const Reading& reading);

// Why a device that is named or found does not open.
enum class OpenFailure { kNoNode, kNoPermission, kHeld, kOther };
struct OpenProblem {
  OpenFailure failure;
  std::string node;               // empty: no reader was found
  std::string holders;            // for kHeld
  std::vector<std::string> next;  // what to do, a step in a line
};
OpenProblem ExplainOpening(const ReadRequest& request);

}  // namespace qlid

#endif
