// What a built ELF file says.
#ifndef QUILLONID_TESTS_FAILURES_ELF_FILE_H
#define QUILLONID_TESTS_FAILURES_ELF_FILE_H

#include <string>
#include <vector>

namespace failures {

// Undefined dynamic symbols.
std::vector<std::string> UndefinedSymbols(const std::string& path);

struct Hardening {
  bool moves = false;              // loaded at any address
  bool read_only_slots = false;    // once it is loaded
  bool bound_when_loaded = false;  // all slots are filled by then
};

Hardening HardeningOf(const std::string& path);

}  // namespace failures

#endif
