// Notices that the reader's device node goes away while a read runs.
#ifndef QUILLONID_TOOLS_QLID_NODE_WATCH_H
#define QUILLONID_TOOLS_QLID_NODE_WATCH_H

#include <chrono>
#include <string>

#include "tools/qlid/devices.h"
#include "tools/qlid/reading.h"

namespace qlid {

// Whether a device text names a serial device rather than a USB reader.
bool IsSerial(const std::string& device);

// The USB reader that a read of this request opens, or else the first that is connected; its node
// is empty when there is none.
UsbReader UsbReaderOf(const ReadRequest& request);

// Its id, "0403:bcd5"; empty for a serial device and where there is none.
std::string UsbIdOf(const ReadRequest& request);

// The node that a read of this request opens; empty when there is none.
std::string NodeOf(const ReadRequest& request);

class NodeWatch {
 public:
  explicit NodeWatch(const ReadRequest& request);

  // True from the moment on at which the node is seen to be gone; a node that never was is not.
  bool IsGone();

  // The same once the read has failed, without the rests between two looks. Sending fails a moment
  // before the node disappears: `moment` waits for that.
  bool IsGoneAfterAll(bool moment);

  // Clock time of that moment, "14:02:11"; empty while the node is there.
  const std::string& since() const { return since_; }
  const std::string& node() const { return node_; }

 private:
  bool Look();

  const ReadRequest& request_;
  std::string node_;
  std::string since_;
  std::chrono::steady_clock::time_point next_look_;
};

}  // namespace qlid

#endif
