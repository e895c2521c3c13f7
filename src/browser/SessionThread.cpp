#include "browser/SessionThread.h"

#include <exception>
#include <utility>

namespace quillmoor {

SessionThread::SessionThread(const BrowsedSite& site) : session_(site, *this), thread_([this] { work(); }) {}

SessionThread::~SessionThread() {
  session_.kill();
  finish();
  thread_.join();
}

void SessionThread::start(Operation operation) {
  {
    const std::lock_guard lock(mutex_);
    operation_ = std::move(operation);
  }
  wanted_.notify_one();
}

void SessionThread::finish() {
  session_.stop();
  {
    const std::lock_guard lock(mutex_);
    finishing_ = true;
  }
  wanted_.notify_one();
}

/// Nothing when the session is to end.
SessionThread::Operation SessionThread::nextOperation() {
  std::unique_lock lock(mutex_);
  wanted_.wait(lock, [&] { return operation_ || finishing_; });
  if (finishing_) return {};
  return *std::exchange(operation_, std::nullopt);
}

void SessionThread::work() {
  while (const Operation operation = nextOperation()) {
    try {
      operation(session_);
    } catch (const std::exception& error) {
      logLine(std::string("Error: ") + error.what() + "\r\n");
    }
    operationEnded();
  }
  session_.logOut();
  sessionEnded();
}

void SessionThread::note(Event event) {
  {
    const std::lock_guard lock(mutex_);
    events_.push_back(std::move(event));
  }
  come_.notify_one();
}

void SessionThread::deliver(BrowserEvents& receiver) {
  std::vector<Event> events;
  {
    const std::lock_guard lock(mutex_);
    events.swap(events_);
  }
  for (const Event& event : events) event(receiver);
}

void SessionThread::waitForEvents() {
  std::unique_lock lock(mutex_);
  come_.wait(lock, [&] { return !events_.empty(); });
}

void SessionThread::logLine(std::string text) {
  note([text = std::move(text)](BrowserEvents& to) { to.logLine(text); });
}
void SessionThread::clearRows() {
  note([](BrowserEvents& to) { to.clearRows(); });
}
void SessionThread::addRows(std::vector<BrowserRow> rows) {
  note([rows = std::move(rows)](BrowserEvents& to) mutable { to.addRows(std::move(rows)); });
}
void SessionThread::linkTestsBegun() {
  note([](BrowserEvents& to) { to.linkTestsBegun(); });
}
void SessionThread::linkLeadsToFolder(std::size_t row) {
  note([row](BrowserEvents& to) { to.linkLeadsToFolder(row); });
}
void SessionThread::folderChanged(std::string path) {
  note([path = std::move(path)](BrowserEvents& to) { to.folderChanged(path); });
}
void SessionThread::loginChanged(bool loggedIn) {
  note([loggedIn](BrowserEvents& to) { to.loginChanged(loggedIn); });
}
void SessionThread::unparsedListing(std::string text) {
  note([text = std::move(text)](BrowserEvents& to) { to.unparsedListing(text); });
}
void SessionThread::operationEnded() {
  note([](BrowserEvents& to) { to.operationEnded(); });
}
void SessionThread::sessionEnded() {
  note([](BrowserEvents& to) { to.sessionEnded(); });
}

}  // namespace quillmoor
