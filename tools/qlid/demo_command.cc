// qlid demo: a specimen card read through the library from a simulated reader over a real tty.
#include <unistd.h>

#include <cstdio>
#include <system_error>

#include "quillonid/results.h"
#include "tools/qlid/commands.h"
#include "tools/qlid/files.h"
#include "tools/qlid/picture.h"
#include "tools/qlid/report.h"
#include "tools/qlid/results.h"
#include "tools/qlid/specimen_reader.h"
#include "tools/qlid/terminal.h"

namespace qlid {
namespace {

constexpr int kPictureColumns = 40;

// Decodes the specimen's photo, shows it where the terminal has colour, and writes the file. The
// last row says how it went.
Row ShowPhoto(const Card& card, const std::string& path) {
  const char* label = Tr("Photo", "照片");
  const std::string decoder = SpecimenDecoder();
  std::vector<std::uint8_t> bmp;
  Picture picture;
  if (decoder.empty() ||
      DecodePhoto(card.native, card.fingerprints_asked, decoder, &bmp) != QL_SUCCESS ||
      !ReadBmp(bmp, &picture)) {
    return {label, Tr("1024 bytes, not decoded: the specimen decoder is missing",
                      "1024 字节，未解码：缺少样本解码器")};
  }
  if (ColorWanted(STDOUT_FILENO)) std::printf("%s", HalfBlocks(picture, kPictureColumns).c_str());
  std::string problem;
  if (!WriteFile(path, bmp, &problem)) {
    return {label,
            Format(Tr("%s was not written: %s", "%s 未写入：%s"), path.c_str(), problem.c_str())};
  }
  return {label, Format("%s, %d x %d", path.c_str(), picture.width, picture.height)};
}

void PrintNextSteps(long elapsed_ms) {
  std::fprintf(stderr, Tr("Read in %.1f s. Next:\n", "用时 %.1f 秒。接下来：\n"),
               static_cast<double>(elapsed_ms) / 1000.0);
  std::fprintf(stderr, "  qlid read                    %s\n",
               Tr("read a real card", "读取真实卡片"));
  std::fprintf(stderr, "  qlid simulate --card permit  %s\n",
               Tr("keep a simulated reader for your own program", "为您的程序提供模拟读卡器"));
}

int Demonstrate(const DemoOptions& options, const simulator::Card& specimen) {
  simulator::TtyReader reader;
  reader.PutCard(specimen);
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
  const Reading reading = ReadCard(request);
  if (reading.result != QL_SUCCESS) {
    const ResultText& text = ResultOf(reading.result);
    PrintReport({reading.result, text.exit, Tr(text.english, text.chinese), {}});
    return text.exit;
  }
  const Row photo = ShowPhoto(reading.card, options.photo);
  std::vector<Row> rows = CardRows(reading.card);
  rows.push_back(photo);
  PrintRows(rows);
  std::fflush(stdout);
  PrintNextSteps(reading.elapsed_ms);
  return kExitDone;
}

}  // namespace

int DemoCommand(const DemoOptions& options) {
  simulator::Card specimen;
  std::string problem;
  if (!FindCard(options.card, false, &specimen, &problem)) {
    PrintReport(UsageReport(problem, "qlid simulate --person help"));
    return kExitUsage;
  }
  try {
    return Demonstrate(options, specimen);
  } catch (const std::system_error& error) {
    PrintReport({QL_DEVICE_ERROR,
                 kExitUnexpected,
                 Tr("there is no pseudo-terminal to be had", "无法创建伪终端"),
                 {{Tr("Cause", "原因"), error.what()}}});
    return kExitUnexpected;
  }
}

}  // namespace qlid
