/* SPDX-License-Identifier: Apache-2.0 */
#ifndef NORIX_DETAIL_HANDLER_HPP
#define NORIX_DETAIL_HANDLER_HPP

#include <norix/Request.hpp>
#include <norix/detail/Exchange.hpp>
#include <norix/detail/text.hpp>

#include <bundle.h>

#include <memory>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>

namespace norix {
namespace detail {

// A request on its way into a callable. It lives as long as the callback.
class Incoming {
public:
  Incoming(RequestId id, const SharedId &actionId, const char *params) noexcept
      : _id(id), _actionId(actionId), _params(params) {}

  RequestId id() const noexcept { return _id; }
  // Lent by the library, until the callback returns.
  const char *params() const noexcept { return _params; }
  const std::string &actionId() const noexcept { return *_actionId; }

  // The callable takes over.
  Request request() const { return Request(_id, _actionId, _params); }

  void answer(const char *text) const noexcept {
    static_cast<void>(Exchange::instance().answer(_id, _actionId, text));
  }

  void failed(const char *why) const noexcept {
    dlog_print(DLOG_ERROR, kLogTag, "'%s' failed with an exception: %s", _actionId->c_str(), why);
    // Answered by now, or kept for later and answered here in its place.
    if (Exchange::instance().isWaiting(_id)) {
      guarded([this] { answer((*_actionId + " failed").c_str()); }, [](const char * /*what*/) {});
    }
  }

private:
  RequestId _id;
  const SharedId &_actionId;
  const char *_params;
};

// A callable of the application, whatever its type. A pointer to a function takes the place of a
// virtual one: applications include this in any number of sources, and none is home to the table.
struct Handler {
  using Call = void (*)(Handler &, const Incoming &);

  Call call;

protected:
  explicit Handler(Call function) noexcept : call(function) {}
  ~Handler() = default;
  Handler(const Handler &) = delete;
  Handler &operator=(const Handler &) = delete;
};

// The first parameter of a callable that is not a template; void otherwise.
template <class Callable, class = void>
struct FirstParameter {
  using Type = void;
};
template <class Signature>
struct FirstOfSignature {
  using Type = void;
};
template <class Class, class Result, class First, class... Rest>
struct FirstOfSignature<Result (Class::*)(First, Rest...)> {
  using Type = First;
};
template <class Class, class Result, class First, class... Rest>
struct FirstOfSignature<Result (Class::*)(First, Rest...) const> {
  using Type = First;
};
template <class Callable>
struct FirstParameter<Callable, std::void_t<decltype(&Callable::operator())>>
    : FirstOfSignature<decltype(&Callable::operator())> {};
template <class Result, class First, class... Rest>
struct FirstParameter<Result (*)(First, Rest...), void> {
  using Type = First;
};

// How a callable wants to be called with these values behind the request, and what it gives.
template <class Callable, class... Values>
struct Shape {
  using First = typename FirstParameter<Callable>::Type;

  static constexpr bool kTakesReference =
      std::is_lvalue_reference_v<First> && std::is_same_v<Bare<First>, Request>;
  static constexpr bool kTakesRequest = std::is_invocable_v<Callable &, Request, Values...>;
  static constexpr bool kTakesValues = std::is_invocable_v<Callable &, Values...>;

  template <class... Arguments>
  static constexpr bool gives() {
    return !std::is_void_v<std::invoke_result_t<Callable &, Arguments...>>;
  }

