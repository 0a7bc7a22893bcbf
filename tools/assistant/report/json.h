// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_REPORT_JSON_H
#define NORIX_ASSISTANT_REPORT_JSON_H

#include "assistant/report/Suite.h"

#include <nlohmann/json.hpp>

namespace norix::assistant::report {

/// What norix-scenario(5) documents as the report in JSON. Texts stand in it byte for byte: dump it
/// with an error handler, or as CBOR.
nlohmann::ordered_json toJson(const Suite &suite);
nlohmann::ordered_json toJson(const Case &tried);

/// The case that toJson() made the value from.
Case caseFrom(const nlohmann::ordered_json &value);

} // namespace norix::assistant::report

#endif
