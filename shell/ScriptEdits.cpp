#include "shell/ScriptEdits.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <optional>
#include <vector>

#include "numeric/Text.h"
#include "report/Value.h"
#include "workbook/TypedText.h"

namespace tellurix {

namespace {

// In the order of NumberFormat::Form.
constexpr std::array<std::string_view, 8> FormNames = {"general", "fixed", "scientific",   "percent",
                                                       "date",    "text",  "date-minutes", "date-seconds"};

bool HasDecimals(NumberFormat::Form form) {
  return form == NumberFormat::Form::Fixed || form == NumberFormat::Form::Scientific ||
         form == NumberFormat::Form::Percent;
}

// Makes one sheet the active one for as long as it lives.
class OnSheet {
 public:
  OnSheet(Workbook& workbook, int sheet) : workbook_(workbook), before_(workbook.Sheet()) { workbook_.Sheet(sheet); }
  ~OnSheet() { workbook_.Sheet(before_); }
  OnSheet(const OnSheet&) = delete;
  OnSheet& operator=(const OnSheet&) = delete;

 private:
  Workbook& workbook_;
  int before_;
};

// One step at work.
class EditStep {
 public:
  EditStep(Documents& documents, const Regional& regional, const ScriptStep& step, std::string& problem)
      : documents_(documents), regional_(regional), step_(step), problem_(problem) {}

  bool Do() {
    if (step_.Is("workbook")) return Activate(documents_.WorkbookCount(), &Documents::WorkbookName);
    if (step_.Is("report")) return Activate(documents_.ReportCount(), &Documents::ReportName);
    book_ = documents_.ActiveWorkbook();
    if (!book_) return Fail("no workbook is open");
    if (step_.Is("sheet")) return ShowSheet();
    if (step_.Is("cells")) return EnterCells();
    if (step_.Is("clear")) return Clear();
    if (step_.Is("heading")) return Heading();
    if (step_.Is("format")) return Format();
    if (Words() < 3 || !EqualNoCase(Word(1), "sheet")) return Fail("\"" + step_.Verb() + " sheet NAME\" is wanted");
    return ChangeSheets();
  }

 private:
  std::size_t Words() const { return step_.words.size(); }
  const std::string& Word(std::size_t i) const { return step_.words[i].text; }
  bool Fail(std::string problem) {
    problem_ = std::move(problem);
    return false;
  }

  // By number in the order of opening, or by name.
  bool Activate(int count, std::string (Documents::*nameOf)(int) const) {
    if (Words() != 2) return Fail("one " + step_.Verb() + " is wanted");
    int found = -1;
    if (!step_.words[1].quoted) found = ParseInteger(Word(1)) - 1;
    for (int i = 0; i < count && (found < 0 || found >= count); ++i) {
      if (EqualNoCase((documents_.*nameOf)(i), Word(1))) found = i;
    }
    if (found < 0 || found >= count) return Fail(fmt::format("there is no {} {}", step_.Verb(), QuotedText(Word(1))));
    step_.Is("workbook") ? documents_.ActivateWorkbook(found) : documents_.ActivateReport(found);
    return true;
  }

  bool FindSheet(const std::string& name, int& sheet) {
    sheet = book_->FindSheet(name);
    return sheet > 0 || Fail(fmt::format("there is no sheet {}", QuotedText(name)));
  }

  bool ShowSheet() {
    int sheet = 0;
    if (Words() != 2) return Fail("one sheet is wanted");
    if (!FindSheet(Word(1), sheet)) return false;
    book_->Sheet(sheet);
    return true;
  }

  bool ChangeSheets() {
    int sheet = 0;
    const int active = book_->Sheet();
    if (step_.Is("add")) {
      if (book_->AddSheet(Word(2)) == 0) return Fail(fmt::format("no sheet can be named {}", QuotedText(Word(2))));
      book_->Sheet(active);
      return true;
    }
    if (!FindSheet(Word(2), sheet)) return false;
    if (step_.Is("delete")) return book_->DeleteSheet(sheet) || Fail("this sheet cannot be deleted");
    if (Words() != 4) return Fail("one more word is wanted");
    if (step_.Is("rename")) {
      return book_->RenameSheet(sheet, Word(3)) || Fail(fmt::format("no sheet can be named {}", QuotedText(Word(3))));
    }
    return book_->MoveSheet(sheet, ParseInteger(Word(3))) || Fail("no such place for a sheet");
  }

