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
  bool with_photo_file;
};

// Whether the read is one with fingerprints.
bool WithFingerprints(const Reading& reading);

// Reads into a record between canaries. Returns a published code; the record's fields have their
// zeros.
int Read(const Reading& reading);

bool IsPublished(int result);

// Whether the microseconds that a read of this limit took, those in which the line took no bytes
// left out, and the calls that it made are bounded.
bool IsWithinBounds(int limit, std::int64_t taken, std::int64_t calls);

}  // namespace session

#endif
