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

// Decodes the specimen's photo, shows it where the terminal has colour, and writes the file. `row`
// says how it went; a result that is not 0 is a failure to report.
int ShowPhoto(const Card& card, const std::string& path, Row* row) {
  row->label = Tr("Photo", "照片");
  const std::string decoder = SpecimenDecoder();
  if (decoder.empty()) {
    row->text = Tr("1024 bytes, not decoded: the specimen decoder is missing",
                   "1024 字节，未解码：缺少样本解码器");
    return QL_SUCCESS;
  }
  std::vector<std::uint8_t> bmp;
  Picture picture;
  const int decoded = DecodePhoto(card.native, card.fingerprints_asked, decoder, &bmp);
  if (decoded != QL_SUCCESS || !ReadBmp(bmp, &picture)) {
    row->text = Tr("1024 bytes, not decoded", "1024 字节，未解码");
    return decoded != QL_SUCCESS ? decoded : QL_PHOTO_DECODE_ERROR;
  }
  if (ColorWanted(STDOUT_FILENO)) ShowPicture(picture);
  std::string problem;
  if (!WriteFile(path, bmp, &problem)) {
    row->text =
        Format(Tr("%s was not written: %s", "%s 未写入：%s"), path.c_str(), problem.c_str());
    return QL_SAVE_IMAGE_ERROR;
  }
  row->text = Format("%s, %d x %d", path.c_str(), picture.width, picture.height);
  return QL_SUCCESS;
}

int Fail(const ReadRequest& request, const Reading& reading) {
  const Report report = ReadReport(request, reading);
  PrintReport(report);
  return report.exit;
}

void PrintNextSteps(long elapsed_ms) {
  std::fprintf(stderr, Tr("Read in %.1f s. Next:\n", "用时 %.1f 秒。接下来：\n"),
               static_cast<double>(elapsed_ms) / 1000.0);
  std::fprintf(stderr, "  qlid read                    %s\n",
               Tr("read a real card", "读取真实卡片"));
  std::fprintf(stderr, "  qlid simulate --card permit  %s\n",
               Tr("keep a simulated reader for your own program", "为您的程序提供模拟读卡器"));
}

int Demonstrate(const DemoOptions& options, const simulator::Card& specimen,
                const std::optional<simulator::Fault>& fault) {
  simulator::TtyReader reader;
  reader.PutCard(specimen);
  if (fault) reader.SetFault(*fault);
  std::fprintf(stderr,
               Tr("Simulated reader on %s with a specimen card. Nothing here is a real person.\n",
                  "模拟读卡器位于 %s，放有样本卡。内容均非真实人物。\n"),
               reader.path().c_str());
  std::fprintf(stderr,
               Tr("Reading it as an application would: APP_ID_ReadCollectIDCard(\"%s\", ...)\n",
                  "像应用程序一样读取：APP_ID_ReadCollectIDCard(\"%s\", ...)\n"),
               reader.path().c_str());
  ReadRequest request;
  request.device = reader.path();
  if (fault) request.timeout = kFaultSeconds;
  Reading reading = ReadCard(request);
  ReleaseSignals();
  if (reading.result == QL_SUCCESS && !KindWanted(options.card, reading.card.kind))
    reading.result = QL_CARD_TYPE_ERROR;
  if (reading.result != QL_SUCCESS) return Fail(request, reading);
  Row photo;
  const int shown = ShowPhoto(reading.card, options.photo, &photo);
  std::vector<Row> rows = CardRows(reading.card);
  rows.push_back(photo);
  PrintRows(rows);
  FlushOutput();
  reading.result = shown;
  if (shown != QL_SUCCESS) return Fail(request, reading);
  PrintNextSteps(reading.elapsed_ms);
  return kExitDone;
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
    PrintReport(UsageReport(problem, "qlid simulate --person help"));
    return kExitUsage;
  }
  std::optional<simulator::Fault> fault;
  if (!options.fault.empty()) {
    fault = FindFault(options.fault, &problem);
    if (!fault) {
      PrintReport(UsageReport(problem, "qlid demo --fault help"));
      return kExitUsage;
    }
  }
  try {
    return Demonstrate(options, specimen, fault);
  } catch (const std::system_error& error) {
    PrintReport(NoTerminalReport(error.code().value()));
    return kExitUnexpected;
  }
}

}  // namespace qlid
