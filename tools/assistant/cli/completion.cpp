// SPDX-License-Identifier: Apache-2.0
//
// The command completion prints a script for a shell; the script calls the command complete, which
// is not listed, with the words of the line.
#include "assistant/cli/Completer.h"
#include "assistant/cli/Program.h"
#include "assistant/cli/commands.h"
#include "assistant/trace/visible.h"

#include <map>
#include <memory>

namespace norix::assistant::cli {
namespace {

// Bash cuts words at '=' and ':' and replaces only what follows, so the words are those of the line
// at its blanks, and what stands before such a character is taken off.
constexpr const char *kBash =
    R"(# Completes norix-assistant in bash: source <(norix-assistant completion bash)
_norix_assistant() {
  local line=${COMP_LINE:0:COMP_POINT} text before
  local -a words
  read -ra words <<<"$line"
  case $line in *[[:blank:]]) words+=('') ;; esac
  local current=${words[-1]}
  before=${current%"${current##*[=:]}"}
  COMPREPLY=()
  while IFS=$'\t' read -r text _; do
    COMPREPLY+=("${text#"$before"}")
  done < <("${words[0]}" complete -- "${words[@]:1}" 2>/dev/null)
  case ${COMPREPLY[0]-} in *[=/]) compopt -o nospace 2>/dev/null ;; esac
}
complete -o default -F _norix_assistant norix-assistant)";

constexpr const char *kZsh = R"(#compdef norix-assistant
# Completes norix-assistant in zsh: source <(norix-assistant completion zsh)
_norix_assistant() {
  local line text
  local -a whole wholeShown open openShown
  for line in "${(@f)$("${words[1]}" complete -- "${(@)words[2,CURRENT]}" 2>/dev/null)}"; do
    [[ -n $line ]] || continue
    text=${line%%$'\t'*}
    if [[ $text == *[=/] ]]; then
      open+=("$text")
      openShown+=("$text  ${line#*$'\t'}")
    else
      whole+=("$text")
      wholeShown+=("$text  ${line#*$'\t'}")
    fi
  done
  compadd -l -d wholeShown -a whole
  compadd -l -S '' -d openShown -a open
}
if [[ ${funcstack[1]-} == _norix-assistant ]]; then
  _norix_assistant "$@"
else
  compdef _norix_assistant norix-assistant
fi)";

constexpr const char *kFish =
    R"fish(# Completes norix-assistant in fish: norix-assistant completion fish | source
function __norix_assistant
    set -l words (commandline -opc)
    $words[1] complete -- $words[2..-1] (commandline -ct) 2>/dev/null
end
complete -c norix-assistant -f -a '(__norix_assistant)')fish";

Ending completion(const std::string &shell) {
  const std::map<std::string, const char *> scripts{
      {"bash", kBash}, {"zsh", kZsh}, {"fish", kFish}};
  Ending ending;
  ending.text = scripts.at(shell);
  ending.facts = {{"shell", shell}, {"script", *ending.text}};
  return ending;
}

Ending complete(const CLI::App &commandLine, const std::vector<std::string> &words) {
  Ending ending;
  ending.facts["candidates"] = Json::array();
  for (const Candidate &candidate : Completer(commandLine).complete(words)) {
    ending.facts["candidates"].push_back(candidate.text);
    ending.text = (ending.text ? *ending.text + "\n" : "") + trace::visible(candidate.text) + "\t"
                  + trace::visible(candidate.description);
  }
  return ending;
}

} // namespace

void addCompletion(Program &program) {
  auto shell = std::make_shared<std::string>();
  program
      .add("completion", "Prints a script that completes commands in a shell",
           {"source <(norix-assistant completion bash)", "source <(norix-assistant completion zsh)",
            "norix-assistant completion fish | source"},
           [shell](Console &) { return completion(*shell); })
      .add_option("SHELL", *shell, "bash, zsh or fish")
      ->required()
      ->check(CLI::IsMember({"bash", "zsh", "fish"}), "");

  auto words = std::make_shared<std::vector<std::string>>();
  CLI::App &complete =
      program.add("complete", "Completes a command line, for the scripts of completion",
                  {"norix-assistant complete -- state ''"}, [words, &program](Console &) {
                    return cli::complete(program.commandLine(), *words);
                  });
  complete.group("");
  complete.add_option("WORD", *words, "The words of the line; the last one is completed");
}

} // namespace norix::assistant::cli
