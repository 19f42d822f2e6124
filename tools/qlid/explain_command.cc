// qlid explain: what a published code means and what to do; the text of quillonid-errors(7).
#include <cstdio>
#include <cstdlib>

#include "tools/qlid/commands.h"
#include "tools/qlid/report.h"
#include "tools/qlid/results.h"
#include "tools/qlid/terminal.h"

namespace qlid {
namespace {

std::vector<Row> RowsOf(const ResultText& row) {
  std::vector<Row> rows = {
      {Tr("Means", "含义"), Tr(row.means_english, row.means_chinese)}
  };
  if (*row.causes_english)
    rows.push_back({Tr("Causes", "可能原因"), Tr(row.causes_english, row.causes_chinese)});
  if (*row.next_english)
    rows.push_back({Tr("Next", "建议"), Tr(row.next_english, row.next_chinese)});
  rows.push_back({Tr("Try it", "试一试"), row.try_it});
  rows.push_back({Tr("Exit", "退出码"), std::to_string(row.exit)});
  return rows;
}

int PrintAll() {
  constexpr int kCodeColumns = 5;
  constexpr int kMessageColumns = 18;
  for (const ResultText& row : Results()) {
    std::printf("%s%s  %s\n", PaddedTo(std::to_string(row.code), kCodeColumns).c_str(),
                PaddedTo(LibraryMessage(row.code), kMessageColumns).c_str(),
                Tr(row.english, row.chinese));
  }
  return kExitDone;
}

int PrintOne(const ResultText& row) {
  std::printf("%d  %s  %s\n", row.code, LibraryMessage(row.code).c_str(),
              Tr(row.english, row.chinese));
  PrintRows(RowsOf(row));
  return kExitDone;
}

// Marks of the manual page's text that stand for themselves.
std::string Escaped(const std::string& text) {
  std::string escaped;
  for (const char c : text) {
    if (c == '*' || c == '_' || c == '\\') escaped += '\\';
    escaped += c;
  }
  return escaped;
}

int PrintManual() {
  std::printf("quillonid-errors(7)\n\n# %s\n\n%s\n\n# %s\n\n%s\n\n", Tr("NAME", "名称"),
              Tr("quillonid-errors - result codes of libquillonid and qlid",
                 "quillonid-errors - libquillonid 与 qlid 的结果码"),
              Tr("DESCRIPTION", "说明"),
              Tr("The functions of *libquillonid*(3) return these codes; *qlid*(1) shows them in "
                 "brackets and\nturns them into its exit status. The message is the library's own. "
                 "The command\nbehind \"Try it\" ends in the code, without hardware.",
                 "*libquillonid*(3) 的函数返回这些代码；*qlid*(1) "
                 "在括号中显示并转换为退出状态。\n消息为库自带文本。"
                 "“试一试”后的命令无需硬件即可得到该代码。"));
  std::printf("# %s\n", Tr("CODES", "结果码"));
  for (const ResultText& row : Results()) {
    std::printf("\n*%d*  %s\n\n", row.code, LibraryMessage(row.code).c_str());
    std::printf("\t%s\n", Escaped(Tr(row.english, row.chinese)).c_str());
    for (const Row& part : RowsOf(row))
      std::printf("\n\t%s: %s\n", part.label.c_str(), Escaped(part.text).c_str());
  }
  std::printf("\n# %s\n\n*qlid*(1), *libquillonid*(3), *quillonid-protocol*(7)\n",
              Tr("SEE ALSO", "参见"));
  return kExitDone;
}

int RefuseCode(const std::string& code) {
  std::string known;
  for (const ResultText& row : Results()) known += std::to_string(row.code) + " ";
  Report report = UsageReport(
      Format(Tr("\"%s\" is no published code", "\"%s\" 不是公布的结果码"), code.c_str()),
      Tr("see them all: qlid explain", "查看全部：qlid explain"));
  report.rows.insert(report.rows.begin(), {Tr("Codes", "结果码"), known});
  PrintReport(report);
  return kExitUsage;
}

}  // namespace

int ExplainCommand(const ExplainOptions& options) {
  if (options.manual) return PrintManual();
  if (options.code.empty()) return PrintAll();
  char* end = nullptr;
  const long number = std::strtol(options.code.c_str(), &end, 10);
  for (const ResultText& row : Results()) {
    if (*end == '\0' && row.code == number) return PrintOne(row);
  }
  return RefuseCode(options.code);
}

}  // namespace qlid
