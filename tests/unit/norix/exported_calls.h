// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_TESTS_EXPORTED_CALLS_H
#define NORIX_TESTS_EXPORTED_CALLS_H

#include <functional>
#include <iosfwd>
#include <string>
#include <vector>

/// The nine exported functions, for tests that call each of them.
struct ExportedCall {
  std::string function;
  /// With arguments that are all given; the completions and norix_get_action_name get the handle.
  std::function<int(void *handle)> call;
};

void PrintTo(const ExportedCall &exported, std::ostream *out);

const std::vector<ExportedCall> &exportedCalls();

/// The result of norix_get_action_name, with the name taken over and released.
int getActionName(void *handle, std::string *name = nullptr);

#endif
