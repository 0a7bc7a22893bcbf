// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_COMMON_SINGLETON_H
#define NORIX_COMMON_SINGLETON_H

#include <pthread.h>

#include <new>

namespace norix {

/// The process-wide object of a class, created by the first call and never destroyed, because the
/// platform may still call it while the process ends. Null for good when that first allocation
/// failed. The class has the static members _instance and _initInstance.
template <class Object>
Object *instanceOf() {
  if (Object::_instance != nullptr) {
    return Object::_instance;
  }
  static pthread_once_t once = PTHREAD_ONCE_INIT;
  pthread_once(&once, Object::_initInstance);
  return Object::_instance;
}

template <class Object>
void createInstance() {
  Object::_instance = new (std::nothrow) Object();
}

} // namespace norix

#endif
