// The events that the browser's session reports while it works.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "browser/BrowserRow.h"
#include "engine/CertificateText.h"

namespace quillmoor {

class BrowserEvents {
 public:
  virtual ~BrowserEvents() = default;

  /// Text for `txtLog`, including its line break.
  virtual void logLine(std::string text) = 0;
  virtual void clearRows() = 0;
  virtual void addRows(std::vector<BrowserRow> rows) = 0;
  /// All rows have been added and the operation now tests links. Not reported when there are none.
  virtual void linkTestsBegun() = 0;
  /// A link turned out to lead to a folder. `row` counts from the last clearRows.
  virtual void linkLeadsToFolder(std::size_t row) = 0;
  /// The new current remote folder, as the server reports it.
  virtual void folderChanged(std::string path) = 0;
  virtual void loginChanged(bool loggedIn) = 0;
  /// The login was refused because of the server's certificate, and is not tried again.
  virtual void certificateRejected(TlsCertificate certificate) = 0;
  /// The session, which is not encrypted, could be. Once a login.
  virtual void tlsOffered() = 0;
  /// A listing that is neither UNIX nor DOS style.
  virtual void unparsedListing(std::string text) = 0;

  /// The current operation has ended.
  virtual void operationEnded() = 0;
  /// The connection is closed; the last event.
  virtual void sessionEnded() = 0;
};

}  // namespace quillmoor
