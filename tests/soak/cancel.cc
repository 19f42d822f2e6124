// cancel COUNT [READS_AT_ONCE]: cancels whole reads over a pseudo-terminal at random instants, from
// a second thread, and tells how long the reads took to end. Fails when a cancelled read gives
// another result than it may, or takes longer than any wait inside the library. The reads run in
// processes of their own, since a process has one reader; real time, logging on.
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
// A pause takes 1 s, a pass of the serial read 0.05 s, a busy machine its time.
constexpr int kLongestReaction = 6000;  // ms
constexpr int kLogRemovedEvery = 50;    // reads

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
  int reaction;  // ms from the first cancel to the end of the read; below zero: it had ended
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

  // Milliseconds from the first cancel until now.
  int ReadEnded() {
    const Clock::time_point now = Clock::now();
    ended_ = true;
    std::unique_lock guard(lock_);
    changed_.wait(guard, [this] { return !ordered_; });
    return static_cast<int>(std::chrono::duration_cast<milliseconds>(now - first_).count());
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
      while (!ended_) {
        APP_ID_CancelRead();
        std::this_thread::sleep_for(milliseconds(kAgain));
      }
      guard.lock();
      first_ = first;
      ordered_ = false;
      changed_.notify_all();
    }
  }

  std::mutex lock_;  // guards the four below
  std::condition_variable changed_;
  bool ordered_ = false;
  milliseconds delay_{0};
  Clock::time_point first_;
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
    const int result = Read(device);
    const Cancelled cancelled = {situation, result, canceller.ReadEnded()};
    if (write(results, &cancelled, sizeof cancelled) != sizeof cancelled) std::exit(1);
  }
}

bool IsRight(const Cancelled& cancelled) {
  const Situation& row = kSituations[cancelled.situation];
  if (cancelled.result == 0) return row.may_end;
  return cancelled.result == kCancelled && cancelled.reaction <= kLongestReaction;
}

void PrintReactions(const std::vector<Cancelled>& all) {
  std::printf("%-28s %8s %8s %8s %8s %8s   (milliseconds)\n", "", "cancels", "half", "90 %", "99 %",
              "longest");
  for (std::size_t i = 0; i < std::size(kSituations); ++i) {
    std::vector<int> reactions;
    for (const Cancelled& each : all) {
      if (each.situation == i && each.result == kCancelled) reactions.push_back(each.reaction);
    }
    if (reactions.empty()) continue;
    std::sort(reactions.begin(), reactions.end());
    const auto at = [&](std::size_t percent) {
      return reactions[std::min(reactions.size() * percent / 100, reactions.size() - 1)];
    };
    std::printf("%-28s %8zu %8d %8d %8d %8d\n", kSituations[i].name, reactions.size(), at(50),
                at(90), at(99), reactions.back());
  }
}

std::vector<Cancelled> ReceiveAll(int results) {
  std::vector<Cancelled> all;
  Cancelled each = {};
  while (read(results, &each, sizeof each) == sizeof each) {
    all.push_back(each);
    if (!IsRight(each)) {
      std::printf("%s: result %d after %d ms\n", kSituations[each.situation].name, each.result,
                  each.reaction);
    }
  }
  return all;
}

}  // namespace

int main(int argc, char** argv) {
  const int count = argc > 1 ? std::atoi(argv[1]) : 300;
  const int workers = argc > 2 ? std::atoi(argv[2]) : 16;
  int ends[2] = {-1, -1};
  if (!HavePrivateRoot() || count < 1 || workers < 1 || pipe(ends) != 0) {
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
