// SPDX-License-Identifier: Apache-2.0
#ifndef TESTS_APPLICATION_SUPPORT_APP_FOLDER_H
#define TESTS_APPLICATION_SUPPORT_APP_FOLDER_H

#include "support/Child.h"

#include <string>
#include <vector>

/** @brief A manifest with one application, of everything that a manifest can say. */
extern const char *const kMusicManifest;

/** @brief A temporary folder to put an application into. It vanishes with everything in it. */
class AppFolder {
public:
  AppFolder();
  ~AppFolder();
  AppFolder(const AppFolder &) = delete;
  AppFolder &operator=(const AppFolder &) = delete;

  /** @brief The path of something in the folder; of the folder itself without an argument. */
  std::string path(const std::string &relative = "") const;

  /** @brief Writes a file, in folders that are created as needed. */
  void write(const std::string &relative, const std::string &text) const;

  /** @brief Runs the program that answers one question, as bin/music of this folder. */
  Outcome ask(const std::string &question, const std::vector<std::string> &environment = {}) const;

  /** @brief Copies the program that answers one question. */
  std::string putProbe(const std::string &relative) const;
  /** @brief Copies the program that prints the stations of its life. */
  std::string putStations(const std::string &relative) const;

private:
  std::string put(const std::string &program, const std::string &relative) const;

  std::string _path;
};

#endif
