// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_CLI_SAVETEXT_H
#define NORIX_ASSISTANT_CLI_SAVETEXT_H

#include <string>

namespace norix::assistant::cli {

/// Makes this the content of a file.
/// @throw std::runtime_error when the file cannot be written
void saveText(const std::string &file, const std::string &text);

} // namespace norix::assistant::cli

#endif
