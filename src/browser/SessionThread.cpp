#include "browser/SessionThread.h"

#include <exception>
#include <utility>

namespace quillmoor {

SessionThread::SessionThread(const SiteProfile& site) : session_(site, *this), thread_([this] { work(); }) {}

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
  workAdded_.notify_one();
}

void SessionThread::finish() {
  session_.stop();
  {
    const std::lock_guard lock(mutex_);
    finishing_ = true;
  }
  workAdded_.notify_one();
}

/// Empty when the session must end.
SessionThread::Operation SessionThread::nextOperation() {
  std::unique_lock lock(mutex_);
  workAdded_.wait(lock, [&] { return operation_ || finishing_; });
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

void SessionThread::post(Event event) {
  {
    const std::lock_guard lock(mutex_);
    events_.push_back(std::move(event));
  }
  eventAdded_.notify_one();
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
  eventAdded_.wait(lock, [&] { return !events_.empty(); });
}

void SessionThread::logLine(std::string text) {
  post([text = std::move(text)](BrowserEvents& to) { to.logLine(text); });
}
void SessionThread::clearRows() {
  post([](BrowserEvents& to) { to.clearRows(); });
}
void SessionThread::addRows(std::vector<BrowserRow> rows) {
  post([rows = std::move(rows)](BrowserEvents& to) mutable { to.addRows(std::move(rows)); });
}
void SessionThread::linkTestsBegun() {
  post([](BrowserEvents& to) { to.linkTestsBegun(); });
}
void SessionThread::linkLeadsToFolder(std::size_t row) {
  post([row](BrowserEvents& to) { to.linkLeadsToFolder(row); });
}
void SessionThread::folderChanged(std::string path) {
  post([path = std::move(path)](BrowserEvents& to) { to.folderChanged(path); });
}
void SessionThread::loginChanged(bool loggedIn) {
  post([loggedIn](BrowserEvents& to) { to.loginChanged(loggedIn); });
}
void SessionThread::certificateRejected(TlsCertificate certificate) {
  post([certificate = std::move(certificate)](BrowserEvents& to) { to.certificateRejected(certificate); });
}
void SessionThread::tlsOffered() {
  post([](BrowserEvents& to) { to.tlsOffered(); });
}
void SessionThread::unparsedListing(std::string text) {
  post([text = std::move(text)](BrowserEvents& to) { to.unparsedListing(text); });
}
void SessionThread::operationEnded() {
  post([](BrowserEvents& to) { to.operationEnded(); });
}
void SessionThread::sessionEnded() {
  post([](BrowserEvents& to) { to.sessionEnded(); });
}

}  // namespace quillmoor
