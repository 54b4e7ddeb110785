#include "workbook/files/NativeWorkbook.h"

#include <fmt/format.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <charconv>
#include <cmath>
#include <fstream>
#include <system_error>

#include "numeric/Text.h"
#include "workbook/FileBeside.h"
#include "workbook/WorkbookContents.h"
#include "workbook/files/ByteStream.h"
#include "workbook/files/CellChunk.h"
#include "workbook/files/Sqlite.h"

namespace tellurix {

namespace fs = std::filesystem;

namespace {

constexpr int ApplicationId = 0x546C7778;  // "Tlwx"
constexpr int Version = 1;
constexpr int ApplicationIdAt = 68;  // in the header of the file, big-endian
constexpr int SmallPage = 4096;      // of a file with few cells, where every table costs a page
constexpr int LargePage = 65536;
constexpr int ManyRows = 20000;
constexpr std::string_view Damaged = "The file is damaged.";
constexpr std::string_view SqliteMark{"SQLite format 3\0", 16};

constexpr const char* Schema = R"(
  CREATE TABLE settings(sheet INTEGER NOT NULL, key TEXT NOT NULL, value TEXT NOT NULL);
  CREATE TABLE sheets(id INTEGER PRIMARY KEY, name TEXT NOT NULL, selection TEXT NOT NULL, active_cell TEXT NOT NULL);
  CREATE TABLE looks(id INTEGER PRIMARY KEY, form INTEGER NOT NULL, decimals INTEGER NOT NULL,
                     grouping INTEGER NOT NULL, font_name TEXT NOT NULL, font_size REAL NOT NULL,
                     bold INTEGER NOT NULL, italic INTEGER NOT NULL, underline INTEGER NOT NULL,
                     text_colour INTEGER NOT NULL, fill_colour INTEGER NOT NULL, alignment INTEGER NOT NULL);
  CREATE TABLE column_looks(sheet INTEGER NOT NULL, first_column INTEGER NOT NULL, last_column INTEGER NOT NULL,
                            runs BLOB NOT NULL);
  CREATE TABLE cells(id INTEGER PRIMARY KEY, sheet INTEGER NOT NULL, slot INTEGER NOT NULL, first_row INTEGER NOT NULL,
                     data BLOB NOT NULL);
)";

// --- settings as texts, one list for both ways ---

std::string AsText(bool value) { return value ? "1" : "0"; }
std::string AsText(int value) { return std::to_string(value); }
std::string AsText(double value) { return fmt::format("{}", value); }
std::string AsText(const std::string& value) { return value; }
std::string AsText(const std::optional<CellRange>& range) { return range ? RangeText(*range) : std::string(); }
std::string AsText(const std::array<int, 16>& colours) {
  std::string text;
  for (const int colour : colours) text += fmt::format("{}{:06X}", text.empty() ? "" : " ", colour);
  return text;
}

template <typename Number>
bool FromText(std::string_view text, Number& value, int base) {
  Number read{};
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), read, base);
  if (error != std::errc() || end != text.data() + text.size()) return false;
  value = read;
  return true;
}
bool FromText(std::string_view text, int& value) { return FromText(text, value, 10); }
bool FromText(std::string_view text, bool& value) {
  value = text == "1";
  return value || text == "0";
}
bool FromText(std::string_view text, double& value) {
  double read = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), read);
  if (error != std::errc() || end != text.data() + text.size() || !std::isfinite(read) || read < 0) return false;
  value = read;
  return true;
}
bool FromText(std::string_view text, std::optional<CellRange>& range) {
  CellRange read;
  range.reset();
  if (text.empty()) return true;
  if (!ReadRange(text, read)) return false;
  range = read;
  return true;
}
bool FromText(std::string_view text, std::string& value) {
  value = text;
  return true;
}
bool FromText(std::string_view text, std::array<int, 16>& colours) {
  const auto parts = Split(text, ' ');
  if (parts.size() != colours.size()) return false;
  for (std::size_t i = 0; i < colours.size(); ++i) {
    if (!FromText(parts[i], colours[i], 16)) return false;
  }
  return true;
}

