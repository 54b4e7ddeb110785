// What a person does to the open documents by hand, between prompts and while a selection is waited for, written down
// as steps that do the same to a script's documents. Changes that a command makes are not: playing the command makes
// them.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "host/Documents.h"
#include "workbook/Workbook.h"

namespace tellurix {

class HandEdits {
 public:
  using Writer = std::function<void(const std::string& step)>;

  HandEdits(Documents& documents, Writer write) : documents_(documents), write_(std::move(write)) {}
  ~HandEdits();
  HandEdits(const HandEdits&) = delete;
  HandEdits& operator=(const HandEdits&) = delete;

  // Steps that make a script's documents, none at first, those that are open now; from then on they are watched.
  void Start();

  // A document has been opened or is about to be closed. What the command that runs has opened needs no step.
  void Opened(Workbook& workbook);
  void Opened(const Report& report);
  void Closing(const Workbook& workbook);
  void Closing(const Report& report);

  // Writes down what was done since the last time, and what is now in front. Called before each step that reads the
  // documents.
  void WriteDown();

  // Whose changes are those that come: the command's from its run on, the person's while it waits for a selection.
  void CommandActs();
  void PersonActs();

 private:
  struct FormatRun {
    int firstRow = 1;
    NumberFormat format;
    bool operator==(const FormatRun&) const = default;
  };
  // What is not written down yet of a sheet, and how far its cells have ever reached in the script.
  struct SheetEdits {
    std::vector<CellRange> cells;
    std::vector<CellRange> headings;
    std::map<std::pair<int, int>, std::string> titles;  // headings that the script has, by (row, column), one of them 0
    bool formatsMayDiffer = false;
    std::vector<std::vector<FormatRun>> formats;  // as the script has them, by column - 1
    int lastRow = 0;
    int lastColumn = 0;
  };
  struct Watched {
    Workbook* workbook = nullptr;
    int listener = 0;
    std::vector<std::string> sheets;  // as the script has them
    std::string activeSheet;
    std::map<std::string, SheetEdits> edits;
  };

  void Watch(Workbook& workbook);
  void Introduce(Workbook& workbook);
  void BringToFront(const Workbook& workbook);
  void Changed(Watched& watched, const WorkbookChange& change);
  void SheetsChanged(Watched& watched);
  void MarkWhole(SheetEdits& edits, const Workbook& workbook);
  void WriteSheet(Watched& watched, SheetEdits& edits);
  void WriteCells(const Workbook& workbook, SheetEdits& edits, const CellRange& range);
  void NoteHeadings(const Workbook& workbook, SheetEdits& edits, const CellRange& range, bool write);
  static std::vector<std::vector<FormatRun>> FormatsOf(const Workbook& workbook);
  void WriteFormats(const Workbook& workbook, SheetEdits& edits);
  void KnowExtents(Watched& watched);

  Documents& documents_;
  Writer write_;
  std::vector<std::unique_ptr<Watched>> watched_;  // in the order in which the script has them
  std::vector<const Report*> reports_;
  const Workbook* front_ = nullptr;  // the script's active workbook
  const Report* frontReport_ = nullptr;
  bool commandActs_ = false;
};

}  // namespace tellurix
