#include "shell/OpenDocuments.h"

#include <fmt/format.h>

#include <algorithm>
#include <filesystem>

namespace tellurix {

namespace {

constexpr const char* NotSaved = " (not saved)";

template <typename Document>
int PlaceOf(const std::vector<std::unique_ptr<Document>>& documents, const Document& wanted) {
  for (std::size_t i = 0; i < documents.size(); ++i) {
    if (documents[i].get() == &wanted) return static_cast<int>(i);
  }
  return -1;
}

// Takes one away; the active one stays active, or the last one becomes it.
template <typename Document>
void Remove(std::vector<std::unique_ptr<Document>>& documents, int index, int& active) {
  if (index < 0) return;
  documents.erase(documents.begin() + index);
  if (active > index) --active;
  active = std::min(active, static_cast<int>(documents.size()) - 1);
}

}  // namespace

std::string DocumentName(const DocumentState& document) {
  if (!document.path.empty()) return std::filesystem::path(document.path).filename().string();
  std::string name = document.caption;
  if (name.ends_with(NotSaved)) name.resize(name.size() - std::string_view(NotSaved).size());
  return name;
}

std::string OpenDocuments::WorkbookName(int index) const {
  return DocumentName(workbooks_.at(static_cast<std::size_t>(index))->document);
}

std::vector<std::string> OpenDocuments::SheetNames(int index) const {
  const Workbook& workbook = *workbooks_.at(static_cast<std::size_t>(index));
  std::vector<std::string> names;
  for (int sheet = 1; sheet <= workbook.SheetCount(); ++sheet) names.push_back(workbook.SheetName(sheet));
  return names;
}

Workbook* OpenDocuments::ActiveWorkbook() { return activeWorkbook_ < 0 ? nullptr : &WorkbookAt(activeWorkbook_); }

Workbook& OpenDocuments::AddWorkbook(std::unique_ptr<Workbook> workbook) {
  workbooks_.push_back(std::move(workbook));
  activeWorkbook_ = WorkbookCount() - 1;
  if (onWorkbookOpened) onWorkbookOpened(*workbooks_.back());
  return *workbooks_.back();
}

Workbook& OpenDocuments::NewWorkbook() { return AddNewWorkbook(std::make_unique<Workbook>()); }

Workbook& OpenDocuments::AddNewWorkbook(std::unique_ptr<Workbook> workbook) {
  workbook->document.caption = fmt::format("Book {:02}{}", ++booksMade_, NotSaved);
  return AddWorkbook(std::move(workbook));
}

void OpenDocuments::ActivateWorkbook(int index) {
  activeWorkbook_ = index;
  if (onWorkbookActivated) onWorkbookActivated(WorkbookAt(index));
}

int OpenDocuments::IndexOf(const Workbook& workbook) const { return PlaceOf(workbooks_, workbook); }
int OpenDocuments::IndexOf(const Report& report) const { return PlaceOf(reports_, report); }

void OpenDocuments::CloseWorkbook(const Workbook& workbook) {
  const int index = IndexOf(workbook);
  if (index >= 0 && onWorkbookClosing) onWorkbookClosing(WorkbookAt(index));
  Remove(workbooks_, index, activeWorkbook_);
}

void OpenDocuments::CloseReport(const Report& report) {
  const int index = IndexOf(report);
  if (index >= 0 && onReportClosing) onReportClosing(ReportAt(index));
  Remove(reports_, index, activeReport_);
}

std::string OpenDocuments::ReportName(int index) const {
  return DocumentName(reports_.at(static_cast<std::size_t>(index))->document);
}

Report* OpenDocuments::ActiveReport() { return activeReport_ < 0 ? nullptr : &ReportAt(activeReport_); }

Report& OpenDocuments::AddReport(std::unique_ptr<Report> report) {
  reports_.push_back(std::move(report));
  activeReport_ = ReportCount() - 1;
  if (onReportOpened) onReportOpened(*reports_.back());
  return *reports_.back();
}

Report& OpenDocuments::NewReport() {
  auto report = std::make_unique<Report>();
  report->document.caption = fmt::format("Report {:02}{}", ++reportsMade_, NotSaved);
  return AddReport(std::move(report));
}

void OpenDocuments::ActivateReport(int index) {
  activeReport_ = index;
  if (onReportActivated) onReportActivated(ReportAt(index));
}

}  // namespace tellurix
