// qlid read --watch: card after card until it is stopped; a reader that is pulled is waited for.
#include <unistd.h>

#include <chrono>
#include <cstdio>

#include "quillonid/results.h"
#include "tools/qlid/commands.h"
#include "tools/qlid/delivery.h"
#include "tools/qlid/node_watch.h"
#include "tools/qlid/read_failure.h"
#include "tools/qlid/report.h"
#include "tools/qlid/results.h"
#include "tools/qlid/signals.h"
#include "tools/qlid/terminal.h"

namespace qlid {
namespace {

using Clock = std::chrono::steady_clock;

// Limit of each search, the least that the library takes: a card that is taken away is missed by
// the search behind it. A card that is found is read to its end.
constexpr int kSearchSeconds = 1;

// What is going on, told when it changes.
class Watch {
 public:
  explicit Watch(const ReadOptions& options)
      : options_(options), limit_(options.request.timeout), sign_of_life_(Clock::now()) {}

  // Takes one read in.
  void Take(const Reading& reading) {
    if (reading.result == QL_DEVICE_ERROR || !reading.gone_node.empty()) {
      TakeMissingReader(reading);
      return;
    }
    TellReaderIsBack();
    if (reading.result == QL_SUCCESS) {
      TakeCard(reading);
    } else if (reading.result == QL_TIMEOUT || reading.result == QL_NO_CARD) {
      TakeMissingCard();
    } else {
      sign_of_life_ = Clock::now();
      TellFailure(ReadReport(options_.request, reading));
    }
  }

  // What ends the watch: told to stop while a card was taken over, or nobody takes its output.
  const std::optional<Report>& End() const { return end_; }

  void TellTheSum() const {
    Say(Format(Tr("stopped after %ld %s, %ld %s", "已停止：%ld %s，%ld %s"), cards_,
               cards_ == 1 ? Tr("card", "张卡") : Tr("cards", "张卡"), failures_,
               failures_ == 1 ? Tr("failure", "次失败") : Tr("failures", "次失败")));
  }

 private:
  static void Say(const std::string& text) { std::fprintf(stderr, "%s\n", text.c_str()); }

  // Tells a cause in full, for programs too. False when it has been told and still holds.
  bool Tell(const Report& report, bool in_words = true) {
    const std::string cause = ReasonOf(report) + ' ' + report.node;
    if (cause == told_) return false;
    told_ = cause;
    if (in_words) PrintReport(report);
    if (options_.output.json) {
      Outcome outcome;
      outcome.report = &report;
      outcome.device = options_.request.device;
      PrintJsonLine(outcome, options_.output);
      end_ = TellUnwritten();
    }
    return true;
  }

  // A failure with a card, which counts.
  void TellFailure(const Report& report) {
    if (Tell(report)) ++failures_;
  }

  void TakeMissingReader(const Reading& reading) {
    Forget();
    Report report = ReadReport(options_.request, reading);
    const bool absent = report.reason == kReasonUnplugged || report.reason == kReasonNoDevice;
    if (absent && reader_seen_) {
      report.reason = kReasonUnplugged;
      report.what = Tr("the reader was unplugged", "读卡器被拔出");
      if (Tell(report, false))
        Say(Tr("reader unplugged; waiting for it to come back", "读卡器已拔出；等待其恢复"));
    } else if (Repeated(ReasonOf(report)) && Tell(report)) {
      Say(Tr("no reader yet; waiting for one", "尚无读卡器；等待接入"));
    }
    reader_missed_ = true;
  }

  // A reader that comes or goes passes through states that last a moment: its node is there before
  // its permissions are, or still there when the reader is not. What lasts is seen twice.
  bool Repeated(const std::string& reason) {
    const bool changing = reader_seen_ || reader_missed_;
    const bool repeated = !changing || reason == last_reason_;
    last_reason_ = reason;
    return repeated;
  }

  void TellReaderIsBack() {
    if (reader_missed_) {
      Say(reader_seen_ ? Tr("reader is back", "读卡器已恢复")
                       : Tr("reader is there", "读卡器已接入"));
      told_.clear();
      sign_of_life_ = Clock::now();
    }
    reader_seen_ = true;
    reader_missed_ = false;
    last_reason_.clear();
  }

