#include "session/ReportGraphics.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "graphics/ImageExport.h"
#include "report/RtfPicture.h"
#include "session/SessionSettings.h"
#include "tests/FakeHost.h"

namespace tellurix {
namespace {

namespace fs = std::filesystem;

class ReportGraphics : public testing::Test {
 protected:
  ReportGraphics() { fs::create_directories(folder); }
  ~ReportGraphics() override { fs::remove_all(folder); }

  Report& DrawnReport() {
    Report& report = documents.NewReport();
    report.helpContext = 321;
    EXPECT_TRUE(session.graphics.BeginPicture(true));
    session.graphics.page.XLow = 2, session.graphics.page.XHigh = 9;
    session.graphics.DrawFrame(true, "Scatter plot", -3);
    session.graphics.NoteSeries("y", {1, 2.5});
    EXPECT_TRUE(session.graphics.BeginPicture(false));
    EXPECT_TRUE(SendPictureToReport(session, report));
    return report;
  }

  fs::path folder = fs::temp_directory_path() / (std::string("tellurix-report-graphics-") +
                                                 testing::UnitTest::GetInstance()->current_test_info()->name());
  FakeHost host;
  FakeDocuments documents;
  FakeSettings settings;
  Session session{host, documents, settings, {.program = TELLURIX_SOURCE_DIR, .temporary = folder}};
};

std::string Contents(const fs::path& file) {
  std::ifstream in(file, std::ios::binary);
  return {std::istreambuf_iterator<char>(in), {}};
}

TEST_F(ReportGraphics, PictureGoesIntoTheReportWithItsTag) {
  const Report& report = DrawnReport();
  const auto pictures = PicturesOf(report.text);
  ASSERT_EQ(pictures.size(), 1U);
  EXPECT_EQ(pictures[0]->kind, "wmetafile8");
  EXPECT_EQ(pictures[0]->bytes, Contents(folder / "~tmp.wmf"));
  // 1132 and 800 units, 210 to the inch, in hundredths of a millimetre and in twips.
  EXPECT_EQ(pictures[0]->width, 13692);
  EXPECT_EQ(pictures[0]->height, 9676);
  EXPECT_EQ(pictures[0]->goalWidth, 7762);
  EXPECT_EQ(pictures[0]->goalHeight, 5486);
  EXPECT_EQ(Contents(folder / "~place.wmf").substr(22), pictures[0]->bytes);
  EXPECT_EQ(LastHelpTag(report.text, report.text.blocks.size() - 1), 321);
  // As the report is written to a file and read from it.
  const auto again = ReadRtf(WriteRtf(report.text));
  ASSERT_TRUE(again);
  EXPECT_EQ(*again, report.text);
  const std::string group = PictureText(*pictures[0]);
  EXPECT_NE(group.find("{\\pict\\wmetafile8\\picw13692\\pich9676\\picwgoal7762\\pichgoal5486 \r\n010009000003"),
            std::string::npos);
  EXPECT_EQ(group.find("\r\n", group.find("\r\n") + 2) - group.find("\r\n"), 2U + 2 * 39);
}

TEST_F(ReportGraphics, FiguresGoToTheResults) {
  DrawnReport();
  const RunResult& run = session.results.Current();
  ASSERT_EQ(run.pictures.size(), 1U);
  EXPECT_EQ(run.pictures[0].title, "Scatter plot");
  EXPECT_EQ(run.pictures[0].series[0].values, (std::vector<double>{2, 9}));
  EXPECT_EQ(run.pictures[0].series.back().values, (std::vector<double>{1, 2.5}));
  EXPECT_TRUE(run.delivered);
}

TEST_F(ReportGraphics, LostRecordingIsTold) {
  Report& report = documents.NewReport();
  EXPECT_FALSE(SendPictureToReport(session, report));
  EXPECT_EQ(host.LastMessage(), "Error creating metafile.");
  EXPECT_TRUE(report.text.IsEmpty());
}

TEST_F(ReportGraphics, CanvasIsMergedIntoItsTemplate) {
  Report& report = documents.NewReport();
  session.graphics.canvas.ClearCanvas(3);
  session.graphics.canvas.CanvasPlot(5, 2);
  ASSERT_TRUE(SendCanvasToReport(session, report, "A {title}"));
  const std::string text = WriteText(report.text);
  EXPECT_NE(text.find("A {title}\n"), std::string::npos) << text;
  EXPECT_NE(text.find("\n    *\n"), std::string::npos) << text;
}

TEST_F(ReportGraphics, PagesOfMarkupShowTheChart) {
  const Report& report = DrawnReport();
  const std::string page = WriteHtml(report.text, "", MakePictureToSvg());
  EXPECT_NE(page.find("<svg"), std::string::npos);
  EXPECT_EQ(page.find("<?xml"), std::string::npos);
  EXPECT_EQ(page.find("class=\"picture\""), std::string::npos) << "a placeholder";
  PictureGroup damaged{.kind = "wmetafile8", .bytes = "no metafile"};
  EXPECT_TRUE(MakePictureToSvg()(damaged).empty());
}

TEST_F(ReportGraphics, ExportsByTheExtension) {
  const auto picture = PicturesOf(DrawnReport().text).at(0);
  FontBook fonts;
  std::string problem;
  for (const auto& [name, start] : std::vector<std::pair<std::string, std::string>>{{"a.png", "\x89PNG"},
                                                                                    {"a.JPEG", "\xFF\xD8\xFF"},
                                                                                    {"a.bmp", "BM"},
                                                                                    {"a.gif", "GIF8"},
                                                                                    {"a.svg", "<?xml"},
                                                                                    {"a.pdf", "%PDF"}}) {
    ASSERT_TRUE(ExportPicture(*picture, fonts, folder / name, {.width = 300, .height = 212}, problem)) << problem;
    EXPECT_TRUE(Contents(folder / name).starts_with(start)) << name;
  }
  const std::string bitmap = Contents(folder / "a.bmp");
  EXPECT_EQ(bitmap[28], 24) << "bits per pixel";
  EXPECT_EQ(static_cast<unsigned char>(bitmap[18]) + 256 * static_cast<unsigned char>(bitmap[19]), 300);
  ASSERT_TRUE(ExportPicture(*picture, fonts, folder / "a.wmf", {}, problem));
  EXPECT_EQ(Contents(folder / "a.wmf"), picture->bytes) << "the recording unchanged";
  EXPECT_FALSE(ExportPicture(*picture, fonts, folder / "a.xyz", {}, problem));
  EXPECT_FALSE(ExportPicture(*picture, fonts, folder / "none" / "a.png", {.width = 9, .height = 9}, problem));
  EXPECT_FALSE(problem.empty());
}

class FileHost : public FakeHost {
 public:
  std::string file;
  FileRequest request;
  std::optional<FileChoice> ChooseFile(const FileRequest& asked) override {
    request = asked;
    return FileChoice{file};
  }
};

TEST_F(ReportGraphics, ExportDialogKeepsTheShape) {
  const auto picture = PicturesOf(DrawnReport().text).at(0);
  FileHost front;
  front.file = folder / "typed.jpg";
  FontBook fonts;
  front.forms.push_back([&](Form& form) {
    EXPECT_EQ(form.title, "Graphical Image Export");
    EXPECT_FALSE(form.Find("Compression")->enabled) << "only for JPEG";
    form.Set("iWidth", "566");
    EXPECT_EQ(form.ValueOf("iHeight"), "400");
    form.Set("Metafile", "on");
    EXPECT_FALSE(form.Find("iWidth")->enabled);
    form.Set("JPEG", "on");
    EXPECT_TRUE(form.Find("Compression")->enabled);
    form.Set("iHeight", "0");
    form.Press("Save");
    EXPECT_TRUE(form.IsOpen()) << "no size";
    form.Set("iHeight", "200");
    EXPECT_EQ(form.ValueOf("iWidth"), "283");
    form.Press("Save");
  });
  EXPECT_TRUE(RunImageExport(front, *picture, fonts, 0));
  EXPECT_EQ(front.request.title, "Save Graphic As");
  EXPECT_EQ(front.request.defaultExtension, "jpg");
  EXPECT_TRUE(Contents(folder / "typed.jpg").starts_with("\xFF\xD8"));
}

TEST_F(ReportGraphics, ScaleLimitsAreAskedFor) {
  session.options.regional.decimalSymbol = ",";
  EXPECT_TRUE(ScaleLimitsPrompt(session, true)) << "not asked for";
  session.graphics.looks.RequestScales = true;
  session.graphics.page.XLow = 0.1 + 0.2;
  session.graphics.page.XHigh = 5;
  host.forms.push_back([&](Form& form) {
    EXPECT_EQ(form.title, "Scale Limits");
    EXPECT_EQ(form.ValueOf("XLow"), "0,3");
    form.Set("XHigh", "x");
    EXPECT_TRUE(form.Find("XScale")->items.empty());
    form.Press("OK");
    EXPECT_TRUE(form.IsOpen());
    form.Set("XHigh", "0,8");
    EXPECT_FALSE(form.Find("XScale")->items.empty());
    EXPECT_EQ(form.Find("YScale"), nullptr);
    form.Set("RequestScales", "off");
    form.Press("OK");
  });
  EXPECT_TRUE(ScaleLimitsPrompt(session, false));
  EXPECT_EQ(session.graphics.page.XLow, 0.1 + 0.2) << "an untouched limit keeps all its digits";
  EXPECT_EQ(session.graphics.page.XHigh, 0.8);
  EXPECT_FALSE(session.graphics.looks.RequestScales);
  EXPECT_EQ(settings.values["Graphics.RequestScales"], "0");
  session.graphics.looks.RequestScales = true;
  host.forms.push_back([](Form& form) { form.Close(); });
  EXPECT_FALSE(ScaleLimitsPrompt(session, true));
}

TEST_F(ReportGraphics, OptionsAreKeptInTheSettings) {
  LoadSettings(session);
  EXPECT_EQ(session.graphics.looks.Series[6].Colour, 65535);
  EXPECT_EQ(session.graphics.looks.TitleFont.Size, 28);
  EXPECT_TRUE(session.graphics.looks.LabelFont.Italic);
  host.forms.push_back([](Form& form) {
    EXPECT_EQ(form.title, "Graphics Options");
    form.Set("Series", "Series 3");
    EXPECT_EQ(form.ValueOf("Shape"), "Triangle");
    EXPECT_EQ(form.ValueOf("Colour"), "Green");
    form.Set("Colour", "Vermilion");
    form.Set("Series", "Series 2");
    form.Set("Other", std::to_string(0x123456));  // red 12, green 34, blue 56
    EXPECT_EQ(form.ValueOf("Colour"), "Other");
    form.Set("Width", "4");
    form.Set("BoxAxes", "on");
    form.Set("TitleSize", "1");
    form.Press("OK");
    EXPECT_TRUE(form.IsOpen());
    form.Set("TitleSize", "40");
    form.Set("TitleBold", "on");
    form.Press("OK");
  });
  EXPECT_TRUE(GraphicsOptions(session));
  EXPECT_EQ(settings.values["Graphics.Colour2"], std::to_string(0x005ED5));
  EXPECT_EQ(settings.values["Graphics.Colour1"], std::to_string(0x563412));
  EXPECT_EQ(settings.values["Graphics.Width1"], "4");
  EXPECT_EQ(settings.values["Graphics.BoxAxes"], "-1");
  EXPECT_EQ(settings.values["Graphics.TitleSize"], "40");
  EXPECT_EQ(settings.values["Graphics.TitleBold"], "700");
  const ChartLooks kept = session.graphics.looks;
  LoadLooks(session);
  EXPECT_EQ(session.graphics.looks.Series[2].Colour, kept.Series[2].Colour);
  settings.values["Graphics.TitleSize"] = "huge";
  settings.values["Graphics.Shape1"] = "99";
  LoadLooks(session);
  EXPECT_EQ(session.graphics.looks.TitleFont.Size, 28);
  EXPECT_EQ(session.graphics.looks.Series[1].Shape, 0);
}

}  // namespace
}  // namespace tellurix
