#include "shell/OpenDocuments.h"

#include <fmt/format.h>

#include <filesystem>

namespace tellurix {

namespace {

constexpr const char* NotSaved = " (not saved)";

// The file's name, or the caption without its mark for a document that has none.
std::string ShortName(const DocumentState& document) {
  if (!document.path.empty()) return std::filesystem::path(document.path).filename().string();
  std::string name = document.caption;
  if (name.ends_with(NotSaved)) name.resize(name.size() - std::string_view(NotSaved).size());
  return name;
}

}  // namespace

std::string OpenDocuments::WorkbookName(int index) const {
  return ShortName(workbooks_.at(static_cast<std::size_t>(index))->document);
}

std::vector<std::string> OpenDocuments::SheetNames(int index) const {
  const Workbook& workbook = *workbooks_.at(static_cast<std::size_t>(index));
  std::vector<std::string> names;
  for (int sheet = 1; sheet <= workbook.SheetCount(); ++sheet) names.push_back(workbook.SheetName(sheet));
  return names;
}

Workbook* OpenDocuments::ActiveWorkbook() { return activeWorkbook_ < 0 ? nullptr : &WorkbookAt(activeWorkbook_); }

Workbook& OpenDocuments::NewWorkbook() {
  workbooks_.push_back(std::make_unique<Workbook>());
  activeWorkbook_ = WorkbookCount() - 1;
  workbooks_.back()->document.caption = fmt::format("Book {:02}{}", ++booksMade_, NotSaved);
  return *workbooks_.back();
}

void OpenDocuments::DropActiveWorkbook() {
  if (activeWorkbook_ < 0) return;
  workbooks_.erase(workbooks_.begin() + activeWorkbook_);
  activeWorkbook_ = WorkbookCount() - 1;
}

std::string OpenDocuments::ReportName(int index) const {
  return ShortName(reports_.at(static_cast<std::size_t>(index))->document);
}

Report* OpenDocuments::ActiveReport() { return activeReport_ < 0 ? nullptr : &ReportAt(activeReport_); }

Report& OpenDocuments::NewReport() {
  reports_.push_back(std::make_unique<Report>());
  activeReport_ = ReportCount() - 1;
  reports_.back()->document.caption = fmt::format("Report {:02}{}", ++reportsMade_, NotSaved);
  return *reports_.back();
}

}  // namespace tellurix
