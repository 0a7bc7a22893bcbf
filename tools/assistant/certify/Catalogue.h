// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_CERTIFY_CATALOGUE_H
#define NORIX_ASSISTANT_CERTIFY_CATALOGUE_H

#include <string>
#include <vector>

namespace norix::assistant::certify {

class Examination;
class Verdicts;

/// How much a check counts.
enum class Level {
  Must,       ///< An application that fails it is not certified.
  Should,     ///< It counts when the examination is strict.
  Information ///< It never counts.
};

/// "must", "should", "information"
const char *wordOf(Level level);

/// One row of the catalogue; norix-certify(7) has the same rows.
struct Check {
  const char *id;
  Level level;
  /// What it belongs to.
  const char *chapter;
  /// What has to be true.
  const char *title;
  /// Why it matters, a sentence.
  const char *why;
  /// What to do about a failure, a sentence.
  const char *mend;
  void (*run)(Examination &examination, Verdicts &verdicts);
};

/// All checks, in the order in which they are done; those of a chapter follow each other.
const std::vector<Check> &catalogue();

/// The check with this id, or null.
const Check *findCheck(const std::string &id);

} // namespace norix::assistant::certify

#endif
