#include "tools/qlid/report.h"

#include <algorithm>
#include <cstdio>
#include <memory>

#include "quillonid/results.h"
#include "tools/qlid/files.h"
#include "tools/qlid/picture.h"
#include "tools/qlid/results.h"
#include "tools/qlid/sixel.h"
#include "tools/qlid/terminal.h"

namespace qlid {
namespace {

constexpr char kDecoder[] = "libwlt.so";  // at the root, where the library looks for it

struct DeleteJson {
  void operator()(cJSON* item) const { cJSON_Delete(item); }
};
using Json = std::unique_ptr<cJSON, DeleteJson>;

void AddText(cJSON* object, const char* key, const std::string& text) {
  cJSON_AddStringToObject(object, key, text.c_str());
}

Json Envelope(const Outcome& outcome, bool photo) {
  Json document(cJSON_CreateObject());
  AddText(document.get(), "schema", "qlid.read/1");
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
    AddText(cJSON_AddObjectToObject(document.get(), "reader"), "device", outcome.device);
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

bool EndsIn(const std::string& text, const std::string& end) {
  return text.size() >= end.size() && text.compare(text.size() - end.size(), end.size(), end) == 0;
}

Report FileReport(const std::string& path, const std::string& problem) {
  return {
      QL_SAVE_IMAGE_ERROR,
      kExitNoPhoto,
      Format(Tr("the card was read, %s was not written", "卡片已读出，%s 未写入"), path.c_str()),
      {{Tr("Cause", "原因"), problem},
                                                                                                     {Tr("Next", "建议"), Tr("name another file", "换一个文件名")}}
  };
}

// Decodes the photo for the file `path`, unless that is empty, and for `picture`, unless it is
// null.
std::optional<Report> TakePhoto(const Card& card, const std::string& path,
                                std::optional<Picture>* picture) {
  std::vector<std::uint8_t> bmp;
  const int result = DecodePhoto(card.native, card.fingerprints_asked, kDecoder, &bmp);
  if (result != QL_SUCCESS) {
    const ResultText& text = ResultOf(result);
    return Report{
        result,
        kExitNoPhoto,
        Tr("the text was read, the photo was not decoded", "文字已读出，照片未解码"),
        {{Tr("Causes", "可能原因"), Tr(text.causes_english, text.causes_chinese)},
                                                                                               {Tr("Next", "建议"), Tr(text.next_english, text.next_chinese)}}
    };
  }
  Picture pixels;
  const bool drawn = ReadBmp(bmp, &pixels);
  if (drawn && (EndsIn(path, ".png") || EndsIn(path, ".PNG"))) bmp = EncodePng(pixels);
  if (drawn && picture) *picture = std::move(pixels);
  if (path.empty()) return std::nullopt;
  std::string problem;
  if (!WriteFile(path, bmp, &problem)) return FileReport(path, problem);
  return std::nullopt;
}

}  // namespace

Report UsageReport(const std::string& what, const std::string& next) {
  return {QL_INVALID_ARGUMENT, kExitUsage, what, {{Tr("Next", "建议"), next}}};
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

cJSON* ReportObject(const Report& report) {
  cJSON* error = cJSON_CreateObject();
  cJSON_AddNumberToObject(error, "code", report.code);
  AddText(error, "name", ResultOf(report.code).name);
  AddText(error, "message", report.what);
  cJSON* details = cJSON_AddObjectToObject(error, "details");
  for (const Row& row : report.rows) AddText(details, row.label.c_str(), row.text);
  return error;
}

bool KindWanted(const std::string& wanted, CardKind kind) {
  if (wanted == "any") return true;
  return wanted == KindName(kind) || (wanted == "permit" && kind == CardKind::kPermit);
}

std::string OutcomeJson(const Outcome& outcome, const OutputOptions& options, bool photo) {
  Card shown;
  Outcome redacted = outcome;
  if (outcome.card && options.redact) {
    shown = *outcome.card;
    Redact(&shown);
    redacted.card = &shown;
  }
  const Json document = Envelope(redacted, photo && !options.redact);
  char* text = cJSON_PrintUnformatted(document.get());
  std::string line = text ? text : "{}";
  cJSON_free(text);
  return line + "\n";
}

void PrintJsonLine(const Outcome& outcome, const OutputOptions& options) {
  std::printf("%s", OutcomeJson(outcome, options, false).c_str());
  std::fflush(stdout);
}

void PrintOutcome(const Outcome& outcome, const OutputOptions& options) {
  Card shown;
  Outcome redacted = outcome;
  if (outcome.card && options.redact) {
    shown = *outcome.card;
    Redact(&shown);
    redacted.card = &shown;
  }
  if (options.json) {
    const Json document = Envelope(redacted, false);
    char* text = cJSON_Print(document.get());
    std::printf("%s\n", text ? text : "{}");
    cJSON_free(text);
  } else if (redacted.card) {
    if (outcome.picture) ShowPicture(*outcome.picture);
    std::vector<Row> rows = CardRows(*redacted.card);
    if (!options.photo.empty() && !outcome.report)
      rows.push_back({Tr("Photo", "照片"), options.photo});
    PrintRows(rows);
  }
  std::fflush(stdout);
  if (outcome.report && !options.json) PrintReport(*outcome.report);
}

std::optional<Report> WriteFiles(const Card& card, const OutputOptions& options,
                                 std::optional<Picture>* picture) {
  std::string problem;
  if (!options.native.empty() && !WriteFile(options.native, card.native, &problem)) {
    return FileReport(options.native, problem);
  }
  const bool shown = options.picture && PictureCanBeShown();
  if (options.photo.empty() && !shown) return std::nullopt;
  return TakePhoto(card, options.photo, shown ? picture : nullptr);
}

}  // namespace qlid
