// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_REPORT_WRITER_H
#define NORIX_ASSISTANT_REPORT_WRITER_H

#include "assistant/report/Suite.h"

#include <memory>
#include <ostream>

namespace norix::assistant::report {

/// Writes what was tried, in a format of its own, to a stream that outlives it.
class Writer {
public:
  Writer() = default;
  virtual ~Writer() = default;
  Writer(const Writer &) = delete;
  Writer &operator=(const Writer &) = delete;

  /// To be called once for each case, as soon as it has ended.
  virtual void add(const Case &tried) = 0;
  /// To be called once, after the last case. The suite has all the cases.
  virtual void end(const Suite &suite) = 0;
};

/// For people: a line for a case that passed, all steps and time lines of one that did not.
std::unique_ptr<Writer> makePeopleWriter(std::ostream &out, bool hasColours);
/// The Test Anything Protocol, version 14: a subtest for a case, a test point for a step.
std::unique_ptr<Writer> makeTapWriter(std::ostream &out);
/// One JSON object (toJson()), on a line.
std::unique_ptr<Writer> makeJsonWriter(std::ostream &out);
/// The XML that build servers read: a test suite for a case, a test case for a step.
std::unique_ptr<Writer> makeJunitWriter(std::ostream &out);
/// One page that needs nothing else, with the time line of every step drawn to scale.
std::unique_ptr<Writer> makeHtmlWriter(std::ostream &out);

} // namespace norix::assistant::report

#endif
