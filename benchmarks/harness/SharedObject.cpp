// SPDX-License-Identifier: Apache-2.0
#include "harness/SharedObject.h"

#include <elf.h>

#include <cstring>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <vector>

namespace benchmarks {

namespace {

template <typename Part>
Part partAt(const std::vector<char> &bytes, std::uint64_t offset) {
  Part part{};
  if (offset > bytes.size() || bytes.size() - offset < sizeof part) {
    throw std::runtime_error("a section table that goes beyond the end of the file");
  }
  std::memcpy(&part, bytes.data() + offset, sizeof part);
  return part;
}

} // namespace

SharedObject readSharedObject(const std::filesystem::path &path) {
  std::ifstream file(path, std::ios::binary);
  const std::vector<char> bytes((std::istreambuf_iterator<char>(file)), {});
  const auto header = partAt<Elf64_Ehdr>(bytes, 0);
  if (std::memcmp(header.e_ident, ELFMAG, SELFMAG) != 0 || header.e_ident[EI_CLASS] != ELFCLASS64) {
    throw std::runtime_error(path.string() + " is not a 64-bit ELF file");
  }
  const auto section = [&](unsigned index) {
    return partAt<Elf64_Shdr>(bytes, header.e_shoff + index * sizeof(Elf64_Shdr));
  };

  SharedObject object;
  const std::uint64_t names = section(header.e_shstrndx).sh_offset;
  for (unsigned i = 0; i < header.e_shnum; ++i) {
    const Elf64_Shdr each = section(i);
    if ((each.sh_flags & SHF_ALLOC) != 0) {
      object.loadedSections[bytes.data() + names + each.sh_name] += each.sh_size;
    }
    if (each.sh_type == SHT_RELA) {
      object.relocations += each.sh_size / each.sh_entsize;
    }
  }
  return object;
}

} // namespace benchmarks
