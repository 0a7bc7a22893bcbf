// SPDX-License-Identifier: Apache-2.0
#include "support/FileDescriptor.h"

#include <unistd.h>
#include <utility>

namespace support {

FileDescriptor::FileDescriptor(FileDescriptor &&other) noexcept
    : _number(std::exchange(other._number, -1)) {}

FileDescriptor &FileDescriptor::operator=(FileDescriptor &&other) noexcept {
  std::swap(_number, other._number);
  return *this;
}

FileDescriptor::~FileDescriptor() {
  close();
}

void FileDescriptor::close() {
  if (isOpen()) {
    ::close(std::exchange(_number, -1));
  }
}

} // namespace support
