#include "simulator/tty_reader.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <sys/ioctl.h>
#include <sys/timerfd.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cerrno>
#include <deque>
#include <mutex>
#include <thread>

#include "simulator/line_speed.h"
#include "simulator/pseudo_terminal.h"

namespace simulator {
namespace {

constexpr int kHostPasses = 200;     // that the host gets to read the last bytes before a hang-up,
constexpr int kHostPassLength = 10;  // ms each

void Nap(int milliseconds) { poll(nullptr, 0, milliseconds); }

}  // namespace

class TtyReader::Line {
 public:
  explicit Line(Answerer answerer)
      : answerer_(std::move(answerer)),
        wake_(eventfd(0, EFD_CLOEXEC), "eventfd"),
        timer_(timerfd_create(CLOCK_MONOTONIC, TFD_CLOEXEC | TFD_NONBLOCK), "timerfd") {
    thread_ = std::thread([this] { Run(); });
  }
  Line(const Line&) = delete;
  Line& operator=(const Line&) = delete;
  ~Line() { Stop(); }

  const std::string& path() const { return terminal_.path(); }

  void Stop() {
    const std::lock_guard guard(stop_lock_);
    eventfd_write(wake_.get(), 1);
    if (thread_.joinable()) thread_.join();
  }
  bool dead() const { return dead_; }

  void SetTrace(std::function<void(const TraceEvent&)> trace) {
    const std::lock_guard guard(trace_lock_);
    trace_ = std::move(trace);
  }
  Counters counters() const {
    const std::lock_guard guard(record_lock_);
    return counters_;
  }
  std::vector<Request> requests() const {
    const std::lock_guard guard(record_lock_);
    return requests_;
  }

  // 0 when the line is dead or the speed is none of the table's.
  int Speed() const {
    const std::lock_guard guard(master_lock_);
    termios settings = {};
    if (terminal_.master() < 0 || tcgetattr(terminal_.master(), &settings) != 0) return 0;
    return BitsPerSecond(settings);
  }

 private:
  struct Reply {
    std::string meaning;
    std::vector<Step> steps;
    Bytes sent;
    std::size_t next = 0;     // step
    std::size_t written = 0;  // bytes of that step
    bool waited = false;      // for that step's delay
  };

  void Run() {
    bool hang_up = false;
    while (!hang_up) {
      std::array<pollfd, 3> waits = {
          {
           {wake_.get(), POLLIN, 0},
           {timer_.get(), POLLIN, 0},
           {terminal_.master(), static_cast<short>(blocked_ ? POLLIN | POLLOUT : POLLIN), 0},
           }
      };
      if (poll(waits.data(), waits.size(), -1) < 0 && errno != EINTR) break;
      if (waits[0].revents != 0) break;
      std::uint64_t expirations = 0;
      if (read(timer_.get(), &expirations, sizeof expirations) > 0) replies_.front().waited = true;
      if ((waits[2].revents & (POLLIN | POLLHUP)) != 0) TakeFromHost();
      hang_up = SendDue();
    }
    if (hang_up) LetHostRead();
    const std::lock_guard guard(master_lock_);
    terminal_.HangUp();
    dead_ = true;
  }

  void TakeFromHost() {
    std::array<std::uint8_t, 4096> bytes;
    const ssize_t got = read(terminal_.master(), bytes.data(), bytes.size());
    if (got <= 0) return;
    const std::span<const std::uint8_t> received(bytes.data(), static_cast<std::size_t>(got));
    std::vector<Exchange> exchanges = answerer_(received, Speed());
    {
      const std::lock_guard guard(record_lock_);
      counters_.bytes_received += received.size();
      counters_.requests += exchanges.size();
      for (const Exchange& exchange : exchanges) requests_.push_back(exchange.request);
    }
    for (Exchange& exchange : exchanges) {
      const Request& request = exchange.request;
      Trace(TraceEvent::Direction::kFromHost, request.bytes, request.meaning);
      if (!exchange.steps.empty()) {
        replies_.push_back({std::move(exchange.meaning), std::move(exchange.steps), {}});
      } else if (!exchange.meaning.empty()) {
        Trace(TraceEvent::Direction::kToHost, {}, exchange.meaning);
      }
    }
  }

