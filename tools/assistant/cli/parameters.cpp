// SPDX-License-Identifier: Apache-2.0
#include "assistant/cli/parameters.h"

#include "assistant/cli/Console.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <nlohmann/json.hpp>
#include <set>
#include <unistd.h>

namespace norix::assistant::cli {
namespace {

using nlohmann::json;

// One message of the platform.
constexpr size_t kMostBytes = size_t{64} * 1024 * 1024;

std::string quoted(const std::string &text) {
  try {
    return json(text).dump();
  } catch (const json::exception &) {
    throw UsageError("a parameter is not UTF-8 text; JSON cannot carry it, give --params");
  }
}

bool isScalar(const std::string &text) {
  const bool isOtherJson = text.find_first_of("{[\" \t\r\n") != std::string::npos;
  return !isOtherJson && json::accept(text);
}

std::string asMember(const std::string &key, const std::string &value, bool isJson) {
  if (isJson && !json::accept(value)) {
    throw UsageError("'" + key + ":=" + value + "': what follows := is not JSON");
  }
  return quoted(key) + ":" + (isJson || isScalar(value) ? value : quoted(value));
}

std::string readAll(int file, const std::string &name) {
  std::string content;
  std::array<char, 65536> chunk{};
  ssize_t count = 0;
  while ((count = read(file, chunk.data(), chunk.size())) > 0) {
    content.append(chunk.data(), static_cast<size_t>(count));
    if (content.size() > kMostBytes) {
      throw UsageError("'" + name + "' has more than 64 MiB, the most that a request can carry");
    }
  }
  if (count < 0) {
    throw UsageError("cannot read '" + name + "': " + std::strerror(errno));
  }
  return content;
}

std::string readFile(const std::string &name) {
  const int file = open(name.c_str(), O_RDONLY | O_CLOEXEC);
  if (file < 0) {
    throw UsageError("cannot open '" + name + "': " + std::strerror(errno));
  }
  std::string content = readAll(file, name);
  close(file);
  return content;
}

} // namespace

std::string toJsonObject(const std::vector<std::string> &pairs) {
  std::set<std::string> keys;
  std::string object = "{";
  for (const std::string &pair : pairs) {
    const size_t equals = pair.find('=');
    const bool isJson = equals != std::string::npos && equals > 0 && pair[equals - 1] == ':';
    const size_t length = isJson ? equals - 1 : equals;
    if (equals == std::string::npos || length == 0) {
      throw UsageError("'" + pair + "' is no parameter; give KEY=VALUE or KEY:=JSON");
    }
    const std::string key = pair.substr(0, length);
    if (!keys.insert(key).second) {
      throw UsageError("the parameter '" + key + "' is given twice; give it once");
    }
    object += (keys.size() == 1 ? "" : ",") + asMember(key, pair.substr(equals + 1), isJson);
  }
  return object + "}";
}

std::string readParams(const std::string &params) {
  const bool isFile = !params.empty() && params.front() == '@';
  if (!isFile && params != "-") {
    return params;
  }
  std::string content = isFile ? readFile(params.substr(1)) : readAll(STDIN_FILENO, "-");
  if (content.find('\0') != std::string::npos) {
    throw UsageError("the parameters hold a NUL byte, which no text of a bundle can");
  }
  return content;
}

} // namespace norix::assistant::cli
