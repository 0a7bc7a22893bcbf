// SPDX-License-Identifier: Apache-2.0
#include "assistant/report/json.h"

#include "assistant/report/Writer.h"

namespace norix::assistant::report {
namespace {

using Json = nlohmann::ordered_json;

Json toJson(const Counts &counts) {
  Json json = Json::object();
  for (std::size_t i = 0; i < counts.size(); ++i) {
    json[wordOf(static_cast<Outcome>(i))] = counts[i];
  }
  return json;
}

Json toJson(const Properties &properties) {
  Json json = Json::object();
  for (const auto &[name, value] : properties) {
    json[name] = value;
  }
  return json;
}

Properties propertiesFrom(const Json &json) {
  Properties properties;
  for (const auto &[name, value] : json.items()) {
    properties.emplace_back(name, value.get<std::string>());
  }
  return properties;
}

Json toJson(const Step &step) {
  Json messages = Json::array();
  for (const Message &message : step.messages) {
    messages.push_back({{"text", message.text}, {"detail", message.detail}});
  }
  Json events = Json::array();
  for (const trace::Event &event : step.events) {
    events.push_back(Json(event.members));
  }
  return {{"name", step.name},
          {"outcome", wordOf(step.outcome)},
          {"seconds", step.seconds},
          {"line", step.line},
          {"messages", std::move(messages)},
          {"output", step.output},
          {"properties", toJson(step.properties)},
          {"events", std::move(events)}};
}

trace::Event eventFrom(const Json &json) {
  trace::Event event;
  event.members = nlohmann::json(json);
  event.name = event.text("event");
  event.time = static_cast<std::uint64_t>(event.number("t"));
  return event;
}

Step stepFrom(const Json &json) {
  Step step;
  step.name = json.at("name").get<std::string>();
  step.outcome = outcomeFrom(json.at("outcome").get<std::string>());
  step.seconds = json.at("seconds").get<double>();
  step.line = json.at("line").get<int>();
  step.output = json.at("output").get<std::string>();
  step.properties = propertiesFrom(json.at("properties"));
  for (const Json &message : json.at("messages")) {
    step.messages.push_back(
        {message.at("text").get<std::string>(), message.at("detail").get<std::string>()});
  }
  for (const Json &event : json.at("events")) {
    step.events.push_back(eventFrom(event));
  }
  return step;
}

class JsonWriter : public Writer {
public:
  explicit JsonWriter(std::ostream &out) : _out(out) {}

  void add(const Case & /*tried*/) override {}
  void end(const Suite &suite) override {
    _out << report::toJson(suite).dump(-1, ' ', false, Json::error_handler_t::replace) << '\n';
  }

private:
  std::ostream &_out;
};

} // namespace

Json toJson(const Case &tried) {
  Json steps = Json::array();
  for (const Step &step : tried.steps) {
    steps.push_back(toJson(step));
  }
  return {{"name", tried.name},
          {"file", tried.file},
          {"outcome", wordOf(tried.outcome())},
          {"seconds", tried.seconds},
          {"properties", toJson(tried.properties)},
          {"steps", std::move(steps)}};
}

Json toJson(const Suite &suite) {
  Json cases = Json::array();
  for (const Case &tried : suite.cases) {
    cases.push_back(toJson(tried));
  }
  return {{"name", suite.name},
          {"outcome", wordOf(suite.outcome())},
          {"seconds", suite.seconds},
          {"properties", toJson(suite.properties)},
          {"caseCounts", toJson(suite.countCases())},
          {"stepCounts", toJson(suite.countSteps())},
          {"cases", std::move(cases)}};
}

Case caseFrom(const Json &value) {
  Case tried;
  tried.name = value.at("name").get<std::string>();
  tried.file = value.at("file").get<std::string>();
  tried.seconds = value.at("seconds").get<double>();
  tried.properties = propertiesFrom(value.at("properties"));
  for (const Json &step : value.at("steps")) {
    tried.steps.push_back(stepFrom(step));
  }
  return tried;
}

std::unique_ptr<Writer> makeJsonWriter(std::ostream &out) {
  return std::make_unique<JsonWriter>(out);
}

} // namespace norix::assistant::report
