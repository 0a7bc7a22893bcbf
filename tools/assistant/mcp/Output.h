// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_MCP_OUTPUT_H
#define NORIX_ASSISTANT_MCP_OUTPUT_H

#include <Ecore.h>

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

namespace norix::assistant::mcp {

/**
 * @brief Writes lines to a descriptor without holding the main loop up.
 * @details What the reader does not take at once waits here, up to a bound; beyond it the reader
 *          counts as gone.
 */
class Output {
public:
  /// @a lost is called once, when the reader is gone. The descriptor is borrowed.
  Output(int descriptor, std::function<void()> lost);
  ~Output();
  Output(const Output &) = delete;
  Output &operator=(const Output &) = delete;

  void writeLine(std::string_view line);

  /// Whether everything has been written.
  bool empty() const { return _waiting.empty(); }

private:
  static Eina_Bool onWritable(void *data, Ecore_Fd_Handler *watch);

  void flush();
  void lose();
  void watch(bool wanted);

  int _descriptor;
  bool _owned = false;
  std::function<void()> _lost;
  std::string _waiting;
  std::size_t _written = 0; // Of the bytes that wait.
  Ecore_Fd_Handler *_watch = nullptr;
};

} // namespace norix::assistant::mcp

#endif
