// tellurix-gallery DIR: every kind of frame, marker, pen, brush, font and axis that charts are made of, to be looked
// at: into DIR/gallery.rtf, as image files, and on the character canvas.

#include <fmt/format.h>

#include <cmath>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <numbers>
#include <string>
#include <vector>

#include "graphics/ImageExport.h"
#include "host/Nobody.h"
#include "numeric/Rounding.h"
#include "session/ReportGraphics.h"
#include "session/SessionSettings.h"
#include "shell/DocumentFiles.h"
#include "shell/OpenDocuments.h"
#include "shell/ProgramFolder.h"

namespace {

namespace fs = std::filesystem;
using namespace tellurix;

class Gallery {
 public:
  Gallery(Session& session, Report& report, fs::path folder)
      : session_(session), g_(session.graphics), report_(report), folder_(std::move(folder)) {}

  bool DrawAll() {
    for (const int type : {1, 2, 3, 4, 5, 6, 7, 8, 9, 23}) Frame(type);
    Markers();
    Pens();
    Brushes();
    Fonts();
    Axes();
    Logarithmic();
    Looks();
    LongTexts();
    ManyCategories();
    TallPage();
    Wave();
    Canvases();
    std::string problem;
    good_ = SaveReport(report_, folder_ / "gallery.rtf", problem) && good_;
    good_ = SaveReport(report_, folder_ / "gallery.html", problem) && good_;
    if (!problem.empty()) fmt::print(stderr, "{}\n", problem);
    return good_;
  }

 private:
  void Page(const std::string& name, const std::function<void()>& draw) {
    if (!g_.BeginPicture(true)) {
      good_ = false;
      return;
    }
    g_.ResetFrame();
    draw();
    good_ = g_.BeginPicture(false) && SendPictureToReport(session_, report_) && good_;
    Save(name);
    g_.page = tellurix::Page();
  }

  // The page as it came into the report, in every format.
  void Save(const std::string& name) {
    const auto pictures = PicturesOf(report_.text);
    if (pictures.empty()) return;
    const auto& picture = pictures.back();
    std::string problem;
    for (const char* extension : {"png", "jpg", "bmp", "gif", "wmf", "emf", "svg", "pdf"}) {
      const ExportSize size{.width = tellurix::Page::PageWidth, .height = g_.page.PageHeight};
      if (!ExportPicture(*picture, g_.fonts, folder_ / fmt::format("{}.{}", name, extension), size, problem)) {
        fmt::print(stderr, "{}\n", problem);
        good_ = false;
      }
    }
    const ExportSize sharp{.width = 3 * tellurix::Page::PageWidth, .height = 3 * g_.page.PageHeight};
    good_ = ExportPicture(*picture, g_.fonts, folder_ / (name + "@3x.png"), sharp, problem) && good_;
  }

  void Limits(double xLow, double xHigh, double yLow, double yHigh) {
    g_.page.XLow = xLow;
    g_.page.XHigh = xHigh;
    g_.page.YLow = yLow;
    g_.page.YHigh = yHigh;
  }

  void Frame(int type) {
    Page(fmt::format("frame-{:02}", type), [&] {
      Limits(0, 50, -3.2, 7.9);
      g_.page.Categories = {"Placebo", "10 mg", "20 mg", "40 mg", "80 mg"};
      g_.DrawFrame(true, fmt::format("Frame type {}", type), -type);
      g_.DrawAxisTitleX("Time since randomisation (weeks)");
      g_.DrawAxisTitleY(type % 2 == 0 ? "Response" : "Change in systolic pressure (mmHg)");
    });
  }

