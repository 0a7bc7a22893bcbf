// SPDX-License-Identifier: Apache-2.0
#include "ManifestReader.h"

#include "AppId.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <new>
#include <pugixml.hpp>
#include <sys/stat.h>
#include <unistd.h>

namespace platform::application {
namespace {

constexpr std::array<const char *, 4> kApplicationElements{
    "ui-application", "service-application", "widget-application", "watch-application"};

constexpr const char *kDefaultType = "capp";

class File {
public:
  // Non-blocking, so that a pipe in the manifest's place cannot hold the caller up.
  explicit File(const std::string &path)
      : _descriptor(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK)) {}
  ~File() {
    if (_descriptor >= 0) {
      close(_descriptor);
    }
  }
  File(const File &) = delete;
  File &operator=(const File &) = delete;

  int descriptor() const { return _descriptor; }

private:
  int _descriptor;
};

[[noreturn]] void failReading(const std::string &path, const std::string &problem) {
  throw ManifestError(ManifestError::Kind::Unreadable, path + ": " + problem);
}

std::size_t checkedSize(const File &file, const std::string &path) {
  struct stat status = {};
  if (file.descriptor() < 0 || fstat(file.descriptor(), &status) != 0) {
    const bool isLack = errno == EMFILE || errno == ENFILE;
    failReading(path, std::string("cannot be opened: ") + std::strerror(errno)
                          + (isLack ? "; close descriptors or raise their limit"
                                    : "; put a file there that the application's user may read"));
  }
  if (!S_ISREG(status.st_mode)) {
    failReading(path, "is not a regular file; put the application's manifest there");
  }

  const auto size = static_cast<std::size_t>(status.st_size);
  if (size > ManifestReader::kMaxBytes) {
    failReading(path, "has " + std::to_string(size) + " bytes, more than the "
                          + std::to_string(ManifestReader::kMaxBytes)
                          + " a manifest may have; shorten it");
  }
  return size;
}

std::string readFile(const std::string &path) {
  const File file(path);
  std::string text(checkedSize(file, path), '\0');

  std::size_t filled = 0;
  while (filled < text.size()) {
    const ssize_t count = read(file.descriptor(), &text[filled], text.size() - filled);
    if (count < 0 && errno == EINTR) {
      continue;
    }
    if (count < 0) {
      failReading(path, std::string("cannot be read: ") + std::strerror(errno));
    }
    if (count == 0) {
      break;
    }
    filled += static_cast<std::size_t>(count);
  }
  text.resize(filled);
  return text;
}

bool isApplication(const pugi::xml_node &element) {
  return std::any_of(
      kApplicationElements.begin(), kApplicationElements.end(),
      [&element](const char *name) { return std::strcmp(element.name(), name) == 0; });
}

// Labels can be given per language; the one without a language is for everybody.
std::string readLabel(const pugi::xml_node &element) {
  for (const pugi::xml_node &label : element.children("label")) {
    if (!label.attribute("xml:lang")) {
      return label.text().get();
    }
  }
  return element.child("label").text().get();
}

} // namespace

Manifest ManifestReader::read(const std::string &path) {
  return parse(readFile(path), path);
}

Manifest ManifestReader::parse(const std::string &text, const std::string &name) {
  return ManifestReader(text, name).readPackage();
}

void ManifestReader::load(pugi::xml_document &document) const {
  // The parser takes a NUL for the end of the text and would drop what follows.
  const std::size_t nul = _text.find('\0');
  if (nul != std::string::npos) {
    refuse(static_cast<std::ptrdiff_t>(nul), "a NUL byte; save the file as UTF-8 text");
  }

  const pugi::xml_parse_result result =
      document.load_buffer(_text.data(), _text.size(), pugi::parse_default, pugi::encoding_utf8);
  if (result.status == pugi::status_out_of_memory) {
    throw std::bad_alloc();
  }
  if (!result) {
    refuse(result.offset, std::string(result.description()) + "; correct the XML there");
  }
}

Manifest ManifestReader::readPackage() const {
  pugi::xml_document document;
  load(document);
  const pugi::xml_node root = document.document_element();
  if (std::strcmp(root.name(), "manifest") != 0) {
    refuse(root.offset_debug(), std::string("the document is a <") + root.name()
                                    + ">; a manifest begins with <manifest>");
  }

  Manifest manifest;
  manifest.package = required(root, "package");
  manifest.version = root.attribute("version").value();
  for (const pugi::xml_node &element : root.children()) {
    if (isApplication(element)) {
      manifest.applications.push_back(readApplication(element));
    }
  }
  if (manifest.applications.empty()) {
    refuse(root.offset_debug(), "no application is declared; add a <ui-application> or a "
                                "<service-application>");
  }
  return manifest;
}

DeclaredApplication ManifestReader::readApplication(const pugi::xml_node &element) const {
  DeclaredApplication application;
  application.id = required(element, "appid");
  if (!isUsableAppId(application.id)) {
    refuse(element.offset_debug(),
           "the appid '" + application.id + "' cannot be used; choose one without '/'");
  }
  application.exec = element.attribute("exec").value();
  application.type = element.attribute("type").as_string(kDefaultType);
  application.label = readLabel(element);
  for (const pugi::xml_node &metadata : element.children("metadata")) {
    const pugi::xml_attribute value = metadata.attribute("value");
    application.metadata.push_back({required(metadata, "key"), value.value(), !value.empty()});
  }
  return application;
}

std::string ManifestReader::required(const pugi::xml_node &element, const char *attribute) const {
  std::string value = element.attribute(attribute).value();
  if (value.empty()) {
    refuse(element.offset_debug(),
           std::string("<") + element.name() + "> has no attribute '" + attribute + "'; add it");
  }
  return value;
}

void ManifestReader::refuse(std::ptrdiff_t offset, const std::string &problem) const {
  const auto end =
      _text.begin()
      + std::clamp<std::ptrdiff_t>(offset, 0, static_cast<std::ptrdiff_t>(_text.size()));
  const auto line = 1 + std::count(_text.begin(), end, '\n');
  throw ManifestError(ManifestError::Kind::Malformed,
                      _name + ":" + std::to_string(line) + ": " + problem);
}

} // namespace platform::application
