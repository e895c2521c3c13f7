// The remote browser's session thread, and the queues to and from it.
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

/// Public members must be called on the owner's thread.
class SessionThread final : private BrowserEvents {
 public:
  using Operation = std::function<void(RemoteSession&)>;

  explicit SessionThread(const SiteProfile& site);
  /// Ends whatever is in progress and says no goodbye to the server. Waits for that: 2 s where a transfer has
  /// to be ended in order, else no time worth the name.
  ~SessionThread() override;
  SessionThread(const SessionThread&) = delete;
  SessionThread& operator=(const SessionThread&) = delete;

  /// For the members that may be used on any thread.
  RemoteSession& session() { return session_; }

  /// Starts an operation on the session's thread. The previous one must have reported operationEnded.
  void start(Operation operation);

  /// Aborts the current operation, logs out and ends the thread.
  void finish();

  /// Passes all pending events to `receiver`, in order.
  void deliver(BrowserEvents& receiver);

  /// Waits until an event is pending.
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
  void certificateRejected(TlsCertificate certificate) override;
  void tlsOffered() override;
  void unparsedListing(std::string text) override;
  void operationEnded() override;
  void sessionEnded() override;

  void post(Event event);
  void work();
  Operation nextOperation();

  std::mutex mutex_;
  std::condition_variable workAdded_;   // an operation is set, or the session must end
  std::condition_variable eventAdded_;  // events are pending
  std::vector<Event> events_;
  std::optional<Operation> operation_;
  bool finishing_ = false;
  RemoteSession session_;
  std::thread thread_;
};

}  // namespace quillmoor
