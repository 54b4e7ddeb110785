#include "workbook/files/CellChunk.h"

#include <zstd.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <memory>
#include <span>
#include <unordered_map>
#include <vector>

#include "numeric/Text.h"
#include "workbook/WorkbookData.h"
#include "workbook/files/ByteStream.h"

namespace tellurix {

namespace {

constexpr int CompressionLevel = 1;
constexpr std::size_t LargestChunk = std::size_t{256} << 20;  // bytes before compression
constexpr std::size_t NumberBytes = sizeof(double);

enum RunKind : std::uint8_t { EmptyRun, NumberRun, TextRun, LogicalRun, FormulaRun };
constexpr std::uint8_t ErrorFlag = 0x80;  // with the kind of a formula's result

struct CellRun {
  std::uint8_t kind;
  std::uint32_t count;
};

// Bytes k of all numbers side by side, for k from 0 to 7.
void AppendPlanes(std::span<const double> numbers, std::string& bytes) {
  const std::size_t count = numbers.size(), at = bytes.size();
  bytes.resize(at + count * NumberBytes);
  const char* from = reinterpret_cast<const char*>(numbers.data());
  for (std::size_t plane = 0; plane < NumberBytes; ++plane) {
    char* to = bytes.data() + at + plane * count;
    for (std::size_t i = 0; i < count; ++i) to[i] = from[i * NumberBytes + plane];
  }
}

std::vector<double> FromPlanes(std::string_view planes) {
  const std::size_t count = planes.size() / NumberBytes;
  std::vector<double> numbers(count);
  for (std::size_t i = 0; i < count; ++i) {
    std::uint64_t bits = 0;
    for (std::size_t plane = 0; plane < NumberBytes; ++plane) {
      bits |= std::uint64_t{static_cast<std::uint8_t>(planes[plane * count + i])} << (8 * plane);
    }
    numbers[i] = std::bit_cast<double>(bits);
  }
  return numbers;
}

// The texts of a chunk, each once.
class TextList {
 public:
  std::uint32_t NumberOf(std::string_view text) {
    const auto [entry, isNew] = numbers_.try_emplace(text, static_cast<std::uint32_t>(texts_.size()));
    if (isNew) texts_.push_back(text);
    return entry->second;
  }
  void AppendTo(std::string& bytes) const {
    PutValue(bytes, static_cast<std::uint32_t>(texts_.size()));
    for (const auto text : texts_) PutValue(bytes, static_cast<std::uint32_t>(text.size()));
    for (const auto text : texts_) bytes.append(text);
  }

 private:
  std::unordered_map<std::string_view, std::uint32_t> numbers_;
  std::vector<std::string_view> texts_;
};

struct FormulaEntry {
  std::uint32_t text;
  std::uint8_t kind;
  double number;
  std::uint32_t result;
};

// Takes the cells of a chunk apart by kind.
class Encoder {
 public:
  void Add(const CellColumn& column, int firstRow, int lastRow) {
    for (int row = firstRow; row <= lastRow;) {
      const CellColumn::Run run = column.RunAt(row);
      const int end = std::min(run.lastRow, lastRow);
      const auto count = static_cast<std::size_t>(end - row + 1);
      if (run.formulas) {
        Begin(FormulaRun, count);
        for (const FormulaRef& formula : std::span(run.formulas, count)) AddFormula(*formula);
      } else if (run.type == NumberCell) {
        Begin(NumberRun, count);
        numbers_.insert(numbers_.end(), run.numbers, run.numbers + count);
      } else if (run.type == TextCell) {
        Begin(TextRun, count);
        for (int at = row; at <= end; ++at) texts_.push_back(list_.NumberOf(column.View(at).text));
      } else if (run.type == LogicalCell) {
        Begin(LogicalRun, count);
        for (int at = row; at <= end; ++at) logicals_ += static_cast<char>(column.View(at).number != 0);
      } else {
        Begin(EmptyRun, count);
      }
      row = end + 1;
    }
  }

  std::string Bytes() const {
    std::string bytes;
    bytes.reserve(numbers_.size() * NumberBytes + runs_.size() * 5 + 64);
    PutValue(bytes, static_cast<std::uint32_t>(runs_.size()));
    for (const CellRun& run : runs_) {
      PutValue(bytes, run.kind);
      PutValue(bytes, run.count);
    }
    AppendPlanes(numbers_, bytes);
    bytes += logicals_;
    list_.AppendTo(bytes);
    for (const std::uint32_t text : texts_) PutValue(bytes, text);
    for (const FormulaEntry& formula : formulas_) {
      PutValue(bytes, formula.text);
      PutValue(bytes, formula.kind);
      PutValue(bytes, formula.number);
      PutValue(bytes, formula.result);
    }
    return bytes;
  }

