// The dialogs of worksheets. Each takes what it shows from the workbook of the grid, and is one undo step when it is
// accepted.
#pragma once

namespace tellurix {

class GridView;
class MainWindow;
class Workbook;

void FormatCells(MainWindow& main, GridView& grid);     // of the marked cells
void DescribeColumn(MainWindow& main, GridView& grid);  // of the active cell
void ChooseDefaultFont(MainWindow& main, GridView& grid);
void EditPalette(MainWindow& main, GridView& grid);
void EditSheetSettings(MainWindow& main, GridView& grid);
void EditWorkbookOptions(MainWindow& main, GridView& grid);
void PasteSpecial(MainWindow& main, GridView& grid);
void EditPageSetup(MainWindow& main, Workbook& book);

}  // namespace tellurix
