// cancel COUNT [READS_AT_ONCE [SLACK]]: cancels whole reads over a pseudo-terminal at random
// instants, from a second thread, and tells how long the reads took to end. Fails when a cancelled
// read gives another result than it may, or ends later than SLACK (1) times 0.3 s, 1.1 s when the
// cancel came in a pause. The reads run in processes of their own, since a process has one reader;
// real time, logging on.
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <mutex>
#include <random>
#include <thread>
#include <vector>

#include "quillonid/quillonid.h"
#include "tests/soak/reader_process.h"
#include "tests/testing/private_root.h"
#include "tests/testing/stand_in_clock.h"

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr int kCancelled = -9;
constexpr long kTimeLimit = 120;  // seconds: no read here ends by it
constexpr int kAgain = 20;        // ms from one cancel to the next: one may be missed
// Until a cancelled read ends, in ms: a pass of the serial read takes 50, a pause is not cut short.
constexpr int kLongestReaction = 300;
constexpr int kLongestInAPause = 1100;
constexpr int kLogRemovedEvery = 50;  // reads

struct Situation {
  const char* name;
  const char* fault;
  int latest_cancel;  // ms after the start of the read
  bool may_end;       // the read may be over, or past its last look at the cancel
};

constexpr Situation kSituations[] = {
    {"silent reader",              "silent",      1500, false},
    {"no card",                    "no-card",     1500, false},
    {"line gone",                  "hang-up=0",   1000, false},
    {"card, every read fails",     "read-failed", 2500, false},
    {"card, reply stops half-way", "cut=700",     2500, false},
    {"card, reply trickles",       "slow=400",    3500, false},
    {"card",                       "",            1100, true },
};

struct Cancelled {
  std::size_t situation;
  int result;
  int reaction;   // ms from the first cancel to the end of the read; below zero: it had ended
  bool in_pause;  // where the first cancel came
};

// The second thread of a worker.
class Canceller {
 public:
  Canceller() : thread_([this] { Run(); }) {}
  Canceller(const Canceller&) = delete;
  Canceller& operator=(const Canceller&) = delete;
  ~Canceller() {
    Order(milliseconds(-1));
    thread_.join();
  }

  // Cancels after `delay`, and again until ReadEnded().
  void CancelAfter(milliseconds delay) {
    ended_ = false;
    Order(delay);
  }

  // When and where the first cancel came.
  void ReadEnded(Cancelled* cancelled) {
    const Clock::time_point now = Clock::now();
    ended_ = true;
    std::unique_lock guard(lock_);
    changed_.wait(guard, [this] { return !ordered_; });
    cancelled->reaction =
        static_cast<int>(std::chrono::duration_cast<milliseconds>(now - first_).count());
    cancelled->in_pause = in_pause_;
  }

 private:
  void Order(milliseconds delay) {
    const std::lock_guard guard(lock_);
    delay_ = delay;
    ordered_ = true;
    changed_.notify_all();
  }

  void Run() {
    for (;;) {
      std::unique_lock guard(lock_);
      changed_.wait(guard, [this] { return ordered_; });
      if (delay_ < milliseconds(0)) return;
      const milliseconds delay = delay_;
      guard.unlock();
      std::this_thread::sleep_for(delay);
      const Clock::time_point first = Clock::now();
      bool in_pause = stand_in_clock::IsSleeping();
      if (!ended_) APP_ID_CancelRead();
      while (!ended_) {
        std::this_thread::sleep_for(milliseconds(kAgain));
        // Begun meanwhile, or behind a command that took the cancel back.
        in_pause |= stand_in_clock::IsSleeping();
        APP_ID_CancelRead();
      }
      guard.lock();
      first_ = first;
      in_pause_ = in_pause;
      ordered_ = false;
      changed_.notify_all();
    }
  }

  std::mutex lock_;  // guards the five below
  std::condition_variable changed_;
  bool ordered_ = false;
  milliseconds delay_{0};
  Clock::time_point first_;
  bool in_pause_ = false;
  std::atomic<bool> ended_{false};
  std::thread thread_;  // last: it uses the rest
};

int Read(const std::string& device) {
  char no_photo[] = "";
  PERSONINFO_COLLECT_FP record = {};
  return APP_ID_ReadCollectIDCard_FP(device.c_str(), "", 9600, kTimeLimit, no_photo, &record);
}

