// The looks of a workbook's sheets as a grid paints them.
#pragma once

#include <map>
#include <optional>

#include "desktop/GridView.h"

namespace tellurix {

// Pixels of so many points on the screen, and the other way round.
int PointsToPixels(double points);
double PixelsToPoints(double pixels);

QFont DefaultFont(const Workbook& workbook);

// How a look shows on top of a font.
CellAppearance AppearanceOf(const CellLook& look, const QFont& base);

// Everything is kept by the workbook, undone and redone by it. It must outlive this, and this be made before the grid
// that it serves: the workbook tells its listeners in the order in which they came.
class SheetLooksAdapter final : public GridLooks {
 public:
  explicit SheetLooksAdapter(Workbook& workbook);
  ~SheetLooksAdapter() override;
  SheetLooksAdapter(const SheetLooksAdapter&) = delete;
  SheetLooksAdapter& operator=(const SheetLooksAdapter&) = delete;

  void Describe(SheetGeometry& geometry) const override;
  std::optional<CellAppearance> Look(int row, int column, const QFont& base) const override;
  void SetRowHeight(int firstRow, int lastRow, int pixels) override;
  void Freeze(int rows, int columns) override;

 private:
  struct Known {  // the look last asked for
    CellLook look;
    QFont base;
    CellAppearance appearance;
  };

  Workbook& workbook_;
  int listener_ = 0;
  mutable std::map<int, GridAxis> rows_;  // by sheet; heights are read once, as there may be a million
  mutable std::optional<Known> last_;
};

}  // namespace tellurix
