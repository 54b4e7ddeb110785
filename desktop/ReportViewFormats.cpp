// Fonts, alignment, lists, indents and tabs of the text selected in a report.
#include <QRegularExpression>
#include <QTextBlock>
#include <algorithm>
#include <cmath>

#include "desktop/ReportView.h"

namespace tellurix {

namespace {

constexpr int IndentStep = 720;  // twips
constexpr int ListIndent = 360;

}  // namespace

void ReportView::MergeCharFormat(const QTextCharFormat& format) {
  if (!isReadOnly()) mergeCurrentCharFormat(format);
}

void ReportView::SetFamily(const QString& family) {
  QTextCharFormat format;
  format.setFontFamilies({family});
  MergeCharFormat(format);
}

void ReportView::SetPointSize(double points) {
  QTextCharFormat format;
  format.setFontPointSize(std::clamp(std::round(2 * points) / 2, 1.0, 1638.0));
  MergeCharFormat(format);
}

void ReportView::SetBold(bool on) {
  QTextCharFormat format;
  format.setFontWeight(on ? QFont::Bold : QFont::Normal);
  MergeCharFormat(format);
}

void ReportView::SetItalic(bool on) {
  QTextCharFormat format;
  format.setFontItalic(on);
  MergeCharFormat(format);
}

void ReportView::SetUnderline(bool on) {
  QTextCharFormat format;
  format.setFontUnderline(on);
  MergeCharFormat(format);
}

void ReportView::SetStrike(bool on) {
  QTextCharFormat format;
  format.setFontStrikeOut(on);
  MergeCharFormat(format);
}

void ReportView::SetSubscript(bool on) {
  QTextCharFormat format;
  format.setVerticalAlignment(on ? QTextCharFormat::AlignSubScript : QTextCharFormat::AlignNormal);
  MergeCharFormat(format);
}

void ReportView::SetSuperscript(bool on) {
  QTextCharFormat format;
  format.setVerticalAlignment(on ? QTextCharFormat::AlignSuperScript : QTextCharFormat::AlignNormal);
  MergeCharFormat(format);
}

void ReportView::SetColour(const QColor& colour) {
  QTextCharFormat format;
  format.setForeground(colour);
  MergeCharFormat(format);
}

void ReportView::SetParagraphAlignment(Alignment alignment) {
  if (isReadOnly()) return;
  static constexpr Qt::AlignmentFlag flags[] = {Qt::AlignLeft, Qt::AlignHCenter, Qt::AlignRight, Qt::AlignJustify};
  QTextBlockFormat format;
  format.setAlignment(flags[static_cast<int>(alignment)]);
  QTextCursor cursor = textCursor();
  cursor.mergeBlockFormat(format);
}

std::vector<QTextBlock> ReportView::SelectedBlocks() const {
  std::vector<QTextBlock> blocks;
  const QTextCursor cursor = textCursor();
  const int end = cursor.selectionEnd();
  for (QTextBlock block = document()->findBlock(cursor.selectionStart()); block.isValid() && block.position() <= end;
       block = block.next()) {
    // The paragraph behind a mark that is selected is not meant.
    if (!blocks.empty() && block.position() == end) break;
    blocks.push_back(block);
  }
  return blocks;
}

void ReportView::ToggleBullets() { ToggleList(false); }
void ReportView::ToggleNumbers() { ToggleList(true); }

void ReportView::ToggleList(bool numbers) {
  if (isReadOnly()) return;
  static const QRegularExpression anyMark(QStringLiteral("^\uFFFC*((?:•|\\d+\\.)\\t)"));
  static const QRegularExpression number(QStringLiteral("^\uFFFC*\\d+\\."));
  const std::vector<QTextBlock> blocks = SelectedBlocks();
  const auto isList = [](const QTextBlock& block) {
    return block.blockFormat().textIndent() < 0 && anyMark.match(block.text()).hasMatch();
  };
  const bool off = std::all_of(blocks.begin(), blocks.end(), [&](const QTextBlock& block) {
    return isList(block) && number.match(block.text()).hasMatch() == numbers;
  });
  QTextCursor step = textCursor();
  step.beginEditBlock();
  int count = 0;
  for (const QTextBlock& block : blocks) {
    QTextCursor cursor(block);
    ParagraphFormat format = ToParagraphFormat(block);
    if (isList(block)) {
      const QRegularExpressionMatch mark = anyMark.match(block.text());
      cursor.setPosition(block.position() + static_cast<int>(mark.capturedStart(1)));
      cursor.setPosition(block.position() + static_cast<int>(mark.capturedEnd(1)), QTextCursor::KeepAnchor);
      cursor.removeSelectedText();
      format.leftIndent = std::max(format.leftIndent - ListIndent, 0);
      format.firstIndent = 0;
      format.tabs.clear();
    }
    if (!off) {
      cursor.setPosition(BehindHiddenText(block.position()));
      QTextCursor next(cursor);
      if (!next.atBlockEnd()) next.movePosition(QTextCursor::NextCharacter);
      QTextCharFormat looks = next.charFormat();
      if (looks.objectType() != QTextFormat::NoObject) looks = ToQtFormat(CharFormat{});
      cursor.insertText(numbers ? QStringLiteral("%1.\t").arg(++count) : QStringLiteral("•\t"), looks);
      format.leftIndent += ListIndent;
      format.firstIndent = -ListIndent;
      format.tabs.assign(1, TabStop{format.leftIndent});
    }
    cursor.setBlockFormat(ToQtFormat(format));
  }
  step.endEditBlock();
}

void ReportView::IndentMore() { Indent(1); }
void ReportView::IndentLess() { Indent(-1); }

void ReportView::Indent(int steps) {
  if (isReadOnly()) return;
  QTextCursor step = textCursor();
  step.beginEditBlock();
  for (const QTextBlock& block : SelectedBlocks()) {
    ParagraphFormat format = ToParagraphFormat(block);
    const int indent = std::max({0, -format.firstIndent, format.leftIndent + steps * IndentStep});
    // The tab behind a list's mark goes along.
    for (TabStop& tab : format.tabs) {
      if (format.firstIndent < 0 && tab.position == format.leftIndent) tab.position = indent;
    }
    format.leftIndent = indent;
    QTextCursor(block).setBlockFormat(ToQtFormat(format));
  }
  step.endEditBlock();
}

std::vector<TabStop> ReportView::TabStops() const { return ToParagraph(textCursor().block(), 0).format.tabs; }

void ReportView::SetTabStops(const std::vector<TabStop>& tabs) {
  if (isReadOnly()) return;
  QTextBlockFormat format;
  format.setTabPositions(ToQtTabs(tabs));
  QTextCursor cursor = textCursor();
  cursor.mergeBlockFormat(format);
}

}  // namespace tellurix
