// A read whose serial line is listened to: for --trace, --timing and --record.
#ifndef QUILLONID_TOOLS_QLID_TAPPED_READING_H
#define QUILLONID_TOOLS_QLID_TAPPED_READING_H

#include <optional>
#include <vector>

#include "tools/qlid/commands.h"
#include "tools/qlid/reading.h"
#include "tools/qlid/report.h"
#include "tools/qlid/trace.h"

namespace qlid {

// Whether `options` ask for more than the read itself.
bool TapWanted(const ReadOptions& options);

// Refuses what cannot be listened to; none when it can.
std::optional<Report> CheckTap(const ReadOptions& options);

// Tries, before a card is read, whether the file that --record names can be written.
std::optional<Report> CheckRecording(const ReadOptions& options);

struct TappedReading {
  Reading reading;
  std::optional<Timing> timing;                  // none: the port was not opened
  std::vector<simulator::RecordedPiece> pieces;  // everything that travelled
};
TappedReading ReadTapped(const ReadOptions& options);

// Writes the file that --record names. An empty result is success.
std::optional<Report> WriteRecording(const TappedReading& tapped, const ReadOptions& options);

}  // namespace qlid

#endif