  static constexpr void check() {
    static_assert(!kTakesReference,
                  "norix: this callable takes norix::Request by reference; take it by value: the "
                  "callable owns the request, and may move it to where it is answered");
    static_assert(kTakesReference || kTakesRequest || kTakesValues,
                  "norix: this callable cannot be called with a request: it takes nothing, or a "
                  "norix::Request, followed by the values of the norix::param given before it");
    if constexpr (!kTakesReference && kTakesRequest) {
      static_assert(!gives<Request, Values...>(),
                    "norix: this callable takes a norix::Request and returns something as well: "
                    "answer the request, or return the answer and take no request");
    } else if constexpr (!kTakesReference && kTakesValues) {
      static_assert(gives<Values...>(),
                    "norix: this callable neither returns an answer nor takes a norix::Request, so "
                    "the assistant would wait for 30 seconds: return a text, or take the request");
    }
  }
};

// Calls with a request, or with the values alone and answers with what comes back.
template <class Callable, class... Values>
void callWith(Callable &callable, const Incoming &incoming, Values &&...values) {
  using Called = Shape<Callable, Values...>;
  if constexpr (Called::kTakesRequest) {
    callable(incoming.request(), std::forward<Values>(values)...);
  } else if constexpr (Called::kTakesValues) {
    using Given = Bare<std::invoke_result_t<Callable &, Values...>>;
    if constexpr (!std::is_void_v<Given>) {
      const auto &given = callable(std::forward<Values>(values)...);
      auto &&text = TextOf<Given>::of(given);
      incoming.answer(cText(text));
    }
  }
}

template <class Callable>
struct HandlerOf final : Handler {
  explicit HandlerOf(Callable given) : Handler(&call), callable(std::move(given)) {}

  static void call(Handler &self, const Incoming &incoming) {
    callWith(static_cast<HandlerOf &>(self).callable, incoming);
  }

  Callable callable;
};

// A handler, what is to be declared about its parameters (a JSON Schema, or nothing), and what is
// wrong with them (a sentence, or nothing).
struct Handled {
  std::shared_ptr<Handler> handler{};
  std::string parameters{};
  std::string complaint{};
};

// How the arguments behind the action become a handler: here, one callable. norix/json.hpp adds
// parameters before it.
template <class... Arguments>
struct HandlerFor {
  static Handled make(const Arguments &.../*arguments*/) {
    static_assert(Never<Arguments...>::value,
                  "norix: onAction takes an action, then its norix::param (include "
                  "<norix/json.hpp>), and one callable last");
    return {};
  }
};
template <class Callable>
struct HandlerFor<Callable> {
  static Handled make(Callable callable) {
    Shape<Callable>::check();
    return {std::make_shared<HandlerOf<Callable>>(std::move(callable)), {}, {}};
  }
};

// What the library calls back with: the user data of one registration.
class Registration {
public:
  // A callable may take its own registration away, and the whole Assistant with it: a registration
  // that runs ends when its last call does.
  struct Release {
    void operator()(Registration *registration) const noexcept {
      registration->_isReleased = true;
      registration->endUnlessRunning();
    }
  };

  Registration(SharedId actionId, std::shared_ptr<Handler> called)
      : _actionId(std::move(actionId)), _handler(std::move(called)) {}
  Registration(const Registration &) = delete;
  Registration &operator=(const Registration &) = delete;

  const std::string &actionId() const noexcept { return *_actionId; }

  // Inlined into the library's two callbacks: every request passes here.
  __attribute__((always_inline)) void received(RequestId id, const char *params) noexcept {
    Exchange &exchange = Exchange::instance();
    const Incoming incoming(id, _actionId, params != nullptr ? params : "");
    const RequestId before = exchange.enter(incoming.id());
    ++_calls;
    guarded([&] { _handler->call(*_handler, incoming); },
            [&](const char *why) { incoming.failed(why); });
    exchange.leave(incoming.id(), _actionId, before);
    --_calls;
    endUnlessRunning();
  }

private:
  ~Registration() = default;

  void endUnlessRunning() noexcept {
    if (_isReleased && _calls == 0) {
      delete this;
    }
  }

  SharedId _actionId;
  std::shared_ptr<Handler> _handler;
  // How many calls of it run, one inside the other.
  unsigned _calls = 0;
  bool _isReleased = false;
};

using OwnedRegistration = std::unique_ptr<Registration, Registration::Release>;

inline OwnedRegistration makeRegistration(const std::string &actionId,
                                          std::shared_ptr<Handler> handler) {
  return OwnedRegistration(
      new Registration(std::make_shared<const std::string>(actionId), std::move(handler)));
}

} // namespace detail
} // namespace norix

#endif
