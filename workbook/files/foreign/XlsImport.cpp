#include "workbook/files/foreign/XlsImport.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <map>
#include <optional>
#include <utility>
#include <vector>

#include "numeric/Text.h"
#include "workbook/files/ByteStream.h"
#include "workbook/files/foreign/CompoundFile.h"
#include "workbook/files/foreign/ForeignFormats.h"
#include "workbook/files/foreign/ImportedBook.h"
#include "workbook/files/foreign/XlsFormula.h"

namespace tellurix {

namespace {

enum Id : std::uint16_t {
  FormulaId = 0x0006,
  EofId = 0x000A,
  ProtectId = 0x0012,
  DateModeId = 0x0022,
  ExternSheetId = 0x0017,
  FilePassId = 0x002F,
  FontId = 0x0031,
  ContinueId = 0x003C,
  Window1Id = 0x003D,
  PaneId = 0x0041,
  ColInfoId = 0x007D,
  BoundSheetId = 0x0085,
  MulRkId = 0x00BD,
  MulBlankId = 0x00BE,
  RStringId = 0x00D6,
  XfId = 0x00E0,
  SupBookId = 0x01AE,
  SstId = 0x00FC,
  LabelSstId = 0x00FD,
  BlankId = 0x0201,
  NumberId = 0x0203,
  LabelId = 0x0204,
  BoolErrId = 0x0205,
  StringId = 0x0207,
  RowId = 0x0208,
  Window2Id = 0x023E,
  RkId = 0x027E,
  FormatId = 0x041E,
  SharedFormulaId = 0x04BC,
  ArrayId = 0x0221,
  BofId = 0x0809
};

constexpr std::uint16_t Biff5 = 0x0500, Biff8 = 0x0600;

struct Record {
  std::uint16_t id = 0;
  std::string_view data;
  std::vector<std::string_view> more;  // of the records that continue it
};

// The records of a stream from an offset on.
class Records {
 public:
  Records(std::string_view stream, std::size_t offset) : left_(stream.substr(std::min(offset, stream.size()))) {}

  bool Next(Record& record) {
    if (!Take(record.id, record.data)) return false;
    record.more.clear();
    std::uint16_t id = 0;
    std::string_view data;
    for (std::string_view before = left_; Take(id, data); before = left_) {
      if (id != ContinueId) {
        left_ = before;
        break;
      }
      record.more.push_back(data);
    }
    return true;
  }

 private:
  bool Take(std::uint16_t& id, std::string_view& data) {
    ByteReader bytes(left_);
    id = bytes.Take<std::uint16_t>();
    const auto size = bytes.Take<std::uint16_t>();
    data = bytes.TakeBytes(size);
    if (bytes.IsBad()) return false;
    left_.remove_prefix(4 + data.size());
    return true;
  }

  std::string_view left_;
};

// Bytes that run on in the records that continue one. Characters that do so start with a new flag there.
class TextBytes {
 public:
  TextBytes(std::string_view first, const std::vector<std::string_view>& more) : left_(first), more_(more) {}

  template <typename T>
  T Take() {
    if (left_.empty()) Continue();
    ByteReader bytes(left_);
    const T value = bytes.Take<T>();
    bad_ |= bytes.IsBad();
    left_.remove_prefix(std::min(sizeof(T), left_.size()));
    return value;
  }
  void Skip(std::size_t count) {
    while (count > 0 && !bad_) {
      if (left_.empty()) Continue();
      const std::size_t part = std::min(count, left_.size());
      left_.remove_prefix(part);
      count -= part;
    }
  }
  // UTF-16, or its lower bytes alone.
  std::string TakeCharacters(std::size_t count, bool isWide) {
    std::string text;
    char32_t high = 0;
    for (; count > 0 && !bad_; --count) {
      if (left_.empty()) {
        Continue();
        isWide = (Take<std::uint8_t>() & 1) != 0;
      }
      const char32_t unit = isWide ? Take<std::uint16_t>() : Take<std::uint8_t>();
      if (unit >= 0xD800 && unit < 0xDC00) {
        high = unit;
      } else if (unit >= 0xDC00 && unit < 0xE000) {
        text += EncodeUtf8(high == 0 ? 0xFFFD : 0x10000 + ((high - 0xD800) << 10) + (unit - 0xDC00));
        high = 0;
      } else {
        text += EncodeUtf8(unit);
      }
    }
    return text;
  }
  // As it stands in the shared strings and in most records: length, flags, what belongs to them, characters.
  std::string TakeText(bool hasLongLength) {
    const std::size_t count = hasLongLength ? Take<std::uint16_t>() : Take<std::uint8_t>();
    const auto flags = Take<std::uint8_t>();
    const std::size_t runs = flags & 8 ? Take<std::uint16_t>() : 0;
    const std::size_t phonetic = flags & 4 ? Take<std::uint32_t>() : 0;
    std::string text = TakeCharacters(count, (flags & 1) != 0);
    Skip(4 * runs + phonetic);
    return text;
  }
  bool IsBad() const { return bad_; }

