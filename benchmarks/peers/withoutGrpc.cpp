// SPDX-License-Identifier: Apache-2.0
//
// In the place of grpc.cpp where its packages are missing.
#include "peers/Peer.h"

namespace benchmarks {

PeerKind grpcOverUnixSocket() {
  return {"gRPC over a Unix socket", nullptr, nullptr,
          "libgrpc++-dev, libprotobuf-dev and protobuf-compiler-grpc"};
}

} // namespace benchmarks
