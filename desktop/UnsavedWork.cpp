#include "desktop/UnsavedWork.h"

#include <fcntl.h>
#include <unistd.h>

#include <QSocketNotifier>
#include <csignal>

namespace tellurix {

namespace {

constexpr int Signals[] = {SIGTERM, SIGHUP, SIGINT};

// A signal's handler may do no more than write into a pipe; the event loop reads the number there.
int signalPipe[2] = {-1, -1};

void PassOn(int number) {
  const char byte = static_cast<char>(number);
  [[maybe_unused]] const auto written = ::write(signalPipe[1], &byte, 1);
}

}  // namespace

UnsavedWork::UnsavedWork(Recovery& recovery, OpenDocuments& documents, std::function<void()> commit,
                         std::function<void(const std::string&)> tell, int seconds)
    : recovery_(recovery), documents_(documents), commit_(std::move(commit)), tell_(std::move(tell)) {
  connect(&timer_, &QTimer::timeout, this, &UnsavedWork::KeepInBackground);
  timer_.start(seconds * 1000);
}

void UnsavedWork::KeepInBackground() {
  std::string problem;
  commit_();
  if (!recovery_.KeepInBackground(documents_, problem)) tell_("Unsaved work could not be kept. " + problem);
}

void UnsavedWork::WatchSignals(std::function<void()> last) {
  last_ = std::move(last);
  if (::pipe2(signalPipe, O_CLOEXEC | O_NONBLOCK) != 0) return;
  auto* notifier = new QSocketNotifier(signalPipe[0], QSocketNotifier::Read, this);
  connect(notifier, &QSocketNotifier::activated, this, &UnsavedWork::EndBySignal);
  struct sigaction action {};
  action.sa_handler = PassOn;
  action.sa_flags = SA_RESTART;
  for (const int number : Signals) ::sigaction(number, &action, nullptr);
}

void UnsavedWork::EndBySignal() {
  char number = 0;
  if (::read(signalPipe[0], &number, 1) != 1) return;
  std::string ignored;
  commit_();
  recovery_.Keep(documents_, ignored);
  last_();
  // Whoever sent the signal sees that the program ended by it.
  std::signal(number, SIG_DFL);
  std::raise(number);
}

}  // namespace tellurix
