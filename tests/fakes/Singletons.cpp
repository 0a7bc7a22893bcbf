// SPDX-License-Identifier: Apache-2.0
#include "fakes/Singletons.h"

#include "ActionRequestImpl/ActionRequestImpl.h"
#include "NorixImpl/NorixCommonData.h"
#include "NorixImpl/NorixImpl.h"
#include "StateRequestImpl/StateRequestImpl.h"
#include "fakes/LibraryScope.h"

namespace fake {

namespace {

template <class Object>
void destroy() {
  delete Object::_instance;
  Object::_instance = nullptr;
}

} // namespace

void destroySingletons() {
  const InsideLibrary inside;
  destroy<norix::NorixImpl>();
  destroy<norix::NorixCommonData>();
  destroy<norix::StateRequestImpl>();
  destroy<norix::ActionRequestImpl>();
}

} // namespace fake
