// qlid read: one card through the library, errors with their place and the next step.
#include "quillonid/results.h"
#include "tools/qlid/commands.h"
#include "tools/qlid/delivery.h"
#include "tools/qlid/node_watch.h"
#include "tools/qlid/read_failure.h"
#include "tools/qlid/report.h"
#include "tools/qlid/results.h"
#include "tools/qlid/signals.h"
#include "tools/qlid/tapped_reading.h"
#include "tools/qlid/terminal.h"

namespace qlid {
namespace {

// Hands over the card, or says why there is none. Returns the exit status.
int Tell(const Reading& reading, Outcome outcome, const ReadOptions& options) {
  // From here on nothing is left to be put in order but a program that was started.
  if (reading.result != QL_SUCCESS || options.exec.empty()) ReleaseSignals();
  std::optional<Report> report;
  if (reading.result != QL_SUCCESS) {
    report = ReadReport(options.request, reading);
  } else if (!KindWanted(options.kind, reading.card.kind)) {
    report = OtherKindReport(options.kind, reading.card.kind);
  } else {
    outcome.card = &reading.card;
    report = Deliver(outcome, options);
    return report ? report->exit : kExitDone;
  }
  if (outcome.report && !options.output.json) PrintReport(*outcome.report);
  outcome.report = &*report;
  return PrintFailure(outcome, options);
}

}  // namespace

int ReadCommand(const ReadOptions& options) {
  HoldSignals();
  Outcome outcome;
  outcome.device = options.request.device;
  auto wrong = CheckRequest(options.request);
  if (!wrong) wrong = CheckTap(options);
  if (!wrong) wrong = CheckReadOutput(options);
  if (!wrong) wrong = CheckRecording(options);
  if (wrong) {
    outcome.report = &*wrong;
    return PrintFailure(outcome, options);
  }
  TappedReading tapped;
  if (TapWanted(options)) {
    tapped = ReadTapped(options);
  } else {
    tapped.reading = ReadCard(options.request);
  }
  const Reading& reading = tapped.reading;
  outcome.elapsed_ms = reading.elapsed_ms;
  outcome.usb = UsbIdOf(options.request);
  if (options.timing && tapped.timing) outcome.timing = &*tapped.timing;
  std::optional<Report> unrecorded;
  if (!options.record.empty()) unrecorded = WriteRecording(tapped, options);
  if (unrecorded) outcome.report = &*unrecorded;
  const int status = Tell(reading, outcome, options);
  if (outcome.timing && !options.output.json) PrintTiming(*outcome.timing);
  return status;
}

}  // namespace qlid
