// Steps of a script that do by themselves what a person does to the open documents between prompts: entering cells,
// working on sheets, bringing a document to the front.
#pragma once

#include <string>
#include <string_view>

#include "host/Documents.h"
#include "host/Script.h"
#include "numeric/Regional.h"
#include "workbook/CellLook.h"
#include "workbook/Workbook.h"

namespace tellurix {

// Whether DoEditStep knows the step: workbook, report, sheet, add, rename, move, delete, cells, clear, heading, format.
bool IsEditStep(const ScriptStep& step);

// Does one of them; false with what is wrong, and nothing changed. All but `workbook` and `report` act on the active
// workbook; a reference without a sheet's name means its active sheet.
bool DoEditStep(Documents& documents, const Regional& regional, const ScriptStep& step, std::string& problem);

// --- how the steps are written ---

// `cells` steps that enter what stands in the range, of about `CellsStepWidth` characters each.
inline constexpr std::size_t CellsStepWidth = 100;
std::vector<std::string> CellsSteps(const Workbook& workbook, const CellRange& range);

// "B2" or "Sheet2!B2" as a word: the active sheet, named when the workbook has several.
std::string ReferenceWord(const Workbook& workbook, const CellRange& range);

// The words of a number format, as `format` takes them.
std::string FormatWords(const NumberFormat& format);

}  // namespace tellurix
