// The widgets of a form's controls: from the person to the form, and from the form to the widget.
#include <QButtonGroup>
#include <QCheckBox>
#include <QColorDialog>
#include <QComboBox>
#include <QHeaderView>
#include <QLabel>
#include <QLayout>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollBar>
#include <QSlider>
#include <QTableWidget>
#include <QTextBrowser>
#include <algorithm>

#include "desktop/FormDialog.h"
#include "desktop/QtText.h"
#include "report/RichText.h"

namespace tellurix {

namespace {

// The text of a grid's cells, row by row.
std::vector<std::vector<std::string>> CellsOf(const QTableWidget& table) {
  std::vector<std::vector<std::string>> cells;
  for (int row = 0; row < table.rowCount(); ++row) {
    auto& line = cells.emplace_back();
    for (int column = 0; column < table.columnCount(); ++column) {
      const QTableWidgetItem* item = table.item(row, column);
      line.push_back(item ? item->text().toStdString() : "");
    }
  }
  return cells;
}

// A text that has become longer takes more lines: the open window grows by them.
void GrowToText(QWidget& window) {
  if (!window.isVisible()) return;
  window.layout()->activate();
  const int needed = window.layout()->totalHeightForWidth(window.width());
  if (needed > window.height()) window.resize(window.width(), needed);
}

// The columns of a grid that are there to be read are as wide as their texts, within bounds, and leave room for what is
// typed beside them; the caret starts there.
void ShowReadOnlyColumns(QTableWidget& table, int count) {
  constexpr int WidestText = 400, RoomToType = 120;
  if (count == 0) return;
  int width = table.verticalHeader()->sizeHint().width() + table.verticalScrollBar()->sizeHint().width();
  for (int column = 0; column < count; ++column) {
    table.resizeColumnToContents(column);
    table.setColumnWidth(column, std::min(table.columnWidth(column), WidestText));
    width += table.columnWidth(column);
  }
  table.setMinimumWidth(std::max(table.minimumWidth(), width + RoomToType));
  if (table.currentColumn() < 0) table.setCurrentCell(0, count);
}

void ShowEntry(QLineEdit& edit, const Control& control) {
  if (edit.text() != FromUtf8(control.value)) edit.setText(FromUtf8(control.value));
}

void ShowCombo(QComboBox& combo, const Control& control) {
  QStringList items;
  for (const std::string& item : control.items) items << FromUtf8(item);
  QStringList shownItems;
  for (int i = 0; i < combo.count(); ++i) shownItems << combo.itemText(i);
  if (items != shownItems) {
    combo.clear();
    combo.addItems(items);
  }
  if (control.index >= 0) {
    combo.setCurrentIndex(control.index);
  } else if (combo.isEditable() && combo.currentText() != FromUtf8(control.value)) {
    combo.setEditText(FromUtf8(control.value));
  }
}

void ShowList(QListWidget& list, const Control& control) {
  bool same = list.count() == static_cast<int>(control.items.size());
  for (int i = 0; same && i < list.count(); ++i) {
    same = list.item(i)->text() == FromUtf8(control.items[static_cast<std::size_t>(i)]);
  }
  if (!same) {
    list.clear();
    for (const std::string& item : control.items) list.addItem(FromUtf8(item));
  }
  list.setCurrentRow(control.index);
}

void ShowRichText(QTextBrowser& output, const Control& control) {
  if (const auto text = ReadRtf(control.value)) {
    output.setHtml(FromUtf8(WriteHtml(*text, "")));
  } else {
    output.setPlainText(FromUtf8(control.value));
  }
  output.moveCursor(QTextCursor::End);
}

void ShowGrid(QTableWidget& table, const Control& control) {
  int columns = static_cast<int>(control.items.size());
  for (const auto& row : control.cells) columns = std::max(columns, static_cast<int>(row.size()));
  table.setRowCount(static_cast<int>(control.cells.size()));
  table.setColumnCount(columns);
  QStringList headings;
  for (const std::string& item : control.items) headings << FromUtf8(item);
  if (!headings.isEmpty()) table.setHorizontalHeaderLabels(headings);
  for (int row = 0; row < table.rowCount(); ++row) {
    const auto& cells = control.cells[static_cast<std::size_t>(row)];
    for (int column = 0; column < static_cast<int>(cells.size()); ++column) {
      const QString text = FromUtf8(cells[static_cast<std::size_t>(column)]);
      QTableWidgetItem* item = table.item(row, column);
      if (!item) {
        table.setItem(row, column, item = new QTableWidgetItem);
        if (column < control.readOnlyColumns) item->setFlags(item->flags() & ~Qt::ItemIsEditable);
      }
      if (item->text() != text) item->setText(text);
    }
  }
  ShowReadOnlyColumns(table, control.readOnlyColumns);
}

}  // namespace

// ---------------------------------------------------------------------------------------------------------------------
// From the person to the form
// ---------------------------------------------------------------------------------------------------------------------

// A combo to type in that offers nothing to choose is shown as a line to type in.
ControlKind FormDialog::ShownKind(const Control& control) {
  const bool isPlainEntry = control.kind == ControlKind::Combo && control.editable && control.items.empty();
  return isPlainEntry ? ControlKind::Text : control.kind;
}

QWidget* FormDialog::MakeWidget(const Control& control) {
  const std::string id = control.id;
  // What a person does, not what the form itself shows, goes to the form.
  const auto set = [this, id](const std::string& value) {
    if (!refreshing_) form_.Set(id, value);
  };
  switch (ShownKind(control)) {
    case ControlKind::Text:
      return MakeEntry(control);
    case ControlKind::Combo: {
      auto* combo = new QComboBox(this);
      combo->setEditable(control.editable);
      combo->setInsertPolicy(QComboBox::NoInsert);
      if (control.editable) combo->setCompleter(nullptr);
      connect(combo, &QComboBox::currentTextChanged, this, [set](const QString& text) { set(text.toStdString()); });
      combo->installEventFilter(this);
      return combo;
    }
    case ControlKind::Check: {
      auto* check = new QCheckBox(FromUtf8(control.caption), this);
      connect(check, &QCheckBox::toggled, this, [set](bool on) { set(on ? "on" : "off"); });
      return check;
    }
    case ControlKind::Radio:
      return MakeRadio(control);
    case ControlKind::List: {
      auto* list = new QListWidget(this);
      connect(list, &QListWidget::currentTextChanged, this, [set](const QString& text) { set(text.toStdString()); });
      connect(list, &QListWidget::itemActivated, this, [this, id] { form_.Activate(id); });
      return list;
    }
    case ControlKind::Grid:
      return MakeGrid(control);
    case ControlKind::Slider:
      return MakeSlider(control);
    case ControlKind::Colour:
      return MakeColour(control);
    case ControlKind::RichText: {
      auto* output = new QTextBrowser(this);
      output->setMinimumSize(420, 200);
      return output;
    }
    case ControlKind::Button: {
      auto* button = new QPushButton(FromUtf8(control.caption), this);
      button->setAutoDefault(control.role != ButtonRole::Cancel);
      button->setDefault(control.role == ButtonRole::Default);
      button->setAutoRepeat(control.repeats);
      connect(button, &QPushButton::clicked, this, [this, id] { form_.Press(id); });
      return button;
    }
    default: {
      auto* label = new QLabel(this);
      label->setWordWrap(true);
      return label;
    }
  }
}

QWidget* FormDialog::MakeEntry(const Control& control) {
  auto* edit = new QLineEdit(this);
  const std::string id = control.id;
  connect(edit, &QLineEdit::textEdited, this, [this, id](const QString& text) {
    if (!refreshing_) form_.Set(id, text.toStdString());
  });
  edit->installEventFilter(this);
  return edit;
}

// The radios of one of the form's groups exclude one another, wherever they stand, and the arrow keys go through them.
QWidget* FormDialog::MakeRadio(const Control& control) {
  auto* radio = new QRadioButton(FromUtf8(control.caption), this);
  QButtonGroup*& group = radios_[control.group];
  if (!group) group = new QButtonGroup(this);
  group->addButton(radio);
  const std::string id = control.id;
  connect(radio, &QRadioButton::toggled, this, [this, id](bool on) {
    if (on && !refreshing_) form_.Set(id, "on");
  });
  return radio;
}

QWidget* FormDialog::MakeGrid(const Control& control) {
  auto* table = new QTableWidget(this);
  table->setMinimumSize(360, 180);
  table->horizontalHeader()->setStretchLastSection(true);
  const std::string id = control.id;
  connect(table, &QTableWidget::cellChanged, this, [this, id, table] {
    if (!refreshing_) form_.Enter(id, CellsOf(*table));
  });
  connect(table, &QTableWidget::cellDoubleClicked, this, [this, id] { form_.Activate(id); });
  return table;
}

QWidget* FormDialog::MakeSlider(const Control& control) {
  auto* slider = new QSlider(Qt::Horizontal, this);
  // The items of a slider, when it has them, are its least and its greatest value.
  const auto limit = [&](std::size_t i, int fallback) {
    return control.items.size() > i ? QString::fromStdString(control.items[i]).toInt() : fallback;
  };
  slider->setRange(limit(0, 0), limit(1, 100));
  const std::string id = control.id;
  connect(slider, &QSlider::valueChanged, this, [this, id](int value) {
    if (!refreshing_) form_.Set(id, std::to_string(value));
  });
  return slider;
}

QWidget* FormDialog::MakeColour(const Control& control) {
  auto* button = new QPushButton(this);
  const std::string id = control.id;
  connect(button, &QPushButton::clicked, this, [this, id] {
    const QColor now(QRgb(QString::fromStdString(form_.ValueOf(id)).toUInt()));
    const QColor chosen = QColorDialog::getColor(now, this);
    if (chosen.isValid()) form_.Set(id, std::to_string(chosen.rgb() & 0xFFFFFFu));
  });
  return button;
}

// ---------------------------------------------------------------------------------------------------------------------
// From the form to the widget
// ---------------------------------------------------------------------------------------------------------------------

void FormDialog::RefreshControl(const Shown& shown, const Control& control) {
  const bool before = refreshing_;
  refreshing_ = true;
  switch (shown.kind) {
    case ControlKind::Label:
      static_cast<QLabel*>(shown.widget)->setText(FromUtf8(PlainCaption(control.caption)));
      GrowToText(*this);
      break;
    case ControlKind::Text:
      ShowEntry(static_cast<QLineEdit&>(*shown.widget), control);
      break;
    case ControlKind::Combo:
      ShowCombo(static_cast<QComboBox&>(*shown.widget), control);
      break;
    case ControlKind::List:
      ShowList(static_cast<QListWidget&>(*shown.widget), control);
      break;
    case ControlKind::Check:
      static_cast<QCheckBox*>(shown.widget)->setChecked(control.checked);
      break;
    case ControlKind::Radio:
      static_cast<QRadioButton*>(shown.widget)->setChecked(control.checked);
      break;
    case ControlKind::Slider:
      static_cast<QSlider*>(shown.widget)->setValue(FromUtf8(control.value).toInt());
      break;
    case ControlKind::Colour:
      shown.widget->setStyleSheet(
          QString("background-color: %1").arg(QColor(QRgb(FromUtf8(control.value).toUInt())).name()));
      break;
    case ControlKind::RichText:
      ShowRichText(static_cast<QTextBrowser&>(*shown.widget), control);
      break;
    case ControlKind::Grid:
      ShowGrid(static_cast<QTableWidget&>(*shown.widget), control);
      break;
    case ControlKind::Button:
      static_cast<QPushButton*>(shown.widget)->setText(FromUtf8(control.caption));
      break;
    case ControlKind::Picture:
      break;
  }
  if (shown.label) shown.label->setText(FromUtf8(control.caption));
  for (QWidget* widget : {shown.widget, static_cast<QWidget*>(shown.label)}) {
    if (!widget) continue;
    widget->setVisible(control.visible);
    widget->setEnabled(control.enabled);
  }
  refreshing_ = before;
}

}  // namespace tellurix
