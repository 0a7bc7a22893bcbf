// SPDX-License-Identifier: Apache-2.0
#include "assistant/certify/Catalogue.h"

#include "assistant/certify/checks/checks.h"

#include <algorithm>
#include <iterator>

namespace norix::assistant::certify {
namespace {

constexpr const char *kFolder = "folder";
constexpr const char *kLife = "life";
constexpr const char *kRequests = "requests";
constexpr const char *kParameters = "parameters";
constexpr const char *kAssistants = "assistants";
constexpr const char *kLoad = "load";

constexpr Check kChecks[] = {
    {"manifest", Level::Must, kFolder, "The folder has a manifest that names a program.",
     "Without it the platform can neither install nor start the application.",
     "Write tizen-manifest.xml with the application's id and exec, and build the program.",
     checkManifest},
    {"sdk-version", Level::Must, kFolder,
     "The manifest declares an SDK version that the library serves.",
     "Without it norix_initialize() refuses, and the application is deaf.",
     "Add the metadata key of the SDK version with the value \"1.0-beta\" or newer.",
     checkSdkVersion},
    {"declarations", Level::Should, kFolder, "The application declares what it can be asked.",
     "The assistant, agents and most checks go by it.",
     "Write shared/res/norix-actions.json; norix-actions(5) says how.", checkDeclarations},
    {"declarations-valid", Level::Must, kFolder, "The declarations have no errors.",
     "Declarations with errors are not used at all.",
     "Mend what is named with its line and column.", checkDeclarationsValid},
    {"declarations-lint", Level::Information, kFolder, "The declarations have no warnings.",
     "People and language models understand them better then.",
     "Mend what is named with its line and column.", checkDeclarationsLint},
    {"utterances", Level::Information, kFolder, "Every action says what users say.",
     "The assistant recognises an action by examples of what is said for it.",
     "Give the action two or more 'utterances'.", checkUtterances},

    {"starts", Level::Must, kLife, "The application starts and listens within 30 seconds.",
     "The assistant starts an application that does not run, and waits for it.",
     "Call norix_initialize() as soon as the main loop exists, and look at its result.",
     checkStarts},
    {"ends", Level::Should, kLife, "SIGTERM ends the application with status 0.",
     "The platform ends applications so, and kills those that do not.",
     "Leave the main loop, call norix_deinitialize(), and return 0 from main().", checkEnds},
    {"restarts", Level::Must, kLife, "After SIGKILL the application starts again and answers.",
     "The platform kills applications when memory is short, without a word.",
     "Trust nothing that an earlier process left behind, lock files above all.", checkRestarts},

    {"declared-registered", Level::Must, kRequests, "Every declared action is registered.",
     "The assistant offers it, and the user hears that it failed.",
     "Call norix_set_action_execution_cb() for it right after norix_initialize(), or take it out "
     "of the declarations.",
     checkDeclaredRegistered},
    {"registered-declared", Level::Should, kRequests, "Every registered action is declared.",
     "Nobody can ask for what nobody knows of.", "Declare it in shared/res/norix-actions.json.",
     checkRegisteredDeclared},
    {"state-answered", Level::Must, kRequests, "A request for the state is answered.",
     "The assistant asks for it before it decides what the user means.",
     "Call norix_set_app_state_request_cb(), and norix_complete_app_state_request() on every way "
     "through the callback.",
     checkStateAnswered},
    {"state-form", Level::Must, kRequests, "The state has the declared form.",
     "What the assistant reads out of it is wrong otherwise.",
     "Correct the state that the application tells, or the form that it declares.", checkStateForm},
    {"examples-answered", Level::Must, kRequests,
     "Every action answers each of its declared examples.",
     "The examples are what it is sure to understand; the user waits for 30 seconds otherwise.",
     "Call norix_complete_action_execution() on every way through the callback, or later.",
     checkExamplesAnswered},
    {"answered-once", Level::Must, kRequests, "A request is answered once.",
     "The second answer is dropped, or, when requests are close together, may be taken for that "
     "of another one.",
     "Find the way through the callback that answers twice.", checkAnsweredOnce},
    {"findings", Level::Must, kRequests, "The probe finds no mistake.",
     "Each of its findings ends in silence, or in a crash, sooner or later.",
     "Do what the sentence says; norix-assistant launch --trace shows where it happens.",
     checkFindings},
    {"state-during-action", Level::Must, kRequests,
     "The state is answered right behind a request for an action.",
     "The assistant does not wait for an action to end before it asks for the state.",
     "Answer the state whatever else is going on, and never hold the main loop.",
     checkStateDuringAction},
    {"burst-newest", Level::Must, kRequests,
     "Of requests at once, the newest is answered, once and last.",
     "The library drops the older ones: a user who corrects himself waits for the newest.",
     "Let a newer request replace the one that is being worked on.", checkBurstNewest},

    {"parameters-missing", Level::Must, kParameters, "Missing parameters are answered.",
     "Users leave things out, and assistants too.",
     "Look at the result of bundle_get_str(), and ask in the answer for what is missing.",
     checkParameters<missingParams>},
    {"parameters-empty", Level::Must, kParameters, "An empty text as parameters is answered.",
     "An assistant may send it for an action that needs none.",
     "Treat it as an object without members.", checkParameters<emptyParams>},
    {"parameters-unknown", Level::Must, kParameters,
     "Parameters that nobody declared are answered.",
     "A newer assistant may know more than the application.",
     "Ignore what you do not know, or say so in the answer.", checkParameters<unknownParams>},
    {"parameters-wrong-type", Level::Must, kParameters, "Parameters of another type are answered.",
     "Language models write \"40\" for 40, and null for nothing.",
     "Check the type of every parameter, and say in the answer what is expected.",
     checkParameters<wronglyTypedParams>},
    {"parameters-not-json", Level::Must, kParameters, "Parameters that are not JSON are answered.",
     "The library passes on whatever text it gets.",
     "Catch the errors of your JSON parser, and answer.", checkParameters<notJsonParams>},
    {"parameters-huge", Level::Must, kParameters, "1 MiB of parameters is answered.",
     "A dictated text may be long, and a peer may be hostile.",
     "Bound what you keep, never what you read; put nothing of it into a fixed buffer.",
     checkParameters<hugeParams>},
    {"parameters-nested", Level::Must, kParameters, "Deeply nested parameters are answered.",
     "A parser that calls itself for each level runs out of stack.",
     "Use a parser with a bound for the depth, and answer when it gives up.",
     checkParameters<nestedParams>},
    {"parameters-not-utf8", Level::Must, kParameters, "Parameters that are not UTF-8 are answered.",
     "Texts of other systems come through as they are.",
     "Check texts before you use them, and never send them back unchecked.",
     checkParameters<notUtf8Params>},
    {"parameters-nul", Level::Must, kParameters, "NUL characters in parameters are answered.",
     "A text in C ends there, the text that was sent does not.",
     "Keep the length with the text, or refuse such texts in the answer.",
     checkParameters<nulParams>},
    {"parameters-fuzz", Level::Must, kParameters, "Parameters that are drawn by lot are answered.",
     "Nobody thinks of everything that an assistant may send.",
     "Run the scenario that was saved until it passes, then certify with another --seed.",
     checkParametersFuzz},

    {"assistant-leaves", Level::Must, kAssistants,
     "An assistant that leaves before its answer does no harm.",
     "The answer then fails with an error that is no reason to end.",
     "Log what norix_complete_action_execution() returns, and go on.", checkAssistantLeaves},
    {"assistant-killed", Level::Must, kAssistants,
     "An assistant that is killed before its answer does no harm.",
     "The platform kills the assistant too, and starts it again.",
     "Log what norix_complete_action_execution() returns, and go on.", checkAssistantKilled},
    {"assistant-never-reads", Level::Must, kAssistants,
     "An assistant that never reads its answers does no harm to another one.",
     "One assistant that hangs must not silence the application for all.",
     "Answer every request, however many there were before; wait for no assistant.",
     checkAssistantNeverReads},
    {"reconnect", Level::Must, kAssistants, "Twenty connections one after the other are served.",
     "The assistant connects anew for every conversation.",
     "Keep the library initialised as long as the application runs.", checkReconnect},
    {"allow-list-with", Level::Must, kAssistants, "An assistant on the allow list is served.",
     "Devices have such a list, and the assistant is on it.",
     "Let the library read its own list: leave NORIX_PROXY_ALLOW_APPID_LIST_PATH alone.",
     checkAllowListWith},
    {"allow-list-without", Level::Must, kAssistants,
     "An assistant that is not on the allow list is refused.",
     "Any application of the device could drive this one otherwise.",
     "Let the library read its own list: leave NORIX_PROXY_ALLOW_APPID_LIST_PATH alone.",
     checkAllowListWithout},

    {"load-answered", Level::Must, kLoad,
     "Of 10,000 requests, ten at a time, the newest are answered.",
     "An application runs for weeks.",
     "Run it in a debugger with norix-assistant run in a loop, and look at the first failure.",
     checkLoadAnswered},
    {"load-memory", Level::Must, kLoad, "10,000 requests leave no memory behind.",
     "A few bytes a request end an application after weeks.",
     "Run it under valgrind --leak-check=full, or with LeakSanitizer.", checkLoadMemory},
    {"load-descriptors", Level::Must, kLoad, "10,000 requests leave no open files behind.",
     "An application that has 1,024 of them cannot be connected to any more.",
     "Compare ls -l /proc/PID/fd before and after some requests.", checkLoadDescriptors},
};

} // namespace

const char *wordOf(Level level) {
  switch (level) {
  case Level::Must:
    return "must";
  case Level::Should:
    return "should";
  case Level::Information:
    break;
  }
  return "information";
}

const std::vector<Check> &catalogue() {
  static const std::vector<Check> all(std::begin(kChecks), std::end(kChecks));
  return all;
}

const Check *findCheck(const std::string &id) {
  const auto &all = catalogue();
  const auto found =
      std::find_if(all.begin(), all.end(), [&id](const Check &check) { return check.id == id; });
  return found == all.end() ? nullptr : &*found;
}

} // namespace norix::assistant::certify