// Cancels `count` reads and writes a Cancelled for each to `results`.
void Work(int worker, int count, int results) {
  std::signal(SIGHUP, SIG_IGN);  // of a line that hangs up
  stand_in_clock::UseSystemClock();
  ReaderProcess reader;
  Canceller canceller;
  std::minstd_rand random(static_cast<unsigned>(worker) + 1);
  for (int i = 0; i < count; ++i) {
    if (i % kLogRemovedEvery == 0) std::filesystem::remove(kLogFile);
    const auto situation = static_cast<std::size_t>(worker + i) % std::size(kSituations);
    const Situation& row = kSituations[situation];
    const std::string device = reader.Prepare("resident", true, row.fault);
    canceller.CancelAfter(milliseconds(static_cast<int>(random()) % (row.latest_cancel + 1)));
    Cancelled cancelled = {situation, Read(device), 0, false};
    canceller.ReadEnded(&cancelled);
    if (write(results, &cancelled, sizeof cancelled) != sizeof cancelled) std::exit(1);
  }
}

int s_slack = 1;

bool IsRight(const Cancelled& cancelled) {
  const Situation& row = kSituations[cancelled.situation];
  if (cancelled.result == 0) return row.may_end;
  const int longest = cancelled.in_pause ? kLongestInAPause : kLongestReaction;
  return cancelled.result == kCancelled && cancelled.reaction <= s_slack * longest;
}

void PrintReactions(const std::vector<Cancelled>& all, std::size_t situation, bool in_pause) {
  std::vector<int> reactions;
  for (const Cancelled& each : all) {
    const bool counts = each.situation == situation && each.in_pause == in_pause;
    if (counts && each.result == kCancelled) reactions.push_back(each.reaction);
  }
  if (reactions.empty()) return;
  std::sort(reactions.begin(), reactions.end());
  const auto at = [&](std::size_t percent) {
    return reactions[std::min(reactions.size() * percent / 100, reactions.size() - 1)];
  };
  std::printf("%-26s %-11s %8zu %8d %8d %8d %8d\n", kSituations[situation].name,
              in_pause ? "in a pause" : "", reactions.size(), at(50), at(90), at(99),
              reactions.back());
}

void PrintReactions(const std::vector<Cancelled>& all) {
  std::printf("%-38s %8s %8s %8s %8s %8s   (milliseconds)\n", "", "cancels", "half", "90 %", "99 %",
              "longest");
  for (std::size_t i = 0; i < std::size(kSituations); ++i) {
    for (const bool in_pause : {false, true}) PrintReactions(all, i, in_pause);
  }
}

std::vector<Cancelled> ReceiveAll(int results) {
  std::vector<Cancelled> all;
  Cancelled each = {};
  while (read(results, &each, sizeof each) == sizeof each) {
    all.push_back(each);
    if (!IsRight(each)) {
      std::printf("%s: result %d after %d ms%s\n", kSituations[each.situation].name, each.result,
                  each.reaction, each.in_pause ? ", cancelled in a pause" : "");
    }
  }
  return all;
}

}  // namespace

int main(int argc, char** argv) {
  const int count = argc > 1 ? std::atoi(argv[1]) : 300;
  const int workers = argc > 2 ? std::atoi(argv[2]) : 16;
  s_slack = argc > 3 ? std::atoi(argv[3]) : 1;
  int ends[2] = {-1, -1};
  if (!HavePrivateRoot() || count < 1 || workers < 1 || s_slack < 1 || pipe(ends) != 0) {
    std::fprintf(stderr, "cancel: to be run by with-private-root\n");
    return 2;
  }
  SwitchLogging(true);
  for (int worker = 0; worker < workers; ++worker) {
    const int share = count / workers + (worker < count % workers ? 1 : 0);
    if (fork() != 0) continue;
    close(ends[0]);
    Work(worker, share, ends[1]);
    return 0;
  }
  close(ends[1]);
  const std::vector<Cancelled> all = ReceiveAll(ends[0]);
  bool good = std::all_of(all.begin(), all.end(), IsRight);
  for (int status = 0; wait(&status) > 0;) good = good && status == 0;
  PrintReactions(all);
  good = good && all.size() == static_cast<std::size_t>(count);
  std::printf("%zu reads, %s\n", all.size(), good ? "every one ended as it should" : "FAILED");
  return good ? 0 : 1;
}