template <typename Settings, typename Visit>
void EachSheetSetting(Settings& settings, Visit visit) {
  visit("frozen_rows", settings.frozenRows);
  visit("frozen_columns", settings.frozenColumns);
  visit("locked", settings.isLocked);
  visit("gridlines", settings.showsGridlines);
  visit("headings", settings.showsHeadings);
  visit("zeros", settings.showsZeros);
  auto& printing = settings.printing;
  visit("print_paper", printing.paper);
  visit("print_landscape", printing.isLandscape);
  visit("print_left", printing.left);
  visit("print_top", printing.top);
  visit("print_right", printing.right);
  visit("print_bottom", printing.bottom);
  visit("print_gridlines", printing.gridlines);
  visit("print_headings", printing.headings);
  visit("print_area", printing.area);
}

template <typename Settings, typename Visit>
void EachWorkbookSetting(Settings& settings, Visit visit) {
  visit("font_name", settings.fontName);
  visit("font_size", settings.fontSize);
  visit("row_height", settings.rowHeight);
  visit("column_width", settings.columnWidth);
  visit("palette", settings.palette);
}

constexpr std::string_view ActiveSheetKey = "active_sheet";

// A checksum (FNV-1a, 64 bits) of all values but those of the chunks, which have their own: so a file is what was saved
// or it is refused. Empty when the tables cannot be read.
std::string Digest(SqliteDatabase& database) {
  std::uint64_t digest = 0xCBF29CE484222325;
  const auto add = [&](std::string_view bytes) {
    for (const char c : bytes) digest = (digest ^ static_cast<unsigned char>(c)) * 0x100000001B3;
  };
  for (const char* text : {"SELECT * FROM settings WHERE NOT (sheet = 0 AND key = 'digest') ORDER BY rowid",
                           "SELECT * FROM sheets ORDER BY id", "SELECT * FROM looks ORDER BY id",
                           "SELECT * FROM column_looks ORDER BY rowid",
                           "SELECT id, sheet, slot, first_row, length(data) FROM cells ORDER BY id"}) {
    SqliteStatement query(database, text);
    while (query.Next()) {
      for (int column = 0; column < query.ColumnCount(); ++column) {
        add(query.Bytes(column));
        add(std::string_view("\0", 1));
      }
    }
    if (query.Failed()) return {};
  }
  return fmt::format("{:016X}", digest);
}

// --- writing; false of any member has its reason with the database ---

class NativeWriter {
 public:
  NativeWriter(const Workbook& workbook, SqliteDatabase& database) : book_(workbook), database_(database) {}

  bool Write() {
    const std::string start =
        fmt::format("PRAGMA page_size={}; PRAGMA journal_mode=OFF; PRAGMA synchronous=OFF; PRAGMA application_id={};",
                    MostRows() > ManyRows ? LargePage : SmallPage, ApplicationId);
    return database_.Run(start.c_str()) &&
           database_.Run(fmt::format("PRAGMA user_version={}; BEGIN", Version).c_str()) && database_.Run(Schema) &&
           WriteSettings() && WriteLooks() && WriteSheets() && WriteDigest() && database_.Run("COMMIT");
  }
  bool IsTooLong() const { return tooLong_; }

 private:
  int MostRows() const {
    int most = 0;
    for (int sheet = 1; sheet <= book_.SheetCount(); ++sheet) most = std::max(most, book_.LastRow(sheet));
    return most;
  }

  bool WriteSettings() {
    SqliteStatement insert(database_, "INSERT INTO settings VALUES(?,?,?)");
    bool good = true;
    const auto write = [&](int sheet, std::string_view key, const auto& value) {
      const std::string text = AsText(value);
      good = good && insert.Bind(1, sheet).Bind(2, key).Bind(3, text).Execute();
    };
    write(0, ActiveSheetKey, book_.ActiveSheet());
    EachWorkbookSetting(book_.Settings(), [&](std::string_view key, const auto& value) { write(0, key, value); });
    for (const auto& [key, value] : book_.Settings().others) write(0, key, value);
    for (int sheet = 1; sheet <= book_.SheetCount(); ++sheet) {
      EachSheetSetting(book_.Settings(sheet),
                       [&](std::string_view key, const auto& value) { write(sheet, key, value); });
      for (const auto& [key, value] : book_.Settings(sheet).others) write(sheet, key, value);
    }
    return good;
  }

