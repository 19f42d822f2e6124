// A pseudo-terminal between the library and a serial reader: bytes and line speeds go through as
// they come, and are told to a listener.
#ifndef QUILLONID_TOOLS_QLID_LINE_TAP_H
#define QUILLONID_TOOLS_QLID_LINE_TAP_H

#include <functional>
#include <memory>
#include <string>

#include "simulator/recording.h"

namespace qlid {

class LineTap {
 public:
  // Called from the tap's thread, with the time since the tap was made.
  using Listener = std::function<void(const simulator::RecordedPiece&)>;

  // Null when the port cannot be opened or there is no pseudo-terminal to be had.
  static std::unique_ptr<LineTap> Open(const std::string& port, Listener listener);
  LineTap(const LineTap&) = delete;
  LineTap& operator=(const LineTap&) = delete;
  ~LineTap();  // The listener is not called any more, the port is closed.

  // What the library opens in place of the port. When the port goes away, so does this.
  const std::string& path() const;

 private:
  class Line;
  explicit LineTap(std::unique_ptr<Line> line);
  std::unique_ptr<Line> line_;
};

}  // namespace qlid

#endif