 private:
  void Continue() {
    if (next_ < more_.size()) {
      left_ = more_[next_++];
    } else {
      bad_ = true;
    }
  }

  std::string_view left_;
  const std::vector<std::string_view>& more_;
  std::size_t next_ = 0;
  bool bad_ = false;
};

double NumberOfRk(std::uint32_t rk) {
  double value = 0;
  if (rk & 2) {
    value = static_cast<std::int32_t>(rk) >> 2;
  } else {
    value = std::bit_cast<double>(std::uint64_t{rk & ~3u} << 32);
  }
  return rk & 1 ? value / 100 : value;
}

std::string ErrorOfCode(int code) {
  switch (code) {
    case 0x00:
      return "#NULL!";
    case 0x07:
      return "#DIV/0!";
    case 0x0F:
      return "#VALUE!";
    case 0x17:
      return "#REF!";
    case 0x1D:
      return "#NAME?";
    case 0x24:
      return "#NUM!";
    default:
      return "#N/A";
  }
}

struct SheetPlace {
  std::string name;
  std::size_t offset;
};

// What the whole workbook has in common.
struct Globals {
  bool is8 = true;
  bool isProtected = false;
  bool since1904 = false;
  int active = 0;
  std::vector<SheetPlace> sheets;
  std::vector<std::string> texts;
  std::map<int, NumberFormat> formats;
  std::vector<CellLook> fonts;
  std::vector<CellLook> looks;
  std::vector<bool> isOwnBook;  // of the workbooks that references name
  struct SheetReference {
    std::size_t book;
    int first, last;
  };
  std::vector<SheetReference> references;

  // The sheets by the numbers that references have.
  XlsNames Names() const {
    XlsNames names{is8, {}};
    for (const SheetReference& reference : references) {
      const bool isOne = reference.book < isOwnBook.size() && isOwnBook[reference.book] &&
                         reference.first == reference.last && reference.first < static_cast<int>(sheets.size());
      names.sheets.push_back(isOne ? sheets[static_cast<std::size_t>(reference.first)].name : std::string());
    }
    return names;
  }

  std::string TextIn(const Record& record, std::size_t offset, bool hasLongLength) const {
    if (record.data.size() < offset) return {};
    TextBytes bytes(record.data.substr(offset), record.more);
    if (is8) return bytes.TakeText(hasLongLength);
    ByteReader plain(record.data.substr(offset));
    const std::size_t length = hasLongLength ? plain.Take<std::uint16_t>() : plain.Take<std::uint8_t>();
    return ToUtf8(plain.TakeBytes(std::min(length, record.data.size() - offset)));
  }

