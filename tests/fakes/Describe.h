// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_FAKES_DESCRIBE_H
#define NORIX_FAKES_DESCRIBE_H

#include <Ecore.h>
#include <app_info.h>
#include <bundle.h>
#include <rpc-port-parcel.h>
#include <rpc-port.h>

#include <string>

namespace fake {

/// Types for the platform's handles, which are all void pointers.
struct StubHandle {
  rpc_port_stub_h handle;
};
struct PortHandle {
  rpc_port_h handle;
};
struct ParcelHandle {
  rpc_port_parcel_h handle;
};

/// An argument of a platform call as the journal shows it: handles by the order of their creation
/// ("bundle 2"), null as "null", long texts cut.
std::string describe(const char *text);
std::string describe(int number);
std::string describe(bool value);
std::string describe(size_t number);
std::string describe(double number);
std::string describe(bundle *handle);
std::string describe(app_info_h handle);
std::string describe(Ecore_Timer *timer);
std::string describe(StubHandle stub);
std::string describe(PortHandle port);
std::string describe(ParcelHandle parcel);

} // namespace fake

#endif
