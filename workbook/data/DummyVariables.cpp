#include "workbook/data/DummyVariables.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>

#include "host/Form.h"
#include "numeric/CategoryOrder.h"
#include "numeric/Missing.h"
#include "numeric/Text.h"
#include "session/Skeleton.h"

namespace tellurix {

namespace {

constexpr const char* Caption = "Dummy Variables";
constexpr const char* NoRoom = "Not enough column space in this sheet, try again but select a new sheet.";
constexpr const char* None = "<none>";

// Asks which of the sorted categories to drop: its place, or their number for none. Nothing when cancelled.
std::optional<std::size_t> AskCategoryToDrop(Session& session, std::vector<std::string> names,
                                             std::string_view mostPrevalent) {
  const std::size_t k = names.size();
  const std::string text = fmt::format(
      "You are about to create {}, or {} if you select <none>, dummy (indicator) variables to represent the {} "
      "categories in your data.\nBy convention, the smallest value category is dropped. Alternatively, you might "
      "choose "
      "to drop the most prevalent category, which is {}.\nChoose the category to drop from the list below:",
      k - 1, k, k, mostPrevalent);
  names.emplace_back(None);
  Form form("DummyForm", Caption);
  form.helpContext = session.HelpContext;
  form.AddLabel("text", ReplaceAll(text, "&", "&&"));
  form.AddList("drop", "", std::move(names), 0);
  form.AddButton("OK", "&OK", ButtonRole::Default);
  form.AddButton("Cancel", "&Cancel", ButtonRole::Cancel);
  form.onActivate = [&](const Control&) { form.Finish(true); };
  NormalPointer(session);
  if (!session.host.RunForm(form) || form.IndexOf("drop") < 0) return std::nullopt;
  return static_cast<std::size_t>(form.IndexOf("drop"));
}

}  // namespace

void MakeDummyVariables(Session& session) {
  if (!session.data.SelectWorksheetData(ModeCategoricalTrimmed, 1, 1, "Select CATEGORICAL DATA column")) return;
  const ColumnDescriptor& info = session.data.ColumnInfo.front();
  std::vector<std::size_t> order = CategoryOrder(info.CategoryName, session.options.regional);
  std::erase_if(order, [&](std::size_t k) { return EqualNoCase(info.CategoryName[k], MissingCategory); });
  if (order.size() < 2) {
    ShowMessage(session, "You must have more than one category in your data", WarningIcon, Caption);
    return;
  }
  const SheetRoom room{.whenFull = NoRoom};
  if (!FitEmptySheet(session.host, order.size() - 1, room)) return;

  std::vector<std::string> names;
  for (const std::size_t k : order) names.push_back(info.CategoryName[k]);
  const std::size_t mostPrevalent = *std::ranges::max_element(order, {}, [&](auto k) { return info.CategoryFreq[k]; });
  const auto dropped = AskCategoryToDrop(session, names, info.CategoryName[mostPrevalent]);
  if (!dropped) return;

  BusyPointer(session);
  const std::vector<double>& codes = session.data.DataMatrix.front();
  const auto rows = static_cast<std::size_t>(info.Count);
  std::vector<OutputColumn> block;
  for (std::size_t k = 0; k < order.size(); ++k) {
    if (k == *dropped) continue;
    OutputColumn column{.title = info.Title + " = " + names[k], .values = std::vector<double>(rows)};
    const double code = static_cast<double>(order[k] + 1);
    for (std::size_t i = 0; i < rows; ++i) {
      column.values[i] = codes[i] == MissingValue ? MissingValue : codes[i] == code ? 1 : 0;
    }
    block.push_back(std::move(column));
  }
  WriteColumns(session, block, room, info.StartRow - 1);
}

}  // namespace tellurix
