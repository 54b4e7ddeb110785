// Room for result columns, and the one pattern in which commands write them.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "host/Documents.h"
#include "host/Host.h"
#include "host/Results.h"
#include "report/Prompts.h"
#include "workbook/Workbook.h"

namespace tellurix {

struct OutputColumn {
  std::string title;               // the command's prefix and the source column's title
  std::vector<double> values;      // MissingValue is written as "*"
  std::vector<std::string> texts;  // instead of values where not empty
};

// The room for columns that a command counts on.
struct SheetRoom {
  int lastColumn = 255;  // that may hold anything, the new ones included
  std::string_view whenFull =
      {};  // says that a sheet has no room and ends the command; empty: another sheet is asked for
};

// Whether a worksheet that is empty takes so many columns; a message when it does not.
bool FitEmptySheet(Host& host, std::size_t columns, const SheetRoom& room = {});

class OutputColumns {
 public:
  OutputColumns(Host& host, Documents& documents, Prompts& prompts, ResultsLog& results);
  ~OutputColumns();  // frees what is reserved and not written, and closes the undo step that GetOutputColumns opened
  OutputColumns(const OutputColumns&) = delete;
  OutputColumns& operator=(const OutputColumns&) = delete;

  // Asks where to write `columns` result columns and reserves them; then `columns` is the number of the column before
  // the block. False when cancelled, or with a message when no sheet takes so many. Sheets without room are refused.
  bool GetOutputColumns(int& columns, const SheetRoom& room = {});

  // Writes the columns of the block: the titles in row `row`, or as headings when it is below 1, the values under them.
  // False, with a message and nothing written, when they do not fit the sheet.
  bool Write(std::span<const OutputColumn> block, int row);

  // Whether columns so high fit under a title in row `row`; a message when they do not.
  bool FitsRows(std::span<const OutputColumn> block, int row) const;

  Workbook* Grid() const { return grid_; }

 private:
  Host& host_;
  Documents& documents_;
  Prompts& prompts_;
  ResultsLog& results_;
  Workbook* grid_ = nullptr;
  int workbook_ = 0;
  int before_ = 0;    // the column before the block
  int reserved_ = 0;  // its columns that hold blanks
};

}  // namespace tellurix
