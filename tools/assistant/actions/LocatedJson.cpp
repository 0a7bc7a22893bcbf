// SPDX-License-Identifier: Apache-2.0
#include "assistant/actions/LocatedJson.h"

#include <iterator>
#include <set>
#include <utility>
#include <vector>

namespace norix::assistant::actions {
namespace {

// Reads a text and counts what was read: the only way to learn how far the parser has come.
class CountingIterator {
public:
  using iterator_category = std::input_iterator_tag;
  using value_type = char;
  using difference_type = std::ptrdiff_t;
  using pointer = const char *;
  using reference = const char &;

  CountingIterator(const char *at, std::size_t *count) : _at(at), _count(count) {}

  reference operator*() const { return *_at; }
  CountingIterator &operator++() {
    ++_at;
    ++*_count;
    return *this;
  }
  bool operator==(const CountingIterator &other) const { return _at == other._at; }
  bool operator!=(const CountingIterator &other) const { return _at != other._at; }

private:
  const char *_at;
  std::size_t *_count;
};

bool beginsCharacter(char byte) {
  constexpr unsigned kContinuationMask = 0xC0;
  constexpr unsigned kContinuation = 0x80;
  return (static_cast<unsigned char>(byte) & kContinuationMask) != kContinuation;
}

// Turns growing offsets into positions, in one pass over the text.
class PositionCounter {
public:
  explicit PositionCounter(const std::string &text) : _text(text) {}

  Position at(std::size_t offset) {
    for (; _offset < offset && _offset < _text.size(); ++_offset) {
      if (_text[_offset] == '\n') {
        _position = {_position.line + 1, 1};
      } else if (beginsCharacter(_text[_offset])) {
        ++_position.column;
      }
    }
    return _position;
  }

private:
  const std::string &_text;
  std::size_t _offset = 0;
  Position _position;
};

// "[json.exception.parse_error.101] parse error at line 1, column 2: syntax error …": where it is
// is said elsewhere.
std::string reasonOf(const std::exception &error) {
  const std::string text = error.what();
  const size_t colon = text.find(": ");
  return colon == std::string::npos ? text : text.substr(colon + 2);
}

} // namespace

// Builds the document from the parser's events. Between two of them the parser has passed blanks,
// commas and colons only, which gives the place where the next value begins.
class LocatedJsonBuilder : public nlohmann::json_sax<Json> {
public:
  LocatedJsonBuilder(const std::string &text, LocatedJson &document)
      : _text(text), _document(document), _counter(text) {}

  void parse() {
    const char *begin = _text.data();
    Json::sax_parse(CountingIterator(begin, &_read), CountingIterator(begin + _text.size(), &_read),
                    this);
  }

  bool null() override { return add(nullptr) != nullptr; }
  bool boolean(bool value) override { return add(value) != nullptr; }
  bool number_integer(number_integer_t value) override { return add(value) != nullptr; }
  bool number_unsigned(number_unsigned_t value) override { return add(value) != nullptr; }
  bool number_float(number_float_t value, const string_t & /*text*/) override {
    return add(value) != nullptr;
  }
  bool string(string_t &value) override { return add(std::move(value)) != nullptr; }
  bool binary(binary_t & /*value*/) override { return false; }
  bool start_object(std::size_t /*size*/) override { return enter(Json::object()); }
  bool start_array(std::size_t /*size*/) override { return enter(Json::array()); }
  bool end_object() override { return leave(); }
  bool end_array() override { return leave(); }
  bool key(string_t &name) override;
  bool parse_error(std::size_t offset, const std::string & /*token*/,
                   const nlohmann::detail::exception &error) override {
    const std::size_t before = offset > 0 ? offset - 1 : 0;
    throw SyntaxError(PositionCounter(_text).at(before), reasonOf(error));
  }

private:
  // An object or array that is not complete yet.
  struct Open {
    Json *container;
    std::string pointer;
    std::string member;
    std::set<std::string> members;
  };

  Position nextToken() {
    const std::size_t begin = _text.find_first_not_of(" \t\r\n,:", _seen);
    _seen = _read;
    return _counter.at(begin == std::string::npos ? _text.size() : begin);
  }

  std::string nextPointer() const {
    if (_open.empty()) {
      return {};
    }
    const Open &in = _open.back();
    return in.container->is_array() ? child(in.pointer, in.container->size())
                                    : child(in.pointer, in.member);
  }

  Json *add(Json value) {
    _document._values[nextPointer()] = nextToken();
    if (_open.empty()) {
      _document._value = std::move(value);
      return &_document._value;
    }
    Open &in = _open.back();
    if (in.container->is_array()) {
      return &in.container->get_ref<Json::array_t &>().emplace_back(std::move(value));
    }
    // Not operator[], which looks through all members: key() has seen that this one is new.
    return &in.container->get_ref<Json::object_t &>()
                .emplace_back(in.member, std::move(value))
                .second;
  }

  bool enter(Json container) {
    std::string pointer = nextPointer();
    Json *added = add(std::move(container));
    if (_open.size() == LocatedJson::kMaxDepth) {
      throw SyntaxError(_document.at(pointer), "objects and arrays are nested too deep");
    }
    _open.push_back({added, std::move(pointer), {}, {}});
    return true;
  }

  bool leave() {
    _open.pop_back();
    _seen = _read;
    return true;
  }

  const std::string &_text;
  LocatedJson &_document;
  PositionCounter _counter;
  std::size_t _read = 0;
  std::size_t _seen = 0;
  std::vector<Open> _open;
};

bool LocatedJsonBuilder::key(string_t &name) {
  Open &in = _open.back();
  const Position position = nextToken();
  in.member = name;
  if (!in.members.insert(name).second) {
    throw SyntaxError(position, "the member '" + name + "' is there twice; keep one of the two");
  }
  _document._names[child(in.pointer, name)] = position;
  return true;
}

LocatedJson::LocatedJson(const std::string &text) {
  LocatedJsonBuilder(text, *this).parse();
}

Position LocatedJson::at(const std::string &pointer) const {
  const auto found = _values.find(pointer);
  return found == _values.end() ? Position() : found->second;
}

Position LocatedJson::nameAt(const std::string &pointer) const {
  const auto found = _names.find(pointer);
  return found == _names.end() ? at(pointer) : found->second;
}

std::string child(const std::string &pointer, const std::string &name) {
  std::string escaped = pointer + "/";
  for (const char byte : name) {
    if (byte == '~') {
      escaped += "~0";
    } else if (byte == '/') {
      escaped += "~1";
    } else {
      escaped += byte;
    }
  }
  return escaped;
}

std::string child(const std::string &pointer, std::size_t index) {
  return pointer + "/" + std::to_string(index);
}

std::string brief(const Json &value) {
  constexpr std::size_t kLongest = 60;
  std::string text = value.dump(-1, ' ', false, Json::error_handler_t::replace);
  if (text.size() <= kLongest) {
    return text;
  }
  std::size_t end = kLongest;
  while (end > 0 && !beginsCharacter(text[end])) {
    --end;
  }
  return text.substr(0, end) + "…";
}

} // namespace norix::assistant::actions
