// SPDX-License-Identifier: Apache-2.0
#include "assistant/mcp/Input.h"

#include <array>
#include <cerrno>
#include <new>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace norix::assistant::mcp {
namespace {

constexpr std::size_t kChunk = std::size_t{64} * 1024;

bool isFile(int descriptor) {
  struct stat status = {};
  return fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode);
}

} // namespace

Input::Input(int descriptor, LineReader reader, std::function<void()> ended)
    : _descriptor(descriptor), _reader(std::move(reader)), _ended(std::move(ended)) {
  // A file is always readable, and so cannot be watched.
  if (isFile(descriptor)) {
    _idler = ecore_idler_add(onIdle, this);
  } else {
    _watch =
        ecore_main_fd_handler_add(descriptor, ECORE_FD_READ, onReadable, this, nullptr, nullptr);
  }
  if (_idler == nullptr && _watch == nullptr) {
    throw std::bad_alloc();
  }
}

Input::~Input() {
  stop();
}

void Input::stop() {
  if (_watch != nullptr) {
    ecore_main_fd_handler_del(std::exchange(_watch, nullptr));
  }
  if (_idler != nullptr) {
    ecore_idler_del(std::exchange(_idler, nullptr));
  }
}

bool Input::readSome() {
  std::array<char, kChunk> chunk;
  const ssize_t got = read(_descriptor, chunk.data(), chunk.size());
  if (got > 0) {
    _reader.feed({chunk.data(), static_cast<std::size_t>(got)});
    return true;
  }
  if (got < 0 && (errno == EINTR || errno == EAGAIN)) {
    return true;
  }
  _reader.finish();
  stop();
  _ended();
  return false;
}

Eina_Bool Input::onReadable(void *data, Ecore_Fd_Handler * /*watch*/) {
  return static_cast<Input *>(data)->readSome() ? ECORE_CALLBACK_RENEW : ECORE_CALLBACK_CANCEL;
}

Eina_Bool Input::onIdle(void *data) {
  return static_cast<Input *>(data)->readSome() ? ECORE_CALLBACK_RENEW : ECORE_CALLBACK_CANCEL;
}

} // namespace norix::assistant::mcp
