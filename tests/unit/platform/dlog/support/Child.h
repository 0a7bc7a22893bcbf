// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_PLATFORM_DLOG_SUPPORT_CHILD_H
#define TESTS_PLATFORM_DLOG_SUPPORT_CHILD_H

#include <functional>
#include <map>
#include <string>
#include <sys/types.h>
#include <vector>

/** @brief What a child left behind. */
struct Outcome {
  pid_t pid = -1;
  /** What the child's function returned, or the negated number of the signal that killed it. */
  int status = -1;
  /** What it wrote to standard error, one element per write. */
  std::vector<std::string> writes;

  std::string all() const;
};

using Environment = std::map<std::string, std::string>;

/**
 * @brief Runs a function in a child process, where nothing has been logged yet, with only the given
 *        ones of the log's environment variables.
 */
Outcome inChild(const Environment &environment, const std::function<int()> &function);

/** @brief The part of a line behind the time and the process id: `E/TAG     : text` and so on. */
std::string withoutTimeAndPid(const std::string &line);

/** @brief A folder that goes away with everything in it. */
class TemporaryFolder {
public:
  TemporaryFolder();
  ~TemporaryFolder();
  TemporaryFolder(const TemporaryFolder &) = delete;
  TemporaryFolder &operator=(const TemporaryFolder &) = delete;

  std::string operator/(const std::string &name) const { return _path + "/" + name; }
  const std::string &path() const { return _path; }

private:
  std::string _path;
};

/** @brief The content of a file. */
std::string contentOf(const std::string &path);

#endif