  void Markers() {
    Page("markers", [&] {
      Limits(0, 10, 0, 10);
      g_.DrawFrame(true, "Markers of the ten series, radius 4 to 16", -6);
      for (int series = 0; series < SeriesCount; ++series) {
        for (int i = 0; i < 5; ++i) g_.DrawMarker(230 + 82 * series, 180 + 110 * i, 4 + 3 * i, series);
        g_.picture.SetTextAlign(TextAlign::Centre);
        g_.picture.TextOut(230 + 82 * series, 88, fmt::format("{}", series));
      }
      SeriesStyle& dash = g_.looks.Series[9];
      const SeriesStyle kept = dash;
      dash = {.Shape = 8};
      for (int i = 0; i < 5; ++i) g_.DrawMarker(230 + 82 * 9 + 45, 180 + 110 * i, 4 + 3 * i, 9);
      dash = kept;
      for (int i = 0; i < 3; ++i) g_.DrawDiamond(300 + 200 * i, 150, 30, i == 1, 12 + 4 * i);
    });
  }

  void Pens() {
    Page("pens", [&] {
      g_.DrawFrame(true, "Pens: styles 0 to 4 in widths 0 to 5, and the colours of the series", -6);
      for (int style = 0; style < 5; ++style) {
        for (int width = 0; width < 6; ++width) {
          g_.picture.SelectPen({.Width = width, .Style = style});
          const int y = 680 - 70 * style - 10 * width;
          g_.picture.MoveTo(160, y);
          g_.picture.LineTo(560, y);
          g_.picture.MoveTo(600, y);
          g_.picture.LineTo(1040, y - 30);
        }
      }
      for (int series = 0; series < SeriesCount; ++series) {
        g_.picture.SelectPen(g_.looks.Series[static_cast<std::size_t>(series)]);
        g_.picture.MoveTo(160 + 90 * series, 320);
        for (int i = 1; i <= 70; ++i) {
          g_.picture.LineTo(160 + 90 * series + i, 210 + ToInteger(100 * std::cos(i / 12.0)));
        }
      }
    });
  }

  void Brushes() {
    Page("brushes", [&] {
      g_.DrawFrame(true, "Brushes: none, grey, black, the six hatches", -6);
      const auto bar = [&](int i, const std::function<void()>& set) {
        set();
        const int left = 170 + 98 * i, right = left + 80, top = 640 - 40 * i;
        const std::vector<PagePoint> corners{{left, top}, {right, top}, {right, 100}, {left, 100}, {left, top}};
        g_.picture.Polygon(corners);
        g_.picture.Ellipse(left + 10, top + 60, right - 10, top + 10);
      };
      bar(0, [&] { g_.picture.SetBrush(); });
      bar(1, [&] { g_.picture.SetBrush(0xE0E0E0); });
      bar(2, [&] { g_.picture.SetBrush(0); });
      for (int i = 0; i < 6; ++i) bar(3 + i, [&] { g_.picture.SetBrush(static_cast<Hatch>(i)); });
    });
  }

  void Fonts() {
    Page("fonts", [&] {
      g_.DrawFrame(true, "Fonts: Ä é ß µ ± ≤ Ω Żółć Кириллица 漢字", -6);
      int y = 690;
      for (const char* name : {"Arial", "Times New Roman", "Courier New"}) {
        for (const int size : {14, 20, 28}) {
          g_.picture.SelectFont({.Name = name, .Size = size});
          g_.picture.TextOut(160, y, fmt::format("{} {}: P = 0.0312, 95% CI", name, size));
          g_.picture.SelectFont({.Name = name, .Size = size, .Bold = 700, .Italic = true, .Colour = 0xFF});
          g_.picture.TextOut(800, y, "bold italic ±");
          y -= size + 14;
        }
      }
      g_.picture.SelectFont({.Size = 20, .Underline = true});
      g_.picture.TextOut(160, y, "underlined");
      g_.picture.SelectFont({.Size = 20, .Strike = true});
      g_.picture.TextOut(360, y, "struck out");
      for (const TextAlign mode : {TextAlign::Left, TextAlign::Right, TextAlign::Centre}) {
        y -= 30;
        g_.picture.SelectFont({.Size = 20});
        g_.picture.SetTextAlign(mode);
        g_.picture.TextOut(600, y, fmt::format("aligned {}", static_cast<int>(mode)));
        g_.picture.MoveTo(600, y);
        g_.picture.LineTo(600, y - 24);
      }
      for (int i = 0; i < 4; ++i) {
        g_.picture.SelectFont({.Size = 20}, 450 * i);
        g_.picture.SetTextAlign(TextAlign::Left);
        g_.picture.TextOut(950, 210, fmt::format("turned {}", 45 * i));
      }
    });
  }

