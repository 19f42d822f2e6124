// qlid demo: a specimen card read through the library from a simulated reader over a real tty.
#include <unistd.h>

#include <cstdio>
#include <system_error>

#include "quillonid/results.h"
#include "tools/qlid/commands.h"
#include "tools/qlid/files.h"
#include "tools/qlid/picture.h"
#include "tools/qlid/read_failure.h"
#include "tools/qlid/report.h"
#include "tools/qlid/results.h"
#include "tools/qlid/signals.h"
#include "tools/qlid/simulator_text.h"
#include "tools/qlid/sixel.h"
#include "tools/qlid/specimen_reader.h"
#include "tools/qlid/terminal.h"

namespace qlid {
namespace {

constexpr int kFaultSeconds = 5;  // limit of a read that is to fail

// Decodes the specimen's photo, shows it where that is wanted and the terminal has colour, and
// writes the file. `row` says how it went. A file that nobody asked for may fail to be written.
std::optional<Report> ShowPhoto(const Card& card, const std::string& named, bool shown, Row* row) {
  row->label = Tr("Photo", "照片");
  const std::string decoder = SpecimenDecoder();
  if (decoder.empty()) {
    row->text = Tr("1024 bytes, not decoded: the specimen decoder is missing",
                   "1024 字节，未解码：缺少样本解码器");
    return std::nullopt;
  }
  std::vector<std::uint8_t> bmp;
  Picture picture;
  const int decoded = DecodePhoto(card.native, card.fingerprints_asked, decoder, &bmp);
  if (decoded != QL_SUCCESS || !ReadBmp(bmp, &picture)) {
    row->text = Tr("1024 bytes, not decoded", "1024 字节，未解码");
    Reading undecoded;
    undecoded.result = decoded != QL_SUCCESS ? decoded : QL_PHOTO_DECODE_ERROR;
    return ReadReport({}, undecoded);
  }
  if (shown && ColorWanted(STDOUT_FILENO)) ShowPicture(picture);
  const std::string path = named.empty() ? kDemoPhoto : named;
  if (IsPngName(path)) bmp = EncodePng(picture);
  std::string problem;
  if (WriteFile(path, bmp, &problem)) {
    row->text = Format("%s, %d x %d", path.c_str(), picture.width, picture.height);
    return std::nullopt;
  }
  row->text = Format(Tr("%d x %d, %s was not written: %s", "%d x %d，%s 未写入：%s"), picture.width,
                     picture.height, path.c_str(), problem.c_str());
  if (named.empty()) return std::nullopt;
  return FileReport(path, problem);
}

void PrintNextSteps(long elapsed_ms) {
  std::fprintf(stderr, Tr("Read in %.1f s. Next:\n", "用时 %.1f 秒。接下来：\n"),
               static_cast<double>(elapsed_ms) / 1000.0);
  std::fprintf(stderr, "  qlid read                    %s\n",
               Tr("read a real card", "读取真实卡片"));
  std::fprintf(stderr, "  qlid simulate --card permit  %s\n",
               Tr("keep a simulated reader for your own program", "为您的程序提供模拟读卡器"));
}

// Prints the failure, as a document where one is wanted.
int Fail(const Report& report, const DemoOptions& options) {
  Outcome outcome;
  outcome.report = &report;
  OutputOptions output;
  output.json = options.json;
  PrintOutcome(outcome, output);
  return report.exit;
}

// The card as one document. A photo file is written only where one is named.
int PrintDocument(const ReadRequest& request, const Reading& reading, const DemoOptions& options) {
  Row row;
  std::optional<Report> report;
  if (!options.photo.empty()) report = ShowPhoto(reading.card, options.photo, false, &row);
  Outcome outcome;
  outcome.card = &reading.card;
  outcome.report = report ? &*report : nullptr;
  outcome.device = request.device;
  outcome.elapsed_ms = reading.elapsed_ms;
  OutputOptions output;
  output.json = true;
  PrintOutcome(outcome, output);
  return report ? report->exit : kExitDone;
}

int PrintCard(const Reading& reading, const DemoOptions& options) {
  Row photo;
  const std::optional<Report> report = ShowPhoto(reading.card, options.photo, true, &photo);
  std::vector<Row> rows = CardRows(reading.card);
  rows.push_back(photo);
  PrintRows(rows);
  FlushOutput();
  if (report) {
    PrintReport(*report);
    return report->exit;
  }
  PrintNextSteps(reading.elapsed_ms);
  return kExitDone;
}

void Introduce(const simulator::TtyReader& reader) {
  std::fprintf(stderr,
               Tr("Simulated reader on %s with a specimen card. Nothing here is a real person.\n",
                  "模拟读卡器位于 %s，放有样本卡。内容均非真实人物。\n"),
               reader.path().c_str());
  std::fprintf(stderr,
               Tr("Reading it as an application would: APP_ID_ReadCollectIDCard(\"%s\", ...)\n",
                  "像应用程序一样读取：APP_ID_ReadCollectIDCard(\"%s\", ...)\n"),
               reader.path().c_str());
}

int Demonstrate(const DemoOptions& options, const simulator::Card& specimen,
                const std::optional<simulator::Fault>& fault) {
  simulator::TtyReader reader;
  reader.PutCard(specimen);
  if (fault) reader.SetFault(*fault);
  if (!options.json) Introduce(reader);
  ReadRequest request;
  request.device = reader.path();
  if (fault) request.timeout = kFaultSeconds;
  Reading reading = ReadCard(request);
  ReleaseSignals();
  if (reading.result == QL_SUCCESS && !KindWanted(options.card, reading.card.kind))
    reading.result = QL_CARD_TYPE_ERROR;
  if (reading.result != QL_SUCCESS) return Fail(ReadReport(request, reading), options);
  return options.json ? PrintDocument(request, reading, options) : PrintCard(reading, options);
}

int PrintFaults() {
  std::printf("%s", FaultHelp().c_str());
  return kExitDone;
}

}  // namespace

int DemoCommand(const DemoOptions& options) {
  if (options.fault == "help") return PrintFaults();
  HoldSignals();
  simulator::Card specimen;
  std::string problem;
  if (!FindCard(options.card, false, &specimen, &problem)) {
    return Fail(UsageReport(problem, "qlid simulate --person help"), options);
  }
  std::optional<simulator::Fault> fault;
  if (!options.fault.empty()) {
    fault = FindFault(options.fault, &problem);
    if (!fault) {
      return Fail(UsageReport(problem, "qlid demo --fault help"), options);
    }
  }
  try {
    return Demonstrate(options, specimen, fault);
  } catch (const std::system_error& error) {
    return Fail(NoTerminalReport(error.code().value()), options);
  }
}

}  // namespace qlid
