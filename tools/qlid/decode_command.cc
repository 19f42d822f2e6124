// qlid decode: a saved card answer as a record, or byte for byte.
#include <unistd.h>

#include <cstdio>

#include "quillonid/carddata.h"
#include "quillonid/results.h"
#include "tools/qlid/byte_meanings.h"
#include "tools/qlid/commands.h"
#include "tools/qlid/files.h"
#include "tools/qlid/json_document.h"
#include "tools/qlid/packet_view.h"
#include "tools/qlid/report.h"
#include "tools/qlid/results.h"
#include "tools/qlid/terminal.h"

namespace qlid {
namespace {

Report UnreadableReport(const std::string& file, const std::string& problem) {
  const Row cause = {Tr("Cause", "原因"), problem};
  const Row next = {Tr("Next", "建议"), Tr("name a file that was saved with qlid read --native",
                                           "请指定用 qlid read --native 保存的文件")};
  return {
      QL_INVALID_ARGUMENT,
      kExitUsage,
      Format(Tr("%s cannot be read", "无法读取 %s"), file.c_str()),
      {cause, next}
  };
}

Report NoBytesReport(const std::string& named) {
  return UsageReport(Format(Tr("\"%s\" is neither a file nor bytes in hexadecimal",
                               "\"%s\" 既不是文件，也不是十六进制字节"),
                            named.c_str()),
                     Tr("two digits for each byte: qlid decode --packet \"AA AA AA 96 69 ...\"",
                        "每个字节两位：qlid decode --packet \"AA AA AA 96 69 ...\""));
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

// An answer whose last byte does not fit the others; none for a sound one.
std::optional<Report> DamageReport(const Card& card, const std::string& file) {
  const std::vector<ByteMeaning> meanings = ByteMeanings(card);
  if (meanings.empty() || !meanings.back().impossible) return std::nullopt;
  const ByteMeaning& last = meanings.back();
  const Row where = {Tr("Where", "位置"), Format(Tr("byte %zu: %s", "第 %zu 字节：%s"), last.offset,
                                                 last.meaning.c_str())};
  const Row next = {Tr("Next", "建议"),
                    Tr("look at every byte: ", "逐字节查看：") + ("qlid decode --explain " + file)};
  Report report = {
      QL_CHECK_ERROR,
      kExitProtocol,
      Tr("the answer does not fit its check byte: it may be damaged",
         "应答与其校验字节不符：可能已损坏"),
      {where, next}
  };
  report.tell_code = false;  // No call of the library gave it.
  return report;
}

void Explain(Card card, const OutputOptions& output, const Report* report) {
  if (output.redact) Redact(&card);
  // An answer of a size that occurs is explained even when it cannot be decoded.
  std::vector<ByteMeaning> meanings;
  if (IsAnswerSize(card.native.size())) meanings = ByteMeanings(card);
  if (output.json) {
    const Json document = ByteMeaningsDocument(card, meanings, output.redact);
    cJSON_AddBoolToObject(document.get(), "ok", report == nullptr);
    if (report) cJSON_AddItemToObject(document.get(), "error", ReportObject(*report));
    PrintJson(document);
    return;
  }
  if (!meanings.empty()) PrintByteMeanings(meanings, output.redact);
  FlushOutput();
  if (report) PrintReport(*report);
}

bool NamesFile(const std::string& named) {
  return named == "-" || access(named.c_str(), F_OK) == 0;
}

// The bytes that are named: in hexadecimal on the command line, or by a file that holds them or
// their hexadecimal text.
bool PacketBytes(const std::string& named, std::vector<std::uint8_t>* bytes, std::string* problem) {
  constexpr std::size_t kMost = 1 << 18;
  const bool file = NamesFile(named);
  if (!file && ParseHex(named, bytes)) return true;
  if (!ReadFile(named, kMost, bytes, problem)) return false;
  std::vector<std::uint8_t> meant;
  if (ParseHex({bytes->begin(), bytes->end()}, &meant)) *bytes = meant;
  return true;
}

Report WrongFrameReport(const PacketView& view) {
  const ResultText& text = ResultOf(QL_CHECK_ERROR);
  const std::string frame = view.frame;
  const char* what = Tr(text.english, text.chinese);
  if (frame == "card-module")
    what = Tr("a card-module frame failed its check", "安全模块帧校验错误");
  if (frame == "unknown") what = Tr("these bytes are no frame", "这些字节不是帧");
  const Row where = {Tr("Where", "位置"), view.fault};
  const Row next = {Tr("Next", "建议"),
                    Tr("check cable and speed: --baud; more of the line: qlid read --trace",
                       "检查线缆和波特率：--baud；查看线路的更多内容：qlid read --trace")};
  return {
      QL_CHECK_ERROR, text.exit, what, {where, next}
  };
}

void PrintPacketJson(const PacketView& view, const Report* report, bool redact) {
  const Json document = NewDocument("qlid.packet/1");
  cJSON_AddBoolToObject(document.get(), "ok", report == nullptr);
  cJSON_AddStringToObject(document.get(), "frame", view.frame);
  AddText(document.get(), "meaning", view.meaning);
  cJSON_AddItemToObject(document.get(), "bytes", ByteMeaningsArray(view.rows, redact));
  if (report) cJSON_AddItemToObject(document.get(), "error", ReportObject(*report));
  PrintJson(document);
}

int DecodePacket(const DecodeOptions& options) {
  PacketView view;
  std::optional<Report> report;
  std::vector<std::uint8_t> bytes;
  std::string problem;
  if (PacketBytes(options.file, &bytes, &problem)) {
    view = ViewPacket(bytes);
    if (!view.fault.empty()) report = WrongFrameReport(view);
  } else if (NamesFile(options.file)) {
    report = UnreadableReport(options.file, problem);
  } else {
    report = NoBytesReport(options.file);
  }
  for (ByteMeaning& row : view.rows) {
    if (options.output.redact && row.personal) row.value.clear();
  }

  if (options.output.json) {
    PrintPacketJson(view, report ? &*report : nullptr, options.output.redact);
  } else {
    if (!view.rows.empty()) PrintByteMeanings(view.rows, options.output.redact);
    if (!view.meaning.empty()) std::printf("%s\n", view.meaning.c_str());
    FlushOutput();
    if (report) PrintReport(*report);
  }
  return report ? report->exit : kExitDone;
}

}  // namespace

int DecodeCommand(const DecodeOptions& options) {
  if (options.packet) return DecodePacket(options);
  std::vector<std::uint8_t> bytes;
  std::string problem;
  Card card;
  Outcome outcome;
  std::optional<Report> report;
  if (auto wrong = CheckOutput(options.output, "", options.explain)) {
    report = std::move(wrong);
  } else if (!ReadFile(options.file, QL_NATIVE_DATA_SIZE, &bytes, &problem)) {
    report = UnreadableReport(options.file, problem);
  } else if (!DecodeCard(bytes, &card, &problem)) {
    report = NoAnswerReport(options.file, problem);
  } else {
    outcome.card = &card;
    report = WriteFiles(card, options.output, &outcome.picture);
    if (!report) report = DamageReport(card, options.file);
  }
  if (report) outcome.report = &*report;

  if (options.explain) {
    Explain(card, options.output, outcome.report);
  } else {
    PrintOutcome(outcome, options.output);
  }
  return report ? report->exit : kExitDone;
}

}  // namespace qlid
