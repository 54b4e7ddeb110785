#include "shell/ScriptChecks.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <optional>

#include "numeric/Missing.h"
#include "numeric/Text.h"
#include "report/Report.h"
#include "workbook/CellReading.h"
#include "workbook/Workbook.h"

namespace tellurix {

namespace {

constexpr double Rounding = 1e-9;  // relative, where no "within" is written

std::string NumberText(double x) { return x == MissingValue ? "*" : fmt::format("{}", x); }

std::optional<double> ReadScriptNumber(const ScriptWord& word) {
  if (!word.quoted && word.text == "*") return MissingValue;
  return ReadNumber(word.text, Regional());
}

// The words behind `from`: values, then perhaps "within" and a tolerance.
struct Wanted {
  std::vector<ScriptWord> values;
  std::optional<double> within;
};

bool ReadWanted(const ScriptStep& step, std::size_t from, Wanted& wanted, std::string& problem) {
  wanted.values.assign(step.words.begin() + static_cast<std::ptrdiff_t>(std::min(from, step.words.size())),
                       step.words.end());
  const std::size_t count = wanted.values.size();
  if (count >= 2 && !wanted.values[count - 2].quoted && wanted.values[count - 2].text == "within") {
    wanted.within = ReadScriptNumber(wanted.values.back());
    if (!wanted.within) {
      problem = "no number behind \"within\"";
      return false;
    }
    wanted.values.resize(count - 2);
  }
  if (wanted.values.empty()) problem = "nothing to compare with";
  return problem.empty();
}

bool NumbersAgree(double found, double expected, const std::optional<double>& within) {
  if (found == MissingValue || expected == MissingValue) return found == expected;
  return std::fabs(found - expected) <= within.value_or(Rounding * std::fabs(expected));
}

// Compares a text where the wanted word is quoted, numbers otherwise.
class Comparer {
 public:
  Comparer(const ScriptStep& step, std::vector<Comparison>& comparisons, std::string& problem)
      : step_(step), comparisons_(comparisons), problem_(problem) {}

  void Text(const std::string& what, const std::string& found, const std::string& expected, bool agrees) {
    Note(what, QuotedText(expected), QuotedText(found), agrees);
  }

  void Numbers(const std::string& what, const std::vector<double>& found, const Wanted& wanted) {
    if (found.size() != wanted.values.size()) {
      Note(what, fmt::format("{} numbers", wanted.values.size()), fmt::format("{} numbers", found.size()), false);
      return;
    }
    for (std::size_t i = 0; i < found.size(); ++i) {
      const auto expected = ReadScriptNumber(wanted.values[i]);
      if (!expected) {
        problem_ = fmt::format("{} is not a number", QuotedText(wanted.values[i].text));
        return;
      }
      const std::string place = found.size() > 1 ? fmt::format("{} ({})", what, i + 1) : what;
      const std::string bound = wanted.within ? fmt::format(" within {}", *wanted.within) : "";
      Note(place, wanted.values[i].text + bound, NumberText(found[i]),
           NumbersAgree(found[i], *expected, wanted.within));
    }
  }

 private:
  void Note(std::string what, std::string expected, std::string found, bool agrees) {
    if (!agrees && problem_.empty()) problem_ = fmt::format("{} is {}, expected {}", what, found, expected);
    comparisons_.push_back({step_.line, std::move(what), std::move(expected), std::move(found), agrees});
  }