  void Take(const Record& record) {
    ByteReader bytes(record.data);
    switch (record.id) {
      case FilePassId:
        isProtected = true;
        break;
      case DateModeId:
        since1904 = bytes.Take<std::uint16_t>() == 1;
        break;
      case Window1Id:
        bytes.TakeBytes(10);
        active = bytes.Take<std::uint16_t>();
        break;
      case FormatId:
        formats[bytes.Take<std::uint16_t>()] = FormatOfCode(TextIn(record, 2, is8));
        break;
      case FontId:
        TakeFont(bytes);
        break;
      case XfId:
        TakeLook(bytes);
        break;
      case BoundSheetId: {
        const auto offset = bytes.Take<std::uint32_t>();
        bytes.Take<std::uint8_t>();
        const bool isWorksheet = bytes.Take<std::uint8_t>() == 0;
        if (isWorksheet) sheets.push_back({TextIn(record, 6, false), offset});
        if (!isWorksheet) sheets.push_back({{}, 0});
        break;
      }
      case SupBookId: {
        bytes.Take<std::uint16_t>();
        constexpr int OwnBook = 0x0401;
        isOwnBook.push_back(bytes.Take<std::uint16_t>() == OwnBook);
        break;
      }
      case ExternSheetId:
        for (int count = is8 ? bytes.Take<std::uint16_t>() : 0; count > 0 && !bytes.IsBad(); --count) {
          const std::size_t book = bytes.Take<std::uint16_t>();
          const int first = bytes.Take<std::uint16_t>();
          references.push_back({book, first, bytes.Take<std::uint16_t>()});
        }
        break;
      case SstId: {
        TextBytes all(record.data, record.more);
        all.Skip(4);
        const auto count = all.Take<std::uint32_t>();
        for (std::uint32_t i = 0; i < count && !all.IsBad(); ++i) texts.push_back(all.TakeText(true));
        break;
      }
      default:
        break;
    }
  }

 private:
  void TakeFont(ByteReader& bytes) {
    bytes.TakeBytes(2);
    const auto flags = bytes.Take<std::uint16_t>();
    bytes.TakeBytes(2);
    const auto weight = bytes.Take<std::uint16_t>();
    bytes.TakeBytes(2);
    constexpr int Bold = 600;
    CellLook font;
    font.italic = (flags & 2) != 0;
    font.bold = weight >= Bold;
    font.underline = bytes.Take<std::uint8_t>() != 0;
    fonts.push_back(font);
    constexpr std::size_t NoSuchFont = 4;  // the number is left out
    if (fonts.size() == NoSuchFont) fonts.push_back(font);
  }

  void TakeLook(ByteReader& bytes) {
    const std::size_t font = bytes.Take<std::uint16_t>();
    const int format = bytes.Take<std::uint16_t>();
    bytes.TakeBytes(2);
    const int alignment = bytes.Take<std::uint8_t>() & 7;
    CellLook look = font < fonts.size() ? fonts[font] : CellLook();
    const auto own = formats.find(format);
    look.number = own == formats.end() ? FormatOfNumber(format) : own->second;
    if (alignment >= 1 && alignment <= 3) look.alignment = static_cast<CellLook::Alignment>(alignment);
    looks.push_back(look);
  }
};

class XlsSheet {
 public:
  XlsSheet(ImportedBook& book, int sheet, const Globals& globals, const std::vector<std::uint32_t>& looks)
      : book_(book), sheet_(sheet), globals_(globals), looks_(looks), names_(globals.Names()) {}

  // False when the sheet does not begin where it should.
  bool Read(std::string_view stream, std::size_t offset) {
    Records records(stream, offset);
    Record record;
    if (!records.Next(record) || record.id != BofId) return false;
    int depth = 1;  // of charts within the sheet
    while (depth > 0 && records.Next(record)) {
      if (record.id == BofId) ++depth;
      if (record.id == EofId) --depth;
      if (depth == 1) Take(record);
    }
    PutFormula();
    return true;
  }

 private:
  // The formula that was read last, with its result; records that follow it may add to it.
  struct Formula {
    int row, column;
    std::string_view tokens;
    std::optional<FormulaResult> result;
  };