  bool WriteLooks() {
    SqliteStatement insert(database_, "INSERT INTO looks VALUES(?,?,?,?,?,?,?,?,?,?,?,?)");
    for (std::size_t i = 0; i < book_.Looks().size(); ++i) {
      const CellLook& look = book_.Looks()[i];
      insert.Bind(1, static_cast<int>(i))
          .Bind(2, static_cast<int>(look.number.form))
          .Bind(3, look.number.decimals)
          .Bind(4, int{look.number.grouping})
          .Bind(5, look.fontName)
          .Bind(6, look.fontSize)
          .Bind(7, int{look.bold})
          .Bind(8, int{look.italic})
          .Bind(9, int{look.underline})
          .Bind(10, look.textColour)
          .Bind(11, look.fillColour)
          .Bind(12, static_cast<int>(look.alignment));
      if (!insert.Execute()) return false;
    }
    return true;
  }

  bool WriteSheets() {
    SqliteStatement insert(database_, "INSERT INTO sheets VALUES(?,?,?,?)");
    for (int sheet = 1; sheet <= book_.SheetCount(); ++sheet) {
      std::string selection;
      for (const CellRange& range : book_.Selection(sheet)) {
        selection += (selection.empty() ? "" : ",") + RangeText(range);
      }
      const int row = book_.ActiveRow(sheet), column = book_.ActiveColumn(sheet);
      const std::string active = RangeText({row, column, row, column});
      if (!insert.Bind(1, sheet).Bind(2, book_.Name(sheet)).Bind(3, selection).Bind(4, active).Execute()) return false;
      if (!WriteColumnLooks(sheet)) return false;
      for (int slot = Heights; slot <= book_.LastColumn(sheet); ++slot) {
        const CellColumn* cells = book_.Column(sheet, slot);
        if (cells && !WriteColumn(sheet, slot, *cells)) return false;
      }
    }
    return true;
  }

  bool WriteColumnLooks(int sheet) {
    SqliteStatement insert(database_, "INSERT INTO column_looks VALUES(?,?,?,?)");
    const SheetLooks& looks = book_.Looks(sheet);
    for (std::size_t first = 0, next = 0; first < looks.size(); first = next) {
      for (next = first + 1; next < looks.size() && looks[next] == looks[first];) ++next;
      if (!looks[first]) continue;
      std::string runs;
      looks[first]->EachRun([&](int row, std::uint32_t look) {
        PutValue(runs, static_cast<std::int32_t>(row));
        PutValue(runs, look);
      });
      insert.Bind(1, sheet).Bind(2, static_cast<int>(first) + 1).Bind(3, static_cast<int>(next)).BindBytes(4, runs);
      if (!insert.Execute()) return false;
    }
    return true;
  }

  bool WriteColumn(int sheet, int slot, const CellColumn& cells) {
    SqliteStatement insert(database_, "INSERT INTO cells(sheet,slot,first_row,data) VALUES(?,?,?,?)");
    const int last = cells.LastRow();
    for (int row = 1; row <= last; row += ChunkRows) {
      const int end = std::min(row + ChunkRows - 1, last);
      if (cells.IsEmpty(row, end)) continue;
      if (!Compress(EncodeCells(cells, row, end), compressed_)) {
        tooLong_ = true;
        return false;
      }
      if (!insert.Bind(1, sheet).Bind(2, slot).Bind(3, row).BindBytes(4, compressed_).Execute()) return false;
    }
    return true;
  }

  bool WriteDigest() {
    const std::string digest = Digest(database_);
    SqliteStatement insert(database_, "INSERT INTO settings VALUES(0,'digest',?)");
    return !digest.empty() && insert.Bind(1, digest).Execute();
  }

  WorkbookContents book_;
  SqliteDatabase& database_;
  std::string compressed_;
  bool tooLong_ = false;
};

// --- reading; false of any member means damage ---

class NativeReader {
 public:
  NativeReader(SqliteDatabase& database, Workbook& workbook, Workbook::Loading& loading)
      : database_(database), workbook_(workbook), loading_(loading) {}

  bool Read() {
    return DigestIsRight() && ReadSheets() && ReadLooks() && ReadColumnLooks() && ReadCells() && ReadSelections() &&
           ReadSettings();
  }

 private:
  bool DigestIsRight() {
    const std::string digest = Digest(database_);
    SqliteStatement query(database_, "SELECT value FROM settings WHERE sheet = 0 AND key = 'digest'");
    return !digest.empty() && query.Next() && query.Text(0) == digest;
  }

