// The system's own workbook file, ".tlw": an SQLite 3 database with an application_id and a version of ours.
//
//   settings      (sheet, key, value)   of the workbook (sheet 0) and of the sheets; keys that a reader does not know
//                                       it keeps and writes back
//   sheets        (id, name, selection, active_cell)   in their order, from 1
//   looks         (id, ...)             each look that occurs, from 0
//   column_looks  (sheet, first_column, last_column, runs)   runs: pairs of 4-byte integers, a row and the look from
//                                       there on
//   cells         (id, sheet, slot, first_row, data)   chunks of at most ChunkRows cells (see CellChunk.h), in the
//                                       order of sheet, slot and row; slot: a column, or headings, widths and heights
//                                       as in WorkbookData.h
//
// Numbers and texts come back bit by bit, formulas with their results. What a formula needs is computed again only
// when its cells change.
#pragma once

#include <filesystem>
#include <string>

#include "workbook/Workbook.h"

namespace tellurix {

// Writes a file that takes the place of an old one when it is complete and on the disk; until then the old one stands.
// False with the reason in `problem`.
bool WriteNativeWorkbook(const Workbook& workbook, const std::filesystem::path& path, std::string& problem);

// Replaces all contents of the workbook, which counts as saved then and has no history. False with the reason in
// `problem` and the workbook as it was: no such file, none of ours, one of a newer version, damage.
bool ReadNativeWorkbook(const std::filesystem::path& path, Workbook& workbook, std::string& problem);

bool IsNativeWorkbook(const std::filesystem::path& path);  // by the first bytes; true for those of a newer version too

}  // namespace tellurix
