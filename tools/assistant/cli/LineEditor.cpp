// SPDX-License-Identifier: Apache-2.0
#include "assistant/cli/LineEditor.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <dlfcn.h>
#include <histedit.h>
#include <stdexcept>
#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace norix::assistant::cli {
namespace {

constexpr const char *kLibrary = "libedit.so.2";
constexpr int kHistoryLines = 1000;
constexpr const char *kPrompt = "norix> ";

// The functions of libedit that are used here.
struct Libedit {
  void *library = dlopen(kLibrary, RTLD_NOW | RTLD_LOCAL);
  decltype(&::el_init) init = find<decltype(&::el_init)>("el_init");
  decltype(&::el_end) end = find<decltype(&::el_end)>("el_end");
  decltype(&::el_get) get = find<decltype(&::el_get)>("el_get");
  decltype(&::el_set) set = find<decltype(&::el_set)>("el_set");
  decltype(&::el_gets) gets = find<decltype(&::el_gets)>("el_gets");
  decltype(&::el_line) line = find<decltype(&::el_line)>("el_line");
  decltype(&::el_insertstr) insert = find<decltype(&::el_insertstr)>("el_insertstr");
  decltype(&::el_deletestr) erase = find<decltype(&::el_deletestr)>("el_deletestr");
  decltype(&::history_init) historyInit = find<decltype(&::history_init)>("history_init");
  decltype(&::history_end) historyEnd = find<decltype(&::history_end)>("history_end");
  decltype(&::history) history = find<decltype(&::history)>("history");

  template <typename Function>
  Function find(const char *name) const {
    void *found = library == nullptr ? nullptr : dlsym(library, name);
    if (found == nullptr) {
      throw std::runtime_error(std::string("no line editing: ") + kLibrary
                               + " is missing; install the package libedit2");
    }
    return reinterpret_cast<Function>(found);
  }
};

const Libedit &libedit() {
  static const Libedit loaded;
  return loaded;
}

char *prompt(EditLine * /*editor*/) {
  static std::string text = kPrompt;
  return text.data();
}

// What all candidates begin with.
std::string commonBegin(const std::vector<Candidate> &candidates) {
  std::string common = candidates.front().text;
  for (const Candidate &candidate : candidates) {
    const auto end =
        std::mismatch(common.begin(), common.end(), candidate.text.begin(), candidate.text.end());
    common.erase(end.first, common.end());
  }
  return common;
}

void showCandidates(const std::vector<Candidate> &candidates) {
  std::fputs("\n", stdout);
  for (const Candidate &candidate : candidates) {
    std::printf("%-30s  %s\n", candidate.text.c_str(), candidate.description.c_str());
  }
  std::fflush(stdout);
}

} // namespace

struct LineEditor::State {
  State(const Completer &used, std::string file) : completer(used), historyFile(std::move(file)) {}

  static unsigned char onTab(EditLine *editor, int /*key*/);
  unsigned char complete();
  void loadHistory();
  void keep(const std::string &line);

  const Completer &completer;
  std::string historyFile;
  EditLine *editor = nullptr;
  History *history = nullptr;
  HistEvent event = {};
};

LineEditor::LineEditor(const Completer &completer, std::string history)
    : _state(std::make_unique<State>(completer, std::move(history))) {
  State &state = *_state;
  state.editor = libedit().init("norix-assistant", stdin, stdout, stderr);
  state.history = libedit().historyInit();
  if (state.editor == nullptr || state.history == nullptr) {
    throw std::runtime_error("no line editing on this terminal");
  }
  libedit().set(state.editor, EL_CLIENTDATA, &state);
  libedit().set(state.editor, EL_PROMPT, prompt);
  libedit().set(state.editor, EL_EDITOR, "emacs");
  libedit().set(state.editor, EL_SIGNAL, 1);
  libedit().set(state.editor, EL_ADDFN, "norix-complete", "Completes a word", State::onTab);
  libedit().set(state.editor, EL_BIND, "^I", "norix-complete", nullptr);
  libedit().set(state.editor, EL_BIND, "^R", "em-inc-search-prev", nullptr);
  state.loadHistory();
}

LineEditor::~LineEditor() {
  if (_state->history != nullptr) {
    libedit().historyEnd(_state->history);
  }
  if (_state->editor != nullptr) {
    libedit().end(_state->editor);
  }
}

void LineEditor::State::loadHistory() {
  libedit().history(history, &event, H_SETSIZE, kHistoryLines);
  libedit().history(history, &event, H_SETUNIQUE, 1);
  libedit().set(editor, EL_HIST, libedit().history, history);
  if (!historyFile.empty()) {
    libedit().history(history, &event, H_LOAD, historyFile.c_str());
  }
}

// A history that cannot be written is not worth an error: the next session lacks it.
void LineEditor::State::keep(const std::string &line) {
  libedit().history(history, &event, H_ENTER, line.c_str());
  if (!historyFile.empty()) {
    const mode_t before = umask(S_IRWXG | S_IRWXO);
    libedit().history(history, &event, H_SAVE, historyFile.c_str());
    umask(before);
  }
}

unsigned char LineEditor::State::onTab(EditLine *editor, int /*key*/) {
  State *state = nullptr;
  libedit().get(editor, EL_CLIENTDATA, &state);
  return state->complete();
}

unsigned char LineEditor::State::complete() {
  const LineInfo *info = libedit().line(editor);
  const std::string before(info->buffer, info->cursor);
  const std::vector<std::string> words = splitWords(before, true).words;
  const std::vector<Candidate> candidates = completer.complete(words);
  if (candidates.empty()) {
    return CC_REFRESH_BEEP;
  }
  std::string text = commonBegin(candidates).substr(words.back().size());
  const bool isWhole = candidates.size() == 1;
  if (text.empty() && !isWhole) {
    showCandidates(candidates);
    return CC_REDISPLAY;
  }
  const char last = candidates.front().text.back();
  text += isWhole && last != '=' && last != '/' ? " " : "";
  libedit().insert(editor, text.c_str());
  return CC_REFRESH;
}

std::optional<std::string> LineEditor::read() {
  int count = 0;
  const char *line = libedit().gets(_state->editor, &count);
  if (line == nullptr || count <= 0) {
    const bool isInterrupted = count < 0 && errno == EINTR;
    return isInterrupted ? std::optional<std::string>(std::string()) : std::nullopt;
  }
  std::string text(line, static_cast<size_t>(count));
  while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) {
    text.pop_back();
  }
  if (text.find_first_not_of(" \t") != std::string::npos) {
    _state->keep(text);
  }
  return text;
}

} // namespace norix::assistant::cli
