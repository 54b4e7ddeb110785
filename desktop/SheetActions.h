// What the menus do on the worksheet in front, and the menu over its grid.
#pragma once

#include <QPoint>

#include "desktop/WindowActions.h"

namespace tellurix {

class GridView;
class WorksheetForm;

// The entries that work on worksheets alone.
void AddWorksheetEntries(MainWindow& main, WindowActions& on);

// The worksheet's half of those that reports have too.
void FindOnSheet(MainWindow& main, GridView& grid, bool replace);
void SetUpSheetPage(MainWindow& main, WorksheetForm& form);
void PrintSheetOn(MainWindow& main, WorksheetForm& form);
void PreviewSheet(MainWindow& main, WorksheetForm& form);

// Asks for the printer on which worksheets and reports print until the program ends.
void ChoosePrinter(MainWindow& main);

// At a place of the screen: for cells, or rows or columns when whole ones are marked.
void ShowSheetMenu(MainWindow& main, WorksheetForm& form, const QPoint& globalPosition);

}  // namespace tellurix
