#include "tests/failures/elf_file.h"

#include <elf.h>
#include <link.h>

#include <cstring>
#include <fstream>
#include <iterator>
#include <optional>
#include <stdexcept>

namespace failures {
namespace {

template <typename T>
T At(const std::string& file, std::size_t offset) {
  T value;
  if (offset + sizeof value > file.size()) throw std::runtime_error("cut ELF file");
  std::memcpy(&value, file.data() + offset, sizeof value);
  return value;
}

std::string ReadFile(const std::string& path) {
  std::ifstream stream(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(stream), {}};
}

// The segment of this type; null when there is none.
std::optional<ElfW(Phdr)> FindSegment(const std::string& file, ElfW(Word) type) {
  const auto header = At<ElfW(Ehdr)>(file, 0);
  for (std::size_t i = 0; i < header.e_phnum; ++i) {
    const auto segment = At<ElfW(Phdr)>(file, header.e_phoff + i * sizeof(ElfW(Phdr)));
    if (segment.p_type == type) return segment;
  }
  return std::nullopt;
}

}  // namespace

std::vector<std::string> UndefinedSymbols(const std::string& path) {
  const std::string file = ReadFile(path);
  const auto header = At<ElfW(Ehdr)>(file, 0);
  const auto section = [&](std::size_t index) {
    return At<ElfW(Shdr)>(file, header.e_shoff + index * sizeof(ElfW(Shdr)));
  };

  std::vector<std::string> undefined;
  for (std::size_t i = 0; i < header.e_shnum; ++i) {
    if (section(i).sh_type != SHT_DYNSYM) continue;
    const std::size_t names = section(section(i).sh_link).sh_offset;
    for (std::size_t at = 0; at < section(i).sh_size; at += sizeof(ElfW(Sym))) {
      const auto symbol = At<ElfW(Sym)>(file, section(i).sh_offset + at);
      if (symbol.st_shndx != SHN_UNDEF || symbol.st_name == 0) continue;
      undefined.emplace_back(file.data() + names + symbol.st_name);
    }
  }
  return undefined;
}

Hardening HardeningOf(const std::string& path) {
  const std::string file = ReadFile(path);
  Hardening found;
  found.moves = At<ElfW(Ehdr)>(file, 0).e_type == ET_DYN;
  found.read_only_slots = FindSegment(file, PT_GNU_RELRO).has_value();
  const auto dynamic = FindSegment(file, PT_DYNAMIC);
  for (std::size_t at = 0; dynamic && at < dynamic->p_filesz; at += sizeof(ElfW(Dyn))) {
    const auto entry = At<ElfW(Dyn)>(file, dynamic->p_offset + at);
    const auto flags = entry.d_un.d_val;
    found.bound_when_loaded |= entry.d_tag == DT_FLAGS && (flags & DF_BIND_NOW) != 0;
    found.bound_when_loaded |= entry.d_tag == DT_FLAGS_1 && (flags & DF_1_NOW) != 0;
  }
  return found;
}

}  // namespace failures