  // No card was read in one search: there is none, or the reader is silent, or it could not be
  // read. The reader is asked when that changes something, and after each limit.
  void TakeMissingCard() {
    const bool late = Clock::now() - sign_of_life_ >= limit_;
    if (last_.empty() && told_.empty() && !late) return;
    const ReaderLook look = LookAtReader(options_.request);
    if (look.state == ReaderState::kNotOpened) return;  // The next read will say so.
    if (look.card) {
      TakeUnreadCard();
    } else if (look.state == ReaderState::kReady) {
      TakeEmptyReader();
    } else if (late) {
      Forget();
      silent_ = true;
      Tell(SilentReport(options_.request));
    }
  }

  void TakeUnreadCard() {
    if (!unread_since_) unread_since_ = Clock::now();
    if (Clock::now() - *unread_since_ >= limit_) TellFailure(UnreadReport(options_.request));
  }

  void TakeEmptyReader() {
    sign_of_life_ = Clock::now();
    TellReaderAnswers();
    if (!last_.empty()) Say(Tr("card taken away", "卡片已拿走"));
    Forget();
    told_.clear();
  }

  void TellReaderAnswers() {
    if (silent_) Say(Tr("the reader answers again", "读卡器恢复应答"));
    silent_ = false;
  }

  void Forget() {
    last_.clear();
    unread_since_.reset();
  }

  // A card that lies there is read again and again, and told once.
  void TakeCard(const Reading& reading) {
    sign_of_life_ = Clock::now();
    TellReaderAnswers();
    unread_since_.reset();
    if (reading.card.native == last_) return;
    last_ = reading.card.native;
    told_.clear();
    if (!KindWanted(options_.kind, reading.card.kind)) {
      TellFailure(OtherKindReport(options_.kind, reading.card.kind));
      return;
    }
    ++cards_;
    Outcome outcome;
    outcome.card = &reading.card;
    outcome.device = options_.request.device;
    outcome.usb = UsbIdOf(options_.request);
    outcome.elapsed_ms = reading.elapsed_ms;
    const std::optional<Report> report = Deliver(outcome, options_);
    if (!report) return;
    if (report->exit != kExitCancelled) ++failures_;
    if (report->exit == kExitCancelled || report->reason == kReasonOutput) end_ = report;
  }

  const ReadOptions& options_;
  const std::chrono::seconds limit_;
  Clock::time_point sign_of_life_;                 // of the reader
  std::vector<std::uint8_t> last_;                 // the card that lies there
  std::optional<Clock::time_point> unread_since_;  // a card lies there and is not read
  std::string told_;                               // cause that was told and still holds
  std::string last_reason_;     // why the reader could not be opened the last time
  bool reader_seen_ = false;    // at some time
  bool reader_missed_ = false;  // and told so
  bool silent_ = false;         // and told so
  long cards_ = 0;
  long failures_ = 0;
  std::optional<Report> end_;
};

}  // namespace

int WatchCommand(const ReadOptions& options) {
  HoldSignals();
  auto problem = CheckRequest(options.request);
  if (!problem) problem = CheckReadOutput(options);
  if (problem) {
    Outcome outcome;
    outcome.report = &*problem;
    return PrintFailure(outcome, options);
  }
  Watch watch(options);
  ReadRequest search = options.request;
  search.timeout = kSearchSeconds;
  search.countdown = false;
  if (IsTerminal(STDERR_FILENO)) {
    std::fprintf(stderr, "%s\n",
                 Tr("waiting for cards; Ctrl-C ends it", "等待卡片；按 Ctrl-C 结束"));
  }
  bool stopped = false;
  while (!stopped) {
    const Reading reading = ReadCard(search);
    if (reading.stopped && reading.result != QL_SUCCESS) break;
    watch.Take(reading);
    stopped = reading.stopped || watch.End() || AsksToStop(WaitForSignal(options.pause));
  }
  watch.TellTheSum();
  const bool asked = !watch.End() || watch.End()->exit == kExitCancelled;
  return asked ? kExitDone : watch.End()->exit;
}

}  // namespace qlid
