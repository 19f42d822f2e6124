// The library's system calls on one descriptor: what it calls, in order, and results that a real
// line gives too seldom for a test.
#ifndef QUILLONID_TESTS_TRANSPORT_SYSTEM_CALLS_H
#define QUILLONID_TESTS_TRANSPORT_SYSTEM_CALLS_H

#include <sys/types.h>

#include <deque>
#include <string>
#include <vector>

namespace system_calls {

// Starts to note the calls on `fd`, or on any descriptor for kAny.
inline constexpr int kAny = -2;
void Watch(int fd);

// The calls noted since: "read 5", "write 3", "tcflush input", "tcsetattr flush", "nonblocking on",
// ...
const std::vector<std::string>& Noted();

// What the next calls on the watched descriptor answer. A count below what was asked for is carried
// out with that count; an answer without a count fails with `error`.
struct Answer {
  ssize_t count;
  int error;
};
void ScriptReads(std::deque<Answer> answers);
void ScriptWrites(std::deque<Answer> answers);

// Bytes that the driver has not sent yet, call for call; the last number stays, or a flush of the
// output discards them.
enum class AtFlush { kDiscards, kKeeps };
void ScriptQueue(std::deque<int> bytes, AtFlush at_flush = AtFlush::kDiscards);

// A signal interrupts the next `count` changes of the settings.
void InterruptSettings(int count);

}  // namespace system_calls

#endif
