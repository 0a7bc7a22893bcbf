// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_CERTIFY_CERTIFICATION_H
#define NORIX_ASSISTANT_CERTIFY_CERTIFICATION_H

#include "assistant/certify/Baseline.h"
#include "assistant/certify/Catalogue.h"
#include "assistant/certify/Examination.h"
#include "assistant/report/Suite.h"
#include "assistant/report/Writer.h"

#include <functional>
#include <string>
#include <vector>

namespace norix::assistant::certify {

/// Which checks are done, and how they are judged.
struct Rules {
  /// The ids of the checks to do; all when it is empty.
  std::vector<std::string> checks;
  /// Whether what an application should do counts.
  bool isStrict = false;
  Baseline baseline;
};

/// How far an examination is; all 0 when it is about to report.
struct Progress {
  std::size_t check = 0;
  std::size_t ofHowMany = 0;
  const char *id = "";
};

/// Does the checks of the catalogue, and judges what they find.
class Certification {
public:
  using Writers = std::vector<std::unique_ptr<report::Writer>>;

  /// @param inform  called before every check, and before every report
  Certification(Examination &examination, Rules rules,
                std::function<void(const Progress &)> inform);

  /// Does the checks; a chapter is a case, a verdict a step. The application is certified unless
  /// the outcome is a failure.
  /// @param writers  get every chapter as it ends, and the whole
  report::Suite run(const Writers &writers);

private:
  void performAll(report::Suite &suite, const Writers &writers);
  void close(report::Case &chapter, const Writers &writers);
  std::vector<report::Step> perform(const Check &check);
  void judge(const Check &check, report::Step &step) const;
  report::Case judgeBaseline(const report::Suite &suite) const;
  std::vector<const Check *> selected() const;

  Examination &_examination;
  const Rules _rules;
  const std::function<void(const Progress &)> _inform;
};

} // namespace norix::assistant::certify

#endif
