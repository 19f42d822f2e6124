// One read through the library, with a countdown, and Ctrl-C turned into a cancel.
#ifndef QUILLONID_TOOLS_QLID_READING_H
#define QUILLONID_TOOLS_QLID_READING_H

#include <string>
#include <vector>

#include "tools/qlid/card_view.h"

namespace qlid {

struct ReadRequest {
  std::string device = "HID";
  long baud = 115200;
  int timeout = 10;
  bool fingerprints = false;
  std::vector<std::string> usb_ids;  // "1234:5678", beside the known ones
  bool raise_baud = false;
  bool search_direct = false;
  bool one_command = false;
  bool countdown = true;  // on a terminal
};

struct Reading {
  int result = 0;  // published code
  Card card;
  long elapsed_ms = 0;
  bool stopped = false;  // told to stop, which may have come too late for the result to say so
  // Set when the device node went away during the read, which ends it with -5.
  std::string gone_node;
  std::string gone_since;  // clock time
};

Reading ReadCard(const ReadRequest& request);

enum class ReaderState { kNotOpened, kSilent, kReady };

// Applies the settings of a request to the library.
void SettleLibrary(const ReadRequest& request);

// Sends the device check once to the open reader.
bool IsAnswering();

// Opens the reader and sends the device check once.
ReaderState AskReader(const ReadRequest& request);

// The same, and searches a card once: tells a silent reader, a missing card, and one that lies
// there and cannot be read.
struct ReaderLook {
  ReaderState state = ReaderState::kNotOpened;
  bool card = false;
};
ReaderLook LookAtReader(const ReadRequest& request);

}  // namespace qlid

#endif