  // Scales of many sizes, one upon the other.
  void Axes() {
    const std::vector<std::pair<double, double>> limits{
        {0, 1},           {3, 3},          {0, 100},     {-170, 42000}, {1e-9, 7e-9}, {1234567, 1234568},
        {-0.0004, 0.001}, {-1e308, 1e308}, {1950, 2024}, {-2e6, 3.5e6}, {12.3, 98.7}, {0.00012, 0.00047}};
    for (std::size_t i = 0; i + 1 < limits.size(); i += 2) {
      Page(fmt::format("axes-{}", i / 2 + 1), [&] {
        Limits(limits[i].first, limits[i].second, limits[i + 1].first, limits[i + 1].second);
        g_.DrawFrame(true,
                     fmt::format("x {} to {}, y {} to {}", limits[i].first, limits[i].second, limits[i + 1].first,
                                 limits[i + 1].second),
                     -7);
        g_.DrawAxisTitleX("Abscissa");
        g_.DrawAxisTitleY("A title that reads upward");
      });
    }
  }

  void Logarithmic() {
    Page("logarithmic", [&] {
      g_.page.LogX = g_.page.LogY = true;
      Limits(std::log(0.02), std::log(40), std::log(0.0001), std::log(100000));
      g_.DrawFrame(true, "Logarithmic axes", -3);
      g_.DrawAxisTitleX("Odds ratio");
      for (int i = 1; i <= 30; ++i) {
        const double x = std::log(0.02) + i * 0.25;
        g_.DrawMarker(ToInteger(g_.page.MapX(x)), ToInteger(g_.page.MapY(1.5 * x)), 6, 1);
      }
    });
  }

  void Looks() {
    const ChartLooks kept = g_.looks;
    g_.looks.AllBlack = g_.looks.BoxAxes = g_.looks.RotateAllY = true;
    g_.looks.LabelFont.Size = 30;
    g_.looks.TitleFont = {.Name = "Times New Roman", .Size = 44, .Bold = 700, .Colour = 0xFF0000};
    Page("looks", [&] {
      Limits(-20, 65, 0, 2e-5);
      g_.DrawFrame(true, "All black, boxed, large labels", -3);
      g_.DrawAxisTitleX("Large title of x");
      g_.DrawAxisTitleY("Short");
      for (int i = 0; i < 60; ++i) {
        g_.DrawMarker(ToInteger(g_.page.MapX(i)), ToInteger(g_.page.MapY(1e-5 * (1 + std::sin(i / 8.0)))), 8, i % 10);
      }
    });
    g_.looks = kept;
  }

