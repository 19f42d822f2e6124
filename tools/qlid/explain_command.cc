// qlid explain: what a published code means and what to do.
#include <cstdio>
#include <cstdlib>

#include "tools/qlid/commands.h"
#include "tools/qlid/report.h"
#include "tools/qlid/results.h"
#include "tools/qlid/terminal.h"

namespace qlid {

int ExplainCommand(const std::string& code) {
  char* end = nullptr;
  const long number = std::strtol(code.c_str(), &end, 10);
  for (const ResultText& row : Results()) {
    if (code.empty() || *end || row.code != number) continue;
    std::printf("%d  %s  %s\n", row.code, LibraryMessage(row.code).c_str(),
                Tr(row.english, row.chinese));
    std::vector<Row> rows;
    if (*row.causes_english)
      rows.push_back({Tr("Causes", "可能原因"), Tr(row.causes_english, row.causes_chinese)});
    if (*row.next_english)
      rows.push_back({Tr("Next", "建议"), Tr(row.next_english, row.next_chinese)});
    if (row.fault)
      rows.push_back({Tr("Try it", "试一试"), std::string("qlid simulate --fault ") + row.fault});
    rows.push_back({Tr("Exit", "退出码"), std::to_string(row.exit)});
    PrintRows(rows);
    return kExitDone;
  }
  std::string known;
  for (const ResultText& row : Results()) known += std::to_string(row.code) + " ";
  Report report = UsageReport(
      Format(Tr("\"%s\" is no published code", "\"%s\" 不是公布的结果码"), code.c_str()), "");
  report.rows = {
      {Tr("Codes", "结果码"), known}
  };
  PrintReport(report);
  return kExitUsage;
}

}  // namespace qlid
