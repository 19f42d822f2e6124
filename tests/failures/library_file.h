// The loaded library: its file, and the slots through which it calls others.
#ifndef QUILLONID_TESTS_FAILURES_LIBRARY_FILE_H
#define QUILLONID_TESTS_FAILURES_LIBRARY_FILE_H

#include <string>
#include <vector>

namespace failures {

std::string LibraryPath();

struct Slot {
  std::string symbol;
  void** place;  // holds the address that the library calls
};

// Slots of the loaded library; writable when this returns.
std::vector<Slot> ImportSlots();

// Functions of the library that it calls through a slot, where an application's function of the
// same name would take their place.
std::vector<std::string> OwnFunctionSlots();

}  // namespace failures

#endif
