#include "tests/failures/library_file.h"

#include <dlfcn.h>
#include <elf.h>
#include <link.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <stdexcept>

#include "quillonid/support.h"

namespace failures {
namespace {

#if defined(__aarch64__)
constexpr std::uint32_t kSlotTypes[] = {R_AARCH64_JUMP_SLOT, R_AARCH64_GLOB_DAT, R_AARCH64_ABS64};
#else
constexpr std::uint32_t kSlotTypes[] = {R_X86_64_JUMP_SLOT, R_X86_64_GLOB_DAT, R_X86_64_64};
#endif

struct Loaded {
  Dl_info info;
  link_map* map;
};

// Where one of the library's functions stands.
Loaded Library() {
  Loaded found = {};
  auto* const function = reinterpret_cast<void*>(&time_Valid_YYMMDD);
  void* map = nullptr;
  if (dladdr1(function, &found.info, &map, RTLD_DL_LINKMAP) == 0) {
    throw std::runtime_error("the library is not loaded");
  }
  found.map = static_cast<link_map*>(map);
  return found;
}

const ElfW(Dyn) * FindDynamic(const link_map& map, ElfW(Sxword) tag) {
  for (const ElfW(Dyn)* entry = map.l_ld; entry->d_tag != DT_NULL; ++entry) {
    if (entry->d_tag == tag) return entry;
  }
  return nullptr;
}

// glibc has added the load address to these.
template <typename T>
const T* DynamicPointer(const link_map& map, ElfW(Sxword) tag) {
  const ElfW(Dyn)* const entry = FindDynamic(map, tag);
  if (entry == nullptr) return nullptr;
  return reinterpret_cast<const T*>(entry->d_un.d_ptr);  // NOLINT(performance-no-int-to-ptr)
}

std::size_t DynamicValue(const link_map& map, ElfW(Sxword) tag) {
  const ElfW(Dyn)* const entry = FindDynamic(map, tag);
  return entry != nullptr ? entry->d_un.d_val : 0;
}

bool IsSlot(const ElfW(Rela) & relocation) {
  const auto type = static_cast<std::uint32_t>(ELF64_R_TYPE(relocation.r_info));
  return std::find(std::begin(kSlotTypes), std::end(kSlotTypes), type) != std::end(kSlotTypes);
}

// The table of slots is read-only once the program has started.
void MakeWritable(void** place) {
  const auto page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
  auto* const byte = reinterpret_cast<char*>(place);
  char* const start = byte - reinterpret_cast<std::uintptr_t>(place) % page;
  if (mprotect(start, page, PROT_READ | PROT_WRITE) != 0) {
    throw std::runtime_error("the import slots stay read-only");
  }
}

// Calls `found` with the symbol of each slot, its name and its place.
template <typename Found>
void ForEachSlot(const link_map& map, ElfW(Sxword) table, ElfW(Sxword) size, Found found) {
  const auto* const symbols = DynamicPointer<ElfW(Sym)>(map, DT_SYMTAB);
  const auto* const names = DynamicPointer<char>(map, DT_STRTAB);
  const auto* const relocations = DynamicPointer<ElfW(Rela)>(map, table);
  const std::size_t count = DynamicValue(map, size) / sizeof(ElfW(Rela));
  for (std::size_t i = 0; relocations != nullptr && i < count; ++i) {
    const ElfW(Sym)& symbol = symbols[ELF64_R_SYM(relocations[i].r_info)];
    if (!IsSlot(relocations[i])) continue;
    const std::uintptr_t address = map.l_addr + relocations[i].r_offset;
    found(symbol, names + symbol.st_name,
          reinterpret_cast<void**>(address));  // NOLINT(performance-no-int-to-ptr)
  }
}

template <typename Found>
void ForEachSlot(Found found) {
  const link_map& map = *Library().map;
  ForEachSlot(map, DT_JMPREL, DT_PLTRELSZ, found);
  ForEachSlot(map, DT_RELA, DT_RELASZ, found);
}

}  // namespace

std::string LibraryPath() { return Library().info.dli_fname; }

std::vector<Slot> ImportSlots() {
  std::vector<Slot> slots;
  ForEachSlot([&slots](const ElfW(Sym) & symbol, const char* name, void** place) {
    if (symbol.st_shndx != SHN_UNDEF) return;
    MakeWritable(place);
    slots.push_back({name, place});
  });
  return slots;
}

std::vector<std::string> OwnFunctionSlots() {
  std::vector<std::string> own;
  ForEachSlot([&own](const ElfW(Sym) & symbol, const char* name, void**) {
    const bool function = ELF64_ST_TYPE(symbol.st_info) == STT_FUNC;
    if (symbol.st_shndx != SHN_UNDEF && function) own.emplace_back(name);
  });
  return own;
}

}  // namespace failures
