// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_CERTIFY_PARAMETERS_H
#define NORIX_ASSISTANT_CERTIFY_PARAMETERS_H

#include "assistant/actions/Declarations.h"
#include "assistant/client/BundlePtr.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace norix::assistant::certify {

/// Parameters that an application has to cope with.
struct Params {
  /// What they are, to follow "with" in a sentence.
  std::string description;
  /// The text as it is sent; nothing for a request that has no parameters at all.
  std::optional<std::string> text;
};

// Parameters for an action, of one kind each; none where the declaration leaves no room for the
// kind.

std::vector<Params> missingParams(const actions::Action &action);
std::vector<Params> emptyParams(const actions::Action &action);
std::vector<Params> unknownParams(const actions::Action &action);
std::vector<Params> wronglyTypedParams(const actions::Action &action);
std::vector<Params> notJsonParams(const actions::Action &action);
std::vector<Params> hugeParams(const actions::Action &action);
std::vector<Params> nestedParams(const actions::Action &action);
std::vector<Params> notUtf8Params(const actions::Action &action);
std::vector<Params> nulParams(const actions::Action &action);

/// The bundle of a request for the action with these parameters.
BundlePtr toBundle(const actions::Action &action, const Params &params, std::uint64_t requestId);

} // namespace norix::assistant::certify

#endif
