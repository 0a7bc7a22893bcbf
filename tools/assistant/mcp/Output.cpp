// SPDX-License-Identifier: Apache-2.0
#include "assistant/mcp/Output.h"

#include <cerrno>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace norix::assistant::mcp {
namespace {

constexpr std::size_t kWaitingBytes = std::size_t{64} << 20U;

// A description of its own for a pipe: O_NONBLOCK on the given one would change it for every
// process that shares it. -1 where that cannot be had; writing then waits for the reader.
int reopenedNonBlocking(int descriptor) {
  struct stat status = {};
  if (fstat(descriptor, &status) != 0 || !S_ISFIFO(status.st_mode)) {
    return -1;
  }
  const std::string path = "/proc/self/fd/" + std::to_string(descriptor);
  return open(path.c_str(), O_WRONLY | O_NONBLOCK | O_CLOEXEC);
}

} // namespace

Output::Output(int descriptor, std::function<void()> lost)
    : _descriptor(descriptor), _lost(std::move(lost)) {
  if (const int own = reopenedNonBlocking(descriptor); own >= 0) {
    _descriptor = own;
    _owned = true;
  }
}

Output::~Output() {
  watch(false);
  if (_owned) {
    close(_descriptor);
  }
}

void Output::writeLine(std::string_view line) {
  if (!_lost) {
    return;
  }
  _waiting.append(line).push_back('\n');
  if (_waiting.size() - _written > kWaitingBytes) {
    lose();
    return;
  }
  if (_watch == nullptr) {
    flush();
  }
}

void Output::flush() {
  while (_written < _waiting.size()) {
    const ssize_t took = write(_descriptor, _waiting.data() + _written, _waiting.size() - _written);
    if (took >= 0) {
      _written += static_cast<std::size_t>(took);
    } else if (errno == EAGAIN) {
      watch(true);
      return;
    } else if (errno != EINTR) {
      lose();
      return;
    }
  }
  _waiting.clear();
  _written = 0;
  watch(false);
}

void Output::lose() {
  _waiting.clear();
  _written = 0;
  watch(false);
  if (const auto lost = std::exchange(_lost, nullptr)) {
    lost();
  }
}

void Output::watch(bool wanted) {
  if (wanted && _watch == nullptr) {
    _watch =
        ecore_main_fd_handler_add(_descriptor, ECORE_FD_WRITE, onWritable, this, nullptr, nullptr);
  } else if (!wanted && _watch != nullptr) {
    ecore_main_fd_handler_del(std::exchange(_watch, nullptr));
  }
}

Eina_Bool Output::onWritable(void *data, Ecore_Fd_Handler * /*watch*/) {
  static_cast<Output *>(data)->flush();
  return ECORE_CALLBACK_RENEW;
}

} // namespace norix::assistant::mcp
