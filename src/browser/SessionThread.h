// The thread on which the remote browser's session works, and the way there and back.
#pragma once

#include <condition_variable>
#include <cstddef>
#include <functional>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "browser/BrowserEvents.h"
#include "browser/RemoteSession.h"

namespace quillmoor {

/// Members but the private ones are called by the thread that owns this.
class SessionThread final : private BrowserEvents {
 public:
  using Operation = std::function<void(RemoteSession&)>;

  explicit SessionThread(const BrowsedSite& site);
  /// Ends whatever is in progress and says no goodbye to the server. Waits for that: 2 s where a transfer has
  /// to be ended in order, else no time worth the name.
  ~SessionThread() override;
  SessionThread(const SessionThread&) = delete;
  SessionThread& operator=(const SessionThread&) = delete;

  /// What may be set on any thread.
  RemoteSession& session() { return session_; }

  /// Has the session perform it. One at a time: the one before must have told its end.
  void start(Operation operation);

  /// Ends the operation in progress, logs out and ends.
  void finish();

  /// Passes the events that have come since to `receiver`, in their order.
  void deliver(BrowserEvents& receiver);

  /// Waits until there are events to deliver.
  void waitForEvents();

 private:
  using Event = std::function<void(BrowserEvents&)>;

  // BrowserEvents, on the session's thread
  void logLine(std::string text) override;
  void clearRows() override;
  void addRows(std::vector<BrowserRow> rows) override;
  void linkTestsBegun() override;
  void linkLeadsToFolder(std::size_t row) override;
  void folderChanged(std::string path) override;
  void loginChanged(bool loggedIn) override;
  void unparsedListing(std::string text) override;
  void operationEnded() override;
  void sessionEnded() override;

  void note(Event event);
  void work();
  Operation nextOperation();

  std::mutex mutex_;
  std::condition_variable wanted_;  // there is something for the session to do
  std::condition_variable come_;    // there are events
  std::vector<Event> events_;
  std::optional<Operation> operation_;
  bool finishing_ = false;
  RemoteSession session_;
  std::thread thread_;
};

}  // namespace quillmoor