  // A range, with or without a sheet's name in front; `whole` makes a range of a column's letters or a row's number.
  bool ReadReference(int& sheet, CellRange& range, bool whole = false) {
    if (Words() < 2) return Fail("a range is wanted");
    sheet = book_->Sheet();
    std::string text = Word(1);
    if (const auto bang = text.rfind('!'); bang != std::string::npos) {
      if (!FindSheet(text.substr(0, bang), sheet)) return false;
      text.erase(0, bang + 1);
    }
    if (whole) text += ":" + text;
    return ReadRange(text, range) || Fail(fmt::format("{} is not a range", QuotedText(Word(1))));
  }

  // A word without quotes is a number, logical, percentage or date, as if it were typed. A quoted one is a text, but
  // for a formula that begins with "=", and for an apostrophe in front, which says that the rest is a text.
  bool CanEnter(const ScriptWord& word) {
    return word.quoted || ReadTyped(word.text, regional_).type != TextCell ||
           Fail(fmt::format("{} is neither a number nor a date: texts stand in quotes", word.text));
  }

  void Enter(int row, int column, const ScriptWord& word) {
    const std::string& text = word.text;
    if (word.quoted && text.starts_with('=')) return EnterInAnyFormat(row, column, text);
    if (word.quoted) return book_->TextRC(row, column, std::string_view(text).substr(text.starts_with('\'') ? 1 : 0));
    EnterInAnyFormat(row, column, text);
  }

  // A formula, number or date it is, even in a cell where what a person types stays text.
  void EnterInAnyFormat(int row, int column, const std::string& text) {
    const CellRange cell{row, column, row, column};
    const NumberFormat format = book_->NumberFormatAt(row, column);
    const bool isText = format.form == NumberFormat::Form::Text;
    if (isText) book_->SetLook(cell, {.number = NumberFormat()});
    book_->Enter(row, column, text, regional_);
    if (isText) book_->SetLook(cell, {.number = format});
  }

  bool EnterCells() {
    int sheet = 0;
    CellRange range;
    if (!ReadReference(sheet, range)) return false;
    int row = range.firstRow, column = range.firstColumn, lastColumn = column;
    const auto isNewRow = [this](std::size_t i) { return !step_.words[i].quoted && Word(i) == "/"; };
    for (std::size_t i = 2; i < Words(); ++i) {
      if (isNewRow(i)) {
        ++row, column = range.firstColumn;
      } else {
        if (!CanEnter(step_.words[i])) return false;
        lastColumn = std::max(lastColumn, column++);
      }
    }
    const OnSheet on(*book_, sheet);
    if (!Workbook::Fits(row, lastColumn)) return Fail("the cells do not fit on the sheet");
    if (book_->SheetLocked()) return Fail("the sheet is locked");
    row = range.firstRow, column = range.firstColumn;
    book_->BeginStep("Enter");
    for (std::size_t i = 2; i < Words(); ++i) {
      if (isNewRow(i)) {
        ++row, column = range.firstColumn;
      } else {
        Enter(row, column++, step_.words[i]);
      }
    }
    book_->EndStep();
    return true;
  }

  bool Clear() {
    int sheet = 0;
    CellRange range;
    if (!ReadReference(sheet, range)) return false;
    const OnSheet on(*book_, sheet);
    return book_->ClearRange(range) || Fail("the range cannot be cleared");
  }

  bool Heading() {
    int sheet = 0;
    CellRange range;
    if (Words() != 3) return Fail("\"heading COLUMN TITLE\" is wanted");
    if (!ReadReference(sheet, range, true)) return false;
    const OnSheet on(*book_, sheet);
    if (book_->SheetLocked()) return Fail("the sheet is locked");
    const bool isRow = range.lastColumn == Workbook::MaxColumns;
    isRow ? book_->RowText(range.firstRow, Word(2)) : book_->ColText(range.firstColumn, Word(2));
    return true;
  }

