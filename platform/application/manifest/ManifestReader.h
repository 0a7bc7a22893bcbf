// SPDX-License-Identifier: Apache-2.0
#ifndef PLATFORM_APPLICATION_MANIFEST_MANIFEST_READER_H
#define PLATFORM_APPLICATION_MANIFEST_MANIFEST_READER_H

#include "manifest/Manifest.h"

#include <cstddef>
#include <stdexcept>
#include <string>

namespace pugi {
class xml_document;
class xml_node;
} // namespace pugi

namespace platform::application {

/** @brief A manifest that cannot be used: what() says which file, where, why, and what to do. */
class ManifestError : public std::runtime_error {
public:
  /** @brief Whether the file could not be read, or was read and declares nothing usable. */
  enum class Kind { Unreadable, Malformed };

  ManifestError(Kind kind, const std::string &text) : std::runtime_error(text), _kind(kind) {}

  Kind kind() const { return _kind; }

private:
  Kind _kind;
};

/**
 * @brief Turns a manifest file into a Manifest.
 * @details The file is taken for hostile: it has to be a regular file of at most kMaxBytes,
 * document types are skipped, entities other than XML's own five stay the text they are, and
 *          nothing recurses into the depth of the document.
 */
class ManifestReader {
public:
  static constexpr std::size_t kMaxBytes = std::size_t{1024} * 1024;

  /** @brief Reads the file. Throws ManifestError. */
  static Manifest read(const std::string &path);

  /** @brief Reads a text; the name stands for the file in error texts. Throws ManifestError. */
  static Manifest parse(const std::string &text, const std::string &name);

private:
  ManifestReader(const std::string &text, const std::string &name) : _text(text), _name(name) {}

  void load(pugi::xml_document &document) const;
  Manifest readPackage() const;
  DeclaredApplication readApplication(const pugi::xml_node &element) const;
  std::string required(const pugi::xml_node &element, const char *attribute) const;
  [[noreturn]] void refuse(std::ptrdiff_t offset, const std::string &problem) const;

  const std::string &_text;
  const std::string &_name;
};

} // namespace platform::application

#endif
