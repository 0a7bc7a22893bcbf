// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_TESTS_INTEGRATION_EXAMPLES_H
#define NORIX_TESTS_INTEGRATION_EXAMPLES_H

namespace integration {

/// The application ids of the examples.
constexpr const char *kLight = "org.example.light";
constexpr const char *kMusic = "org.example.music";

} // namespace integration

#endif
