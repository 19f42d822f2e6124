// What a reader may do wrong, and how a read of a resident's card then ends: one table for serial
// and USB readers, and for docs/testing.md.
#ifndef QUILLONID_TESTS_FAULTS_READER_FAULTS_H
#define QUILLONID_TESTS_FAULTS_READER_FAULTS_H

#include <initializer_list>
#include <iosfwd>
#include <span>
#include <string>
#include <vector>

namespace faults {

inline constexpr int kTimeLimit = 8;  // seconds, of the reads

struct ReaderFault {
  std::string fault;        // as simulator::ParseFault takes it
  std::vector<int> serial;  // published results; more than one where it depends on which bytes of
  std::vector<int> usb;     // an old answer meet which command
  int seconds;              // that the read may take by the library's clock
};

void PrintTo(const ReaderFault& row, std::ostream* out);

std::span<const ReaderFault> ReaderFaults();

bool Has(const std::vector<int>& results, int result);

inline constexpr int kAtOnce = 1;    // seconds
inline constexpr int kGoodRead = 3;  // seconds that a good read may take, its pause among them

// What a test over a tty adds to a published bound, in seconds of a library's clock that runs
// `speed` times as fast as the real one: the other end is a thread that a busy machine holds up.
// Longer under an emulated processor or Valgrind.
double Slack(double speed = 1);

}  // namespace faults

#endif
