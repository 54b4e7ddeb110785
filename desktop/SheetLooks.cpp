#include "desktop/SheetLooks.h"

#include <QGuiApplication>
#include <QScreen>
#include <cmath>

namespace tellurix {

namespace {

constexpr double PointsPerInch = 72;

double PixelsPerInch() {
  const QScreen* screen = QGuiApplication::primaryScreen();
  return screen ? screen->logicalDotsPerInchY() : 96;
}

Qt::Alignment SideOf(CellLook::Alignment alignment) {
  switch (alignment) {
    case CellLook::Alignment::Left:
      return Qt::AlignLeft;
    case CellLook::Alignment::Centre:
      return Qt::AlignHCenter;
    case CellLook::Alignment::Right:
      return Qt::AlignRight;
    default:
      return {};
  }
}

}  // namespace

int PointsToPixels(double points) {
  if (points <= 0) return 0;
  return std::max(1, static_cast<int>(std::lround(points * PixelsPerInch() / PointsPerInch)));
}

double PixelsToPoints(double pixels) { return std::max(0.0, pixels * PointsPerInch / PixelsPerInch()); }

QFont DefaultFont(const Workbook& workbook) {
  const WorkbookSettings& settings = workbook.Settings();
  QFont font(QString::fromStdString(settings.fontName));
  font.setPointSizeF(settings.fontSize);
  return font;
}

CellAppearance AppearanceOf(const CellLook& look, const QFont& base) {
  CellAppearance shown;
  shown.font = base;
  if (!look.fontName.empty()) shown.font.setFamily(QString::fromStdString(look.fontName));
  if (look.fontSize > 0) shown.font.setPointSizeF(look.fontSize);
  shown.font.setBold(look.bold);
  shown.font.setItalic(look.italic);
  shown.font.setUnderline(look.underline);
  if (look.textColour != NoColour) shown.text = QColor::fromRgb(static_cast<QRgb>(look.textColour));
  if (look.fillColour != NoColour) shown.fill = QColor::fromRgb(static_cast<QRgb>(look.fillColour));
  shown.alignment = SideOf(look.alignment);
  shown.keepsDigits = look.number.form != NumberFormat::Form::General && look.number.form != NumberFormat::Form::Text;
  return shown;
}

SheetLooksAdapter::SheetLooksAdapter(Workbook& workbook) : workbook_(workbook) {
  listener_ = workbook_.AddListener([this](const WorkbookChange& change) {
    using Kind = WorkbookChange::Kind;
    if (change.sheet == 0) {
      rows_.clear();
    } else if (change.kind == Kind::Heights || (change.kind == Kind::Cells && change.range.firstColumn == 0)) {
      rows_.erase(change.sheet);
    }
  });
}

SheetLooksAdapter::~SheetLooksAdapter() { workbook_.RemoveListener(listener_); }

void SheetLooksAdapter::Describe(SheetGeometry& geometry) const {
  const SheetSettings& settings = workbook_.SettingsOfSheet();
  geometry.frozenRows = settings.frozenRows;
  geometry.frozenColumns = settings.frozenColumns;
  geometry.showsGridlines = settings.showsGridlines;
  geometry.showsHeadings = settings.showsHeadings;
  geometry.showsZeros = settings.showsZeros;
  auto known = rows_.find(workbook_.Sheet());
  if (known == rows_.end()) {
    const double usual = workbook_.Settings().rowHeight;
    GridAxis rows(GridStore::MaxRows, PointsToPixels(usual));
    int first = 1;
    double height = workbook_.RowHeight(1);
    for (int row = 2; row <= GridStore::MaxRows + 1; ++row) {
      const double next = row <= GridStore::MaxRows ? workbook_.RowHeight(row) : -1;
      if (next == height) continue;
      if (height != usual) rows.SetSize(first, row - 1, PointsToPixels(height));
      first = row;
      height = next;
    }
    known = rows_.emplace(workbook_.Sheet(), std::move(rows)).first;
  }
  geometry.rows = known->second;
}

std::optional<CellAppearance> SheetLooksAdapter::Look(int row, int column, const QFont& base) const {
  static const CellLook plain;
  const CellLook look = workbook_.LookAt(row, column);
  if (look == plain) return std::nullopt;
  if (!last_ || last_->look != look || last_->base != base) last_ = Known{look, base, AppearanceOf(look, base)};
  return last_->appearance;
}

void SheetLooksAdapter::SetRowHeight(int firstRow, int lastRow, int pixels) {
  workbook_.SetRowHeight(firstRow, lastRow, pixels < 0 ? -1 : PixelsToPoints(pixels));
}

void SheetLooksAdapter::Freeze(int rows, int columns) {
  SheetSettings settings = workbook_.SettingsOfSheet();
  settings.frozenRows = rows;
  settings.frozenColumns = columns;
  workbook_.SetSettingsOfSheet(settings);
}

}  // namespace tellurix
