// Results that calls on a reader may have, whatever the reader does.
#ifndef QUILLONID_FUZZ_ALLOWED_H
#define QUILLONID_FUZZ_ALLOWED_H

#include <algorithm>
#include <initializer_list>

namespace allowed {

inline bool OneOf(int result, std::initializer_list<int> codes) {
  return std::find(codes.begin(), codes.end(), result) != codes.end();
}

// Of a read through the dispatcher that brought nothing: no transport, none open, time over (0 on
// USB), a failure, a cancel.
inline bool NothingRead(int result) { return OneOf(result, {-1, -2, -50, 0, -56, -55, -57}); }

// Of an exchange with an answer of at most `room` bytes.
inline bool Exchange(int result, int room) {
  return result > 0 ? result <= room : NothingRead(result) || result == -54;
}

// The same in packets, which may be damaged.
inline bool Packets(int result, int room) { return Exchange(result, room) || result == -4; }

inline bool Select(int result) {
  return result <= 0 && (Exchange(result, 0) || OneOf(result, {-2003, -2007}));
}

inline bool ReadCard(int result) { return result <= 0 && (Exchange(result, 0) || result == -2002); }

inline bool WholeRead(int result) { return Select(result) || result == -2002; }

}  // namespace allowed

#endif
