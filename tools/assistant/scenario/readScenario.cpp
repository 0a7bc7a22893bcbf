// SPDX-License-Identifier: Apache-2.0
#include "assistant/scenario/read.h"

#include "assistant/scenario/Variables.h"

#include <cerrno>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <sys/stat.h>

namespace norix::assistant::scenario {
namespace {

namespace fs = std::filesystem;
using Kind = YamlNode::Kind;

// The parser takes some 250 bytes of memory for a byte, at worst.
constexpr std::size_t kLargestFile = std::size_t{2} << 20U;
// What the library waits for an answer, and what an exchange may take longer than that.
constexpr double kCompletionTimeout = 30.0;
constexpr double kGrace = 2.0;

const std::string kNotInName("=\0", 2);

void readEnvironment(Reading &reading, const YamlNode &node, ApplicationSetup &setup) {
  if (node.kind != Kind::Map) {
    reading.expected(node, "a map from variables to texts");
  }
  for (const YamlMember &member : node.members) {
    if (member.key.text.empty() || member.key.text.find_first_of(kNotInName) != std::string::npos) {
      reading.expected(member.key, "the name of an environment variable");
    }
    setup.environment[member.key.text] = reading.text(member.value, "a text");
  }
}

void readAllowList(Reading &reading, const YamlNode &node, ApplicationSetup &setup) {
  if (node.kind != Kind::Sequence) {
    reading.expected(node, "a list of application ids");
  }
  for (const YamlNode &id : node.elements) {
    if (id.text.find('\n') != std::string::npos) {
      reading.expected(id, "an application id in one line");
    }
  }
  setup.allowList = reading.texts(node, "an application id");
}

const std::vector<Field<ApplicationSetup>> kApplicationFields = {
    {"folder",
     [](Reading &reading, const YamlNode &node, ApplicationSetup &setup) {
       setup.folder = reading.text(node, "the application's folder");
     }},
    {"running",
     [](Reading &reading, const YamlNode &node, ApplicationSetup &setup) {
       setup.running = reading.text(node, "the id of an application that runs");
     }},
    {"arguments",
     [](Reading &reading, const YamlNode &node, ApplicationSetup &setup) {
       setup.arguments = reading.texts(node, "an argument");
     }},
    {"environment", readEnvironment},
    {"allow-list", readAllowList},
    {"completion-timeout", [](Reading &reading, const YamlNode &node, ApplicationSetup &setup) {
       setup.completionTimeout = reading.timeout(node);
     }}};

const std::vector<Field<SenderSetup>> kSenderFields = {
    {"id", [](Reading &reading, const YamlNode &node,
              SenderSetup &sender) { sender.appId = reading.text(node, "an application id"); }},
    {"registers", [](Reading &reading, const YamlNode &node, SenderSetup &sender) {
       sender.registers = reading.boolean(node);
     }}};

void readVariables(Reading &reading, const YamlNode &node, Scenario &scenario) {
  if (node.kind != Kind::Map) {
    reading.expected(node, "a map from names to values");
  }
  for (const YamlMember &member : node.members) {
    const Json value = reading.value(member.value);
    // Those of the command line count.
    scenario.variables.emplace(reading.newVariable(member.key), value);
  }
}

void readAllowedFindings(Reading &reading, const YamlNode &node, Scenario &scenario) {
  const bool isWord = node.kind == Kind::Scalar;
  scenario.findings.allowsAll = isWord && node.text == "any";
  if (!isWord || (node.text != "none" && node.text != "any")) {
    scenario.findings.words = reading.texts(node, "none, any, or the word of a finding");
  }
}

void readSteps(Reading &reading, const YamlNode &node, Scenario &scenario) {
  if (node.kind != Kind::Sequence || node.elements.empty()) {
    reading.expected(node, "a list of steps");
  }
  for (const YamlNode &element : node.elements) {
    scenario.steps.push_back(readStep(reading, element));
  }
}

// The order of the table is the order of reading: steps use what the others define.
const std::vector<Field<Scenario>> kScenarioFields = {
    {"name",
     [](Reading &reading, const YamlNode &node, Scenario &scenario) {
       scenario.name = reading.plainText(node, "the name of the scenario");
     }},
    {"variables", readVariables},
    {"application",
     [](Reading &reading, const YamlNode &node, Scenario &scenario) {
       scenario.application = readApplication(reading, node);
     }},
    {"senders", [](Reading &reading, const YamlNode &node,
                   Scenario &scenario) { scenario.senders = readSenders(reading, node); }},
    {"timeout", [](Reading &reading, const YamlNode &node,
                   Scenario &scenario) { scenario.timeout = reading.timeout(node); }},
    {"findings", readAllowedFindings},
    {"steps", readSteps}};

std::string contentOf(const std::string &file) {
  struct stat status = {};
  if (stat(file.c_str(), &status) != 0) {
    throw FileError(file, std::string("cannot be read: ") + std::strerror(errno));
  }
  if (!S_ISREG(status.st_mode)) {
    throw FileError(file, "is no file");
  }
  if (static_cast<std::size_t>(status.st_size) > kLargestFile) {
    throw FileError(file, "is larger than 2 MiB");
  }
  std::ifstream stream(file, std::ios::binary);
  std::ostringstream content;
  content << stream.rdbuf();
  if (!stream) {
    throw FileError(file, std::string("cannot be read: ") + std::strerror(errno));
  }
  return content.str();
}

// What stands before the steps knows the variables that the scenario begins with.
void fillIn(Scenario &scenario) {
  const Variables variables(scenario.variables);
  ApplicationSetup &application = scenario.application;
  application.folder = variables.fill(application.folder);
  application.running = variables.fill(application.running);
  for (std::string &argument : application.arguments) {
    argument = variables.fill(argument);
  }
  for (auto &[name, value] : application.environment) {
    value = variables.fill(value);
  }
  if (application.allowList) {
    for (std::string &id : *application.allowList) {
      id = variables.fill(id);
    }
  }
  for (SenderSetup &sender : scenario.senders) {
    sender.appId = variables.fill(sender.appId);
  }
}

// What is needed and can be left out is put in; what is needed and cannot, is missed.
void complete(Scenario &scenario, const Reading &reading, const YamlNode &document,
              const ReadOptions &options) {
  if (scenario.steps.empty()) {
    reading.fail(document, "the scenario has no 'steps': expected a list of them");
  }
  ApplicationSetup &application = scenario.application;
  try {
    fillIn(scenario);
  } catch (const std::length_error &error) {
    reading.fail(document, error.what());
  }
  if (!options.application.empty()) {
    application.folder = options.application;
    application.running.clear();
  } else if (!application.folder.empty()) {
    application.folder = (fs::path(scenario.file).parent_path() / application.folder).string();
  } else if (application.running.empty()) {
    reading.fail(document, "nothing says which application: expected 'application' with 'folder' "
                           "or 'running', or --app FOLDER");
  }
  if (scenario.name.empty()) {
    scenario.name = fs::path(scenario.file).stem().string();
  }
  if (scenario.timeout == 0.0) {
    scenario.timeout = application.completionTimeout.value_or(kCompletionTimeout) + kGrace;
  }
}

} // namespace

ApplicationSetup readApplication(Reading &reading, const YamlNode &node) {
  ApplicationSetup setup;
  setup.line = node.position.line;
  readMap(reading, node, "a map with the application's folder, or the id of one that runs",
          kApplicationFields, setup);
  if (!setup.running.empty() && node.members.size() > 1) {
    reading.fail(node, "an application that runs already cannot be given anything else: take "
                       "'running' out, or the rest");
  }
  return setup;
}

std::vector<SenderSetup> readSenders(Reading &reading, const YamlNode &node) {
  if (node.kind != Kind::Map || node.members.empty()) {
    reading.expected(node, "a map from names to senders, like {phone: {id: com.example.phone}}");
  }
  std::vector<SenderSetup> senders;
  reading.senders.clear();
  for (const YamlMember &member : node.members) {
    SenderSetup sender;
    sender.name = member.key.text;
    readMap(reading, member.value, "a map with the id of the sender", kSenderFields, sender);
    if (sender.appId.empty() || sender.name == "application") {
      reading.fail(member.key, sender.appId.empty()
                                   ? "expected an 'id' for the sender"
                                   : "no sender can be called 'application': steps mean the "
                                     "application itself by that");
    }
    reading.senders.push_back(sender.name);
    senders.push_back(std::move(sender));
  }
  return senders;
}

Scenario readScenario(const std::string &file, const ReadOptions &options) {
  return readScenario(file, contentOf(file), options);
}

Scenario readScenario(const std::string &file, const std::string &text,
                      const ReadOptions &options) {
  std::set<std::string> names;
  for (const auto &[name, value] : options.variables) {
    names.insert(name);
  }
  Reading reading(file, std::move(names));
  Scenario scenario;
  scenario.file = file;
  scenario.senders = {{"assistant", "com.valtren.tizen.norix", true}};
  scenario.variables = options.variables;
  reading.senders = {"assistant"};

  const YamlNode document = parseYaml(file, text);
  readMap(reading, document, "a scenario: a map with 'application' and 'steps'", kScenarioFields,
          scenario);
  complete(scenario, reading, document, options);
  return scenario;
}

} // namespace norix::assistant::scenario
