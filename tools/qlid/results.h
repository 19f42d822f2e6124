// Published results as people meet them: meaning, exit status, causes, what to try. One table
// serves the error messages and `qlid explain`.
#ifndef QUILLONID_TOOLS_QLID_RESULTS_H
#define QUILLONID_TOOLS_QLID_RESULTS_H

#include <span>
#include <string>

namespace qlid {

enum ExitStatus : int {
  kExitDone = 0,
  kExitUnexpected = 1,
  kExitUsage = 2,
  kExitNoReader = 3,
  kExitNoCard = 4,
  kExitProtocol = 5,
  kExitOtherCard = 6,
  kExitNoPhoto = 7,
  kExitOther = 8,
  kExitCancelled = 130,
};

struct ResultText {
  int code;          // published
  int exit;          // status of the tool
  const char* name;  // in JSON
  const char* english;
  const char* chinese;
  const char* means_english;
  const char* means_chinese;
  const char* causes_english;
  const char* causes_chinese;
  const char* next_english;
  const char* next_chinese;
  const char* try_it;  // a command that ends in it
};

std::span<const ResultText> Results();

// The row of a published code; an unknown code has the row of -100.
const ResultText& ResultOf(int code);

// The library's own message for a code, in UTF-8.
std::string LibraryMessage(int code);

}  // namespace qlid

#endif
