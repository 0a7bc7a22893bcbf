// SPDX-License-Identifier: Apache-2.0
#include "assistant/report/Writer.h"
#include "assistant/report/texts.h"
#include "assistant/trace/visible.h"

#include <pugixml.hpp>

#include <array>
#include <cstdio>
#include <numeric>

namespace norix::assistant::report {
namespace {

// A text that XML can hold: what visibleLines() leaves, without the two noncharacters.
std::string asText(const std::string &text) {
  std::string shown = trace::visibleLines(text);
  for (const char *const refused : {"\xef\xbf\xbe", "\xef\xbf\xbf"}) {
    for (std::size_t at = shown.find(refused); at != std::string::npos; at = shown.find(refused)) {
      shown.replace(at, 3, "\xef\xbf\xbd");
    }
  }
  return shown;
}

std::string joined(const std::vector<std::string> &lines) {
  std::string text;
  for (const std::string &line : lines) {
    text += line + "\n";
  }
  return text;
}

void set(pugi::xml_node node, const char *name, const std::string &value) {
  node.append_attribute(name).set_value(asText(value).c_str());
}

void setSeconds(pugi::xml_node node, double seconds) {
  std::array<char, 32> text{};
  (void)std::snprintf(text.data(), text.size(), "%.6f", seconds);
  node.append_attribute("time").set_value(text.data());
}

void setCounts(pugi::xml_node node, const Counts &counts) {
  const auto of = [&counts](Outcome outcome) {
    return static_cast<unsigned long>(counts[static_cast<std::size_t>(outcome)]);
  };
  const auto all = std::accumulate(counts.begin(), counts.end(), 0UL);
  node.append_attribute("tests").set_value(all);
  node.append_attribute("failures").set_value(of(Outcome::Failed));
  node.append_attribute("errors").set_value(of(Outcome::Broken));
  node.append_attribute("skipped").set_value(of(Outcome::Skipped) + of(Outcome::Tolerated));
}

void addProperties(pugi::xml_node node, const Properties &properties) {
  if (properties.empty()) {
    return;
  }
  pugi::xml_node list = node.append_child("properties");
  for (const auto &[name, value] : properties) {
    pugi::xml_node property = list.append_child("property");
    set(property, "name", name);
    set(property, "value", value);
  }
}

// What stands in a test case that did not pass.
const char *elementOf(Outcome outcome) {
  switch (outcome) {
  case Outcome::Failed:
    return "failure";
  case Outcome::Broken:
    return "error";
  case Outcome::Skipped:
  case Outcome::Tolerated:
    return "skipped";
  case Outcome::Passed:
    break;
  }
  return nullptr;
}

void addOutcome(pugi::xml_node node, const Step &step) {
  const char *const element = elementOf(step.outcome);
  if (element == nullptr) {
    return;
  }
  pugi::xml_node child = node.append_child(element);
  if (!step.messages.empty()) {
    set(child, "message", step.messages.front().text);
  }
  if (step.outcome != Outcome::Skipped) {
    set(child, "type", wordOf(step.outcome));
    child.text().set(asText(joined(explanationOf(step))).c_str());
  }
}

void addStep(pugi::xml_node suite, const Case &tried, const Step &step) {
  pugi::xml_node node = suite.append_child("testcase");
  set(node, "name", step.name);
  set(node, "classname", tried.name);
  setSeconds(node, step.seconds);
  if (!tried.file.empty()) {
    set(node, "file", tried.file);
  }
  if (step.line > 0) {
    node.append_attribute("line").set_value(step.line);
  }
  addProperties(node, step.properties);
  addOutcome(node, step);
  if (!step.output.empty()) {
    node.append_child("system-out").text().set(asText(step.output).c_str());
  }
}

void addCase(pugi::xml_node suites, const Case &tried) {
  pugi::xml_node node = suites.append_child("testsuite");
  set(node, "name", tried.name);
  setCounts(node, countSteps(tried));
  setSeconds(node, tried.seconds);
  if (!tried.file.empty()) {
    set(node, "file", tried.file);
  }
  addProperties(node, tried.properties);
  for (const Step &step : tried.steps) {
    addStep(node, tried, step);
  }
}

class JunitWriter : public Writer {
public:
  explicit JunitWriter(std::ostream &out) : _out(out) {}

  void add(const Case & /*tried*/) override {}
  // The counts stand before the cases, so everything is written at the end.
  void end(const Suite &suite) override {
    pugi::xml_document document;
    pugi::xml_node declaration = document.append_child(pugi::node_declaration);
    declaration.append_attribute("version") = "1.0";
    declaration.append_attribute("encoding") = "UTF-8";
    pugi::xml_node suites = document.append_child("testsuites");
    set(suites, "name", suite.name);
    setCounts(suites, suite.countSteps());
    setSeconds(suites, suite.seconds);
    for (const Case &tried : suite.cases) {
      addCase(suites, tried);
    }
    document.save(_out, "  ");
    _out.flush();
  }

private:
  std::ostream &_out;
};

} // namespace

std::unique_ptr<Writer> makeJunitWriter(std::ostream &out) {
  return std::make_unique<JunitWriter>(out);
}

} // namespace norix::assistant::report
