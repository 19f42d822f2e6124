// The simulated reader on a pseudo-terminal: a device path that any program can open as a serial
// port. A thread of its own serves it from construction to destruction.
//
// One thing differs from a serial line: bytes that the host wrote and flushes at once are lost when
// this end has not taken them yet, where a serial line would have sent them. On a busy machine that
// may cost a speed command, which the host sends just before it opens the line anew.
#ifndef QUILLONID_SIMULATOR_TTY_READER_H
#define QUILLONID_SIMULATOR_TTY_READER_H

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "simulator/card_module.h"

namespace simulator {

struct TraceEvent {
  enum class Direction { kFromHost, kToHost };
  std::chrono::system_clock::time_point time;
  Direction direction;
  Bytes bytes;
  std::string meaning;
};

class TtyReader {
 public:
  // Takes bytes from the host, sent at a line speed, and gives the exchanges that are whole.
  using Answerer = std::function<std::vector<Exchange>(std::span<const std::uint8_t>, int)>;

  // Throws std::system_error when there is no pseudo-terminal to be had.
  TtyReader();
  // With another mind than its card module.
  explicit TtyReader(Answerer answerer);
  TtyReader(const TtyReader&) = delete;
  TtyReader& operator=(const TtyReader&) = delete;
  ~TtyReader();

  // Device path for the host, such as "/dev/pts/5".
  const std::string& path() const { return path_; }

  // Card, faults and speed.
  CardModule& module() { return module_; }

  void PutCard(Card card) { module_.PutCard(std::move(card)); }
  void RemoveCard() { module_.RemoveCard(); }
  void SetFault(const Fault& fault) { module_.SetFault(fault); }

  // Called from the reader's thread for each request and each answer; null for none.
  void SetTrace(std::function<void(const TraceEvent&)> trace);

  // The line goes dead at once, as when a plug is pulled, and for good.
  void HangUp();
  bool HungUp() const;

  struct Counters {
    std::size_t requests = 0;
    std::size_t bytes_received = 0;
    std::size_t bytes_sent = 0;
  };
  Counters counters() const;

  // Everything received so far.
  std::vector<Request> Requests() const;
  // Waits until there are `count` of them; false when `milliseconds` pass first.
  bool WaitForRequests(std::size_t count, int milliseconds) const;

  // Speed that the host has set on the line, bit/s; 0 after a hang-up.
  int LineSpeed() const;

 private:
  class Line;

  CardModule module_;
  std::unique_ptr<Line> line_;
  std::string path_;
};

}  // namespace simulator

#endif
