// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_DLOG_DESTINATION_H
#define PLATFORM_DLOG_DESTINATION_H

#include <atomic>
#include <string>
#include <string_view>

namespace platform::dlog {

/** Where the lines go. It stays open until the process ends, for destructors log, too. */
class Destination {
public:
  /** The file that is appended to; null or empty for standard error. */
  explicit Destination(const char *path);

  /** Why the file cannot be used and standard error takes its place; empty when all is well. */
  const std::string &complaint() const { return _complaint; }

  /** False when not all could be written. No signal is raised for it. */
  bool write(std::string_view bytes) const;

private:
  int _descriptor;
  /// The last line found a full pipe that nobody reads: the next one does not wait.
  mutable std::atomic<bool> _isStalled{false};
  std::string _complaint;
};

/** Writes to standard error, as Destination::write() does; what cannot be written is lost. */
void writeToStandardError(std::string_view bytes);

} // namespace platform::dlog

#endif
