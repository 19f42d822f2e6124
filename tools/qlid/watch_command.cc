// qlid read --watch: card after card until it is stopped; a reader that is pulled is waited for.
#include <csignal>
#include <cstdio>

#include "quillonid/results.h"
#include "tools/qlid/commands.h"
#include "tools/qlid/delivery.h"
#include "tools/qlid/report.h"
#include "tools/qlid/results.h"
#include "tools/qlid/terminal.h"

namespace qlid {
namespace {

// What is going on, told when it changes.
class Watch {
 public:
  explicit Watch(const ReadOptions& options) : options_(options) {}

  // Takes one read in.
  void Take(const Reading& reading) {
    if (reading.result == QL_SUCCESS) {
      TakeCard(reading);
    } else if (reading.result == QL_DEVICE_ERROR || !reading.gone_node.empty()) {
      TellReaderIsGone();
    } else if (reading.result == QL_TIMEOUT || reading.result == QL_NO_CARD) {
      TellReaderIsBack();
      if (!last_.empty()) Say(Tr("card taken away", "卡片已拿走"));
      Forget();
    } else {
      ++failures_;
      const ResultText& text = ResultOf(reading.result);
      Say(Format("%s (%d)", Tr(text.english, text.chinese), reading.result));
    }
  }

  // Told to stop while a card was taken over.
  bool Stopped() const { return stopped_; }

  void TellTheSum() const {
    Say(Format(Tr("stopped after %ld cards, %ld failures", "已停止：%ld 张卡，%ld 次失败"), cards_,
               failures_));
  }

 private:
  static void Say(const std::string& text) { std::fprintf(stderr, "%s\n", text.c_str()); }

  void TellReaderIsGone() {
    Forget();
    if (!reader_seen_ && !reader_missed_)
      Say(Tr("no reader yet; waiting for one", "尚无读卡器；等待接入"));
    if (reader_seen_ && !reader_missed_)
      Say(Tr("reader unplugged; waiting for it to come back", "读卡器已拔出；等待其恢复"));
    reader_missed_ = true;
  }

  void TellReaderIsBack() {
    if (reader_missed_)
      Say(reader_seen_ ? Tr("reader is back", "读卡器已恢复")
                       : Tr("reader is there", "读卡器已接入"));
    reader_seen_ = true;
    reader_missed_ = false;
  }

  void Forget() { last_.clear(); }

  // A card that lies there is read again and again, and told once.
  void TakeCard(const Reading& reading) {
    TellReaderIsBack();
    if (reading.card.native == last_ || !KindWanted(options_.kind, reading.card.kind)) return;
    last_ = reading.card.native;
    ++cards_;
    Outcome outcome;
    outcome.card = &reading.card;
    outcome.device = options_.request.device;
    outcome.elapsed_ms = reading.elapsed_ms;
    const std::optional<Report> report = Deliver(outcome, options_);
    stopped_ = report && report->exit == kExitCancelled;
    if (report && !stopped_) ++failures_;
  }

  const ReadOptions& options_;
  std::vector<std::uint8_t> last_;  // the card that lies there
  bool reader_seen_ = false;        // at some time
  bool reader_missed_ = false;      // and told so
  long cards_ = 0;
  long failures_ = 0;
  bool stopped_ = false;
};

}  // namespace

int WatchCommand(const ReadOptions& options) {
  if (const auto problem = CheckRequest(options.request)) {
    Outcome outcome;
    outcome.report = &*problem;
    PrintOutcome(outcome, options.output);
    return problem->exit;
  }
  Watch watch(options);
  int signal = 0;
  while (signal == 0 || signal == SIGHUP) {
    const Reading reading = ReadCard(options.request);
    if (reading.stopped && reading.result != QL_SUCCESS) break;
    watch.Take(reading);
    if (watch.Stopped() || reading.stopped) break;
    signal = WaitForSignal(options.pause);
  }
  watch.TellTheSum();
  return kExitDone;
}

}  // namespace qlid
