// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_BENCHMARKS_HARNESS_SHAREDOBJECT_H
#define NORIX_BENCHMARKS_HARNESS_SHAREDOBJECT_H

#include <cstdint>
#include <filesystem>
#include <map>
#include <string>

namespace benchmarks {

/** @brief What stands in the section table of a 64-bit shared object. */
struct SharedObject {
  /** The sizes, in bytes, of those that are loaded into memory. */
  std::map<std::string, std::uint64_t> loadedSections;
  std::uint64_t relocations = 0;
};

/** @throw std::runtime_error for a file that is not a 64-bit ELF file */
SharedObject readSharedObject(const std::filesystem::path &path);

} // namespace benchmarks

#endif
