// SPDX-License-Identifier: Apache-2.0
#include "common/Descriptor.h"

#include <standardStreams.h>

#include <mutex>
#include <pthread.h>
#include <unistd.h>
#include <utility>

namespace platform::rpc_port {

/// Every open Descriptor of the process. Locked, because any thread may fork.
class DescriptorList {
public:
  static DescriptorList &get() {
    // Never destroyed: a fork can come as late as from another object's destructor.
    static auto *const list = new DescriptorList;
    return *list;
  }

  /// Held while a number moves between two objects, so that a fork always finds it in one of them.
  std::mutex &mutex() { return _mutex; }

  void add(Descriptor &descriptor) { _open.add(descriptor); }
  void remove(Descriptor &descriptor) { _open.remove(descriptor); }

private:
  DescriptorList() {
    (void)pthread_atfork([] { get()._mutex.lock(); }, [] { get()._mutex.unlock(); },
                         [] { get().closeInChild(); });
  }

  void closeInChild() {
    for (Descriptor *one = _open.first(); one; one = LinkedList<Descriptor>::after(*one)) {
      one->closeNumber();
    }
    _mutex.unlock();
  }

  std::mutex _mutex;
  LinkedList<Descriptor> _open;
};

// A port never has the number of a standard stream: what the application prints is not for its
// peer.
Descriptor::Descriptor(int number) : _number(aboveStandardStreams(number)) {
  const std::lock_guard<std::mutex> lock(DescriptorList::get().mutex());
  DescriptorList::get().add(*this);
}

Descriptor::Descriptor(Descriptor &&other) noexcept : _number(-1) {
  const std::lock_guard<std::mutex> lock(DescriptorList::get().mutex());
  DescriptorList::get().add(*this);
  _number = std::exchange(other._number, -1);
}

Descriptor &Descriptor::operator=(Descriptor &&other) noexcept {
  const std::lock_guard<std::mutex> lock(DescriptorList::get().mutex());
  std::swap(_number, other._number);
  return *this;
}

Descriptor::~Descriptor() {
  const std::lock_guard<std::mutex> lock(DescriptorList::get().mutex());
  closeNumber();
  DescriptorList::get().remove(*this);
}

void Descriptor::close() {
  const std::lock_guard<std::mutex> lock(DescriptorList::get().mutex());
  closeNumber();
}

void Descriptor::closeNumber() {
  if (_number >= 0) {
    (void)::close(std::exchange(_number, -1));
  }
}

} // namespace platform::rpc_port