  void LongTexts() {
    Page("long-texts", [&] {
      Limits(0, 1, 0, 1);
      std::string text;
      while (text.size() < 10'000) text += "A title that says far too much about the trial; ";
      g_.DrawFrame(true, text, -3);
      g_.DrawAxisTitleX(text);
      g_.DrawAxisTitleY(text);
    });
    Page("long-categories", [&] {
      Limits(0, 20, 0, 1);
      g_.page.Categories = {"Intervention with a long name", "Control",
                            "Another one, longer by far than the margin is"};
      g_.DrawFrame(true, "Long names of categories, frame moved by 60", -1, 60);
    });
    Page("long-categories-x", [&] {
      Limits(0, 20, 0, 1);
      g_.page.Categories = {"Intervention with a long name", "Control", "Another one, longer by far than its share",
                            "Fourth and not short", "Fifth"};
      g_.DrawFrame(true, "Long names of categories", -2);
    });
  }

  void ManyCategories() {
    for (const int type : {1, 2}) {
      Page(fmt::format("many-categories-{}", type), [&] {
        Limits(0, 500, 0, 500);
        for (int i = 1; i <= 80; ++i) g_.page.Categories.push_back(fmt::format("Practice {}", i));
        g_.DrawFrame(true, "Eighty categories: labels are thinned", -type);
      });
    }
  }

  void TallPage() {
    g_.page.GrowFor(60);
    Page("tall", [&] {
      Limits(-5, 5, 0, 1);
      for (int i = 1; i <= 60; ++i) g_.page.Categories.push_back(fmt::format("Study {}", i));
      g_.DrawFrame(true, "Sixty rows on a page that grew", -1);
      for (int i = 0; i < 60; ++i) {
        const int y = ToInteger(g_.page.PlotBottom + (i + 0.5) / 60 * g_.page.PlotHeight);
        const double mid = 3 * std::sin(i * 1.7);
        g_.picture.SelectPen(g_.StyleOf(1));
        g_.picture.MoveTo(ToInteger(g_.page.MapX(mid - 1)), y);
        g_.picture.LineTo(ToInteger(g_.page.MapX(mid + 1)), y);
        g_.DrawMarker(ToInteger(g_.page.MapX(mid)), y, 7, 1);
      }
    });
  }

  void Wave() {
    Page("scatter", [&] {
      Limits(0, 2 * std::numbers::pi, -1.2, 1.2);
      g_.DrawFrame(true, "Ten series", -7);
      g_.DrawAxisTitleX("x");
      g_.DrawAxisTitleY("sin(x + k / 5)");
      for (int series = 0; series < SeriesCount; ++series) {
        g_.picture.SelectPen(g_.StyleOf(series));
        for (int i = 0; i <= 200; ++i) {
          const double x = 2 * std::numbers::pi * i / 200;
          const int px = ToInteger(g_.page.MapX(x)), py = ToInteger(g_.page.MapY(std::sin(x + series / 5.0)));
          i == 0 ? g_.picture.MoveTo(px, py) : g_.picture.LineTo(px, py);
        }
        for (int i = 0; i <= 20; ++i) {
          const double x = 2 * std::numbers::pi * i / 20;
          g_.DrawMarker(ToInteger(g_.page.MapX(x)), ToInteger(g_.page.MapY(std::sin(x + series / 5.0))), 7, series);
        }
      }
    });
  }

  void Canvases() {
    for (const int type : {3, 2, 1}) {
      g_.page = tellurix::Page();
      g_.canvas.ClearCanvas(TextCanvas::StandardRows);
      Limits(-3, 7, 0, 100);
      g_.page.Categories = {"Placebo", "10 mg", "20 mg", "40 mg"};
      const std::string title = fmt::format("Character canvas, frame type {}", type);
      g_.DrawFrame(false, title, -type);
      for (int i = 0; i < 200; ++i) {
        const double x = -3 + i / 20.0;
        g_.canvas.CanvasPlot(TextCanvas::ColumnOf(x, g_.page.X), g_.canvas.RowOf(2 * x * x, g_.page.Y));
      }
      good_ = SendCanvasToReport(session_, report_, title) && good_;
    }
  }

  Session& session_;
  Graphics& g_;
  Report& report_;
  fs::path folder_;
  bool good_ = true;
};

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    fmt::print(stderr, "usage: tellurix-gallery DIR\n");
    return 2;
  }
  const fs::path folder = argv[1];
  std::error_code error;
  fs::create_directories(folder, error);
  const auto program = FindProgramFolder();
  if (!program) {
    fmt::print(stderr, "Tellurix files are not properly installed: no Template folder was found\n");
    return 1;
  }
  NobodyHost host;
  DefaultSettings settings;
  OpenDocuments documents;
  Session session(host, documents, settings, {.program = *program, .temporary = folder});
  LoadSettings(session);
  const bool good = Gallery(session, documents.NewReport(), folder).DrawAll();
  for (const fs::path& file : {session.graphics.Recording(), session.graphics.Placeable()}) fs::remove(file, error);
  return good ? 0 : 1;
}