  bool ReadSheets() {
    SqliteStatement query(database_, "SELECT id, name FROM sheets ORDER BY id");
    int count = 0;
    while (query.Next()) {
      ++count;
      const std::string name(query.Text(1));
      if (query.Integer(0) != count || !IsValidUtf8(name)) return false;
      if (count == 1 ? !workbook_.RenameSheet(1, name) : name.empty() || workbook_.AddSheet(name) == 0) return false;
    }
    return !query.Failed() && count > 0;
  }

  bool ReadLooks() {
    SqliteStatement query(database_, "SELECT * FROM looks ORDER BY id");
    while (query.Next()) {
      const auto small = [&](int column) { return static_cast<int>(query.Integer(column)); };
      if (small(0) != static_cast<int>(looks_.size()) || small(1) < 0 || small(1) > int{MostForm} || small(2) < 0 ||
          small(2) > 15 || small(11) < 0 || small(11) > int{MostAlignment})
        return false;
      CellLook& look = looks_.emplace_back();
      look.number = {static_cast<NumberFormat::Form>(small(1)), small(2), small(3) != 0};
      look.fontName = query.Text(4);
      look.fontSize = query.Double(5);
      look.bold = small(6) != 0;
      look.italic = small(7) != 0;
      look.underline = small(8) != 0;
      look.textColour = small(9);
      look.fillColour = small(10);
      look.alignment = static_cast<CellLook::Alignment>(small(11));
      if (!IsValidUtf8(look.fontName) || !(look.fontSize >= 0 && look.fontSize <= LargestFont) ||
          !IsColour(look.textColour) || !IsColour(look.fillColour))
        return false;
    }
    return !query.Failed();
  }

  bool ReadColumnLooks() {
    SqliteStatement query(database_, "SELECT * FROM column_looks ORDER BY rowid");
    std::vector<std::pair<int, CellLook>> runs;
    int sheet = 1, column = 0;  // done so far
    while (query.Next()) {
      const auto at = query.Integer(0), first = query.Integer(1), last = query.Integer(2);
      if (at < sheet || at > workbook_.SheetCount() || first < 1 || last < first || last > GridStore::MaxColumns ||
          (at == sheet && first <= column))
        return false;
      sheet = static_cast<int>(at);
      column = static_cast<int>(last);
      runs.clear();
      for (ByteReader bytes(query.Bytes(3)); !bytes.IsAtEnd();) {
        const auto row = bytes.Take<std::int32_t>();
        const auto look = bytes.Take<std::uint32_t>();
        if (bytes.IsBad() || row < 1 || row > GridStore::MaxRows || look >= looks_.size()) return false;
        if (!runs.empty() && row <= runs.back().first) return false;
        runs.emplace_back(row, looks_[look]);
      }
      workbook_.Sheet(sheet);
      loading_.SetLooks(static_cast<int>(first), column, runs);
    }
    return !query.Failed();
  }

  // In the order in which they were written, so that a chunk which comes again is seen.
  bool ReadCells() {
    SqliteStatement query(database_, "SELECT sheet, slot, first_row, data FROM cells ORDER BY id");
    std::array<std::int64_t, 3> last{1, Heights, 0};
    while (query.Next()) {
      const std::array<std::int64_t, 3> at{query.Integer(0), query.Integer(1), query.Integer(2)};
      if (at <= last || at[0] > workbook_.SheetCount() || at[1] < Heights || at[1] > GridStore::MaxColumns ||
          at[2] < 1 || at[2] > GridStore::MaxRows)
        return false;
      last = at;
      workbook_.Sheet(static_cast<int>(at[0]));
      if (!Decompress(query.Bytes(3), bytes_) ||
          !DecodeCells(bytes_, static_cast<int>(at[1]), static_cast<int>(at[2]), workbook_, loading_))
        return false;
    }
    return !query.Failed();
  }

  bool ReadSelections() {
    SqliteStatement query(database_, "SELECT id, selection, active_cell FROM sheets ORDER BY id");
    while (query.Next()) {
      workbook_.Sheet(static_cast<int>(query.Integer(0)));
      bool isFirst = true;
      for (const std::string& part : Split(query.Text(1), ',')) {
        CellRange range;
        if (!ReadRange(part, range)) return false;
        if (isFirst) workbook_.SetSelection(range);
        if (!isFirst) workbook_.AddSelection(range);
        isFirst = false;
      }
      CellRange active;
      if (!ReadRange(query.Text(2), active)) return false;
      workbook_.SetActiveCell(active.firstRow, active.firstColumn);
    }
    return !query.Failed();
  }

