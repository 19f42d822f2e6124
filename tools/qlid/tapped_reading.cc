#include "tools/qlid/tapped_reading.h"

#include <cstdio>
#include <ctime>

#include "quillonid/results.h"
#include "tools/qlid/files.h"
#include "tools/qlid/line_tap.h"
#include "tools/qlid/node_watch.h"
#include "tools/qlid/results.h"
#include "tools/qlid/terminal.h"

namespace qlid {
namespace {

constexpr std::size_t kImpersonalBytes = 14;  // of a card answer, before its text

void Trace(const Frame& frame, bool redact) {
  simulator::TraceEvent event;
  event.time = std::chrono::system_clock::now();
  event.direction = frame.from_host ? simulator::TraceEvent::Direction::kFromHost
                                    : simulator::TraceEvent::Direction::kToHost;
  event.meaning = frame.meaning;
  event.bytes = frame.bytes;
  PrintTrace(event, redact ? kImpersonalBytes : kTracedBytes);
}

Report UnwrittenRecording(const std::string& file, const std::string& problem) {
  Report report = {QL_OTHER_ERROR,
                   kExitOther,
                   Format(Tr("%s was not written", "%s 未写入"), file.c_str()),
                   {{Tr("Cause", "原因"), problem}}};
  AddNext({Tr("name another file", "换一个文件名")}, &report);
  report.tell_code = false;  // No call of the library gave it.
  report.reason = "recording";
  return report;
}

std::string Today() {
  const time_t now = time(nullptr);
  tm local = {};
  localtime_r(&now, &local);
  char text[32];
  strftime(text, sizeof text, "%Y-%m-%d %H:%M:%S", &local);
  return text;
}

}  // namespace

bool TapWanted(const ReadOptions& options) {
  return options.trace || options.timing || !options.record.empty();
}

std::optional<Report> CheckTap(const ReadOptions& options) {
  if (!TapWanted(options) || IsSerial(options.request.device)) return std::nullopt;
  return UsageReport(
      Tr("--trace, --timing and --record listen to a serial line; a USB reader has none",
         "--trace、--timing 和 --record 监听串口线路；USB 读卡器没有串口"),
      Tr("leave them out, or name a serial port: --device /dev/ttyUSB0",
         "去掉这些选项，或指定串口：--device /dev/ttyUSB0"));
}

std::optional<Report> CheckRecording(const ReadOptions& options) {
  std::string problem;
  if (options.record.empty() || CanBeWritten(options.record, &problem)) return std::nullopt;
  return UnwrittenRecording(options.record, problem);
}

TappedReading ReadTapped(const ReadOptions& options) {
  TappedReading tapped;
  FrameReader assembler;
  std::vector<Frame> frames;
  const auto start = std::chrono::steady_clock::now();  // that of the tap's times
  auto tap = LineTap::Open(options.request.device, [&](const simulator::RecordedPiece& piece) {
    tapped.pieces.push_back(piece);
    for (Frame& frame : assembler.Take(piece)) {
      if (options.trace) Trace(frame, options.output.redact);
      frames.push_back(std::move(frame));
    }
  });
  ReadRequest request = options.request;
  if (tap) request.device = tap->path();
  if (options.trace) request.countdown = false;  // Its line and the trace's would mix.
  tapped.reading = ReadCard(request);
  const auto whole = std::chrono::steady_clock::now() - start;
  if (!tap) return tapped;

  tap.reset();
  // The port's end of the line, not that of the library, is what the user knows.
  if (!tapped.reading.gone_node.empty()) tapped.reading.gone_node = options.request.device;
  tapped.timing = TimingOf(frames, std::chrono::duration_cast<std::chrono::microseconds>(whole));
  return tapped;
}

std::optional<Report> WriteRecording(const TappedReading& tapped, const ReadOptions& options) {
  const std::string remark =
      Format(Tr("%s at %ld bit/s, %s\nHolds a card's data unmasked: keep it to yourself.\n",
                "%s，%ld bit/s，%s\n含有未遮盖的卡内数据，请勿外传。\n"),
             options.request.device.c_str(), options.request.baud, Today().c_str());
  const std::string text = simulator::RecordingText(tapped.pieces, remark);
  std::string problem;
  if (!WriteFile(options.record, {text.begin(), text.end()}, &problem))
    return UnwrittenRecording(options.record, problem);
  std::fprintf(stderr,
               Tr("%s holds everything that travelled, a card's personal data included\n"
                  "  Again   qlid simulate --replay %s\n",
                  "%s 含有线路上的全部数据，包括卡片的个人信息\n"
                  "  重放    qlid simulate --replay %s\n"),
               options.record.c_str(), options.record.c_str());
  return std::nullopt;
}

}  // namespace qlid
