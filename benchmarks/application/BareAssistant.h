// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_BENCHMARKS_APPLICATION_BAREASSISTANT_H
#define NORIX_BENCHMARKS_APPLICATION_BAREASSISTANT_H

#include "harness/Samples.h"

#include <common/Descriptor.h>
#include <wire/Frame.h>

#include <string>
#include <vector>

namespace benchmarks {

/**
 * @brief An assistant that costs next to nothing: it sends a request that was encoded beforehand,
 *        and receives the answer with blocking calls.
 * @details What an exchange with it takes longer than one over bare sockets is what an application
 *          pays for the library, the platform and the main loop.
 */
class BareAssistant {
public:
  explicit BareAssistant(const std::string &appId);

  /** @brief Asks so many times; checks that the answer holds a text of that size. */
  void exchange(const std::string &actionId, std::size_t answerSize, int count, Samples &samples);

private:
  void sayHello(const platform::rpc_port::Descriptor &socket, int portType,
                const std::string &instance);
  void registerDelegate();
  /** @return The number of bytes of the frame's payload, which is in _received then. */
  std::size_t receiveFrame(const platform::rpc_port::Descriptor &socket);

  platform::rpc_port::Descriptor _main;
  platform::rpc_port::Descriptor _callback;
  std::vector<char> _received;
};

} // namespace benchmarks

#endif