  bool ReadSettings() {
    int activeSheet = 1;
    WorkbookSettings settings;
    std::vector<SheetSettings> sheets(static_cast<std::size_t>(workbook_.SheetCount()));
    SqliteStatement query(database_, "SELECT sheet, key, value FROM settings ORDER BY rowid");
    while (query.Next()) {
      const auto sheet = query.Integer(0);
      const std::string key(query.Text(1)), value(query.Text(2));
      if (sheet < 0 || sheet > workbook_.SheetCount() || !IsValidUtf8(key) || !IsValidUtf8(value)) return false;
      bool known = false, good = true;
      const auto take = [&](std::string_view name, auto& setting) {
        if (name != key) return;
        known = true;
        good = FromText(value, setting);
      };
      if (sheet == 0) {
        if (key == "digest") continue;
        take(ActiveSheetKey, activeSheet);
        EachWorkbookSetting(settings, take);
        if (!known) settings.others[key] = value;
      } else {
        SheetSettings& ofSheet = sheets[static_cast<std::size_t>(sheet - 1)];
        EachSheetSetting(ofSheet, take);
        if (!known) ofSheet.others[key] = value;
      }
      if (!good) return false;
    }
    workbook_.SetSettings(settings);
    for (std::size_t i = 0; i < sheets.size(); ++i) {
      workbook_.Sheet(static_cast<int>(i) + 1);
      workbook_.SetSettingsOfSheet(sheets[i]);
      workbook_.LockSheet(sheets[i].isLocked);
    }
    workbook_.Sheet(activeSheet);
    return !query.Failed();
  }

  static constexpr auto MostForm = static_cast<std::uint8_t>(NumberFormat::Form::DateSeconds);
  static constexpr auto MostAlignment = static_cast<std::uint8_t>(CellLook::Alignment::Right);
  static constexpr double LargestFont = 1000;
  static bool IsColour(int colour) { return colour >= NoColour && colour <= 0xFFFFFF; }

  SqliteDatabase& database_;
  Workbook& workbook_;
  Workbook::Loading& loading_;
  std::vector<CellLook> looks_;
  std::string bytes_;
};

}  // namespace

bool WriteNativeWorkbook(const Workbook& workbook, const fs::path& path, std::string& problem) {
  FileBeside file(path);
  problem = file.Problem();
  if (!file.IsMade()) return false;
  SqliteDatabase database;
  bool good = database.OpenNew(file.Path());
  if (good) {
    NativeWriter writer(workbook, database);
    good = writer.Write();
    if (!good) problem = writer.IsTooLong() ? "The texts of a column are too long." : database.Problem();
  }
  if (!good || !database.Close()) {
    if (problem.empty()) problem = database.Problem();
    return false;
  }
  good = file.PutInPlace();
  problem = file.Problem();
  return good;
}

bool ReadNativeWorkbook(const fs::path& path, Workbook& workbook, std::string& problem) {
  RemoveLeftovers(path);
  if (access(path.c_str(), R_OK) != 0) {
    problem = std::generic_category().message(errno);
    return false;
  }
  if (!IsNativeWorkbook(path)) {
    problem = "The file is not a Tellurix workbook.";
    return false;
  }
  SqliteDatabase database;
  if (!database.OpenToRead(path)) {
    problem = database.Problem();
    return false;
  }
  if (database.Number("PRAGMA user_version") > Version) {
    problem = "The file was saved by a newer version of Tellurix.";
    return false;
  }
  problem = Damaged;
  Workbook::Loading loading(workbook);
  loading.Clear();
  if (!NativeReader(database, workbook, loading).Read()) return false;
  loading.Accept();
  problem.clear();
  return true;
}

bool IsNativeWorkbook(const fs::path& path) {
  std::array<char, ApplicationIdAt + 4> head{};
  std::ifstream in(path, std::ios::binary);
  if (!in.read(head.data(), head.size()) || !std::string_view(head.data(), head.size()).starts_with(SqliteMark)) {
    return false;
  }
  int id = 0;
  for (int i = 0; i < 4; ++i)
    id = id << 8 | static_cast<unsigned char>(head[static_cast<std::size_t>(ApplicationIdAt + i)]);
  return id == ApplicationId;
}

}  // namespace tellurix
