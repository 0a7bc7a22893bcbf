// SPDX-License-Identifier: Apache-2.0
#include "assistant/trace/checks.h"

#include <norix.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <optional>

namespace norix::assistant::trace {
namespace {

namespace fs = std::filesystem;

// A key this close to the right one is meant to be it.
constexpr std::size_t kFewLetters = 4;
// Versions of this series speak another protocol; the library looks for the text anywhere.
constexpr const char *kUnsupportedVersion = "1.0-alpha";

// The key without scheme and host: who gets those wrong still means this key.
std::string pathOfKey(const std::string &key) {
  const std::size_t scheme = key.find("://");
  const std::size_t slash = key.find('/', scheme == std::string::npos ? 0 : scheme + 3);
  return slash == std::string::npos ? std::string() : key.substr(slash);
}

std::string lowerCase(std::string text) {
  std::transform(text.begin(), text.end(), text.begin(), [](unsigned char letter) {
    return static_cast<char>(letter < 0x80 ? std::tolower(letter) : letter);
  });
  return text;
}

bool isNearlyTheKey(const std::string &key) {
  const std::string right = NORIX_SDK_VERSION_METADATA_KEY;
  return editDistance(lowerCase(key), right) <= kFewLetters
         || editDistance(lowerCase(pathOfKey(key)), pathOfKey(right)) <= kFewLetters;
}

Finding misspeltKey(const std::string &key, const std::string &right, const std::string &manifest) {
  return {"metadata-key-misspelt", "'" + manifest + "' has the metadata key '" + key
                                       + "', so norix_initialize() fails; write '" + right
                                       + "', character for character"};
}

Finding missingKey(const std::vector<MetadataEntry> &entries, const std::string &manifest) {
  const std::string right = NORIX_SDK_VERSION_METADATA_KEY;
  for (const MetadataEntry &entry : entries) {
    if (isNearlyTheKey(entry.key)) {
      return misspeltKey(entry.key, right, manifest);
    }
  }
  return {"no-metadata-key", "'" + manifest
                                 + "' declares no SDK version, so norix_initialize() fails; add "
                                   "<metadata key=\""
                                 + right + "\" value=\"1.0-beta\"/> to the application's element"};
}

struct List {
  std::vector<std::string> lines;
  bool has(const std::string &line) const {
    return std::find(lines.begin(), lines.end(), line) != lines.end();
  }
};

// Split as the library does: at '\n' only, and a last line needs none.
List readList(std::istream &file) {
  List list;
  for (std::string line; std::getline(file, line);) {
    list.lines.push_back(line);
  }
  return list;
}

std::string trimmed(const std::string &line) {
  constexpr const char *kBlanks = " \t\r\n\v\f";
  const std::size_t first = line.find_first_not_of(kBlanks);
  const std::size_t last = line.find_last_not_of(kBlanks);
  return first == std::string::npos ? std::string() : line.substr(first, last - first + 1);
}

// The line that was meant to allow the sender.
std::optional<std::string> intendedLine(const List &list, const std::string &sender) {
  const auto isMeant = [&sender](const std::string &line) { return trimmed(line) == sender; };
  const auto found = std::find_if(list.lines.begin(), list.lines.end(), isMeant);
  return found != list.lines.end() ? std::optional<std::string>(*found) : std::nullopt;
}

Finding refusal(const std::string &path, const List &list, const std::string &sender) {
  const std::string file = "the allow list '" + path + "' ";
  if (list.lines.empty()) {
    return {"allow-list-empty", file + "is empty and so refuses everybody; put '" + sender
                                    + "' on a line of its own, or remove the file"};
  }
  const std::optional<std::string> intended = intendedLine(list, sender);
  if (intended && *intended == sender + "\r") {
    return {"allow-list-crlf", file
                                   + "has CRLF line ends, which count as part of each id, and so "
                                     "refuses '"
                                   + sender + "'; save it with LF line ends"};
  }
  if (intended) {
    return {"allow-list-blanks", file + "has blanks around '" + sender
                                     + "', which count as part of the id; remove them"};
  }
  return {"allow-list-lacks-sender", file + "does not name '" + sender
                                         + "'; put it on a line of its own, or send as an id that "
                                           "is listed"};
}

} // namespace

std::size_t editDistance(const std::string &from, const std::string &to) {
  std::vector<std::size_t> row(to.size() + 1);
  for (std::size_t column = 0; column <= to.size(); ++column) {
    row[column] = column;
  }
  for (std::size_t line = 1; line <= from.size(); ++line) {
    std::size_t diagonal = row[0];
    row[0] = line;
    for (std::size_t column = 1; column <= to.size(); ++column) {
      const std::size_t replaced = diagonal + (from[line - 1] == to[column - 1] ? 0 : 1);
      diagonal = row[column];
      row[column] = std::min({replaced, row[column] + 1, row[column - 1] + 1});
    }
  }
  return row[to.size()];
}

std::vector<Finding> checkSdkVersion(const std::vector<MetadataEntry> &entries,
                                     const std::string &manifest) {
  // The last of several entries counts, as in the library.
  const auto isTheKey = [](const MetadataEntry &entry) {
    return entry.key == NORIX_SDK_VERSION_METADATA_KEY;
  };
  const auto found = std::find_if(entries.rbegin(), entries.rend(), isTheKey);
  if (found == entries.rend()) {
    return {missingKey(entries, manifest)};
  }
  if (!found->hasValue) {
    return {{"sdk-version-missing", "'" + manifest
                                        + "' declares the key of the SDK version and no version; "
                                          "add value=\"1.0-beta\", or whichever version the "
                                          "application was written for, to its <metadata>"}};
  }
  if (found->value.empty()) {
    return {{"sdk-version-empty", "'" + manifest
                                      + "' declares an SDK version without a value; give the "
                                        "version that the application was written for, such as "
                                        "\"1.0-beta\""}};
  }
  if (found->value.find(kUnsupportedVersion) != std::string::npos) {
    return {{"sdk-version-alpha", "'" + manifest + "' declares the SDK version '" + found->value
                                      + "', a series that the library does not serve, so "
                                        "norix_initialize() fails; declare \"1.0-beta\" or newer"}};
  }
  return {};
}

std::vector<Finding> checkAllowList(const std::string &path, const std::string &sender) {
  std::error_code error;
  if (!fs::exists(path, error) && !error) {
    return {};
  }
  std::ifstream file(path);
  if (!file.is_open()) {
    return {{"allow-list-unreadable", "the allow list '" + path + "' cannot be opened ("
                                          + std::strerror(errno)
                                          + "), so the library allows everybody; make it readable "
                                            "for the application's user"}};
  }
  const List list = readList(file);
  if (list.has(sender)) {
    return {};
  }
  return {refusal(path, list, sender)};
}

} // namespace norix::assistant::trace
