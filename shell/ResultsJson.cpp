#include "shell/ResultsJson.h"

#include <nlohmann/json.hpp>

#include <cmath>

#include "numeric/Missing.h"
#include "session/SessionSettings.h"

namespace tellurix {

namespace {

using Json = nlohmann::ordered_json;

Json Number(double x) { return x == MissingValue || !std::isfinite(x) ? Json() : Json(x); }

Json Numbers(const std::vector<double>& values) {
  Json list = Json::array();
  for (const double x : values) list.push_back(Number(x));
  return list;
}

// No figure: absent; one: itself; several: a list.
Json FieldValue(const std::vector<double>& numbers) {
  if (numbers.size() == 1) return Number(numbers.front());
  return numbers.empty() ? Json() : Numbers(numbers);
}

const char* StatusText(RunStatus status) {
  switch (status) {
    case RunStatus::Done:
      return "done";
    case RunStatus::Cancelled:
      return "cancelled";
    default:
      return "failed";
  }
}

Json FieldsJson(const std::vector<FieldResult>& fields) {
  Json array = Json::array();
  for (const FieldResult& field : fields) {
    array.push_back(
        {{"name", field.name}, {"mark", field.mark}, {"text", field.text}, {"value", FieldValue(field.numbers)}});
  }
  return array;
}

Json RunJson(const RunResult& run) {
  Json json{{"entry", run.entry}, {"path", run.path}, {"status", StatusText(run.status)}};
  const auto list = [&json](const char* key, const auto& items, auto make) {
    Json& array = json[key] = Json::array();
    for (const auto& item : items) array.push_back(make(item));
  };
  list("selection", run.selection, [](const SelectionResult& s) {
    return Json{{"title", s.title}, {"range", s.range}, {"n", s.count}};
  });
  list("templates", run.templates, [](const TemplateResult& merged) {
    return Json{{"file", merged.file}, {"fields", FieldsJson(merged.fields)}};
  });
  list("texts", run.texts, [](const TextResult& text) {
    Json one{{"text", text.text}, {"value", FieldValue(text.numbers)}};
    if (!text.name.empty()) one["name"] = text.name;
    if (!text.fields.empty()) one["fields"] = FieldsJson(text.fields);
    return one;
  });
  list("columns", run.columns, [](const ColumnResult& column) {
    return Json{{"sheet", column.sheet}, {"title", column.title}, {"values", Numbers(column.values)}};
  });
  list("pictures", run.pictures, [](const PictureResult& picture) {
    Json series = Json::array();
    for (const PictureSeries& one : picture.series) {
      series.push_back({{"name", one.name}, {"values", Numbers(one.values)}});
    }
    return Json{{"title", picture.title}, {"series", std::move(series)}};
  });
  list("messages", run.messages, [](const MessageResult& message) {
    return Json{{"title", message.title}, {"text", message.text}, {"answer", message.answer}};
  });
  return json;
}

}  // namespace

std::string ResultsAsJson(const Session& session) {
  Json settings = Json::object();
  for (const SettingKey& key : SettingKeys()) {
    settings[key.section][key.key] = SettingValue(session.settings, key.section, key.key);
  }
  Json runs = Json::array();
  for (const RunResult& run : session.results.Runs()) runs.push_back(RunJson(run));
  const Json json{{"settings", std::move(settings)}, {"seed", session.AutomaticSeed}, {"runs", std::move(runs)}};
  return json.dump(2, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace tellurix
