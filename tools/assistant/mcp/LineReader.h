// SPDX-License-Identifier: Apache-2.0
#ifndef NORIX_ASSISTANT_MCP_LINEREADER_H
#define NORIX_ASSISTANT_MCP_LINEREADER_H

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>

namespace norix::assistant::mcp {

/**
 * @brief Cuts a stream of bytes into lines, each at most a bound long.
 * @details A longer line is reported once and skipped up to its newline, so that memory stays
 *          bounded and the next line is read as usual. Empty lines are skipped.
 */
class LineReader {
public:
  struct Handlers {
    std::function<void(std::string_view)> line; ///< A line, without "\n" or "\r\n".
    std::function<void()> tooLong;              ///< A line passed the bound.
  };

  LineReader(std::size_t bound, Handlers handlers);

  /// Takes the next bytes of the stream.
  void feed(std::string_view bytes);
  /// Takes the end of the stream: a last line may lack its newline.
  void finish();

private:
  void take(std::string_view piece);
  void endLine();

  std::size_t _bound;
  Handlers _handlers;
  std::string _line;
  bool _skipping = false;
};

} // namespace norix::assistant::mcp

#endif
