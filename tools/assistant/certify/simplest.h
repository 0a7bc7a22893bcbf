// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_CERTIFY_SIMPLEST_H
#define NORIX_ASSISTANT_CERTIFY_SIMPLEST_H

#include "assistant/actions/LocatedJson.h"

namespace norix::assistant::certify {

/// The simplest value that has a form: what is required and no more, short texts, numbers near 0.
actions::Json simplest(const actions::Json &form);

} // namespace norix::assistant::certify

#endif
