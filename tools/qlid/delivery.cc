#include "tools/qlid/delivery.h"

#include <cstdio>

#include "tools/qlid/card_program.h"
#include "tools/qlid/files.h"

namespace qlid {
namespace {

// One document in a line for a watch, else for people to read.
void Print(const Outcome& outcome, const ReadOptions& options) {
  if (options.watch && options.output.json) {
    PrintJsonLine(outcome, options.output);
    return;
  }
  PrintOutcome(outcome, options.output);
  if (options.watch) std::printf("\n");
}

// Runs the program. Its output is that of the tool, unless the tool has a document to print there.
std::optional<Report> HandOver(const Outcome& outcome, const ReadOptions& options) {
  const std::string document = OutcomeJson(outcome, options.output, true);
  const ProgramOutput output =
      options.output.json ? ProgramOutput::kToStandardError : ProgramOutput::kToStandardOutput;
  return RunForCard(options.exec, document, options.exec_seconds, output);
}

}  // namespace

std::optional<Report> Deliver(Outcome outcome, const ReadOptions& options) {
  std::optional<Report> report = WriteFiles(*outcome.card, options.output, &outcome.picture);
  if (!report && outcome.report) report = *outcome.report;
  if (report) outcome.report = &*report;
  if (!options.exec.empty()) {
    std::optional<Report> failure = HandOver(outcome, options);
    if (!options.output.json) {
      if (report) PrintReport(*report);
      if (failure) PrintReport(*failure);
      return failure ? failure : report;
    }
    if (failure) report = std::move(failure);
    if (report) outcome.report = &*report;
  }
  Print(outcome, options);
  std::optional<Report> unwritten = TellUnwritten();
  return unwritten ? unwritten : report;
}

std::optional<Report> CheckReadOutput(const ReadOptions& options) {
  return CheckOutput(options.output, options.record, options.watch || !options.exec.empty());
}

int PrintFailure(const Outcome& outcome, const ReadOptions& options) {
  Print(outcome, options);
  const std::optional<Report> unwritten = TellUnwritten();
  return unwritten ? unwritten->exit : outcome.report->exit;
}

}  // namespace qlid
