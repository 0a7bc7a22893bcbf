// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_MCP_INPUT_H
#define NORIX_ASSISTANT_MCP_INPUT_H

#include "assistant/mcp/LineReader.h"

#include <Ecore.h>

#include <functional>

namespace norix::assistant::mcp {

/// Reads lines from a descriptor as the main loop finds it readable: a pipe, a socket or a file.
class Input {
public:
  /// @a ended is called once, at the end of the input. The descriptor is borrowed.
  Input(int descriptor, LineReader reader, std::function<void()> ended);
  ~Input();
  Input(const Input &) = delete;
  Input &operator=(const Input &) = delete;

private:
  static Eina_Bool onReadable(void *data, Ecore_Fd_Handler *watch);
  static Eina_Bool onIdle(void *data);

  bool readSome();
  void stop();

  int _descriptor;
  LineReader _reader;
  std::function<void()> _ended;
  Ecore_Fd_Handler *_watch = nullptr;
  Ecore_Idler *_idler = nullptr;
};

} // namespace norix::assistant::mcp

#endif
