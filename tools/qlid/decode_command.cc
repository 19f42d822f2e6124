// qlid decode: a saved card answer as a record.
#include "quillonid/carddata.h"
#include "quillonid/results.h"
#include "tools/qlid/commands.h"
#include "tools/qlid/files.h"
#include "tools/qlid/report.h"
#include "tools/qlid/results.h"
#include "tools/qlid/terminal.h"

namespace qlid {

int DecodeCommand(const DecodeOptions& options) {
  std::vector<std::uint8_t> bytes;
  std::string problem;
  Card card;
  Outcome outcome;
  std::optional<Report> report;
  if (!ReadFile(options.file, QL_NATIVE_DATA_SIZE, &bytes, &problem)) {
    report = Report{QL_INVALID_ARGUMENT,
                    kExitUsage,
                    Format(Tr("%s cannot be read", "无法读取 %s"), options.file.c_str()),
                    {{Tr("Cause", "原因"), problem}}};
  } else if (!DecodeCard(bytes, &card, &problem)) {
    report = Report{
        QL_RECEIVE_ERROR,
        kExitProtocol,
        Format(Tr("%s is not a card answer", "%s 不是卡片应答"), options.file.c_str()),
        {{Tr("Cause", "原因"), problem},
                                                                                        {Tr("Next", "建议"),
          Tr("save one: qlid read --native FILE", "保存一份：qlid read --native 文件")}}
    };
  } else {
    outcome.card = &card;
    report = WriteFiles(card, options.output);
  }
  if (report) outcome.report = &*report;
  PrintOutcome(outcome, options.output);
  return report ? report->exit : kExitDone;
}

}  // namespace qlid
