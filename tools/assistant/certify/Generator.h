// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_CERTIFY_GENERATOR_H
#define NORIX_ASSISTANT_CERTIFY_GENERATOR_H

#include "assistant/actions/LocatedJson.h"

#include <cstdint>
#include <random>
#include <string>

namespace norix::assistant::certify {

/// Draws parameters by lot: some that have a form, more that nearly have it, and a few that are
/// nothing of the kind. The same seed draws the same ones everywhere.
class Generator {
public:
  explicit Generator(std::uint64_t seed) : _random(seed) {}

  /// The text of parameters for an action whose parameters have this form.
  std::string params(const actions::Json &form);

private:
  std::size_t below(std::size_t count);
  bool happens(std::size_t oneIn) { return below(oneIn) == 0; }

  actions::Json valid(const actions::Json &form);
  actions::Json validObject(const actions::Json &form);
  actions::Json validArray(const actions::Json &form);
  actions::Json validText(const actions::Json &form);
  actions::Json validNumber(const actions::Json &form);
  actions::Json odd();
  void spoil(actions::Json &object, const actions::Json &form);
  std::string spoiled(std::string text);

  std::mt19937_64 _random;
};

} // namespace norix::assistant::certify

#endif
