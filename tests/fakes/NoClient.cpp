// SPDX-License-Identifier: Apache-2.0
#include "fakes/NoClient.h"

#include "NorixImpl/NorixCommonData.h"

namespace fake {

namespace {
int blocks = 0;
} // namespace

NoClient::NoClient() {
  ++blocks;
}

NoClient::~NoClient() {
  --blocks;
}

} // namespace fake

// bool norix::NorixCommonData::hasClient() const, mangled.
extern "C" {

bool __real__ZNK5norix15NorixCommonData9hasClientEv(const norix::NorixCommonData *self);

bool __wrap__ZNK5norix15NorixCommonData9hasClientEv(const norix::NorixCommonData *self) {
  return fake::blocks == 0 && __real__ZNK5norix15NorixCommonData9hasClientEv(self);
}
}
