// The loaded library as an ELF object: its undefined symbols, and the slots through which it calls
// them.
#ifndef QUILLONID_TESTS_FAILURES_LIBRARY_FILE_H
#define QUILLONID_TESTS_FAILURES_LIBRARY_FILE_H

#include <string>
#include <vector>

namespace failures {

// Undefined dynamic symbols, from the file.
std::vector<std::string> UndefinedSymbols();

// Of the file: its slots are read-only once it is loaded, and all of them are filled by then.
bool HasReadOnlySlots();
bool IsBoundWhenLoaded();

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
