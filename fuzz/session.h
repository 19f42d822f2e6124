// One read of a card through an exported function, with what holds for every such read.
#ifndef QUILLONID_FUZZ_SESSION_H
#define QUILLONID_FUZZ_SESSION_H

#include "fuzz/input.h"

namespace session {

inline constexpr int kReaders = 14;  // exported functions that read
inline constexpr int kCollectJson = 12;

struct Reading {
  int function;  // 0 to kReaders - 1
  const char* device;
  long baud;
  int limit;  // seconds
  bool fingerprints;
  bool with_photo_file;  // named and decoded, which needs the private root
};

// Takes the last two from one byte. Returns whether the session is to be logged.
bool TakeFlags(Input* input, Reading* reading);

// Whether the read is one with fingerprints.
bool WithFingerprints(const Reading& reading);

// Reads into a record between canaries. Returns a published code; the record's fields have their
// zeros, and a photo that was asked for is the card's.
int Read(const Reading& reading);

bool IsPublished(int result);

// Whether a read of a card of this kind, 0 to 2, gives that when every answer came at once and
// right.
bool IsOfGoodRead(const Reading& reading, int kind, int result);

// Whether a read gives that after a cancel that is repeated at every wait.
bool IsOfCancelledRead(int result);

// While it lives, the library logs, if `on` and there is a private root. Then the log has whole
// lines.
class Log {
 public:
  explicit Log(bool on);
  Log(const Log&) = delete;
  Log& operator=(const Log&) = delete;
  ~Log();

 private:
  bool on_;
};

// Whether the microseconds that a read of this limit took, those in which the line took no bytes
// left out, and the calls that it made are bounded.
bool IsWithinBounds(int limit, std::int64_t taken, std::int64_t calls);

}  // namespace session

#endif