  void Take(const Record& record) {
    ByteReader bytes(record.data);
    if (record.id != StringId && record.id != SharedFormulaId && record.id != ArrayId) PutFormula();
    switch (record.id) {
      case NumberId:
        if (Place(bytes)) book_.Number(sheet_, row_, column_, bytes.Take<double>());
        break;
      case RkId:
        if (Place(bytes)) book_.Number(sheet_, row_, column_, NumberOfRk(bytes.Take<std::uint32_t>()));
        break;
      case MulRkId:
      case MulBlankId:
        TakeMany(bytes, record);
        break;
      case LabelSstId:
        if (Place(bytes)) {
          const std::size_t number = bytes.Take<std::uint32_t>();
          if (number < globals_.texts.size()) book_.Text(sheet_, row_, column_, globals_.texts[number]);
        }
        break;
      case LabelId:
      case RStringId:
        if (Place(bytes)) book_.Text(sheet_, row_, column_, globals_.TextIn(record, 6, true));
        break;
      case BlankId:
        Place(bytes);
        break;
      case BoolErrId:
        if (Place(bytes)) TakeLogical(bytes);
        break;
      case FormulaId:
        if (Place(bytes)) TakeFormula(bytes);
        break;
      case StringId:
        if (formula_) formula_->result = FormulaResult::Text(globals_.TextIn(record, 0, true));
        break;
      case SharedFormulaId:
        TakeShared(bytes);
        break;
      case ColInfoId:
        TakeWidths(bytes);
        break;
      case RowId: {
        const int row = bytes.Take<std::uint16_t>() + 1;
        bytes.TakeBytes(10);
        if (bytes.Take<std::uint16_t>() & 0x20) book_.HideRow(sheet_, row);
        break;
      }
      default:
        TakeSettings(record.id, bytes);
        break;
    }
  }

  bool Place(ByteReader& bytes) {
    row_ = bytes.Take<std::uint16_t>() + 1;
    column_ = bytes.Take<std::uint16_t>() + 1;
    Look(bytes.Take<std::uint16_t>());
    return !bytes.IsBad();
  }
  void Look(std::size_t number) {
    if (number < looks_.size() && looks_[number] != 0) {
      book_.Look(sheet_, row_, column_, row_, column_, looks_[number]);
    }
  }

  void TakeMany(ByteReader& bytes, const Record& record) {
    row_ = bytes.Take<std::uint16_t>() + 1;
    column_ = bytes.Take<std::uint16_t>() + 1;
    const std::size_t each = record.id == MulRkId ? 6 : 2;
    for (std::size_t left = record.data.size() - std::min<std::size_t>(record.data.size(), 6); left >= each;
         left -= each, ++column_) {
      Look(bytes.Take<std::uint16_t>());
      if (record.id == MulRkId) book_.Number(sheet_, row_, column_, NumberOfRk(bytes.Take<std::uint32_t>()));
    }
  }

  void TakeLogical(ByteReader& bytes) {
    const int value = bytes.Take<std::uint8_t>();
    if (bytes.Take<std::uint8_t>() != 0) {
      book_.Text(sheet_, row_, column_, ErrorOfCode(value));
    } else {
      book_.Logical(sheet_, row_, column_, value != 0);
    }
  }

  // Its result is a number, or has a mark at the end that says what else.
  void TakeFormula(ByteReader& bytes) {
    const std::string_view result = bytes.TakeBytes(8);
    bytes.TakeBytes(6);
    const std::size_t size = bytes.Take<std::uint16_t>();
    const std::string_view tokens = bytes.TakeBytes(size);
    if (bytes.IsBad()) return;
    formula_ = {row_, column_, tokens, FormulaResult::Text("")};
    const int value = static_cast<unsigned char>(result[2]);
    if (ByteReader::At<std::uint16_t>(result, 3) != 0xFFFF) {
      formula_->result = FormulaResult::Number(ByteReader::At<double>(result, 0));
    } else if (result[0] == 1) {
      formula_->result = FormulaResult::Logical(value != 0);
    } else if (result[0] == 2) {
      formula_->result = FormulaResult::Error(ErrorOfCode(value));
    }
  }

  // Stands behind the first cell that has it.
  void TakeShared(ByteReader& bytes) {
    bytes.TakeBytes(8);
    const std::size_t size = bytes.Take<std::uint16_t>();
    const std::string_view tokens = bytes.TakeBytes(size);
    if (formula_ && !bytes.IsBad()) shared_[{formula_->row, formula_->column}] = tokens;
  }

