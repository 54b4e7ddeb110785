#include "desktop/FormDialog.h"

#include <QApplication>
#include <QButtonGroup>
#include <QCheckBox>
#include <QCloseEvent>
#include <QColorDialog>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QGridLayout>
#include <QGroupBox>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QSlider>
#include <QTableWidget>
#include <QTextBrowser>
#include <QTimer>
#include <map>
#include <set>

#include "desktop/QtText.h"
#include "desktop/WindowPlace.h"
#include "numeric/Text.h"
#include "report/RichText.h"

namespace tellurix {

namespace {

constexpr int ScreenMargin = 7;  // pixels kept free at the right and lower edges

bool IsWide(ControlKind kind) {
  return kind == ControlKind::List || kind == ControlKind::Grid || kind == ControlKind::RichText ||
         kind == ControlKind::Picture;
}

// A combo to type in that offers nothing to choose is shown as a line to type in.
bool IsPlainEntry(const Control& control) {
  return control.kind == ControlKind::Combo && control.editable && control.items.empty();
}

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

// Buttons in rows, for what is typed in a line above them. They take no focus, and are no larger than their texts ask
// for.
struct KeyPad {
  QGridLayout* grid = nullptr;
  int row = -1;
  int column = 0;

  void Add(QPushButton& key, bool startsRow) {
    if (startsRow || row < 0) {
      ++row;
      column = 0;
    }
    key.setFocusPolicy(Qt::NoFocus);
    key.setAutoDefault(false);
    key.setMinimumWidth(key.fontMetrics().horizontalAdvance(key.text()) + 14);
    key.setSizePolicy(QSizePolicy::MinimumExpanding, QSizePolicy::Fixed);
    grid->addWidget(&key, row, column++);
  }
};

// A text that has become longer takes more lines: the open window grows by them.
void GrowToText(QWidget& window) {
  if (!window.isVisible()) return;
  window.layout()->activate();
  const int needed = window.layout()->totalHeightForWidth(window.width());
  if (needed > window.height()) window.resize(window.width(), needed);
}

// Other rows and captions: the open window becomes as high as they need, and as wide unless it is wider.
void FitToContents(QWidget& window) {
  if (!window.isVisible()) return;
  QLayout& layout = *window.layout();
  layout.activate();
  const QSize hint = layout.totalSizeHint();
  const int width = std::max(window.width(), hint.width());
  window.resize(width, layout.hasHeightForWidth() ? layout.totalHeightForWidth(width) : hint.height());
}

// A text that would leave no room for the rest of the dialog on the screen scrolls in a frame of its own, by mouse or
// keys. The label where it is short.
QWidget* InScrollerWhenTall(QLabel& label, const QString& text, QWidget& window) {
  label.setText(text);
  const QSize needed = label.sizeHint();
  const int most = window.screen()->availableGeometry().height() / 2;
  if (needed.height() <= most) return &label;
  auto* scroller = new QScrollArea(&window);
  label.setAlignment(Qt::AlignTop);
  label.setMargin(4);
  scroller->setWidget(&label);
  scroller->setWidgetResizable(true);
  scroller->setMinimumHeight(most);
  scroller->setMinimumWidth(label.sizeHint().width() + 2 * scroller->frameWidth() +
                            scroller->verticalScrollBar()->sizeHint().width());
  return scroller;
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

// A group of radios of one dialog needs no frame; a frame has a caption to show.
bool StandsInFrame(const Control& control) { return !control.group.empty() && control.kind != ControlKind::Radio; }

// More frames than two stand side by side, or small screens would not hold them.
bool HasFramesInRow(const Form& form) {
  std::set<std::string> frames;
  for (const Control& control : form.Controls()) {
    if (StandsInFrame(control)) frames.insert(control.group);
  }
  return frames.size() > 2;
}

}  // namespace

FormDialog::FormDialog(Form& form, QWidget* owner, std::function<void(int)> showHelp)
    : QDialog(owner), form_(form), showHelp_(std::move(showHelp)) {
  setWindowTitle(FromUtf8(form_.title));
  setWindowFlag(Qt::WindowContextHelpButtonHint, false);
  Build();
  setMinimumWidth(WidthForTitle(*this));
  form_.view = [this](std::string_view id) { FormChanged(id); };
}

FormDialog::~FormDialog() { form_.view = nullptr; }

// ---------------------------------------------------------------------------------------------------------------------
// Building
// ---------------------------------------------------------------------------------------------------------------------

void FormDialog::Build() {
  auto* outer = new QVBoxLayout(this);
  std::map<std::string, QVBoxLayout*> groups;
  std::map<std::string, KeyPad> pads;
  auto* buttons = new QDialogButtonBox(this);
  QFormLayout* rows = nullptr;  // runs of labelled controls stand in one aligned block
  QBoxLayout* frames = outer;
  if (HasFramesInRow(form_)) frames = new QHBoxLayout;
  const auto layoutFor = [&](const Control& control) -> QVBoxLayout* {
    if (!StandsInFrame(control)) return outer;
    auto& layout = groups[control.group];
    if (!layout) {
      if (frames != outer && frames->isEmpty()) outer->addLayout(frames);
      auto* box = new QGroupBox(FromUtf8(control.group), this);
      layout = new QVBoxLayout(box);
      frames->addWidget(box, 0, frames == outer ? Qt::Alignment() : Qt::AlignTop);
    }
    return layout;
  };
  for (const Control& control : form_.Controls()) {
    QWidget* widget = MakeWidget(control);
    widget->setObjectName(FromUtf8(control.id));
    Shown shown{control.id, IsPlainEntry(control) ? ControlKind::Text : control.kind, widget, nullptr};
    const bool labelled = control.kind == ControlKind::Text || control.kind == ControlKind::Combo ||
                          control.kind == ControlKind::Slider || control.kind == ControlKind::Colour;
    if (control.kind == ControlKind::Button && !control.group.empty()) {
      auto& pad = pads[control.group];
      if (!pad.grid) {
        pad.grid = new QGridLayout;
        pad.grid->setSpacing(2);
        layoutFor(control)->addLayout(pad.grid);
        rows = nullptr;
      }
      auto* key = static_cast<QPushButton*>(widget);
      pad.Add(*key, control.startsRow);
      connect(key, &QPushButton::clicked, this, &FormDialog::GoOnTyping);
    } else if (control.kind == ControlKind::Button) {
      auto* button = static_cast<QPushButton*>(widget);
      const auto role = control.role == ButtonRole::Default  ? QDialogButtonBox::AcceptRole
                        : control.role == ButtonRole::Cancel ? QDialogButtonBox::RejectRole
                                                             : QDialogButtonBox::ActionRole;
      buttons->addButton(button, role);
      rows = nullptr;
    } else if (labelled && control.group.empty() && !control.caption.empty()) {
      if (!rows) {
        rows = new QFormLayout;
        outer->addLayout(rows);
      }
      auto* label = new QLabel(FromUtf8(control.caption), this);
      label->setBuddy(widget);
      rows->addRow(label, widget);
      shown.label = label;
    } else {
      rows = nullptr;
      QVBoxLayout* layout = layoutFor(control);
      const bool told = control.caption.empty() || control.caption == control.group;  // by the frame
      if (!told && (labelled || IsWide(control.kind))) {
        auto* label = new QLabel(FromUtf8(control.caption), this);
        label->setBuddy(widget);
        layout->addWidget(label);
        shown.label = label;
      }
      if (control.kind == ControlKind::Label) {
        widget = InScrollerWhenTall(static_cast<QLabel&>(*widget), FromUtf8(PlainCaption(control.caption)), *this);
      }
      layout->addWidget(widget, IsWide(control.kind) ? 1 : 0);
    }
    shown_.push_back(shown);
  }
  outer->addWidget(buttons);
  if (!pads.empty()) {
    for (QAbstractButton* button : buttons->buttons()) button->setFocusPolicy(Qt::TabFocus);
  }
  for (const Shown& shown : shown_) {
    if (const Control* control = form_.Find(shown.id)) RefreshControl(shown, *control);
  }
}

// A key pressed by mouse goes into the line that is typed in, which takes the focus from a list or button.
void FormDialog::GoOnTyping() {
  if (qobject_cast<QLineEdit*>(focusWidget())) return;
  if (auto* entry = findChild<QLineEdit*>()) {
    entry->setFocus(Qt::OtherFocusReason);
    entry->end(false);
  }
}

QWidget* FormDialog::MakeWidget(const Control& control) {
  const std::string id = control.id;
  // What a person does, not what the form itself shows, goes to the form.
  const auto set = [this, id](const std::string& value) {
    if (!refreshing_) form_.Set(id, value);
  };
  switch (control.kind) {
    case ControlKind::Text:
      return MakeEntry(control);
    case ControlKind::Combo: {
      if (IsPlainEntry(control)) return MakeEntry(control);
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
// From the form to the widgets
// ---------------------------------------------------------------------------------------------------------------------

FormDialog::Shown* FormDialog::Find(std::string_view id) {
  for (Shown& shown : shown_) {
    if (EqualNoCase(shown.id, id)) return &shown;
  }
  return nullptr;
}

QWidget* FormDialog::WidgetOf(std::string_view id) const {
  Shown* shown = const_cast<FormDialog*>(this)->Find(id);
  return shown ? shown->widget : nullptr;
}

void FormDialog::FormChanged(std::string_view id) {
  if (!id.empty()) return Refresh(id);
  setWindowTitle(FromUtf8(form_.title));
  if (form_.IsOpen()) FitToContents(*this);
  // Closed by its own logic, perhaps within one of its callbacks: the window goes when that has returned.
  if (!form_.IsOpen()) QTimer::singleShot(0, this, [this] { done(form_.Accepted() ? Accepted : Rejected); });
}

void FormDialog::Refresh(std::string_view id) {
  Shown* shown = Find(id);
  const Control* control = form_.Find(id);
  if (shown && control) RefreshControl(*shown, *control);
}

void FormDialog::RefreshControl(const Shown& shown, const Control& control) {
  const bool before = refreshing_;
  refreshing_ = true;
  switch (shown.kind) {
    case ControlKind::Label:
      static_cast<QLabel*>(shown.widget)->setText(FromUtf8(PlainCaption(control.caption)));
      GrowToText(*this);
      break;
    case ControlKind::Text: {
      auto* edit = static_cast<QLineEdit*>(shown.widget);
      if (edit->text() != FromUtf8(control.value)) edit->setText(FromUtf8(control.value));
      break;
    }
    case ControlKind::Combo: {
      auto* combo = static_cast<QComboBox*>(shown.widget);
      QStringList items;
      for (const std::string& item : control.items) items << FromUtf8(item);
      QStringList shownItems;
      for (int i = 0; i < combo->count(); ++i) shownItems << combo->itemText(i);
      if (items != shownItems) {
        combo->clear();
        combo->addItems(items);
      }
      if (control.index >= 0) {
        combo->setCurrentIndex(control.index);
      } else if (combo->isEditable() && combo->currentText() != FromUtf8(control.value)) {
        combo->setEditText(FromUtf8(control.value));
      }
      break;
    }
    case ControlKind::List: {
      auto* list = static_cast<QListWidget*>(shown.widget);
      bool same = list->count() == static_cast<int>(control.items.size());
      for (int i = 0; same && i < list->count(); ++i) {
        same = list->item(i)->text() == FromUtf8(control.items[static_cast<std::size_t>(i)]);
      }
      if (!same) {
        list->clear();
        for (const std::string& item : control.items) list->addItem(FromUtf8(item));
      }
      list->setCurrentRow(control.index);
      break;
    }
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
    case ControlKind::RichText: {
      auto* output = static_cast<QTextBrowser*>(shown.widget);
      if (const auto text = ReadRtf(control.value)) {
        output->setHtml(FromUtf8(WriteHtml(*text, "")));
      } else {
        output->setPlainText(FromUtf8(control.value));
      }
      output->moveCursor(QTextCursor::End);
      break;
    }
    case ControlKind::Grid: {
      auto* table = static_cast<QTableWidget*>(shown.widget);
      int columns = static_cast<int>(control.items.size());
      for (const auto& row : control.cells) columns = std::max(columns, static_cast<int>(row.size()));
      table->setRowCount(static_cast<int>(control.cells.size()));
      table->setColumnCount(columns);
      QStringList headings;
      for (const std::string& item : control.items) headings << FromUtf8(item);
      if (!headings.isEmpty()) table->setHorizontalHeaderLabels(headings);
      for (int row = 0; row < table->rowCount(); ++row) {
        const auto& cells = control.cells[static_cast<std::size_t>(row)];
        for (int column = 0; column < static_cast<int>(cells.size()); ++column) {
          const QString text = FromUtf8(cells[static_cast<std::size_t>(column)]);
          QTableWidgetItem* item = table->item(row, column);
          if (!item) {
            table->setItem(row, column, item = new QTableWidgetItem);
            if (column < control.readOnlyColumns) item->setFlags(item->flags() & ~Qt::ItemIsEditable);
          }
          if (item->text() != text) item->setText(text);
        }
      }
      ShowReadOnlyColumns(*table, control.readOnlyColumns);
      break;
    }
    case ControlKind::Button:
      static_cast<QPushButton*>(shown.widget)->setText(FromUtf8(control.caption));
      break;
    case ControlKind::Picture:
      break;
  }
  if (auto* label = qobject_cast<QLabel*>(shown.label)) label->setText(FromUtf8(control.caption));
  for (QWidget* widget : {shown.widget, shown.label}) {
    if (!widget) continue;
    widget->setVisible(control.visible);
    widget->setEnabled(control.enabled);
  }
  refreshing_ = before;
}

// ---------------------------------------------------------------------------------------------------------------------
// Window
// ---------------------------------------------------------------------------------------------------------------------

void FormDialog::PlaceOver(QWidget& window, const QWidget* owner) {
  window.adjustSize();
  const QScreen* screen = owner && owner->screen() ? owner->screen() : QGuiApplication::primaryScreen();
  if (!screen) return;
  const QRect area = screen->availableGeometry();
  const QRect over = owner && owner->isVisible() ? QRect(owner->mapToGlobal(QPoint(0, 0)), owner->size()) : area;
  QRect place(QPoint(0, 0), window.size());
  place.moveCenter(over.center());
  place.moveRight(std::min(place.right(), area.right() - ScreenMargin));
  place.moveBottom(std::min(place.bottom(), area.bottom() - ScreenMargin));
  place.moveLeft(std::max(place.left(), area.left()));
  place.moveTop(std::max(place.top(), area.top()));
  window.move(place.topLeft());
}

void FormDialog::showEvent(QShowEvent* event) {
  if (!testAttribute(Qt::WA_Moved)) PlaceOver(*this, parentWidget());
  // The caret stands in the first control that takes input, its text marked.
  for (const Shown& shown : shown_) {
    if (shown.kind == ControlKind::Label || !shown.widget->isVisibleTo(this) || !shown.widget->isEnabled()) continue;
    auto* radio = qobject_cast<QRadioButton*>(shown.widget);
    QAbstractButton* chosen = radio ? radio->group()->checkedButton() : nullptr;
    chosen ? chosen->setFocus() : shown.widget->setFocus();
    if (auto* edit = qobject_cast<QLineEdit*>(shown.widget)) edit->selectAll();
    break;
  }
  QDialog::showEvent(event);
}

void FormDialog::reject() { form_.Close(); }

void FormDialog::closeEvent(QCloseEvent* event) {
  if (form_.IsOpen() && !form_.Close()) {
    event->ignore();
  } else {
    event->accept();
  }
}

void FormDialog::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_F1 && showHelp_) {
    showHelp_(form_.helpContext);
    return;
  }
  QDialog::keyPressEvent(event);
}

bool FormDialog::eventFilter(QObject* watched, QEvent* event) {
  // Only a dialog whose logic listens hears of the focus: anything else would fill a recording with it.
  if (event->type() == QEvent::FocusIn && form_.onFocus && !refreshing_) {
    form_.Focus(watched->objectName().toStdString());
  }
  if (event->type() == QEvent::MouseButtonDblClick && form_.onActivate) {
    form_.Activate(watched->objectName().toStdString());
  }
  return QDialog::eventFilter(watched, event);
}

}  // namespace tellurix
