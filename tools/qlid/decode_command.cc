// qlid decode: a saved card answer as a record, or byte for byte.
#include <cstdio>

#include "quillonid/carddata.h"
#include "quillonid/results.h"
#include "tools/qlid/byte_meanings.h"
#include "tools/qlid/commands.h"
#include "tools/qlid/files.h"
#include "tools/qlid/report.h"
#include "tools/qlid/results.h"
#include "tools/qlid/terminal.h"

namespace qlid {
namespace {

Report UnreadableReport(const std::string& file, const std::string& problem) {
  return {QL_INVALID_ARGUMENT,
          kExitUsage,
          Format(Tr("%s cannot be read", "无法读取 %s"), file.c_str()),
          {{Tr("Cause", "原因"), problem}}};
}

Report NoAnswerReport(const std::string& file, const std::string& problem) {
  Report report = {QL_RECEIVE_ERROR,
                   kExitProtocol,
                   Format(Tr("%s is not a card answer: %s", "%s 不是卡片应答：%s"), file.c_str(),
                          problem.c_str()),
                   {{Tr("Next", "建议"), Tr("save one: qlid read --native FILE",
                                            "保存一份：qlid read --native 文件")}}};
  report.tell_code = false;  // No call of the library gave it.
  return report;
}

void Explain(Card card, const OutputOptions& output) {
  if (output.redact) Redact(&card);
  const std::vector<ByteMeaning> meanings = ByteMeanings(card);
  if (output.json) {
    PrintByteMeaningsJson(card, meanings, output.redact);
  } else {
    PrintByteMeanings(meanings, output.redact);
  }
}

}  // namespace

int DecodeCommand(const DecodeOptions& options) {
  std::vector<std::uint8_t> bytes;
  std::string problem;
  Card card;
  Outcome outcome;
  std::optional<Report> report;
  if (!ReadFile(options.file, QL_NATIVE_DATA_SIZE, &bytes, &problem)) {
    report = UnreadableReport(options.file, problem);
  } else if (!DecodeCard(bytes, &card, &problem)) {
    report = NoAnswerReport(options.file, problem);
  } else {
    outcome.card = &card;
    report = WriteFiles(card, options.output);
  }
  if (report) outcome.report = &*report;

  // An answer of a size that occurs is explained even when it cannot be decoded.
  if (options.explain && IsAnswerSize(card.native.size())) {
    Explain(card, options.output);
    std::fflush(stdout);
    if (report) PrintReport(*report);
  } else {
    PrintOutcome(outcome, options.output);
  }
  return report ? report->exit : kExitDone;
}

}  // namespace qlid
