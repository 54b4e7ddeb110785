#include "graphics/ImageExport.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <memory>

#include "graphics/ImageFile.h"
#include "graphics/Metafile.h"
#include "graphics/Renderer.h"
#include "host/Form.h"
#include "numeric/Rounding.h"
#include "numeric/Text.h"
#include "report/RtfPicture.h"
#include "report/Value.h"

namespace tellurix {

namespace {

constexpr double TwipsPerPoint = 20;
constexpr double HundredthsPerTwip = 2540.0 / 1440;
constexpr int LargestSide = 32767;
constexpr const char* Title = "Graphical Image Export";
constexpr const char* CannotDraw = "This picture is not a chart of Tellurix; it cannot be exported in this format.";

// The formats of the dialog, and the extension that each gives to a name without one.
struct Format {
  const char* id;
  const char* caption;
  const char* extension;
};
constexpr std::array<Format, 4> Formats{
    {{"Metafile", "Metafile", "wmf"}, {"Bitmap", "Bitmap", "bmp"}, {"PNG", "PNG", "png"}, {"JPEG", "JPEG", "jpg"}}};

// In order: the formats of the dialog, then those that only a typed extension chooses.
constexpr const char* Filters =
    "PNG|*.png|JPEG|*.jpg;*.jpeg|Windows Bitmap|*.bmp|Windows Metafile|*.wmf|GIF|*.gif|Enhanced "
    "Metafile|*.emf|SVG|*.svg|"
    "PDF|*.pdf|All formats|*.jpeg;*.jpg;*.bmp;*.wmf";

std::string ExtensionOf(const std::filesystem::path& file) {
  const std::string extension = FoldCase(file.extension().string());
  return extension.empty() ? extension : extension.substr(1);
}

std::optional<BitmapFormat> BitmapFormatOf(const std::string& extension) {
  if (extension == "png") return BitmapFormat::Png;
  if (extension == "jpg" || extension == "jpeg") return BitmapFormat::Jpeg;
  if (extension == "bmp") return BitmapFormat::Bmp;
  if (extension == "gif") return BitmapFormat::Gif;
  return std::nullopt;
}

// The dialog: its controls, and what they do to one another.
class ImageExportForm {
 public:
  ImageExportForm(Host& host, const PictureGroup& picture, FontBook& fonts, int helpContext)
      : host_(host), picture_(picture), fonts_(fonts), form_("ImgExportFrm", Title) {
    form_.helpContext = helpContext;
    const auto [width, height] = PictureSize(picture);
    ratio_ = static_cast<double>(height) / width;
    Build();
    form_.onChange = [this](const Control& control) { Changed(control); };
    form_.onPress = [this](const Control& control) {
      if (control.id == "Save") Save();
    };
    ShowFormat();
  }

  bool Run() { return host_.RunForm(form_); }

 private:
  void Build() {
    for (const Format& format : Formats) {
      form_.AddRadio(format.id, format.caption, "Format", format.id == std::string_view("PNG"));
    }
    const ExportSize standard;
    AddNumber("iWidth", "Width:", standard.width);
    AddNumber("iHeight", "Height:", HeightFor(standard.width));
    form_.AddCheck("KeepAspect", "keep aspect ratio", true).group = "Size";
    form_.AddLabel("SmallFile", "(small file)").group = "JPEG compression";
    Control slider{.kind = ControlKind::Slider, .id = "Compression", .caption = "JPEG compression"};
    slider.group = "JPEG compression";
    slider.value = std::to_string(standard.quality);
    slider.items = {"1", "100"};  // its range
    form_.Add(slider);
    form_.AddLabel("LargeFile", "(large file)").group = "JPEG compression";
    form_.AddButton("Save", "&Save", ButtonRole::Default);
    form_.AddButton("Cancel", "&Cancel", ButtonRole::Cancel);
  }
  void AddNumber(const char* id, const char* caption, int value) {
    form_.AddText(id, caption, std::to_string(value)).group = "Size";
  }

  int HeightFor(int width) const { return std::clamp(ToInteger(width * ratio_), 1, LargestSide); }
  int WidthFor(int height) const { return std::clamp(ToInteger(height / ratio_), 1, LargestSide); }

  void Changed(const Control& control) {
    if (control.group == "Format") ShowFormat();
    if (!form_.IsChecked("KeepAspect")) return;
    if (control.id == "iWidth") SetOther("iHeight", HeightFor(ParseInteger(control.value)));
    if (control.id == "iHeight") SetOther("iWidth", WidthFor(ParseInteger(control.value)));
    if (control.id == "KeepAspect") SetOther("iHeight", HeightFor(ParseInteger(form_.ValueOf("iWidth"))));
  }
  void SetOther(const char* id, int value) {
    form_.Update(id, [&](Control& other) { other.value = std::to_string(value); });
  }

  // The size is for bitmaps, the compression for JPEG.
  void ShowFormat() {
    const bool bitmap = !form_.IsChecked("Metafile"), jpeg = form_.IsChecked("JPEG");
    const auto enable = [&](const char* id, bool on) { form_.Update(id, [&](Control& c) { c.enabled = on; }); };
    for (const char* id : {"iWidth", "iHeight", "KeepAspect"}) enable(id, bitmap);
    for (const char* id : {"SmallFile", "Compression", "LargeFile"}) enable(id, jpeg);
  }

