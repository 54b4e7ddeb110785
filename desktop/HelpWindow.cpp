#include "desktop/HelpWindow.h"

#include <QAction>
#include <QLineEdit>
#include <QListWidget>
#include <QShortcut>
#include <QSplitter>
#include <QTextBrowser>
#include <QTextDocument>
#include <QToolBar>
#include <QUrl>
#include <QVBoxLayout>
#include <algorithm>
#include <fstream>
#include <iterator>
#include <sstream>

#include "desktop/Icons.h"
#include "numeric/Text.h"

namespace tellurix {

namespace {

namespace fs = std::filesystem;

// Splits the head ("---" to "---") from the body.
bool ReadTopic(const fs::path& file, HelpTopic& topic, std::vector<int>& numbers) {
  std::ifstream in(file, std::ios::binary);
  std::string line;
  if (!std::getline(in, line) || Trim(line) != "---") return false;
  while (std::getline(in, line) && Trim(line) != "---") {
    const auto colon = line.find(':');
    if (colon == std::string::npos) continue;
    const std::string key(Trim(line.substr(0, colon))), value(Trim(line.substr(colon + 1)));
    if (key == "title") topic.title = value;
    if (key == "topic") {
      std::istringstream words(value);
      for (int number = 0; words >> number;) numbers.push_back(number);
    }
  }
  topic.body.assign(std::istreambuf_iterator<char>(in), {});
  topic.file = file;
  return !topic.title.empty();
}

// Serves the topics as pages "topic:FILE", so that back and forward work.
class TopicBrowser : public QTextBrowser {
 public:
  TopicBrowser(const std::vector<HelpTopic>& topics, QWidget* parent) : QTextBrowser(parent), topics_(topics) {}

 protected:
  void doSetSource(const QUrl& url, QTextDocument::ResourceType) override {
    for (const HelpTopic& topic : topics_) {
      if (topic.file.filename().string() != url.fileName().toStdString()) continue;
      document()->setMarkdown(QString::fromStdString(topic.body));
      setDocumentTitle(QString::fromStdString(topic.title));
    }
  }

 private:
  const std::vector<HelpTopic>& topics_;
};

}  // namespace

std::vector<HelpTopic> ReadHelpTopics(const fs::path& folder, std::map<int, std::size_t>& byNumber) {
  struct Read {
    HelpTopic topic;
    std::vector<int> numbers;
  };
  std::vector<Read> read;
  std::error_code error;
  for (const auto& entry : fs::directory_iterator(folder, error)) {
    if (entry.path().extension() != ".md") continue;
    Read one;
    if (ReadTopic(entry.path(), one.topic, one.numbers)) read.push_back(std::move(one));
  }
  std::ranges::sort(read, {}, [](const Read& one) { return FoldCase(one.topic.title); });
  std::vector<HelpTopic> topics;
  for (Read& one : read) {
    for (const int number : one.numbers) byNumber[number] = topics.size();
    if (!one.numbers.empty()) one.topic.number = one.numbers.front();
    topics.push_back(std::move(one.topic));
  }
  return topics;
}

HelpWindow::HelpWindow(const fs::path& folder, QWidget* parent)
    : QMainWindow(parent), topics_(ReadHelpTopics(folder, byNumber_)) {
  setWindowTitle("Tellurix Help");
  setWindowIcon(ThemeIcon("tellurix"));
  connect(new QShortcut(Qt::Key_Escape, this), &QShortcut::activated, this, &QWidget::close);
  resize(900, 640);
  auto* splitter = new QSplitter(this);
  auto* left = new QWidget(splitter);
  auto* column = new QVBoxLayout(left);
  search_ = new QLineEdit(left);
  search_->setPlaceholderText("Search");
  search_->setClearButtonEnabled(true);
  list_ = new QListWidget(left);
  column->addWidget(search_);
  column->addWidget(list_);
  page_ = new TopicBrowser(topics_, splitter);
  page_->setOpenExternalLinks(true);
  splitter->addWidget(left);
  splitter->addWidget(page_);
  splitter->setStretchFactor(1, 3);
  setCentralWidget(splitter);

  auto* bar = addToolBar("Help");
  QAction* back = bar->addAction(ThemeIcon("go-previous"), "Back");
  QAction* forward = bar->addAction(ThemeIcon("go-next"), "Forward");
  back->setEnabled(false);
  forward->setEnabled(false);
  back->setShortcut(QKeySequence::Back);
  forward->setShortcut(QKeySequence::Forward);
  connect(back, &QAction::triggered, page_, &QTextBrowser::backward);
  connect(forward, &QAction::triggered, page_, &QTextBrowser::forward);
  connect(page_, &QTextBrowser::backwardAvailable, back, &QAction::setEnabled);
  connect(page_, &QTextBrowser::forwardAvailable, forward, &QAction::setEnabled);

  connect(search_, &QLineEdit::textChanged, this, &HelpWindow::Search);
  connect(list_, &QListWidget::currentItemChanged, this, [this](QListWidgetItem* item) {
    if (item) ShowPage(item->data(Qt::UserRole).toULongLong());
  });
  Search({});
}

void HelpWindow::Search(const QString& words) {
  const QSignalBlocker quiet(list_);
  list_->clear();
  const auto wanted = Split(FoldCase(words.toStdString()), ' ');
  for (std::size_t i = 0; i < topics_.size(); ++i) {
    const std::string text = FoldCase(topics_[i].title + "\n" + topics_[i].body);
    const bool holds =
        std::ranges::all_of(wanted, [&](const auto& word) { return text.find(word) != std::string::npos; });
    if (!holds) continue;
    auto* item = new QListWidgetItem(QString::fromStdString(topics_[i].title), list_);
    item->setData(Qt::UserRole, static_cast<qulonglong>(i));
  }
}

void HelpWindow::ShowPage(std::size_t index) {
  page_->setSource(QUrl("topic:/" + QString::fromStdString(topics_[index].file.filename().string())));
}

void HelpWindow::ShowTopic(int number) {
  const auto known = byNumber_.find(number);
  if (known == byNumber_.end()) return ShowContents();
  ShowPage(known->second);
  show();
  raise();
  activateWindow();
}

void HelpWindow::ShowContents() {
  search_->clear();
  const auto contents = std::ranges::find(topics_, std::string("contents.md"),
                                          [](const HelpTopic& topic) { return topic.file.filename().string(); });
  if (contents != topics_.end()) ShowPage(static_cast<std::size_t>(contents - topics_.begin()));
  show();
  raise();
  activateWindow();
}

QString HelpWindow::CurrentTitle() const { return page_->documentTitle(); }

}  // namespace tellurix
