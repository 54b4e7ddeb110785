// The link topic `TellurixDDE`: a local socket in the user's runtime folder through which a second start, or another
// program, hands a file over.
#pragma once

#include <QLocalServer>
#include <QObject>
#include <functional>

namespace tellurix {

class LinkServer : public QObject {
  Q_OBJECT

 public:
  static constexpr const char* Topic = "TellurixDDE";

  // Passes a command to the instance that serves the socket; false when none does. `path` empty: the usual place.
  static bool Send(const QString& command, const QString& path = {});

  // Listens; every line that comes in is given to `execute`. False when the socket cannot be had.
  bool Listen(std::function<void(const QString&)> execute, const QString& path = {});

 private:
  QLocalServer server_;
  std::function<void(const QString&)> execute_;
};

}  // namespace tellurix
