#include "tools/qlid/elf_file.h"

#include <elf.h>

#include <cstring>

#include "tools/qlid/terminal.h"

namespace qlid {
namespace {

#if defined(__aarch64__)
constexpr unsigned kThisMachine = EM_AARCH64;
#else
constexpr unsigned kThisMachine = EM_X86_64;
#endif

using Bytes = std::vector<std::uint8_t>;

struct MachineName {
  unsigned machine;
  const char* name;
};
constexpr MachineName kMachines[] = {
    {EM_X86_64,    "x86-64"   },
    {EM_AARCH64,   "aarch64"  },
    {EM_386,       "x86"      },
    {EM_ARM,       "arm"      },
    {EM_RISCV,     "riscv"    },
    {EM_LOONGARCH, "loongarch"},
    {EM_MIPS,      "mips"     },
};

std::string NameOfMachine(unsigned machine) {
  for (const MachineName& row : kMachines) {
    if (row.machine == machine) return row.name;
  }
  return Format(Tr("machine %u", "架构 %u"), machine);
}

// Copies a structure out of the file; false where the file is too short for it.
template <typename T>
bool Take(const Bytes& file, std::uint64_t offset, T* value) {
  if (offset > file.size() || file.size() - offset < sizeof *value) return false;
  std::memcpy(value, file.data() + offset, sizeof *value);
  return true;
}

// The zero-ended text at `offset`, which has to end before `limit`.
bool IsTextAt(const Bytes& file, std::uint64_t offset, std::uint64_t limit,
              const std::string& text) {
  if (limit > file.size() || offset >= limit || limit - offset <= text.size()) return false;
  return std::memcmp(file.data() + offset, text.c_str(), text.size() + 1) == 0;
}

bool Within(const Elf64_Shdr& section, const Bytes& file) {
  return section.sh_offset <= file.size() && section.sh_size <= file.size() - section.sh_offset;
}

Export FindIn(const Bytes& file, const Elf64_Shdr& symbols, const Elf64_Shdr& names,
              const std::string& function) {
  if (!Within(symbols, file) || !Within(names, file)) return Export::kUnknown;
  for (std::uint64_t at = 0; at + sizeof(Elf64_Sym) <= symbols.sh_size; at += sizeof(Elf64_Sym)) {
    Elf64_Sym symbol = {};
    Take(file, symbols.sh_offset + at, &symbol);
    const unsigned binding = ELF64_ST_BIND(symbol.st_info);
    const bool exported =
        symbol.st_shndx != SHN_UNDEF && (binding == STB_GLOBAL || binding == STB_WEAK);
    if (exported && IsTextAt(file, names.sh_offset + symbol.st_name,
                             names.sh_offset + names.sh_size, function)) {
      return Export::kYes;
    }
  }
  return Export::kNo;
}

Export FindExport(const Bytes& file, const Elf64_Ehdr& header, const std::string& function) {
  if (header.e_shentsize != sizeof(Elf64_Shdr)) return Export::kUnknown;
  const auto section = [&](std::uint64_t index, Elf64_Shdr* found) {
    return index < header.e_shnum && header.e_shoff <= file.size() &&
           Take(file, header.e_shoff + index * sizeof(Elf64_Shdr), found);
  };
  Elf64_Shdr symbols = {};
  Elf64_Shdr names = {};
  for (std::uint64_t i = 0; section(i, &symbols); ++i) {
    if (symbols.sh_type == SHT_DYNSYM && section(symbols.sh_link, &names))
      return FindIn(file, symbols, names, function);
  }
  return Export::kUnknown;  // Stripped of its section table.
}

}  // namespace

std::string ThisMachine() { return NameOfMachine(kThisMachine); }

ElfFacts InspectElf(const Bytes& file, const std::string& function) {
  ElfFacts facts;
  if (file.size() < EI_NIDENT + 4 || std::memcmp(file.data(), ELFMAG, SELFMAG) != 0) return facts;
  facts.elf = true;
  // Type and machine stand at the same place for either class, in the file's byte order.
  const bool little = file[EI_DATA] == ELFDATA2LSB;
  const auto half = [&](std::size_t at) {
    return little ? file[at] | file[at + 1] << 8 : file[at] << 8 | file[at + 1];
  };
  const auto machine = static_cast<unsigned>(half(EI_NIDENT + 2));
  facts.shared = half(EI_NIDENT) == ET_DYN;
  facts.machine = NameOfMachine(machine);
  facts.fits = file[EI_CLASS] == ELFCLASS64 && little && machine == kThisMachine;
  Elf64_Ehdr header = {};
  if (facts.fits && Take(file, 0, &header)) facts.exports = FindExport(file, header, function);
  return facts;
}

}  // namespace qlid
