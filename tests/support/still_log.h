// A log of the test's own whose time stands still.
#ifndef QUILLONID_TESTS_SUPPORT_STILL_LOG_H
#define QUILLONID_TESTS_SUPPORT_STILL_LOG_H

#include <cstdint>
#include <cstdlib>
#include <string>

#include "quillonid/support.h"
#include "tests/testing/private_root.h"
#include "tests/testing/stand_in_clock.h"

inline constexpr char kStamp[] = "0203040506007";  // 3 February, 04:05:06.007
constexpr std::int64_t kStampSecond = 981173106;   // 3 February 2001, 04:05:06 UTC

// The library's clock stands at kStamp of 2001, in UTC or in the zone given.
inline void HoldStamp(const char* zone = "UTC0") {
  setenv("TZ", zone, 1);
  stand_in_clock::HoldWallClock(kStampSecond, 7'999'999);
}

inline void StartLog() {
  HoldStamp();
  SwitchLogging(true);
}

// A whole line: what stands before the time stamp and what follows it.
inline std::string Line(const std::string& before, const std::string& after) {
  return before + kStamp + "  " + after + "\r\n";
}

inline std::string Log() { return ReadWholeFile(kLogFile); }

// One line by every call.
inline void LogEverything() {
  const unsigned char bytes[] = {0xAB, 0x01};
  DPrintLogToFile("text %d", 7);
  DPrintLogToFileAddType(0, 6, "text %d", 7);
  DPrintDataHexToFile("title", bytes, 2);
  DPrintDataHexToFileAddType(1, 6, "title", bytes, 2);
}

#endif