  bool Format() {
    int sheet = 0;
    CellRange range;
    if (!ReadReference(sheet, range)) return false;
    const auto name = Words() < 3 ? FormNames.end() : std::ranges::find_if(FormNames, [this](std::string_view form) {
      return EqualNoCase(form, Word(2));
    });
    if (name == FormNames.end()) return Fail("a number format is wanted");
    NumberFormat format;
    format.form = static_cast<NumberFormat::Form>(name - FormNames.begin());
    if (Words() > 3) format.decimals = std::clamp(ParseInteger(Word(3)), 0, 15);
    format.grouping = Words() > 4 && EqualNoCase(Word(4), "grouping");
    const OnSheet on(*book_, sheet);
    return book_->SetLook(range, {.number = format}) || Fail("the range cannot be formatted");
  }

  Documents& documents_;
  const Regional& regional_;
  const ScriptStep& step_;
  std::string& problem_;
  Workbook* book_ = nullptr;
};

// An ISO date in one word, where it is the very number.
std::optional<std::string> DateWord(double number, const NumberFormat& format) {
  if (!format.IsDate()) return std::nullopt;
  const Regional iso;
  const std::string word = ReplaceAll(TypedText(number, format, iso), " ", "T");
  const TypedValue read = ReadTyped(word, iso);
  return read.format && read.number == number ? std::optional(word) : std::nullopt;
}

// What is entered to have the cell as it stands.
std::string CellWord(const Workbook& workbook, int row, int column) {
  if (const std::string formula = workbook.FormulaText(row, column); !formula.empty()) return QuotedText(formula);
  const CellView cell = workbook.ReadRC(row, column);
  switch (cell.type) {
    case NumberCell:
      return DateWord(cell.number, workbook.NumberFormatAt(row, column))
          .value_or(fmt::format("{}", cell.number));  // the shortest that reads back
    case LogicalCell:
      return cell.number != 0 ? "TRUE" : "FALSE";
    case TextCell: {
      const bool isMisread = cell.text.starts_with('=') || cell.text.starts_with('\'');
      return QuotedText((isMisread ? "'" : "") + std::string(cell.text));
    }
    default:
      return "\"\"";
  }
}

}  // namespace

bool IsEditStep(const ScriptStep& step) {
  constexpr std::array<std::string_view, 11> verbs = {"workbook", "report", "sheet", "add",     "rename", "move",
                                                      "delete",   "cells",  "clear", "heading", "format"};
  return std::ranges::any_of(verbs, [&](std::string_view verb) { return step.Is(verb); });
}

bool DoEditStep(Documents& documents, const Regional& regional, const ScriptStep& step, std::string& problem) {
  return EditStep(documents, regional, step, problem).Do();
}

std::string ReferenceWord(const Workbook& workbook, const CellRange& range) {
  const std::string text = RangeText(range);
  return workbook.SheetCount() == 1 ? text : ScriptText(workbook.SheetName(workbook.Sheet()) + "!" + text);
}

std::vector<std::string> CellsSteps(const Workbook& workbook, const CellRange& range) {
  std::vector<std::string> steps;
  std::string step;
  for (int row = range.firstRow; row <= range.lastRow; ++row) {
    if (step.empty()) {
      step = "cells " + ReferenceWord(workbook, {row, range.firstColumn, row, range.firstColumn});
    } else {
      step += " /";
    }
    for (int column = range.firstColumn; column <= range.lastColumn; ++column) {
      step += " " + CellWord(workbook, row, column);
    }
    if (step.size() >= CellsStepWidth || row == range.lastRow) steps.push_back(std::exchange(step, {}));
  }
  return steps;
}

std::string FormatWords(const NumberFormat& format) {
  std::string words(FormNames[static_cast<std::size_t>(format.form)]);
  if (HasDecimals(format.form)) words += fmt::format(" {}", format.decimals);
  if (format.form == NumberFormat::Form::Fixed && format.grouping) words += " grouping";
  return words;
}

}  // namespace tellurix
