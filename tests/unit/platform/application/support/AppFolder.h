// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_APPLICATION_SUPPORT_APP_FOLDER_H
#define TESTS_APPLICATION_SUPPORT_APP_FOLDER_H

#include "support/Outcome.h"
#include "support/Process.h"
#include "support/TemporaryFolder.h"

#include <string>
#include <vector>

using support::Outcome;
using support::Process;

/// Runs a program with exactly these environment variables, "NAME=value" each.
Outcome run(const std::string &program, const std::vector<std::string> &arguments,
            const std::vector<std::string> &environment = {});

/// A manifest with one application, of everything that a manifest can say.
extern const char *const kMusicManifest;

/// A temporary folder to put an application into. It vanishes with everything in it.
class AppFolder {
public:
  /// The path of something in the folder; of the folder itself without an argument.
  std::string path(const std::string &relative = "") const;

  /// Writes a file, in folders that are created as needed.
  void write(const std::string &relative, const std::string &text) const;

  /// Runs the program that answers one question, as bin/music of this folder.
  Outcome ask(const std::string &question, const std::vector<std::string> &environment = {}) const;

  /// Copies the program that answers one question.
  std::string putProbe(const std::string &relative) const;
  /// Copies the program that prints the stations of its life.
  std::string putStations(const std::string &relative) const;

private:
  std::string put(const std::string &program, const std::string &relative) const;

  support::TemporaryFolder _folder;
};

#endif
