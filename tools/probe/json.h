// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_PROBE_JSON_H
#define NORIX_PROBE_JSON_H

#include <cstddef>
#include <cstdint>

namespace norix::probe {

/// Room for any record as JSON: every byte of it may become an escape of six.
inline constexpr std::size_t kLongestLine = 65536;

/// Writes a Record as one JSON object and a newline. Allocates nothing and takes no lock, so that a
/// signal handler may call it.
///
/// @param record  the bytes of a Record
/// @param size    how many
/// @param serial  the event's number, for readers to notice what is missing
/// @param line    room for kLongestLine bytes
/// @return the length of the line
std::size_t formatRecord(const void *record, std::size_t size, std::uint64_t serial, char *line);

} // namespace norix::probe

#endif
