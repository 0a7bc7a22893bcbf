// SPDX-License-Identifier: Apache-2.0
//
// How peers greet each other: the payload of a hello, and of a welcome. What is taken for one is
// written again and has to be the same.
#include "support/check.h"

#include "common/Names.h"
#include "wire/Hello.h"

#include <string_view>

namespace {

using fuzz::check;
namespace rpc = platform::rpc_port;

std::string_view textOf(const rpc::Buffer &buffer) {
  return {reinterpret_cast<const char *>(buffer.data()), buffer.size()};
}

void checkHello(const rpc::Hello &hello, std::string_view bytes) {
  check(textOf(rpc::encodeHello(hello)) == bytes, "a hello has one encoding");
  check(hello.portType == RPC_PORT_PORT_MAIN || hello.portType == RPC_PORT_PORT_CALLBACK,
        "a hello names one of the two ports");
  check(rpc::isAppId(hello.sender), "a sender's id can be a name in a file system");
  check(!hello.instance.empty() && hello.instance.size() <= rpc::kMaxInstance,
        "an instance has a name of bounded length");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  rpc::Buffer payload;
  payload.append(data, size);
  const std::string_view bytes = textOf(payload);

  if (const auto hello = rpc::decodeHello(payload)) {
    checkHello(*hello, bytes);
  }
  if (rpc::isWelcome(payload)) {
    check(textOf(rpc::encodeWelcome()) == bytes, "there is one welcome");
  }
  return 0;
}
