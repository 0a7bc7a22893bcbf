// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_TESTS_SUPPORT_FILEDESCRIPTOR_H
#define NORIX_TESTS_SUPPORT_FILEDESCRIPTOR_H

namespace support {

/// Owner of a file descriptor; -1 is none.
class FileDescriptor {
public:
  explicit FileDescriptor(int number = -1) : _number(number) {}
  FileDescriptor(FileDescriptor &&other) noexcept;
  FileDescriptor &operator=(FileDescriptor &&other) noexcept;
  ~FileDescriptor();

  int get() const { return _number; }
  bool isOpen() const { return _number >= 0; }
  void close();

private:
  int _number;
};

} // namespace support

#endif
