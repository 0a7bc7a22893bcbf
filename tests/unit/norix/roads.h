// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_TESTS_ROADS_H
#define NORIX_TESTS_ROADS_H

#include "fakes/LibraryTest.h"

/// How far an application and its assistant have come before a test begins.

inline void nothing(fake::App & /*app*/, fake::Assistant & /*assistant*/) {}

inline void isInitialised(fake::App &app, fake::Assistant & /*assistant*/) {
  app.initialises();
}

inline void isConnected(fake::App &app, fake::Assistant &assistant) {
  app.initialises();
  assistant.connects();
}

/// With callbacks for the state and for this action, and a delegate.
inline void isReadyFor(const std::string &action, fake::App &app, fake::Assistant &assistant) {
  isConnected(app, assistant);
  app.registersForState();
  app.registersFor(action);
  assistant.registers();
}

inline void isReady(fake::App &app, fake::Assistant &assistant) {
  isReadyFor("play", app, assistant);
}

#endif
