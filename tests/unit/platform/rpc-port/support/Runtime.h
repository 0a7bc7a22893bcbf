// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_RPC_PORT_SUPPORT_RUNTIME_H
#define TESTS_RPC_PORT_SUPPORT_RUNTIME_H

#include "support/ScopedVariable.h"
#include "support/TemporaryFolder.h"

#include <functional>
#include <gtest/gtest.h>
#include <string>

namespace rpc_test {

using namespace support;

constexpr const char *kAppId = "org.example.music";

/// A test in an application of its own: an empty runtime directory, an app id, and the Ecore loop.
class Runtime : public testing::Test {
public:
  Runtime();
  ~Runtime() override;
  Runtime(const Runtime &) = delete;
  Runtime &operator=(const Runtime &) = delete;

protected:
  const std::string &directory() const { return _folder.path(); }
  /// Where the stub of a port listens.
  std::string socketPath(const std::string &port) const;

private:
  TemporaryFolder _folder;
};

using Environment = ScopedVariable;

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
