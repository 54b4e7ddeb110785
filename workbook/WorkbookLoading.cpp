// Filling a workbook without undo records.
#include <span>
#include <utility>
#include <vector>

#include "workbook/WorkbookData.h"

namespace tellurix {

Workbook::Loading::Loading(Workbook& workbook) : workbook_(workbook), backup_(std::make_unique<Backup>()) {
  // The copies hold the columns, so that every write goes to a copy of its column.
  for (const auto& sheet : workbook_.sheets_) backup_->sheets.emplace_back(sheet, *sheet);
  backup_->active = workbook_.active_;
  backup_->settings = workbook_.settings_;
  workbook_.logging_ = false;
  workbook_.BeginStep({});
}

Workbook::Loading::~Loading() {
  if (!backup_) return;
  workbook_.sheets_.clear();
  for (auto& [sheet, data] : backup_->sheets) {
    *sheet = std::move(data);
    workbook_.sheets_.push_back(sheet);
  }
  workbook_.active_ = backup_->active;
  workbook_.settings_ = backup_->settings;
  workbook_.open_->areas.clear();
  workbook_.EndStep();
  workbook_.logging_ = true;
}

void Workbook::Loading::Clear() {
  Workbook& workbook = workbook_;
  workbook.sheets_.assign(1, std::make_shared<SheetData>());
  workbook.sheets_[0]->name = "Sheet1";
  workbook.active_ = 0;
  workbook.settings_ = {};
  workbook.Touch(WorkbookChange::Kind::Sheets, 1, 1, 1, 1);
  workbook.open_->Touch(WorkbookChange::Kind::Settings, nullptr, {1, 1, 1, 1});
}

TextRef Workbook::Loading::Intern(std::string_view text) { return workbook_.texts_->Intern(text); }

void Workbook::Loading::SetTexts(int column, int firstRow, std::span<const TextRef> texts) {
  if (texts.empty()) return;
  workbook_.ForMany(column).Set(firstRow, texts);
  workbook_.TouchCells(firstRow, column, firstRow + static_cast<int>(texts.size()) - 1, column, true);
}

void Workbook::Loading::SetLooks(int firstColumn, int lastColumn, std::span<const std::pair<int, CellLook>> looks) {
  std::vector<std::pair<int, std::uint32_t>> runs;
  for (const auto& [firstRow, look] : looks) runs.emplace_back(firstRow, workbook_.NumberOf(look));
  const auto shared = std::make_shared<const LookRuns>(runs);
  SheetLooks all = *workbook_.Active().looks;
  all.resize(std::max(all.size(), static_cast<std::size_t>(lastColumn)));
  for (int column = firstColumn; column <= lastColumn; ++column) all[Index(column)] = shared;
  workbook_.ReplaceLooks(std::move(all));
  workbook_.Touch(WorkbookChange::Kind::Looks, 1, firstColumn, MaxRows, lastColumn);
}

void Workbook::Loading::Accept() {
  backup_.reset();
  Step told;
  if (workbook_.formulas_->IsUsed()) workbook_.formulas_->Rebuild(false);
  workbook_.Recalculate(*workbook_.open_, told);
  workbook_.open_->log.clear();
  workbook_.EndStep();
  workbook_.logging_ = true;
  workbook_.undo_.clear();
  workbook_.redo_.clear();
  workbook_.historyBytes_ = 0;
  workbook_.bottomSerial_ = ++workbook_.lastSerial_;
  workbook_.MarkSaved();
  workbook_.Tell(told);
}

}  // namespace tellurix
