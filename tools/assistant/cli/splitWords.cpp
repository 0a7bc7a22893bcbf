// SPDX-License-Identifier: Apache-2.0
#include "assistant/cli/LineEditor.h"

namespace norix::assistant::cli {
namespace {

class Splitter {
public:
  void take(char byte) {
    if (_isEscaped) {
      add(byte);
      _isEscaped = false;
    } else if (byte == '\\' && _quote != '\'') {
      _isEscaped = true;
      _isInWord = true;
    } else if (_quote != '\0') {
      takeQuoted(byte);
    } else if (byte == '"' || byte == '\'') {
      _quote = byte;
      _isInWord = true;
    } else if (byte == ' ' || byte == '\t') {
      endWord();
    } else {
      add(byte);
    }
  }

  Words finish(bool forCompletion) {
    const bool isComplete = _quote == '\0' && !_isEscaped;
    _isInWord = _isInWord || forCompletion;
    endWord();
    return {std::move(_words), isComplete};
  }

private:
  void takeQuoted(char byte) {
    if (byte == _quote) {
      _quote = '\0';
    } else {
      add(byte);
    }
  }

  void add(char byte) {
    _word += byte;
    _isInWord = true;
  }

  void endWord() {
    if (_isInWord) {
      _words.push_back(_word);
    }
    _word.clear();
    _isInWord = false;
  }

  std::vector<std::string> _words;
  std::string _word;
  char _quote = '\0';
  bool _isEscaped = false;
  bool _isInWord = false;
};

} // namespace

Words splitWords(const std::string &line, bool forCompletion) {
  Splitter splitter;
  for (const char byte : line) {
    splitter.take(byte);
  }
  return splitter.finish(forCompletion);
}

} // namespace norix::assistant::cli