  const ScriptStep& step_;
  std::vector<Comparison>& comparisons_;
  std::string& problem_;
};

// "m_single.t", "t", "m_single.t[2]".
struct FieldName {
  std::string file;  // without extension, empty for any
  std::string name;
  int filling = 1;
};

FieldName ReadFieldName(std::string_view word) {
  FieldName field;
  if (const auto bracket = word.find('['); bracket != std::string_view::npos && word.back() == ']') {
    std::from_chars(word.data() + bracket + 1, word.data() + word.size() - 1, field.filling);
    word = word.substr(0, bracket);
  }
  const auto dot = word.find('.');
  if (dot != std::string_view::npos) field.file = word.substr(0, dot);
  field.name = dot == std::string_view::npos ? word : word.substr(dot + 1);
  return field;
}

const FieldResult* FindField(const RunResult& run, const FieldName& wanted) {
  int filling = 0;
  const auto findIn = [&](std::string_view source, const std::vector<FieldResult>& fields) -> const FieldResult* {
    if (!wanted.file.empty() && !EqualNoCase(source, wanted.file)) return nullptr;
    for (const FieldResult& field : fields) {
      if (EqualNoCase(field.name, wanted.name) && ++filling == wanted.filling) return &field;
    }
    return nullptr;
  };
  for (const TemplateResult& merged : run.templates) {
    if (const auto* field = findIn(merged.file.substr(0, merged.file.rfind('.')), merged.fields)) return field;
  }
  for (const TextResult& text : run.texts) {
    if (const auto* field = findIn(text.name, text.fields)) return field;
  }
  return nullptr;
}

void CheckField(Session& session, const ScriptStep& step, Comparer& compare, std::string& problem) {
  const std::string& what = step.words[1].text;
  const FieldResult* field = FindField(session.results.Latest(), ReadFieldName(what));
  Wanted wanted;
  if (!field) {
    problem = fmt::format("the last run filled no field {}", what);
  } else if (ReadWanted(step, 2, wanted, problem)) {
    if (wanted.values.front().quoted) {
      const std::string& expected = wanted.values.front().text;
      compare.Text(what, field->text, expected, field->text == expected);
    } else {
      compare.Numbers(what, field->numbers, wanted);
    }
  }
}

void CheckCell(Session& session, const ScriptStep& step, Comparer& compare, std::string& problem) {
  Workbook* workbook = session.documents.ActiveWorkbook();
  CellRange range;
  Wanted wanted;
  if (!workbook || step.words.size() < 4 || !ReadRange(step.words[2].text, range) || !range.IsOneCell()) {
    problem = "a cell of an open workbook and its value are wanted";
  } else if (ReadWanted(step, 3, wanted, problem)) {
    const std::string& what = step.words[2].text;
    if (wanted.values.front().quoted) {
      const std::string found = workbook->FormattedTextRC(range.firstRow, range.firstColumn);
      compare.Text(what, found, wanted.values.front().text, found == wanted.values.front().text);
    } else {
      const double value = GetCellNumber(*workbook, range.firstRow, range.firstColumn);
      compare.Numbers(what, {value == TextMissingValue ? MissingValue : value}, wanted);
    }
  }
}

void CheckColumn(Session& session, const ScriptStep& step, Comparer& compare, std::string& problem) {
  const auto& columns = session.results.Latest().columns;
  const std::string& title = step.words.size() > 2 ? step.words[2].text : step.words[1].text;
  const auto column = std::ranges::find_if(columns, [&](const auto& c) { return EqualNoCase(c.title, title); });
  Wanted wanted;
  if (column == columns.end()) {
    problem = fmt::format("the last run wrote no column {}", QuotedText(title));
  } else if (ReadWanted(step, 3, wanted, problem)) {
    compare.Numbers(title, column->values, wanted);
  }
}

// A picture that the last run drew, by its title, and perhaps the figures of one of its series.
void CheckPicture(const RunResult& run, const ScriptStep& step, Comparer& compare, std::string& problem) {
  const std::string& title = step.words[2].text;
  const auto picture = std::ranges::find_if(run.pictures, [&](const auto& p) { return EqualNoCase(p.title, title); });
  const bool found = picture != run.pictures.end();
  if (!found || step.words.size() == 3) return compare.Text("picture", found ? title : "none", title, found);
  const std::string& name = step.words[3].text;
  const auto series = std::ranges::find_if(picture->series, [&](const auto& s) { return EqualNoCase(s.name, name); });
  Wanted wanted;
  if (series == picture->series.end()) {
    problem = fmt::format("the picture has no series {}", QuotedText(name));
  } else if (ReadWanted(step, 4, wanted, problem)) {
    compare.Numbers(name, series->values, wanted);
  }
}

void CheckReportText(Session& session, const ScriptStep& step, Comparer& compare) {
  const std::string& expected = step.words[2].text;
  const Report* report = session.documents.ActiveReport();
  const std::string text = report ? WriteText(report->text) : "";
  const bool found = text.find(expected) != std::string::npos;
  compare.Text("report", found ? expected : "a report without it", expected, found);
}

}  // namespace

bool CheckExpectation(Session& session, const ScriptStep& step, std::vector<Comparison>& comparisons,
                      std::string& problem) {
  Comparer compare(step, comparisons, problem);
  const std::size_t words = step.words.size();
  const std::string kind = words > 1 && !step.words[1].quoted ? step.words[1].text : "";
  const RunResult& run = session.results.Latest();
  if (kind == "no" && words == 3 && step.words[2].text == "report") {
    compare.Text("report", run.delivered ? "written" : "none", "none", !run.delivered);
  } else if (kind == "text" && words == 3) {
    CheckReportText(session, step, compare);
  } else if (kind == "picture" && words >= 3) {
    CheckPicture(run, step, compare, problem);
  } else if (kind == "message" && words == 3) {
    problem = fmt::format("no message is shown here, expected {}", QuotedText(step.words[2].text));
  } else if (kind == "cell") {
    CheckCell(session, step, compare, problem);
  } else if (kind == "column") {
    CheckColumn(session, step, compare, problem);
  } else if (words >= 3) {
    CheckField(session, step, compare, problem);
  } else {
    problem = "what is expected?";
  }
  return problem.empty();
}

std::string MisplacedFields(const RunResult& run) {
  for (const TemplateResult& merged : run.templates) {
    for (const FieldResult& field : merged.fields) {
      if (field.mark.empty() || EqualNoCase(field.name, field.mark)) continue;
      return field.name.empty()
                 ? fmt::format("the mark \"{}\" of {} was not filled", field.mark, merged.file)
                 : fmt::format("the field \"{}\" went into the mark \"{}\" of {}", field.name, field.mark, merged.file);
    }
  }
  return {};
}

}  // namespace tellurix
