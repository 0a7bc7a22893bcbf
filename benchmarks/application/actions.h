// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_BENCHMARKS_APPLICATION_ACTIONS_H
#define NORIX_BENCHMARKS_APPLICATION_ACTIONS_H

#include <array>
#include <cstddef>
#include <string>

namespace benchmarks {

/** @brief When the measured application answers. */
enum class Answering { InCallback, InLaterTurn };

/** @brief The sizes of the texts that it answers with, in bytes. */
inline constexpr std::array<std::size_t, 4> kAnswerSizes = {120, 1024, 65536, 1048576};

/** @brief The action that is answered so. */
inline std::string answerAction(std::size_t size, Answering answering = Answering::InCallback) {
  return (answering == Answering::InCallback ? "now-" : "later-") + std::to_string(size);
}

/** @brief The actions between which a run under callgrind counts. */
inline constexpr const char *kBeginCounting = "beginCounting";
inline constexpr const char *kEndCounting = "endCounting";

} // namespace benchmarks

#endif
