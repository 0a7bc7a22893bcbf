// SPDX-License-Identifier: Apache-2.0
#include "assistant/launch/Probes.h"

#include "assistant/launch/Target.h"

#include <array>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

namespace norix::assistant::launch {
namespace {

namespace fs = std::filesystem;

constexpr const char *kLibraryVariable = "NORIX_PROBE_LIBRARY";
constexpr const char *kLibraryName = "libnorix-probe.so";
constexpr std::size_t kChunk = 65536;

} // namespace

Probes::Probes(const std::string &appId)
    : _path(runtimePath(appId, ".probe-" + std::to_string(getpid()))), _listening(listenAt(_path)) {
  if (!_listening) {
    throw std::runtime_error("cannot listen at '" + _path + "'; set XDG_RUNTIME_DIR to a folder "
                             + "with a short path");
  }
}

Probes::~Probes() {
  unlink(_path.c_str());
}

void Probes::addTo(std::vector<pollfd> &polled) const {
  polled.push_back({_listening.get(), POLLIN, 0});
  for (const Probe &probe : _probes) {
    polled.push_back({probe.connection.get(), POLLIN, 0});
  }
}

std::vector<std::string> Probes::read() {
  while (Descriptor connection = acceptFrom(_listening)) {
    _probes.push_back({std::move(connection), {}, false});
  }
  std::vector<std::string> lines;
  std::array<char, kChunk> bytes;
  for (Probe &probe : _probes) {
    const ssize_t size = recv(probe.connection.get(), bytes.data(), bytes.size(), MSG_DONTWAIT);
    if (size > 0) {
      std::vector<std::string> arrived =
          probe.lines.add({bytes.data(), static_cast<std::size_t>(size)});
      std::move(arrived.begin(), arrived.end(), std::back_inserter(lines));
    } else if (size == 0 || (errno != EAGAIN && errno != EINTR)) {
      probe.isGone = true;
    }
  }
  _probes.remove_if([](const Probe &probe) { return probe.isGone; });
  return lines;
}

std::string findProbeLibrary() {
  if (const char *const given = std::getenv(kLibraryVariable)) {
    return given;
  }
  std::error_code error;
  const fs::path folder = fs::read_symlink("/proc/self/exe", error).parent_path();
  for (const char *const place : {"../lib", "../" NORIX_LIBDIR "/norix"}) {
    const fs::path candidate = folder / place / kLibraryName;
    if (fs::exists(candidate, error)) {
      return fs::canonical(candidate);
    }
  }
  throw LaunchError(std::string(kLibraryName) + " is not beside norix-assistant; install it, or "
                    + "give its path in " + kLibraryVariable);
}

} // namespace norix::assistant::launch