  // Sends what is due by now; true when the line shall go dead.
  bool SendDue() {
    while (!replies_.empty()) {
      Reply& reply = replies_.front();
      const Step& step = reply.steps[reply.next];
      if (step.delay.count() > 0 && !reply.waited) {
        StartTimer(step.delay);
        return false;
      }
      // The host's side of the line is stopped, as by a reader that holds it off.
      if (step.block) tcflow(terminal_.host_side(), TCOOFF);
      if (!Write(step.bytes, &reply)) return false;
      const bool hang_up = step.hang_up;
      reply.written = 0;
      reply.waited = false;
      if (++reply.next < reply.steps.size()) continue;
      Trace(TraceEvent::Direction::kToHost, reply.sent, reply.meaning);
      replies_.pop_front();
      if (hang_up) return true;
    }
    return false;
  }

  // False while the line takes no more.
  bool Write(const Bytes& bytes, Reply* reply) {
    while (reply->written < bytes.size()) {
      const ssize_t put =
          write(terminal_.master(), bytes.data() + reply->written, bytes.size() - reply->written);
      if (put < 0 && errno == EINTR) continue;
      blocked_ = put < 0 && errno == EAGAIN;
      if (blocked_) return false;
      if (put <= 0) return true;  // A line that takes nothing any more loses the rest.
      const auto first = bytes.begin() + static_cast<std::ptrdiff_t>(reply->written);
      reply->sent.insert(reply->sent.end(), first, first + put);
      reply->written += static_cast<std::size_t>(put);
      const std::lock_guard guard(record_lock_);
      counters_.bytes_sent += static_cast<std::size_t>(put);
    }
    return true;
  }

  // A relative timer: one that runs already is left alone.
  void StartTimer(std::chrono::milliseconds delay) {
    itimerspec running = {};
    timerfd_gettime(timer_.get(), &running);
    if (running.it_value.tv_sec != 0 || running.it_value.tv_nsec != 0) return;
    itimerspec once = {};
    once.it_value.tv_sec = static_cast<time_t>(delay.count() / 1000);
    once.it_value.tv_nsec = static_cast<long>(delay.count() % 1000) * 1'000'000;
    timerfd_settime(timer_.get(), 0, &once, nullptr);
  }

  // Closing the line throws away what the host has not read yet, so give it time to.
  void LetHostRead() {
    for (int pass = 0; pass < kHostPasses; ++pass) {
      Nap(kHostPassLength);
      int unread = 0;
      if (ioctl(terminal_.host_side(), FIONREAD, &unread) != 0 || unread == 0) return;
    }
  }

  void Trace(TraceEvent::Direction direction, const Bytes& bytes, const std::string& meaning) {
    const std::lock_guard guard(trace_lock_);
    if (trace_) trace_({std::chrono::system_clock::now(), direction, bytes, meaning});
  }

  const Answerer answerer_;

  mutable std::mutex master_lock_;  // guards the closing of the descriptors against Speed()
  PseudoTerminal terminal_;
  Descriptor wake_;   // written to: the thread ends
  Descriptor timer_;  // delay of the first reply's next step

  std::deque<Reply> replies_;  // the thread's own, like blocked_
  bool blocked_ = false;       // the host has not read what fills the line
  std::atomic<bool> dead_{false};

  std::mutex trace_lock_;  // guards trace_, also while it runs
  std::function<void(const TraceEvent&)> trace_;

  mutable std::mutex record_lock_;  // guards the two below
  Counters counters_;
  std::vector<Request> requests_;

  std::mutex stop_lock_;  // guards the joining of the thread
  std::thread thread_;    // last: it uses the rest
};

TtyReader::TtyReader()
    : TtyReader([this](std::span<const std::uint8_t> bytes, int line_speed) {
        return module_.Receive(bytes, line_speed);
      }) {}
TtyReader::TtyReader(Answerer answerer)
    : line_(std::make_unique<Line>(std::move(answerer))), path_(line_->path()) {}
TtyReader::~TtyReader() = default;

void TtyReader::SetTrace(std::function<void(const TraceEvent&)> trace) {
  line_->SetTrace(std::move(trace));
}

void TtyReader::HangUp() { line_->Stop(); }
bool TtyReader::HungUp() const { return line_->dead(); }
TtyReader::Counters TtyReader::counters() const { return line_->counters(); }
std::vector<Request> TtyReader::Requests() const { return line_->requests(); }
int TtyReader::LineSpeed() const { return line_->Speed(); }

bool TtyReader::WaitForRequests(std::size_t count, int milliseconds) const {
  constexpr int kPass = 5;  // ms
  for (int waited = 0; counters().requests < count; waited += kPass) {
    if (waited >= milliseconds) return false;
    Nap(kPass);
  }
  return true;
}

}  // namespace simulator
