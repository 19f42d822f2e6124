// What went wrong: what happened, where, and what to do next; for people on standard error, for
// programs as JSON.
#ifndef QUILLONID_TOOLS_QLID_REPORT_H
#define QUILLONID_TOOLS_QLID_REPORT_H

#include <cjson/cJSON.h>

#include <optional>
#include <string>
#include <vector>

#include "tools/qlid/card_view.h"
#include "tools/qlid/commands.h"
#include "tools/qlid/holders.h"
#include "tools/qlid/picture.h"
#include "tools/qlid/trace.h"

namespace qlid {

struct Report {
  int code = 0;  // published
  int exit = 0;
  std::string what;
  std::vector<Row> rows;
  bool tell_code = true;  // behind `what`
  // For programs, whatever the language: why, in one of the schema's words; empty: the code's name.
  std::string reason = {};
  std::string node = {};             // device node that it is about; empty: none
  std::vector<Holder> holders = {};  // programs that have it open
};

// The programs that hold a reader, as a row and for programs.
void AddHolders(const std::vector<Holder>& holders, Report* report);

// What to do next, a step in a row.
void AddNext(const std::vector<std::string>& steps, Report* report);

// The reason that a report gives to programs.
std::string ReasonOf(const Report& report);

// Data that did not get onto standard output.
inline constexpr char kReasonOutput[] = "output";

// Hands on what is buffered for standard output; false when some of it was lost.
bool FlushOutput();

// Flushes standard output, and says on standard error, once, when something printed there is lost.
std::optional<Report> TellUnwritten();

// A wrong use of the command line.
Report UsageReport(const std::string& what, const std::string& next);

// A card was read, and a picture file was not written.
Report FileReport(const std::string& path, const std::string& problem);

// No pseudo-terminal for the simulated reader, for the reason `error`, an errno value.
Report NoTerminalReport(int error);

void PrintReport(const Report& report);

// The same as a JSON document on standard output, for a command that did not begin.
void PrintRefusal(const Report& report, const std::string& command);

// The same as a JSON object.
cJSON* ReportObject(const Report& report);

struct Outcome {
  const Card* card = nullptr;      // null: nothing was read
  const Report* report = nullptr;  // null: all went well
  std::string device;              // empty: no reader was involved
  std::string usb = {};            // id of a USB reader; empty: none was found
  long elapsed_ms = -1;
  const Timing* timing = nullptr;  // where the time went
  std::optional<Picture> picture;  // to show before the text
};

// The card and what went wrong, to standard output and standard error, as `options` ask.
void PrintOutcome(const Outcome& outcome, const OutputOptions& options);

// Refuses what the library would accept and then misunderstand; none when the request is sound.
std::optional<Report> CheckRequest(const ReadRequest& request);

// Whether a card is of the kind that --kind asks for.
bool KindWanted(const std::string& wanted, CardKind kind);

// The outcome as one line of JSON; with `photo` the card carries its photo block, unless it is
// redacted.
std::string OutcomeJson(const Outcome& outcome, const OutputOptions& options, bool photo);

// That line on standard output.
void PrintJsonLine(const Outcome& outcome, const OutputOptions& options);

// Refuses to put two things on standard output. "-" as a file is one; `more` says that there are
// others.
std::optional<Report> CheckOutput(const OutputOptions& options, const std::string& record = "",
                                  bool more = false);

// Writes the photo and native data files that `options` ask for, and decodes the photo into
// `picture` when it is to be shown. An empty result is success.
std::optional<Report> WriteFiles(const Card& card, const OutputOptions& options,
                                 std::optional<Picture>* picture);

}  // namespace qlid

#endif
