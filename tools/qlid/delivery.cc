#include "tools/qlid/delivery.h"

#include <cstdio>

#include "tools/qlid/card_program.h"
#include "tools/qlid/files.h"

namespace qlid {

std::optional<Report> Deliver(Outcome outcome, const ReadOptions& options) {
  std::optional<Report> report = WriteFiles(*outcome.card, options.output, &outcome.picture);
  if (report) outcome.report = &*report;
  if (options.exec.empty()) {
    if (options.watch && options.output.json) {
      PrintJsonLine(outcome, options.output);
    } else {
      PrintOutcome(outcome, options.output);
      if (options.watch) std::printf("\n");
    }
    std::fflush(stdout);
    return report;
  }
  if (report) PrintReport(*report);
  auto failure =
      RunForCard(options.exec, OutcomeJson(outcome, options.output, true), options.exec_seconds);
  if (!failure) return report;
  PrintReport(*failure);
  return failure;
}

}  // namespace qlid
