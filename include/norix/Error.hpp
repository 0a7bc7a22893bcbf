/* SPDX-License-Identifier: Apache-2.0 */
#ifndef NORIX_ERROR_HPP
#define NORIX_ERROR_HPP

#include <norix.h>
#include <norix/detail/log.hpp>

#include <stdexcept>
#include <string>
#include <utility>
#include <variant>

namespace norix {

namespace detail {

inline const char *nameOf(int code) noexcept {
  switch (code) {
  case NORIX_ERROR_NONE:
    return "NORIX_ERROR_NONE";
  case NORIX_ERROR_OUT_OF_MEMORY:
    return "NORIX_ERROR_OUT_OF_MEMORY";
  case NORIX_ERROR_INVALID_PARAMETER:
    return "NORIX_ERROR_INVALID_PARAMETER";
  case NORIX_ERROR_NOT_SUPPORTED:
    return "NORIX_ERROR_NOT_SUPPORTED";
  case NORIX_ERROR_OPERATION_FAILED:
    return "NORIX_ERROR_OPERATION_FAILED";
  default:
    return "an unknown error";
  }
}

} // namespace detail

#ifdef __clang__
#pragma clang diagnostic push
// There is no source file that a virtual function could be defined in.
#pragma clang diagnostic ignored "-Wweak-vtables"
#endif

/**
 * @brief Why a call failed: which function, with what result, and what to do about it.
 * @details what() holds all three in one sentence, for a log line. An Error owns its texts and may
 * be copied and used on any thread.
 * @code
 * try {
 *   norix::Assistant assistant;
 * } catch (const norix::Error &error) {
 *   dlog_print(DLOG_ERROR, "MUSIC", "%s", error.what());
 * }
 * @endcode
 */
class Error : public std::runtime_error {
public:
  /**
   * @param function  The function that failed
   * @param code      Its result, of #norix_error_e
   * @param advice    What to do about it
   */
  Error(const std::string &function, int code, const std::string &advice)
      : std::runtime_error(function + " failed with " + detail::nameOf(code) + " ("
                           + std::to_string(code) + "): " + advice),
        _function(function), _code(code), _advice(advice) {}

  /** @brief The function that failed, for example "norix_initialize". */
  const std::string &function() const noexcept { return _function; }
  /** @brief Its result, of #norix_error_e. */
  int code() const noexcept { return _code; }
  /** @brief What to do about it, one sentence. */
  const std::string &advice() const noexcept { return _advice; }

private:
  std::string _function;
  int _code;
  std::string _advice;
};

#ifdef __clang__
#pragma clang diagnostic pop
#endif

namespace detail {

#ifdef __cpp_exceptions
[[noreturn]] inline void raise(const Error &error) {
  throw error;
}
#else
inline void raise(const Error &error) {
  dlog_print(DLOG_ERROR, kLogTag, "%s", error.what());
}
#endif

} // namespace detail

/**
 * @brief A value, or the Error that stands in its place: for applications without exceptions.
 * @code
 * norix::Result<norix::Assistant> made = norix::Assistant::create();
 * if (!made) {
 *   dlog_print(DLOG_ERROR, "MUSIC", "%s", made.error()->what());
 * }
 * @endcode
 */
template <class Value>
class Result {
public:
  /** @brief Success. */
  Result(Value value) : _content(std::move(value)) {}
  /** @brief Failure. */
  Result(Error error) : _content(std::move(error)) {}

  /** @brief Whether there is a value. */
  explicit operator bool() const noexcept { return value() != nullptr; }
  /** @brief The value, or null; owned by the result. */
  Value *value() noexcept { return std::get_if<Value>(&_content); }
  /** @brief The value, or null; owned by the result. */
  const Value *value() const noexcept { return std::get_if<Value>(&_content); }
  /** @brief The error, or null; owned by the result. */
  const Error *error() const noexcept { return std::get_if<Error>(&_content); }

private:
  std::variant<Value, Error> _content;
};

} // namespace norix

#endif
