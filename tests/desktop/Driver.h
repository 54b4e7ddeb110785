// Drives the windows with real mouse and key events. Commands and dialogs run event loops of their own inside the click
// that started them, so a road is a list of steps; each is taken as soon as what it waits for is there.
#pragma once

#include <gtest/gtest.h>

#include <QAction>
#include <QApplication>
#include <QDir>
#include <QMenu>
#include <QMenuBar>
#include <QMouseEvent>
#include <QTest>
#include <QTimer>
#include <functional>
#include <string>
#include <vector>

namespace tellurix {

class Driver : public QObject {
 public:
  using Ready = std::function<bool()>;
  using Act = std::function<void()>;

  // Takes a step once `ready` holds.
  void Step(std::string name, Ready ready, Act act) {
    steps_.push_back({std::move(name), std::move(ready), std::move(act)});
  }

  // Takes all steps; a failure names the one that could not be taken within `seconds`.
  void Drive(int seconds = 20) {
    Schedule();
    QElapsedTimer clock;
    clock.start();
    while (next_ < steps_.size() && clock.elapsed() < 1000LL * seconds) QTest::qWait(20);
    if (next_ < steps_.size()) ADD_FAILURE() << "not reached: " << steps_[next_].name;
    QTest::qWait(60);  // the loops inside the last step end
  }

  // A picture of a window, kept where TELLURIX_PICTURES says, for looking at.
  static void Picture(QWidget* window, const char* name) {
    const QString folder = qEnvironmentVariable("TELLURIX_PICTURES");
    if (folder.isEmpty() || !window) return;
    QDir().mkpath(folder);
    window->grab().save(folder + "/" + name + ".png");
  }

  // Clicks through the menus by the names of their entries, without access keys.
  static void ClickMenu(QMenuBar* bar, const std::vector<QString>& path) {
    QAction* head = Find(bar->actions(), path.front());
    ASSERT_NE(head, nullptr) << path.front().toStdString();
    QTest::mouseClick(bar, Qt::LeftButton, {}, bar->actionGeometry(head).center());
    QMenu* menu = head->menu();
    for (std::size_t i = 1; i < path.size(); ++i) {
      QAction* entry = Find(menu->actions(), path[i]);
      ASSERT_NE(entry, nullptr) << path[i].toStdString();
      ASSERT_TRUE(entry->isEnabled()) << path[i].toStdString();
      menu->setActiveAction(entry);  // opens a submenu
      QTest::mouseClick(menu, Qt::LeftButton, {}, menu->actionGeometry(entry).center());
      if (entry->menu()) menu = entry->menu();
    }
  }

  // Presses, moves and releases, as a hand does.
  static void Drag(QWidget* widget, QPoint from, QPoint to, Qt::KeyboardModifiers keys = {}) {
    QTest::mousePress(widget, Qt::LeftButton, keys, from);
    for (int i = 1; i <= 4; ++i) {
      const QPoint at = from + (to - from) * i / 4;
      QMouseEvent move(QEvent::MouseMove, at, widget->mapToGlobal(at), Qt::NoButton, Qt::LeftButton, keys);
      QApplication::sendEvent(widget, &move);
    }
    QTest::mouseRelease(widget, Qt::LeftButton, keys, to);
  }

 private:
  struct OneStep {
    std::string name;
    Ready ready;
    Act act;
  };

  static QAction* Find(const QList<QAction*>& actions, const QString& name) {
    for (QAction* action : actions) {
      QString text = action->text();
      text.replace("&&", "\x01").remove('&').replace("\x01", "&");
      if (text == name) return action;
    }
    return nullptr;
  }

  // A timer does not fire within its own call: each look is a timer of its own.
  void Schedule() {
    QTimer::singleShot(20, this, [this] { TakeNext(); });
  }

  void TakeNext() {
    if (next_ >= steps_.size()) return;
    Schedule();
    if (!steps_[next_].ready()) return;
    const std::size_t step = next_++;
    steps_[step].act();
  }

  std::vector<OneStep> steps_;
  std::size_t next_ = 0;
};

}  // namespace tellurix
