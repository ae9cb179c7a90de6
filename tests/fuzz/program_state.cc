#include "tests/fuzz/program_state.h"

#include <link.h>

#include <cstring>

#include "tests/fuzz/target.h"
#include "tests/support/scratch.h"

namespace fuzz {
namespace {

// The load address of the executable, which is the first loaded object.
uintptr_t LoadAddress() {
  uintptr_t address = 0;
  dl_iterate_phdr(
      [](dl_phdr_info *info, size_t, void *found) {
        *static_cast<uintptr_t *>(found) = info->dlpi_addr;
        return 1;
      },
      &address);
  return address;
}

template <typename T>
std::vector<T> Table(const std::string &file, uint64_t offset, size_t count) {
  std::vector<T> table(count);
  REQUIRE(offset <= file.size() && count * sizeof(T) <= file.size() - offset);
  std::memcpy(table.data(), file.data() + offset, count * sizeof(T));
  return table;
}

// In a program with AddressSanitizer, the size of a variable includes its red zones. Instrumented code and memcpy would
// report accesses to them.
__attribute__((no_sanitize("address"))) void Copy(volatile char *to, const volatile char *from, size_t size) {
  for (; size >= sizeof(uint64_t); size -= sizeof(uint64_t), to += sizeof(uint64_t), from += sizeof(uint64_t))
    *reinterpret_cast<volatile uint64_t *>(to) = *reinterpret_cast<const volatile uint64_t *>(from);
  for (; size > 0; --size)
    *to++ = *from++;
}

// Whether the bytes of the variable can be restored. `sockets` owns memory, which this would leak.
bool IsPlain(std::string_view symbol) { return symbol.find("sockets") == std::string_view::npos; }

}  // namespace

ProgramState::ProgramState(std::string_view nameSpace) {
  const std::string file = testing_support::ReadFile("/proc/self/exe");
  const std::string mangled = std::to_string(nameSpace.size()) + std::string(nameSpace);
  const auto head = Table<ElfW(Ehdr)>(file, 0, 1)[0];
  const auto sections = Table<ElfW(Shdr)>(file, head.e_shoff, head.e_shnum);
  const auto text = [&](const ElfW(Shdr) & strings, uint32_t start) {
    return std::string_view(file.c_str() + strings.sh_offset + start);
  };
  const auto isVariable = [&](const ElfW(Sym) & symbol) {
    if (symbol.st_shndx >= sections.size()) return false;
    const std::string_view section = text(sections[head.e_shstrndx], sections[symbol.st_shndx].sh_name);
    return section == ".data" || section == ".bss";
  };
  for (const ElfW(Shdr) & section : sections) {
    if (section.sh_type != SHT_SYMTAB) continue;
    for (const auto &symbol : Table<ElfW(Sym)>(file, section.sh_offset, section.sh_size / sizeof(ElfW(Sym)))) {
      const std::string_view name = text(sections[section.sh_link], symbol.st_name);
      if (!isVariable(symbol) || !name.starts_with("_Z") || name.find(mangled) == std::string_view::npos) continue;
      if (!IsPlain(name)) continue;
      char *place = reinterpret_cast<char *>(LoadAddress() + symbol.st_value);  // NOLINT(performance-no-int-to-ptr)
      variables_.push_back({place, std::vector<char>(symbol.st_size)});
      Copy(variables_.back().bytes.data(), place, symbol.st_size);
    }
  }
  REQUIRE(!variables_.empty());
}

void ProgramState::Restore() const {
  for (const Variable &variable : variables_)
    Copy(variable.place, variable.bytes.data(), variable.bytes.size());
}

}  // namespace fuzz
