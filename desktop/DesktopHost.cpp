#include "desktop/DesktopHost.h"

#include <QApplication>
#include <QClipboard>
#include <QFileDialog>
#include <QGridLayout>
#include <QMessageBox>
#include <QProcess>
#include <QPushButton>
#include <QRegularExpression>
#include <algorithm>

#include "desktop/FormDialog.h"
#include "desktop/ProgressDialog.h"
#include "desktop/QtText.h"
#include "desktop/SelectionBar.h"
#include "desktop/WindowPlace.h"
#include "host/Form.h"
#include "numeric/Text.h"
#include "session/SessionSettings.h"

namespace tellurix {

namespace {

constexpr const char* ApplicationTitle = "Tellurix";

QMessageBox::StandardButtons ButtonsOf(const Message& message) {
  QMessageBox::StandardButtons buttons;
  for (const auto& [reply, button] : {std::pair{Reply::Ok, QMessageBox::Ok},
                                      {Reply::Yes, QMessageBox::Yes},
                                      {Reply::No, QMessageBox::No},
                                      {Reply::Cancel, QMessageBox::Cancel}}) {
    if (message.Offers(reply)) buttons |= button;
  }
  return buttons;
}

QMessageBox::Icon IconOf(const Message& message) {
  switch (message.style & (ErrorIcon | QuestionIcon | InformationIcon)) {
    case ErrorIcon:
      return QMessageBox::Critical;
    case QuestionIcon:
      return QMessageBox::Question;
    case WarningIcon:
      return QMessageBox::Warning;
    case InformationIcon:
      return QMessageBox::Information;
    default:
      return QMessageBox::NoIcon;
  }
}

QString FilterOf(const QString& caption, const std::string& patterns) {
  return QString("%1 (%2)").arg(caption, FromUtf8(ReplaceAll(patterns, ";", " ")));
}

// "Caption|*.a;*.b|Caption|*.c" as the file dialog takes it, which shows the captions and keeps the patterns to itself.
QStringList FiltersOf(const std::string& filter) {
  const auto parts = Split(filter, '|');
  QStringList filters;
  for (std::size_t i = 0; i + 1 < parts.size(); i += 2) {
    filters << FilterOf(FromUtf8(parts[i]), parts[i + 1]);
  }
  return filters;
}

// Of a filter with one pattern, "*.a" or "*a"; else nothing.
QString ExtensionOf(const QString& filter) {
  static const QRegularExpression one("\\(\\*\\.?(\\w+)\\)$");
  return one.match(filter).captured(1);
}

// A box takes its size from what it holds, whatever its least size.
void WidenForTitle(QMessageBox& box) {
  if (auto* grid = qobject_cast<QGridLayout*>(box.layout())) {
    grid->addItem(new QSpacerItem(WidthForTitle(box), 0), grid->rowCount(), 0, 1, grid->columnCount());
  }
}

bool HasPlace(const Form& form) { return std::ranges::find(PlacedForms(), form.Name()) != PlacedForms().end(); }

}  // namespace

struct DesktopHost::Modeless {
  std::shared_ptr<Form> form;
  std::unique_ptr<FormDialog> dialog;
};

DesktopHost::DesktopHost(QWidget& owner, SelectionBar& bar, std::function<void(bool)> setCommandsEnabled,
                         std::function<void(std::string_view)> setStatus, std::function<void(int)> showHelp,
                         Settings& settings)
    : owner_(owner),
      bar_(bar),
      setCommandsEnabled_(std::move(setCommandsEnabled)),
      setStatus_(std::move(setStatus)),
      showHelp_(std::move(showHelp)),
      settings_(settings) {}

DesktopHost::~DesktopHost() { SetBusy(false); }

void DesktopHost::HideProgress() {
  if (progress_) progress_->hide();
}

QWidget* DesktopHost::Front() const {
  QWidget* active = QApplication::activeModalWidget();
  if (active) return active;
  const auto isActive = [](const Modeless& shown) { return shown.dialog->isActiveWindow(); };
  const auto modeless = std::ranges::find_if(modeless_, isActive);
  if (modeless != modeless_.end()) return modeless->dialog.get();
  return owner_.isVisible() ? &owner_ : nullptr;
}

Reply DesktopHost::ShowMessage(const Message& message) {
  HideProgress();
  QMessageBox box(Front());
  box.setWindowTitle(message.title.empty() ? ApplicationTitle : FromUtf8(message.title));
  box.setText(FromUtf8(message.text));
  box.setTextFormat(Qt::PlainText);
  box.setIcon(IconOf(message));
  box.setStandardButtons(ButtonsOf(message));
  if (message.Offers(Reply::Cancel)) box.setEscapeButton(QMessageBox::Cancel);
  if (message.style & HelpButton) {
    QPushButton* help = box.addButton(QMessageBox::Help);
    // Help does not answer the box.
    help->disconnect();
    QObject::connect(help, &QPushButton::clicked, &box, [this, &message] { showHelp_(message.helpContext); });
  }
  WidenForTitle(box);
  switch (box.exec()) {
    case QMessageBox::Ok:
      return Reply::Ok;
    case QMessageBox::Yes:
      return Reply::Yes;
    case QMessageBox::No:
      return Reply::No;
    // Closed by the window's own means.
    default:
      return message.Offers(Reply::Cancel) ? Reply::Cancel : message.Offers(Reply::No) ? Reply::No : Reply::Ok;
  }
}

bool DesktopHost::RunForm(Form& form) {
  HideProgress();
  form.Open();
  FormDialog dialog(form, Front(), showHelp_);
  KeepPlace(dialog, form);
  dialog.exec();
  if (form.IsOpen()) form.Finish(false);
  return form.Accepted();
}

void DesktopHost::ShowForm(std::shared_ptr<Form> form) {
  std::erase_if(modeless_, [](const Modeless& shown) { return !shown.form->IsOpen(); });
  for (const Modeless& shown : modeless_) {
    if (shown.form == form) {
      shown.dialog->raise();
      shown.dialog->activateWindow();
      return;
    }
  }
  form->Open();
  auto dialog = std::make_unique<FormDialog>(*form, &owner_, showHelp_);
  KeepPlace(*dialog, *form);
  dialog->show();
  modeless_.push_back({std::move(form), std::move(dialog)});
}

// Some forms come back where they were.
void DesktopHost::KeepPlace(FormDialog& dialog, const Form& form) {
  if (!HasPlace(form)) return;
  LoadFormPlace(dialog, settings_, form.Name());
  QObject::connect(&dialog, &QDialog::finished, &dialog, [this, &dialog, &form] { SavePlace(dialog, form); });
}

void DesktopHost::SavePlace(const FormDialog& dialog, const Form& form) {
  if (HasPlace(form)) SaveFormPlace(dialog, settings_, form.Name());
}

bool DesktopHost::CloseForms() {
  while (!modeless_.empty()) {
    QCoreApplication::processEvents();
    Modeless& last = modeless_.back();
    if (last.form->IsOpen()) SavePlace(*last.dialog, *last.form);
    if (!last.form->Close()) return false;
    modeless_.pop_back();
  }
  return true;
}

SelectionReply DesktopHost::WaitForSelection(const SelectionRequest& request) { return bar_.Wait(request); }

std::optional<FileChoice> DesktopHost::ChooseFile(const FileRequest& request) {
  QStringList filters = FiltersOf(request.filter);
  const bool hasPattern = !request.pattern.empty();  // all the files that are meant come first
  if (hasPattern) filters.prepend(FilterOf("All these files", request.pattern));
  HideProgress();
  QFileDialog dialog(Front(), FromUtf8(request.title), FromUtf8(request.suggestedName));
  dialog.setOption(QFileDialog::HideNameFilterDetails);
  dialog.setNameFilters(filters);
  if (request.filterIndex > 0 && request.filterIndex < filters.size()) {
    dialog.selectNameFilter(filters[request.filterIndex]);
  }
  dialog.setAcceptMode(request.save ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
  dialog.setFileMode(QFileDialog::AnyFile);  // what is not there is told of in our own words
  dialog.setDefaultSuffix(FromUtf8(request.defaultExtension));
  if (dataFolder && !std::filesystem::path(request.suggestedName).is_absolute()) {
    dialog.setDirectory(FromUtf8(dataFolder().string()));
  }
  // A name without an extension gets that of the filter.
  const auto takeSuffix = [&] {
    const QString extension = ExtensionOf(dialog.selectedNameFilter());
    if (!extension.isEmpty()) dialog.setDefaultSuffix(extension);
  };
  if (request.save) takeSuffix();
  if (request.save) QObject::connect(&dialog, &QFileDialog::filterSelected, &dialog, takeSuffix);
  if (!request.suggestedName.empty()) dialog.selectFile(FromUtf8(request.suggestedName));
  if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return std::nullopt;
  const auto filter = static_cast<int>(filters.indexOf(dialog.selectedNameFilter())) - (hasPattern ? 1 : 0);
  return FileChoice{dialog.selectedFiles().front().toStdString(), filter};
}

bool DesktopHost::ShowProgress(const Progress& progress) {
  if (!progress_) progress_ = std::make_unique<ProgressDialog>(&owner_);
  return progress_->Show(progress);
}

void DesktopHost::SetBusy(bool busy) {
  if (busy == busy_) return;
  busy_ = busy;
  if (busy) {
    QApplication::setOverrideCursor(Qt::WaitCursor);
  } else {
    QApplication::restoreOverrideCursor();
  }
}

void DesktopHost::Beep() { QApplication::beep(); }

void DesktopHost::SetClipboard(std::string_view text) { QApplication::clipboard()->setText(FromUtf8(text)); }

std::string DesktopHost::Clipboard() { return QApplication::clipboard()->text().toStdString(); }

bool DesktopHost::RunProgram(std::string_view commandLine) {
  QStringList words = QProcess::splitCommand(FromUtf8(commandLine));
  if (words.isEmpty()) return false;
  const QString program = words.takeFirst();
  return QProcess::startDetached(program, words);
}

}  // namespace tellurix