  const Format& Chosen() const {
    const auto found = std::ranges::find_if(Formats, [&](const Format& format) { return form_.IsChecked(format.id); });
    return found == Formats.end() ? Formats[2] : *found;
  }

  bool ReadSize(ExportSize& size) const {
    size.width = ParseInteger(form_.ValueOf("iWidth"));
    size.height = ParseInteger(form_.ValueOf("iHeight"));
    size.quality = std::clamp(ParseInteger(form_.ValueOf("Compression")), 1, 100);
    return size.width >= 1 && size.height >= 1 && size.width <= LargestSide && size.height <= LargestSide;
  }

  void Tell(std::string text) { host_.ShowMessage({.text = std::move(text), .title = Title, .style = WarningIcon}); }

  void Save() {
    ExportSize size;
    if (!ReadSize(size)) {
      Tell(fmt::format("Width and height must be whole numbers from 1 to {}.", LargestSide));
      return;
    }
    const auto choice = host_.ChooseFile({.title = "Save Graphic As",
                                          .filter = Filters,
                                          .pattern = fmt::format("*.{}", Chosen().extension),
                                          .defaultExtension = Chosen().extension,
                                          .save = true});
    if (!choice || choice->path.empty()) return;
    std::filesystem::path file(choice->path);
    if (file.extension().empty()) file += std::string(".") + Chosen().extension;
    std::string problem;
    if (ExportPicture(picture_, fonts_, file, size, problem)) {
      form_.Finish(true);
    } else {
      Tell(problem);
    }
  }

  Host& host_;
  const PictureGroup& picture_;
  FontBook& fonts_;
  Form form_;
  double ratio_ = 1;
};

}  // namespace

std::optional<Drawing> DrawingOf(const PictureGroup& picture) {
  if (!picture.kind.starts_with("wmetafile")) return std::nullopt;
  return ReadMetafile(picture.bytes);
}

std::vector<std::shared_ptr<const PictureGroup>> PicturesOf(const RichText& document) {
  std::vector<std::shared_ptr<const PictureGroup>> pictures;
  const auto take = [&](const Paragraph& paragraph) {
    for (const Run& run : paragraph.runs) {
      if (run.picture) pictures.push_back(run.picture);
    }
  };
  for (const Block& block : document.blocks) {
    if (const auto* paragraph = std::get_if<Paragraph>(&block)) take(*paragraph);
    const auto* table = std::get_if<Table>(&block);
    if (!table) continue;
    for (const TableRow& row : table->rows) {
      for (const TableCell& cell : row.cells) std::ranges::for_each(cell.paragraphs, take);
    }
  }
  return pictures;
}

ExportSize SizeFor(const PictureGroup& picture) {
  ExportSize size;
  const auto [width, height] = PictureSize(picture);
  size.height = std::clamp(ToInteger(size.width * static_cast<double>(height) / width), 1, LargestSide);
  return size;
}

PictureToSvg MakePictureToSvg() {
  return [fonts = std::make_shared<FontBook>()](const PictureGroup& picture) -> std::string {
    const auto drawing = DrawingOf(picture);
    if (!drawing) return {};
    const auto [width, height] = PictureSize(picture);
    return RenderSvg(*drawing, *fonts, width / TwipsPerPoint, height / TwipsPerPoint, true);
  };
}

bool GraphConv(const Drawing& drawing, FontBook& fonts, const std::filesystem::path& file, const ExportSize& size,
               std::string& problem) {
  const auto format = BitmapFormatOf(ExtensionOf(file));
  if (!format) {
    problem = fmt::format("{} is not a kind of image that can be written", file.string());
    return false;
  }
  const std::string bytes = EncodeBitmap(RenderImage(drawing, fonts, size.width, size.height), *format, size.quality);
  if (bytes.empty()) {
    problem = fmt::format("An image of {} by {} pixels cannot be made.", size.width, size.height);
    return false;
  }
  return WriteImageFile(file, bytes, problem);
}

bool ExportPicture(const PictureGroup& picture, FontBook& fonts, const std::filesystem::path& file,
                   const ExportSize& size, std::string& problem) {
  const std::string extension = ExtensionOf(file);
  if (extension == "wmf" && picture.kind.starts_with("wmetafile")) return WriteImageFile(file, picture.bytes, problem);
  const auto drawing = DrawingOf(picture);
  if (!drawing) {
    problem = CannotDraw;
    return false;
  }
  const auto [width, height] = PictureSize(picture);  // twips
  if (extension == "emf") {
    return WriteImageFile(
        file,
        WriteEnhancedMetafile(*drawing, ToInteger(width * HundredthsPerTwip), ToInteger(height * HundredthsPerTwip)),
        problem);
  }
  const double pointsX = width / TwipsPerPoint, pointsY = height / TwipsPerPoint;
  if (extension == "svg") return WriteImageFile(file, RenderSvg(*drawing, fonts, pointsX, pointsY, false), problem);
  if (extension == "pdf") return WriteImageFile(file, RenderPdf(*drawing, fonts, pointsX, pointsY), problem);
  return GraphConv(*drawing, fonts, file, size, problem);
}

bool RunImageExport(Host& host, const PictureGroup& picture, FontBook& fonts, int helpContext) {
  return ImageExportForm(host, picture, fonts, helpContext).Run();
}

}  // namespace tellurix
