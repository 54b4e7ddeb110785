// Keeps copies of unsaved documents while the desktop runs: every two minutes, and when the system ends the program.
#pragma once

#include <QObject>
#include <QTimer>
#include <functional>

#include "shell/Recovery.h"

class QSocketNotifier;

namespace tellurix {

class UnsavedWork : public QObject {
  Q_OBJECT

 public:
  static constexpr int Period = 120;  // seconds

  // `commit` brings the documents up to what their windows show; `tell` is told what goes wrong.
  UnsavedWork(Recovery& recovery, OpenDocuments& documents, std::function<void()> commit,
              std::function<void(const std::string&)> tell, int seconds = Period);

  // From now on SIGTERM, SIGHUP and SIGINT keep the copies, call `last`, and end the program. For one object at a time.
  void WatchSignals(std::function<void()> last);

 private:
  void KeepInBackground();
  void EndBySignal();

  Recovery& recovery_;
  OpenDocuments& documents_;
  std::function<void()> commit_;
  std::function<void(const std::string&)> tell_;
  std::function<void()> last_;
  QTimer timer_;
};

}  // namespace tellurix
