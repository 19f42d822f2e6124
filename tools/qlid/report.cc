#include "tools/qlid/report.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>

#include "quillonid/results.h"
#include "tools/qlid/decoder_file.h"
#include "tools/qlid/files.h"
#include "tools/qlid/json_document.h"
#include "tools/qlid/picture.h"
#include "tools/qlid/results.h"
#include "tools/qlid/sixel.h"
#include "tools/qlid/terminal.h"

namespace qlid {
namespace {

constexpr char kStandardOutput[] = "-";   // as a file
constexpr char kDecoder[] = "libwlt.so";  // at the root, where the library looks for it

int s_output_error = 0;  // errno of the first flush of standard output that failed

Json Envelope(const Outcome& outcome, bool photo) {
  Json document = NewDocument("qlid.read/1");
  cJSON_AddBoolToObject(document.get(), "ok", outcome.report == nullptr);
  if (outcome.card) {
    AddText(document.get(), "kind", KindName(outcome.card->kind));
    cJSON_AddItemToObject(document.get(), "card", CardObject(*outcome.card, photo));
    cJSON* remarks = cJSON_AddArrayToObject(document.get(), "remarks");
    for (const std::string& remark : Remarks(*outcome.card)) {
      cJSON_AddItemToArray(remarks, cJSON_CreateString(remark.c_str()));
    }
  }
  if (outcome.report) {
    cJSON_AddItemToObject(document.get(), "error", ReportObject(*outcome.report));
  }
  if (!outcome.device.empty()) {
    cJSON* reader = cJSON_AddObjectToObject(document.get(), "reader");
    AddText(reader, "device", outcome.device);
    if (!outcome.usb.empty()) AddText(reader, "usb", outcome.usb);
  }
  if (outcome.elapsed_ms >= 0) {
    cJSON_AddNumberToObject(document.get(), "elapsed_ms", static_cast<double>(outcome.elapsed_ms));
  }
  if (outcome.timing) {
    cJSON* timing = cJSON_AddObjectToObject(document.get(), "timing_ms");
    for (const Timing::Row& row : outcome.timing->rows)
      cJSON_AddNumberToObject(timing, row.name, static_cast<double>(row.time.count()) / 1000.0);
  }
  return document;
}

// The outcome as it may be seen: with --redact its card is `masked`.
Outcome Shown(const Outcome& outcome, const OutputOptions& options, Card* masked) {
  Outcome shown = outcome;
  if (!outcome.card || !options.redact) return shown;
  *masked = *outcome.card;
  Redact(masked);
  shown.card = masked;
  return shown;
}

// A row without a label joined to the one before, as another line of it.
std::vector<Row> JoinedRows(const std::vector<Row>& rows) {
  std::vector<Row> joined;
  for (const Row& row : rows) {
    if (row.label.empty() && !joined.empty()) {
      joined.back().text += "\n" + row.text;
    } else {
      joined.push_back(row);
    }
  }
  return joined;
}

Report NativeReport(const std::string& path, const std::string& problem) {
  Report report = FileReport(path, problem);
  report.code = QL_OTHER_ERROR;
  report.exit = kExitOther;
  report.tell_code = false;  // No call of the library gave it.
  report.reason = "native";
  return report;
}

// Why the photo was not decoded: what is seen of the decoder, else that it refused the photo.
Report PhotoReport(int result) {
  const ResultText& text = ResultOf(QL_PHOTO_DECODE_ERROR);
  Report report = {result,
                   kExitNoPhoto,
                   Tr("the text was read, the photo was not decoded", "文字已读出，照片未解码"),
                   {}};
  std::string cause = Tr("the photo on the card has an unusable length", "卡中照片的长度不可用");
  std::string next = Tr("try another card", "换一张卡片再试");
  report.reason = "photo";
  if (result == QL_PHOTO_DECODE_ERROR) {
    const std::optional<DecoderFault> fault = FaultOf(LookAtDecoder());
    report.reason = fault ? fault->reason : "decoder-refused";
    cause = fault ? fault->text
                  : Format(Tr("the decoder %s refused the photo, or lacks a library of its own",
                              "解码器 %s 拒绝该照片，或缺少它自身所需的库"),
                           kDecoderFile);
    next = Tr(text.next_english, text.next_chinese);
  }
  report.rows.push_back({Tr("Cause", "原因"), cause});
  AddNext({next}, &report);
  return report;
}

// Decodes the photo for the file `path`, unless that is empty, and for `picture`, unless it is
// null.
std::optional<Report> TakePhoto(const Card& card, const std::string& path,
                                std::optional<Picture>* picture) {
  std::vector<std::uint8_t> bmp;
  const int result = DecodePhoto(card.native, card.fingerprints_asked, kDecoder, &bmp);
  if (result != QL_SUCCESS) return PhotoReport(result);
  Picture pixels;
  const bool drawn = ReadBmp(bmp, &pixels);
  if (drawn && IsPngName(path)) bmp = EncodePng(pixels);
  if (drawn && picture) *picture = std::move(pixels);
  if (path.empty()) return std::nullopt;
  std::string problem;
  if (!WriteFile(path, bmp, &problem)) return FileReport(path, problem);
  return std::nullopt;
}

}  // namespace

bool FlushOutput() {
  if (std::fflush(stdout) != 0 && s_output_error == 0) s_output_error = errno;
  return std::ferror(stdout) == 0;
}

std::optional<Report> TellUnwritten() {
  static bool told = false;
  if (FlushOutput()) return std::nullopt;
  Report report = {QL_OTHER_ERROR,
                   kExitOther,
                   Tr("standard output could not be written", "无法写入标准输出"),
                   {}};
  if (s_output_error != 0)
    report.rows.push_back({Tr("Cause", "原因"), SystemProblem(s_output_error)});
  AddNext({Tr("see where standard output goes, and whether there is space",
              "检查标准输出的去向以及是否有剩余空间")},
          &report);
  report.tell_code = false;  // No call of the library gave it.
  report.reason = kReasonOutput;
  if (!told) PrintReport(report);
  told = true;
  return report;
}

Report FileReport(const std::string& path, const std::string& problem) {
  const Row cause = {Tr("Cause", "原因"), problem};
  const Row next = {Tr("Next", "建议"), Tr("name another file", "换一个文件名")};
  return {
      QL_SAVE_IMAGE_ERROR,
      kExitNoPhoto,
      Format(Tr("the card was read, %s was not written", "卡片已读出，%s 未写入"), path.c_str()),
      {cause, next}
  };
}

Report UsageReport(const std::string& what, const std::string& next) {
  return {QL_INVALID_ARGUMENT, kExitUsage, what, {{Tr("Next", "建议"), next}}};
}

Report NoTerminalReport(int error) {
  Report report = {QL_DEVICE_ERROR,
                   kExitUnexpected,
                   Tr("there is no pseudo-terminal to be had", "无法创建伪终端"),
                   {{Tr("Cause", "原因"), SystemProblem(error)}}};
  report.reason = "no-terminal";
  return report;
}

void PrintReport(const Report& report) {
  const std::string code =
      report.exit == kExitUsage || !report.tell_code ? "" : Format(" (%d)", report.code);
  std::fprintf(stderr, "%s %s%s\n", Paint(Ink::kRed, "qlid:", 2).c_str(), report.what.c_str(),
               code.c_str());
  int width = 6;
  for (const Row& row : report.rows) width = std::max(width, DisplayWidth(row.label));
  for (const Row& row : report.rows) {
    std::fprintf(stderr, "  %s  %s\n", PaddedTo(row.label, width).c_str(), row.text.c_str());
  }
}

void PrintRefusal(const Report& report, const std::string& command) {
  const bool card = command == "read" || command == "decode";
  const Json document = NewDocument(card ? "qlid.read/1" : "qlid.usage/1");
  cJSON_AddBoolToObject(document.get(), "ok", 0);
  cJSON_AddItemToObject(document.get(), "error", ReportObject(report));
  PrintJson(document);
}

void AddHolders(const std::vector<Holder>& holders, Report* report) {
  if (holders.empty()) return;
  report->rows.push_back({Tr("Held by", "占用者"), HolderText(holders)});
  report->holders = holders;
}

void AddNext(const std::vector<std::string>& steps, Report* report) {
  for (std::size_t i = 0; i < steps.size(); ++i)
    report->rows.push_back({i == 0 ? Tr("Next", "建议") : "", steps[i]});
}

std::string ReasonOf(const Report& report) {
  return report.reason.empty() ? ResultOf(report.code).name : report.reason;
}

cJSON* ReportObject(const Report& report) {
  cJSON* error = cJSON_CreateObject();
  cJSON_AddNumberToObject(error, "code", report.code);
  AddText(error, "name", ResultOf(report.code).name);
  AddText(error, "reason", ReasonOf(report));
  AddText(error, "message", report.what);
  if (!report.node.empty()) AddText(error, "node", report.node);
  if (!report.holders.empty()) {
    cJSON* holders = cJSON_AddArrayToObject(error, "holders");
    for (const Holder& holder : report.holders) {
      cJSON* item = cJSON_CreateObject();
      AddText(item, "program", holder.program);
      cJSON_AddNumberToObject(item, "pid", static_cast<double>(holder.pid));
      cJSON_AddItemToArray(holders, item);
    }
  }
  cJSON* next = cJSON_AddArrayToObject(error, "next");
  cJSON* details = cJSON_AddObjectToObject(error, "details");
  for (const Row& row : JoinedRows(report.rows)) AddText(details, row.label.c_str(), row.text);
  std::string label;
  for (const Row& row : report.rows) {
    if (!row.label.empty()) label = row.label;  // A row without one goes on with the row before.
    if (label == Tr("Next", "建议"))
      cJSON_AddItemToArray(next, cJSON_CreateString(row.text.c_str()));
  }
  return error;
}

bool KindWanted(const std::string& wanted, CardKind kind) {
  if (wanted == "any") return true;
  return wanted == KindName(kind) || (wanted == "permit" && kind == CardKind::kPermit);
}

std::string OutcomeJson(const Outcome& outcome, const OutputOptions& options, bool photo) {
  Card masked;
  return LineText(Envelope(Shown(outcome, options, &masked), photo && !options.redact));
}

void PrintJsonLine(const Outcome& outcome, const OutputOptions& options) {
  std::printf("%s", OutcomeJson(outcome, options, false).c_str());
  FlushOutput();
}

void PrintOutcome(const Outcome& outcome, const OutputOptions& options) {
  Card masked;
  const Outcome shown = Shown(outcome, options, &masked);
  if (options.json) {
    PrintJson(Envelope(shown, false));
  } else if (shown.card && options.photo != kStandardOutput && options.native != kStandardOutput) {
    if (outcome.picture) ShowPicture(*outcome.picture);
    std::vector<Row> rows = CardRows(*shown.card);
    if (!options.photo.empty() && !outcome.report)
      rows.push_back({Tr("Photo", "照片"), options.photo});
    PrintRows(rows);
  }
  FlushOutput();
  if (outcome.report && !options.json) PrintReport(*outcome.report);
}

std::optional<Report> CheckOutput(const OutputOptions& options, const std::string& record,
                                  bool more) {
  int things = options.json || options.picture || more ? 1 : 0;
  for (const std::string& file : {options.photo, options.native, record}) {
    if (file == kStandardOutput) ++things;
  }
  if (things < 2) return std::nullopt;
  return UsageReport(Tr("standard output takes one thing alone, and \"-\" is one",
                        "标准输出只能输出一种内容，\"-\" 即为一种"),
                     Tr("name files in place of \"-\"", "用文件名代替 \"-\""));
}

std::optional<Report> WriteFiles(const Card& card, const OutputOptions& options,
                                 std::optional<Picture>* picture) {
  std::optional<Report> report;
  std::string problem;
  if (!options.native.empty() && !WriteFile(options.native, card.native, &problem))
    report = NativeReport(options.native, problem);
  const bool shown = options.picture && PictureCanBeShown();
  if (options.photo.empty() && !shown) return report;
  std::optional<Report> no_photo = TakePhoto(card, options.photo, shown ? picture : nullptr);
  if (!report) return no_photo;
  if (no_photo) report->rows.push_back({Tr("Photo", "照片"), no_photo->what});
  return report;
}

}  // namespace qlid
