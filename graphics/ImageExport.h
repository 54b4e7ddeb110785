// Pictures of a report as files: by their extension, and through the dialog of the context menu.
#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "graphics/Drawing.h"
#include "graphics/FontBook.h"
#include "host/Host.h"
#include "report/RichText.h"

namespace tellurix {

// What a picture group draws; nothing for those that are no metafiles, or damaged ones.
std::optional<Drawing> DrawingOf(const PictureGroup& picture);

// The pictures of a document in their order, those in tables among them.
std::vector<std::shared_ptr<const PictureGroup>> PicturesOf(const RichText& document);

// Turns pictures into markup for the HTML writer; those that cannot be drawn into nothing.
PictureToSvg MakePictureToSvg();

struct ExportSize {
  int width = 2264;  // pixels, for bitmaps
  int height = 1600;
  int quality = 90;  // of a JPEG, 1 to 100
};

// The standard width with the height that keeps the picture's shape.
ExportSize SizeFor(const PictureGroup& picture);

// Draws the picture as a bitmap of a size, of 24 bits per pixel, and saves it as PNG, JPEG, BMP or GIF by the
// extension. False with the reason in words.
bool GraphConv(const Drawing& drawing, FontBook& fonts, const std::filesystem::path& file, const ExportSize& size,
               std::string& problem);

// Saves a picture by the extension: wmf is the recording unchanged; emf, svg and pdf are drawn anew; others are
// bitmaps.
bool ExportPicture(const PictureGroup& picture, FontBook& fonts, const std::filesystem::path& file,
                   const ExportSize& size, std::string& problem);

// The dialog ImgExportFrm. False when cancelled.
bool RunImageExport(Host& host, const PictureGroup& picture, FontBook& fonts, int helpContext);

}  // namespace tellurix
