#include "workbook/data/TextToNumbers.h"

#include <optional>

#include "host/Form.h"
#include "numeric/Missing.h"
#include "numeric/Regional.h"
#include "numeric/Text.h"
#include "session/Skeleton.h"

namespace tellurix {

namespace {

constexpr const char* Caption = "Text to Numbers";

// The dialog `TextNum`: the codes of the texts, to be edited; "*" is missing. Nothing when cancelled.
std::optional<std::vector<double>> AskCodes(Session& session, const std::vector<std::string>& texts) {
  Form form("TextNum", Caption);
  form.helpContext = session.HelpContext;
  form.AddLabel("prompt", "The number that stands for each text (* for missing data):");
  Control grid{.kind = ControlKind::Grid, .id = "codes", .items = {"Text", "Code"}, .readOnlyColumns = 1};
  for (std::size_t k = 0; k < texts.size(); ++k) grid.cells.push_back({texts[k], std::to_string(k + 1)});
  form.Add(std::move(grid));
  form.AddButton("OK", "&OK", ButtonRole::Default);
  form.AddButton("Cancel", "&Cancel", ButtonRole::Cancel);
  // The texts are there to be read only.
  form.onChange = [&](const Control&) {
    form.Update("codes", [&](Control& control) {
      control.cells.resize(texts.size(), {"", ""});
      for (std::size_t k = 0; k < texts.size(); ++k) control.cells[k].front() = texts[k];
    });
  };
  std::vector<double> codes;
  form.onPress = [&](const Control&) {
    codes.clear();
    for (const auto& row : form.Find("codes")->cells) {
      const std::string_view typed = row.size() > 1 ? Trim(row[1]) : std::string_view();
      const auto number = typed == "*" ? MissingValue : ReadNumber(typed, session.options.regional);
      if (!number) return session.data.ShowInvalidData();
      codes.push_back(*number);
    }
    form.Finish(true);
  };
  NormalPointer(session);
  if (!session.host.RunForm(form)) return std::nullopt;
  return codes;
}

}  // namespace

void TextToNumbers(Session& session) {
  if (!session.data.SelectWorksheetData(ModeCategoricalTrimmed, 1, 1, "Select text data to CODE as numbers")) return;
  const ColumnDescriptor& info = session.data.ColumnInfo.front();
  std::vector<double> numbers = session.data.DataMatrix.front();
  numbers.resize(static_cast<std::size_t>(info.Count));

  // Category numbers without the missing category; MissingValue stays.
  std::vector<std::string> texts;
  std::vector<std::size_t> placeOf;
  for (const std::string& name : info.CategoryName) {
    placeOf.push_back(texts.size());
    if (!EqualNoCase(name, MissingCategory)) texts.push_back(name);
  }
  if (texts.empty()) return session.data.ShowInvalidData();
  std::vector<double> codes(texts.size());
  for (std::size_t k = 0; k < codes.size(); ++k) codes[k] = static_cast<double>(k + 1);
  const Reply specifies = ShowMessage(session, "Do you want to specify a numeric code for each different text string?",
                                      YesNoCancel | QuestionIcon, Caption);
  if (specifies == Reply::Cancel) return;
  if (specifies == Reply::Yes) {
    const auto chosen = AskCodes(session, texts);
    if (!chosen) return;
    codes = *chosen;
  }

  BusyPointer(session);
  for (double& x : numbers) {
    if (x != MissingValue) x = codes[placeOf[static_cast<std::size_t>(x) - 1]];
  }
  const OutputColumn block[] = {{"Coded: " + info.Title, std::move(numbers), {}}};
  WriteColumns(session, block, {}, info.StartRow - 1);
}

}  // namespace tellurix
