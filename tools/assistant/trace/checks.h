// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_TRACE_CHECKS_H
#define NORIX_ASSISTANT_TRACE_CHECKS_H

#include "assistant/trace/Finding.h"

#include <string>
#include <vector>

namespace norix::assistant::trace {

/// One metadata entry of an application, as its manifest declares it.
struct MetadataEntry {
  std::string key;
  std::string value;
  // Whether the manifest gives a value at all.
  bool hasValue = true;
};

/// What is wrong with the SDK version that a manifest declares.
///
/// Words: `no-metadata-key`, `metadata-key-misspelt` (which names the key that was meant),
/// `sdk-version-missing`, `sdk-version-empty`, `sdk-version-alpha`. An empty result means that the
/// library accepts it.
///
/// @param entries   all metadata entries of the application
/// @param manifest  the path of the manifest, for the sentences
std::vector<Finding> checkSdkVersion(const std::vector<MetadataEntry> &entries,
                                     const std::string &manifest);

/// What is wrong with a sender allow list. A file that is not there allows everybody: no finding.
///
/// Words: `allow-list-empty`, `allow-list-crlf`, `allow-list-blanks`, `allow-list-lacks-sender`,
/// `allow-list-unreadable`. CRLF and blanks are reported only when they keep the sender out.
///
/// @param path    the file that the application reads, which is not always #kDefaultAllowList
/// @param sender  the app id that wants to send requests
std::vector<Finding> checkAllowList(const std::string &path, const std::string &sender);

/// Where the library looks for the allow list unless the application says otherwise.
inline constexpr const char *kDefaultAllowList = "/usr/share/norix/allow_list.dat";

/// The number of characters to insert, delete or replace to get from one text to the other.
std::size_t editDistance(const std::string &from, const std::string &to);

} // namespace norix::assistant::trace

#endif
