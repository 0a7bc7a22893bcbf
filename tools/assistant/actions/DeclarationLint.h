// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_ACTIONS_DECLARATIONLINT_H
#define NORIX_ASSISTANT_ACTIONS_DECLARATIONLINT_H

#include "assistant/actions/Finding.h"
#include "assistant/actions/LocatedJson.h"

namespace norix::assistant::actions {

/// What is wrong in a document of declarations, in the order of the text.
Findings lint(const LocatedJson &document);

} // namespace norix::assistant::actions

#endif