 private:
  void Begin(RunKind kind, std::size_t count) {
    if (runs_.empty() || runs_.back().kind != kind) runs_.push_back({kind, 0});
    runs_.back().count += static_cast<std::uint32_t>(count);
  }
  void AddFormula(const Formula& formula) {
    const auto kind = static_cast<std::uint8_t>(formula.type | (formula.isError ? ErrorFlag : 0));
    formulas_.push_back({list_.NumberOf(formula.text), kind, formula.number, list_.NumberOf(formula.result)});
  }

  std::vector<CellRun> runs_;
  std::vector<double> numbers_;
  std::string logicals_;
  TextList list_;
  std::vector<std::uint32_t> texts_;
  std::vector<FormulaEntry> formulas_;
};

// Puts the cells of a chunk where they belong. Every member that answers false has met bytes that make no sense.
class Decoder {
 public:
  Decoder(std::string_view bytes, Workbook& workbook, Workbook::Loading& loading)
      : bytes_(bytes), workbook_(workbook), loading_(loading) {}

  bool TakeApart() {
    std::size_t counts[5] = {};
    std::size_t all = 0;
    const auto runCount = bytes_.Take<std::uint32_t>();
    for (std::uint32_t i = 0; i < runCount; ++i) {
      const CellRun run{bytes_.Take<std::uint8_t>(), bytes_.Take<std::uint32_t>()};
      all += run.count;
      if (bytes_.IsBad() || run.kind > FormulaRun || run.count == 0 || all > GridStore::MaxRows) return false;
      counts[run.kind] += run.count;
      runs_.push_back(run);
    }
    numbers_ = FromPlanes(bytes_.TakeArray<double>(counts[NumberRun]));
    logicals_ = bytes_.TakeBytes(counts[LogicalRun]);
    if (bytes_.IsBad() || !TakeTexts()) return false;
    textCells_ = bytes_.TakeArray<std::uint32_t>(counts[TextRun]);
    for (std::size_t i = 0; i < counts[FormulaRun] && !bytes_.IsBad(); ++i) {
      FormulaEntry& formula = formulas_.emplace_back();
      formula.text = bytes_.Take<std::uint32_t>();
      formula.kind = bytes_.Take<std::uint8_t>();
      formula.number = bytes_.Take<double>();
      formula.result = bytes_.Take<std::uint32_t>();
    }
    lastRow_ = static_cast<int>(all);
    return !bytes_.IsBad() && bytes_.IsAtEnd();
  }

  bool Put(int slot, int firstRow) {
    const int room = slot == ColumnHeadings || slot == Widths ? GridStore::MaxColumns : GridStore::MaxRows;
    if (firstRow < 1 || lastRow_ > room - firstRow + 1) return false;
    int row = firstRow;
    for (const CellRun& run : runs_) {
      if (!(slot > 0 ? PutRun(run, slot, row) : PutEdge(run, slot, row))) return false;
      row += static_cast<int>(run.count);
    }
    return true;
  }

 private:
  bool TakeTexts() {
    const auto count = bytes_.Take<std::uint32_t>();
    const std::string_view lengths = bytes_.TakeArray<std::uint32_t>(count);
    if (bytes_.IsBad()) return false;
    for (std::size_t i = 0; i < count; ++i) {
      texts_.push_back(bytes_.TakeBytes(ByteReader::At<std::uint32_t>(lengths, i)));
      if (bytes_.IsBad() || !IsValidUtf8(texts_.back())) return false;
    }
    interned_.resize(count);
    return true;
  }

  std::size_t NextText() { return ByteReader::At<std::uint32_t>(textCells_, textsDone_++); }

  bool PutRun(const CellRun& run, int column, int row) {
    switch (run.kind) {
      case NumberRun:
        return workbook_.SetColumnNumbers(column, row, NextNumbers(run.count));
      case TextRun:
        return PutTexts(run.count, column, row);
      case LogicalRun:
        for (std::uint32_t i = 0; i < run.count; ++i) {
          workbook_.SetLogical(row + static_cast<int>(i), column, logicals_[logicalsDone_++] != 0);
        }
        return true;
      case FormulaRun:
        for (std::uint32_t i = 0; i < run.count; ++i) {
          if (!PutFormula(formulas_[formulasDone_++], row + static_cast<int>(i), column)) return false;
        }
        return true;
      default:
        return true;
    }
  }

