/* SPDX-License-Identifier: Apache-2.0 */
#ifndef NORIX_DETAIL_TYPED_HPP
#define NORIX_DETAIL_TYPED_HPP

#include <norix/Param.hpp>
#include <norix/detail/Handler.hpp>

#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <tuple>
#include <type_traits>
#include <utility>

namespace norix {
namespace detail {

// The parameters of an action, and the sentence about what is wrong with those that came.
template <class... Values>
class Form {
public:
  explicit Form(std::tuple<Param<Values>...> params) : _params(std::move(params)) {}

  // What is wrong, for the user; empty when the values are there.
  std::string read(const Incoming &incoming, std::tuple<Values...> &values) const {
    const Json document = *incoming.params() == '\0'
                              ? Json::object()
                              : Json::parse(incoming.params(), nullptr, false);
    if (!document.is_object()) {
      return "Error: the parameters of " + incoming.actionId() + " have to be a JSON object with "
             + expected() + ", not "
             + brief(document.is_discarded() ? Json(incoming.params()) : document);
    }
    std::string wrong;
    readAll(incoming.actionId(), document, values, wrong, std::index_sequence_for<Values...>());
    return wrong;
  }

  std::string schema() const {
    Json properties = Json::object();
    Json required = Json::array();
    forEach([&properties, &required](const auto &param) {
      properties[param.name()] = param.schema();
      if (param.isRequired()) {
        required.push_back(param.name());
      }
    });
    Json form = {{"type", "object"}, {"properties", properties}, {"additionalProperties", false}};
    if (!required.empty()) {
      form["required"] = required;
    }
    return jsonText(form);
  }

  std::string complaint() const {
    std::string found;
    Json names = Json::object();
    forEach([&found, &names](const auto &param) {
      if (found.empty()) {
        found = names.contains(param.name()) ? "there are two parameters \"" + param.name() + "\""
                                             : param.complaint();
      }
      names[param.name()] = true;
    });
    return found;
  }

private:
  std::string expected() const {
    std::string list;
    forEach([&list](const auto &param) {
      list += (list.empty() ? "" : ", and ") + Json(param.name()).dump() + ", " + param.expected();
    });
    return list;
  }

  template <class Function>
  void forEach(Function function) const {
    std::apply([&function](const auto &...param) { (function(param), ...); }, _params);
  }

  template <std::size_t... Index>
  void readAll(const std::string &actionId, const Json &document, std::tuple<Values...> &values,
               std::string &wrong, std::index_sequence<Index...> /*indices*/) const {
    // Stops at the first that is wrong: one sentence is for the user, more are for nobody.
    static_cast<void>(
        (...
         && readOne(actionId, document, std::get<Index>(_params), std::get<Index>(values), wrong)));
  }

  template <class Value>
  static bool readOne(const std::string &actionId, const Json &document, const Param<Value> &param,
                      Value &value, std::string &wrong) {
    const auto found = document.find(param.name());
    const Json *const written = found == document.end() ? nullptr : &*found;
    if (param.read(written, value)) {
      return true;
    }
    wrong = "Error: \"" + param.name() + "\" of " + actionId
            + (written == nullptr ? " is missing; it has to be " + param.expected()
                                  : " has to be " + param.expected() + ", not " + brief(*written));
    return false;
  }

  std::tuple<Param<Values>...> _params;
};

template <class Callable, class... Values>
struct TypedHandler final : Handler {
  TypedHandler(Form<Values...> expected, Callable given)
      : Handler(&call), form(std::move(expected)), callable(std::move(given)) {}

  static void call(Handler &self, const Incoming &incoming) {
    auto &typed = static_cast<TypedHandler &>(self);
    std::tuple<Values...> values;
    const std::string wrong = typed.form.read(incoming, values);
    if (!wrong.empty()) {
      incoming.answer(wrong.c_str());
      return;
    }
    std::apply([&typed, &incoming](
                   Values &...value) { callWith(typed.callable, incoming, std::move(value)...); },
               values);
  }

  Form<Values...> form;
  Callable callable;
};

// A callable whose types are open: its parameters are auto, or it is overloaded. std::bind() is not
// meant, which takes what it is given places for.
template <class Callable, class = void>
struct IsGeneric
    : std::bool_constant<std::is_class_v<Callable> && !std::is_bind_expression_v<Callable>> {};
template <class Callable>
struct IsGeneric<Callable, std::void_t<decltype(&Callable::operator())>> : std::false_type {};

template <class Tested>
struct IsParam : std::false_type {};
template <class Value>
struct IsParam<Param<Value>> : std::true_type {};

template <class Given>
struct HandlerFor<Param<Given>> {
  static Handled make(const Param<Given> & /*param*/) {
    static_assert(Never<Given>::value,
                  "norix: onAction takes an action, then its norix::param, and one callable last");
    return {};
  }
};

// Parameters, and the callable last.
template <class Given, class Next, class... Rest>
struct HandlerFor<Param<Given>, Next, Rest...> {
  static Handled make(Param<Given> param, Next next, Rest... rest) {
    return collect(std::tuple<Param<Given>>(std::move(param)), std::move(next), std::move(rest)...);
  }

private:
  template <class... Values, class Tested, class... Others>
  static Handled collect(std::tuple<Param<Values>...> params, Tested tested, Others... others) {
    constexpr bool kIsLast = sizeof...(Others) == 0;
    static_assert(IsParam<Tested>::value != kIsLast,
                  "norix: onAction takes an action, then its norix::param, and one callable last");
    if constexpr (IsParam<Tested>::value && !kIsLast) {
      return collect(std::tuple_cat(std::move(params), std::make_tuple(std::move(tested))),
                     std::move(others)...);
    } else if constexpr (!IsParam<Tested>::value && kIsLast) {
      return handled(Form<Values...>(std::move(params)), std::move(tested));
    } else {
      return {};
    }
  }

  template <class Callable, class... Values>
  static Handled handled(Form<Values...> form, Callable callable) {
    // Before anything asks what it can be called with: that would compile its body with a request.
    static_assert(
        !IsGeneric<Callable>::value,
        "norix: this callable is generic (auto parameters or overloads), so whether its "
        "first parameter is the norix::Request or a value cannot be told: write the types "
        "of its parameters");
    if constexpr (!IsGeneric<Callable>::value) {
      Shape<Callable, Values...>::check();
      std::string schema = form.schema();
      std::string complaint = form.complaint();
      return {
          std::make_shared<TypedHandler<Callable, Values...>>(std::move(form), std::move(callable)),
          std::move(schema), std::move(complaint)};
    } else {
      return {};
    }
  }
};

} // namespace detail
} // namespace norix

#endif
