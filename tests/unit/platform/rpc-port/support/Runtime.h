// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_RPC_PORT_SUPPORT_RUNTIME_H
#define TESTS_RPC_PORT_SUPPORT_RUNTIME_H

#include <functional>
#include <gtest/gtest.h>
#include <optional>
#include <string>

namespace rpc_test {

constexpr const char *kAppId = "org.example.music";

/// A test in an application of its own: an empty runtime directory, an app id, and the Ecore loop.
class Runtime : public testing::Test {
public:
  Runtime();
  ~Runtime() override;
  Runtime(const Runtime &) = delete;
  Runtime &operator=(const Runtime &) = delete;

protected:
  const std::string &directory() const { return _directory; }
  /// Where the stub of a port listens.
  std::string socketPath(const std::string &port) const;

private:
  std::string _directory;
};

/// Sets a variable of the environment, and takes that back.
class Environment {
public:
  Environment(const char *name, const std::string &value);
  ~Environment();
  Environment(const Environment &) = delete;
  Environment &operator=(const Environment &) = delete;

private:
  const char *_name;
  std::optional<std::string> _before;
};

/**
 * @brief Runs the loop until the condition holds.
 * @return false when it has not come to hold within a generous bound.
 */
bool runUntil(const std::function<bool()> &condition);

/// Runs the loop until everything that was ready or planned when it was called has been seen to.
void settle();

/// How many descriptors this process has open.
std::size_t countDescriptors();

} // namespace rpc_test

#endif