  void PutFormula() {
    if (!formula_) return;
    const Formula formula = *std::exchange(formula_, std::nullopt);
    std::string_view tokens = formula.tokens;
    constexpr char ElsewhereToken = 1;  // with the place where it stands
    if (tokens.size() == 5 && tokens[0] == ElsewhereToken) {
      const auto found = shared_.find({ByteReader::At<std::uint16_t>(tokens.substr(1), 0) + 1,
                                       ByteReader::At<std::uint16_t>(tokens.substr(1), 1) + 1});
      tokens = found == shared_.end() ? std::string_view() : found->second;
    }
    const FormulaResult& result = *formula.result;
    if (const auto text = TextOfTokens(tokens, formula.row, formula.column, names_);
        text && std::isfinite(result.number)) {
      book_.Formula(sheet_, formula.row, formula.column, *text, result);
    } else if (result.type == NumberCell) {
      book_.Number(sheet_, formula.row, formula.column, result.number);
    } else if (result.type == LogicalCell) {
      book_.Logical(sheet_, formula.row, formula.column, result.number != 0);
    } else {
      book_.Text(sheet_, formula.row, formula.column, result.text);
    }
  }

  void TakeWidths(ByteReader& bytes) {
    const int first = bytes.Take<std::uint16_t>() + 1;
    const int last = std::min(bytes.Take<std::uint16_t>() + 1, MostColumns);
    const double width = bytes.Take<std::uint16_t>() / 256.0;
    bytes.TakeBytes(2);
    const bool isHidden = (bytes.Take<std::uint16_t>() & 1) != 0;
    if (bytes.IsBad()) return;
    for (int column = first; column <= last; ++column) book_.Width(sheet_, column, isHidden ? 0 : width);
  }

  void TakeSettings(std::uint16_t id, ByteReader& bytes) {
    SheetSettings& settings = book_.SettingsOf(sheet_);
    if (id == ProtectId) settings.isLocked = bytes.Take<std::uint16_t>() != 0;
    if (id == Window2Id) {
      const int flags = bytes.Take<std::uint16_t>();
      settings.showsGridlines = (flags & 2) != 0;
      settings.showsHeadings = (flags & 4) != 0;
      isFrozen_ = (flags & 8) != 0;
      settings.showsZeros = (flags & 16) != 0;
    }
    if (id == PaneId && isFrozen_) {
      settings.frozenColumns = bytes.Take<std::uint16_t>();
      settings.frozenRows = bytes.Take<std::uint16_t>();
    }
  }

  static constexpr int MostColumns = 256;

  ImportedBook& book_;
  int sheet_;
  const Globals& globals_;
  const std::vector<std::uint32_t>& looks_;
  XlsNames names_;
  int row_ = 1, column_ = 1;
  std::optional<Formula> formula_;
  std::map<std::pair<int, int>, std::string_view> shared_;  // by the cell before them
  bool isFrozen_ = false;
};

}  // namespace

bool ReadXls(std::string_view bytes, Workbook& workbook, std::string& problem) {
  problem = "The file is damaged.";
  std::string stream;
  if (!IsCompoundFile(bytes)) {
    stream = bytes;
  } else if (!ReadStream(bytes, {"Workbook", "Book"}, stream)) {
    return false;
  }
  Records records(stream, 0);
  Record record;
  if (!records.Next(record)) return false;
  const int version = record.data.size() >= 2 ? ByteReader::At<std::uint16_t>(record.data, 0) : 0;
  if (record.id != BofId || (version != Biff5 && version != Biff8)) {
    problem = "The file is of a kind older than xls 5.";
    return false;
  }
  Globals globals;
  globals.is8 = version == Biff8;
  while (records.Next(record) && record.id != EofId) globals.Take(record);
  if (globals.isProtected) {
    problem = "The file is protected by a password.";
    return false;
  }

  ImportedBook book(workbook);
  book.CountDates(globals.since1904 ? ImportedBook::Dates::Counted1904 : ImportedBook::Dates::Leap1900);
  std::vector<std::uint32_t> looks;
  for (const CellLook& look : globals.looks) looks.push_back(book.AddLook(look));
  for (std::size_t i = 0; i < globals.sheets.size(); ++i) {
    if (globals.sheets[i].offset == 0) continue;  // a chart
    const int sheet = book.AddSheet(globals.sheets[i].name);
    if (static_cast<int>(i) == globals.active) book.Activate(sheet);
    if (!XlsSheet(book, sheet, globals, looks).Read(stream, globals.sheets[i].offset)) return false;
  }
  return book.Finish(problem);
}

}  // namespace tellurix
