// What a shared object is for and whether it exports a function, from its bytes: nothing of it is
// run, and it may be for another machine.
#ifndef QUILLONID_TOOLS_QLID_ELF_FILE_H
#define QUILLONID_TOOLS_QLID_ELF_FILE_H

#include <cstdint>
#include <string>
#include <vector>

namespace qlid {

enum class Export { kYes, kNo, kUnknown };

struct ElfFacts {
  bool elf = false;
  bool shared = false;                // a shared object
  std::string machine;                // "x86-64", "aarch64", ...
  bool fits = false;                  // class, byte order and machine are this program's
  Export exports = Export::kUnknown;  // the function that was asked for
};

ElfFacts InspectElf(const std::vector<std::uint8_t>& file, const std::string& function);

// The machine that this program is for.
std::string ThisMachine();

}  // namespace qlid

#endif
