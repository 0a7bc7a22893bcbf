// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_TESTS_RESULTS_H
#define NORIX_TESTS_RESULTS_H

#include <norix.h>

#include <array>

constexpr int kDone = NORIX_ERROR_NONE;
constexpr int kInvalid = NORIX_ERROR_INVALID_PARAMETER;
constexpr int kFailed = NORIX_ERROR_OPERATION_FAILED;
constexpr int kNoMemory = NORIX_ERROR_OUT_OF_MEMORY;
constexpr int kUnsupported = NORIX_ERROR_NOT_SUPPORTED;

/// Of the nine functions, in this order: initialise, deinitialise, set and unset the state
/// callback, complete a state request, set and unset an action's callback, complete an action, get
/// its name.
using Results = std::array<int, 9>;

constexpr Results kNotInitialised = {kDone,   kDone,   kFailed, kFailed, kFailed,
                                     kFailed, kFailed, kFailed, kInvalid};
constexpr Results kIdle = {kDone, kDone, kDone, kDone, kDone, kDone, kDone, kDone, kInvalid};
/// A state request waits: answering it as an action comes too late, there is no such wait.
constexpr Results kStateWaits = {kDone, kDone, kDone, kDone, kDone, kDone, kDone, kFailed, kDone};
constexpr Results kActionWaits = {kDone, kDone, kDone, kDone, kFailed, kDone, kDone, kDone, kDone};

#endif
