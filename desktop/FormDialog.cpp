#include "desktop/FormDialog.h"

#include <QButtonGroup>
#include <QCloseEvent>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QScreen>
#include <QTimer>

#include "desktop/FormLayout.h"
#include "desktop/QtText.h"
#include "desktop/WindowPlace.h"
#include "numeric/Text.h"

namespace tellurix {

namespace {

constexpr int ScreenMargin = 7;  // pixels kept free at the right and lower edges

// Other rows and captions: the open window becomes as high as they need, and as wide unless it is wider.
void FitToContents(QWidget& window) {
  if (!window.isVisible()) return;
  QLayout& layout = *window.layout();
  layout.activate();
  const QSize hint = layout.totalSizeHint();
  const int width = std::max(window.width(), hint.width());
  window.resize(width, layout.hasHeightForWidth() ? layout.totalHeightForWidth(width) : hint.height());
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

void FormDialog::Build() {
  FormLayout layout(*this, form_);
  for (const Control& control : form_.Controls()) {
    QWidget* widget = MakeWidget(control);
    widget->setObjectName(FromUtf8(control.id));
    shown_.push_back({control.id, ShownKind(control), widget, layout.Add(control, *widget)});
    const bool isKey = control.kind == ControlKind::Button && !control.group.empty();
    if (isKey) connect(static_cast<QPushButton*>(widget), &QPushButton::clicked, this, &FormDialog::GoOnTyping);
  }
  layout.Finish();
  for (const Shown& shown : shown_) {
    if (const Control* control = form_.Find(shown.id)) RefreshControl(shown, *control);
  }
}

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

// ---------------------------------------------------------------------------------------------------------------------
// Window
// ---------------------------------------------------------------------------------------------------------------------

// A key pressed by mouse goes into the line that is typed in, which takes the focus from a list or button.
void FormDialog::GoOnTyping() {
  if (qobject_cast<QLineEdit*>(focusWidget())) return;
  if (auto* entry = findChild<QLineEdit*>()) {
    entry->setFocus(Qt::OtherFocusReason);
    entry->end(false);
  }
}

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
