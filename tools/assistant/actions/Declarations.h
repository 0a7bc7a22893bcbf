// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_ACTIONS_DECLARATIONS_H
#define NORIX_ASSISTANT_ACTIONS_DECLARATIONS_H

#include "assistant/actions/Finding.h"
#include "assistant/actions/LocatedJson.h"

#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

namespace norix::assistant::actions {

/** @brief Where the file of declarations lies in an application's folder. */
inline constexpr const char *kFile = "shared/res/norix-actions.json";

/** @brief One action that an application declares. */
struct Action {
  std::string id;
  std::string title;
  /** What the action does, for people and for language models. */
  std::string description;
  /** The form of the parameters: a flat JSON Schema object; without any, one without members. */
  Json parameters = Json::object();
  /** Parameters to call the action with; each an object that meets the form. */
  std::vector<Json> examples;
  /** What users say; "{name}" stands for a parameter. */
  std::vector<std::string> utterances;
  bool readOnly = false;    /**< It changes nothing. */
  bool destructive = false; /**< What it changes cannot be had back. */
  bool confirm = false;     /**< The user is to be asked before. */
};

/** @brief What an application says about its state. */
struct State {
  std::string description;
  /** The form of the state's text, which is JSON then; without it, the text is free. */
  std::optional<Json> form;
  std::vector<Json> examples;
};

/** @brief What an application declares: its actions, in the order of the file, and its state. */
struct Declarations {
  std::optional<State> state;
  std::vector<Action> actions;

  /** @brief The action with this id, or null; it lives as long as the declarations. */
  const Action *find(const std::string &id) const;
};

/** @brief Declarations that cannot be used; what() names the file and each error's place. */
class DeclarationError : public std::runtime_error {
  using std::runtime_error::runtime_error;
};

/** @brief A file of declarations as it was found. */
struct Reading {
  /** What could be read; complete only when isUsable(). */
  Declarations declarations;
  /** Errors and warnings, in the order of the file. */
  Findings findings;

  bool isUsable() const;
};

/** @brief Reads and lints the text of a file of declarations. */
Reading parse(const std::string &text);

/**
 * @brief Reads and lints the declarations in an application's folder.
 * @return Nothing when the application declares nothing; a file that cannot be read is a finding
 */
std::optional<Reading> read(const std::filesystem::path &applicationFolder);

/**
 * @brief The declarations in an application's folder, for those who need them without errors.
 * @return Nothing when the application declares nothing
 * @throw DeclarationError
 */
std::optional<Declarations> load(const std::filesystem::path &applicationFolder);

} // namespace norix::assistant::actions

#endif
