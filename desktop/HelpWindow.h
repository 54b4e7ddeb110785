// The help viewer: topics from Help/*.md with contents, back, forward and search.
#pragma once

#include <QMainWindow>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

class QLineEdit;
class QListWidget;
class QTextBrowser;

namespace tellurix {

struct HelpTopic {
  int number = 0;  // 0: none of its own
  std::string title;
  std::string body;  // Markdown
  std::filesystem::path file;
};

// Reads the topics of a folder, by title. A topic begins with "---", lines "topic: N" (several numbers may follow,
// separated by blanks) and "title: ...", and "---".
std::vector<HelpTopic> ReadHelpTopics(const std::filesystem::path& folder, std::map<int, std::size_t>& byNumber);

class HelpWindow : public QMainWindow {
  Q_OBJECT

 public:
  explicit HelpWindow(const std::filesystem::path& folder, QWidget* parent = nullptr);

  // The topic of a help number; the contents where there is none.
  void ShowTopic(int number);
  void ShowContents();
  QString CurrentTitle() const;

 private:
  void Search(const QString& words);
  void ShowPage(std::size_t index);

  std::map<int, std::size_t> byNumber_;  // filled while the topics are read
  std::vector<HelpTopic> topics_;
  QListWidget* list_;
  QLineEdit* search_;
  QTextBrowser* page_;
};

}  // namespace tellurix