  std::span<const double> NextNumbers(std::size_t count) {
    numbersDone_ += count;
    return std::span<const double>(numbers_).subspan(numbersDone_ - count, count);
  }

  bool PutTexts(std::size_t count, int column, int row) {
    std::vector<TextRef> run;
    run.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
      const std::size_t number = NextText();
      if (number >= texts_.size() || texts_[number].empty()) return false;
      if (interned_[number].View().empty()) interned_[number] = loading_.Intern(texts_[number]);
      run.push_back(interned_[number]);
    }
    loading_.SetTexts(column, row, run);
    return true;
  }

  bool PutFormula(const FormulaEntry& formula, int row, int column) {
    if (formula.text >= texts_.size() || formula.result >= texts_.size()) return false;
    const std::string_view text = texts_[formula.text];
    FormulaResult result;
    result.type = formula.kind & ~ErrorFlag;
    result.isError = (formula.kind & ErrorFlag) != 0;
    if (text.size() < 2 || text[0] != '=' || result.type < NumberCell || result.type > LogicalCell) return false;
    if (!std::isfinite(formula.number)) return false;
    result.number = formula.number;
    result.text = texts_[formula.result];
    workbook_.SetFormula(row, column, text, result);
    return true;
  }

  // Headings, widths and heights.
  bool PutEdge(const CellRun& run, int slot, int row) {
    const bool isText = slot == RowHeadings || slot == ColumnHeadings;
    if (run.kind == EmptyRun) return true;
    if (run.kind != (isText ? TextRun : NumberRun)) return false;
    const auto numbers = isText ? std::span<const double>() : NextNumbers(run.count);
    for (std::uint32_t i = 0; i < run.count; ++i) {
      const int at = row + static_cast<int>(i);
      if (slot == Widths) {
        workbook_.SetColumnWidth(at, numbers[i]);
      } else if (slot == Heights) {
        workbook_.SetRowHeight(at, numbers[i]);
      } else {
        const std::size_t number = NextText();
        if (number >= texts_.size()) return false;
        if (slot == RowHeadings) {
          workbook_.RowText(at, texts_[number]);
        } else {
          workbook_.ColText(at, texts_[number]);
        }
      }
    }
    return true;
  }

  ByteReader bytes_;
  Workbook& workbook_;
  Workbook::Loading& loading_;
  std::vector<CellRun> runs_;
  std::vector<double> numbers_;
  std::string_view logicals_;
  std::vector<std::string_view> texts_;
  std::vector<TextRef> interned_;
  std::string_view textCells_;
  std::vector<FormulaEntry> formulas_;
  int lastRow_ = 0;
  std::size_t numbersDone_ = 0, logicalsDone_ = 0, textsDone_ = 0, formulasDone_ = 0;
};

}  // namespace

std::string EncodeCells(const CellColumn& column, int firstRow, int lastRow) {
  Encoder encoder;
  encoder.Add(column, firstRow, lastRow);
  return encoder.Bytes();
}

bool DecodeCells(std::string_view bytes, int slot, int firstRow, Workbook& workbook, Workbook::Loading& loading) {
  Decoder decoder(bytes, workbook, loading);
  return decoder.TakeApart() && decoder.Put(slot, firstRow);
}

bool Compress(std::string_view bytes, std::string& compressed) {
  thread_local const std::unique_ptr<ZSTD_CCtx, decltype(&ZSTD_freeCCtx)> context(ZSTD_createCCtx(), ZSTD_freeCCtx);
  if (!context || bytes.size() > LargestChunk) return false;
  ZSTD_CCtx_setParameter(context.get(), ZSTD_c_compressionLevel, CompressionLevel);
  ZSTD_CCtx_setParameter(context.get(), ZSTD_c_checksumFlag, 1);
  compressed.resize(ZSTD_compressBound(bytes.size()));
  const std::size_t size =
      ZSTD_compress2(context.get(), compressed.data(), compressed.size(), bytes.data(), bytes.size());
  if (ZSTD_isError(size)) return false;
  compressed.resize(size);
  return true;
}

bool Decompress(std::string_view compressed, std::string& bytes) {
  thread_local const std::unique_ptr<ZSTD_DCtx, decltype(&ZSTD_freeDCtx)> context(ZSTD_createDCtx(), ZSTD_freeDCtx);
  const unsigned long long size = ZSTD_getFrameContentSize(compressed.data(), compressed.size());
  if (!context || size > LargestChunk) return false;  // the marks of unknown and of errors are larger too
  bytes.resize(size);
  return ZSTD_decompressDCtx(context.get(), bytes.data(), bytes.size(), compressed.data(), compressed.size()) == size;
}

}  // namespace tellurix
