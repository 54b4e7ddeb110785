// Reports to Qt's documents and back.

#include <gtest/gtest.h>

#include <QAbstractTextDocumentLayout>
#include <QElapsedTimer>
#include <QTextBlock>
#include <QTextFrame>

#include "desktop/RichTextDocument.h"
#include "tests/desktop/ReportSamples.h"

namespace tellurix {
namespace {

// Not among the random reports, because Qt's documents cannot hold them: control characters, U+FFFC, U+2028, U+2029,
// U+FDD0 and U+FDD1 in visible text; sizes below one point; tables without rows, rows without cells, cells without
// paragraphs; runs that are empty or of the same format as the one before; more than 200 columns.
TEST(ReportDocument, HoldsRandomReports) {
  for (unsigned seed = 0; seed < 400; ++seed) {
    const RichText report = RandomReport(seed);
    QTextDocument document;
    PrepareDocument(document);
    AppendBlocks(document, report.blocks);
    const RichText back = ToRichText(document);
    ASSERT_TRUE(back == report) << "seed " << seed << "\n" << WriteRtf(report) << "\n" << WriteRtf(back);
  }
}

TEST(ReportDocument, GrowsBlockByBlockAndKeepsTablesApart) {
  for (unsigned seed = 1000; seed < 1100; ++seed) {
    RichText report = RandomReport(seed);
    QTextDocument document;
    PrepareDocument(document);
    for (const Block& block : report.blocks) AppendBlocks(document, {&block, 1});
    ASSERT_TRUE(ToRichText(document) == report) << "seed " << seed;
    while (document.isUndoAvailable()) document.undo();
    ASSERT_TRUE(ToRichText(document).blocks.empty()) << "seed " << seed;
  }
}

TEST(ReportDocument, HoldsAResultOfATemplateAndShowsNoTag) {
  const RichText& result = SampleResult();
  QTextDocument document;
  PrepareDocument(document);
  AppendBlocks(document, result.blocks);
  EXPECT_TRUE(ToRichText(document) == result);
  EXPECT_EQ(document.toPlainText().indexOf("/h/"), -1);
  EXPECT_TRUE(IsHiddenObject(document, 0));
  EXPECT_EQ(document.findBlock(0).text().mid(1), "Single sample t test");
}

TEST(ReportDocument, ManyColumnsBecomeLinesAndRaggedTablesStaySmall) {
  Table wide;
  TableRow row;
  for (int k = 1; k <= 300; ++k) row.cells.push_back({{Paragraph{{{"c", {}, nullptr}}, {}}}, 20 * k, {}});
  wide.rows.push_back(row);
  const Block block = wide;
  QTextDocument document;
  PrepareDocument(document);
  AppendBlocks(document, {&block, 1});
  EXPECT_EQ(document.toPlainText().count('c'), 300);
  EXPECT_EQ(document.rootFrame()->childFrames().size(), 0);
}

TEST(ReportDocument, AnEmptyLineBetweenTablesShows) {
  Table table;
  table.rows.push_back({});
  table.rows.back().cells.push_back({{Paragraph{{{"c", {}, nullptr}}, {}}}, 2000, {}});
  const Block blocks[] = {table, Paragraph{}, table};
  QTextDocument document;
  PrepareDocument(document);
  AppendBlocks(document, blocks);
  const auto tables = document.rootFrame()->childFrames();
  ASSERT_EQ(tables.size(), 2);
  const auto& layout = *document.documentLayout();
  const double end = layout.blockBoundingRect(tables[0]->firstCursorPosition().block()).bottom();
  EXPECT_GT(layout.blockBoundingRect(tables[1]->firstCursorPosition().block()).top() - end, 10);
}

TEST(ReportDocument, TwoThousandResultsLoadAndGrowFast) {
  std::vector<Block> blocks;
  for (int k = 0; k < 2000; ++k)
    blocks.insert(blocks.end(), SampleResult().blocks.begin(), SampleResult().blocks.end());
  QTextDocument document;
  PrepareDocument(document);
  QElapsedTimer timer;
  timer.start();
  AppendBlocks(document, blocks);
  const auto load = timer.restart();
  AppendBlocks(document, SampleResult().blocks);
  const auto append = timer.restart();
  const RichText back = ToRichText(document);
  const auto read = timer.restart();
  RecordProperty("load_ms", static_cast<int>(load));
  RecordProperty("append_ms", static_cast<int>(append));
  RecordProperty("read_ms", static_cast<int>(read));
  EXPECT_EQ(back.blocks.size(), blocks.size() + SampleResult().blocks.size());
  // Generous, for slow machines; a load that is quadratic in the results takes minutes.
  EXPECT_LT(load, 20000);
  EXPECT_LT(append, 1000);
}

}  // namespace
}  // namespace tellurix
