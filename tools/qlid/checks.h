// The checks of `qlid doctor`: a verdict for every link of the chain from the library to the card,
// and a remedy for each that fails. A check that was not made says so and why.
#ifndef QUILLONID_TOOLS_QLID_CHECKS_H
#define QUILLONID_TOOLS_QLID_CHECKS_H

#include <string>
#include <vector>

#include "tools/qlid/devices.h"
#include "tools/qlid/reading.h"

namespace qlid {

enum class Verdict { kOk, kWarn, kFail, kSkip };

struct Check {
  Verdict verdict;
  const char* id;  // for programs
  std::string text;
  std::vector<std::string> remedy;  // a step in a line
};

struct CheckGroup {
  const char* id;
  const char* title;
  std::vector<Check> checks;
};

CheckGroup CheckLibrary();
CheckGroup CheckDecoder();
CheckGroup CheckUsb(const UsbBus& bus, std::size_t known_ids);
CheckGroup CheckSerial(const std::vector<SerialPort>& ports);

// What the reader is asked with, and what the groups before have found.
struct ReaderToAsk {
  ReadRequest request;
  bool named = false;  // --device was given
  bool any = false;    // there is a USB reader or a serial port
  bool usb_ready = false;
};
CheckGroup CheckReader(const ReaderToAsk& reader);

}  // namespace qlid

#endif
