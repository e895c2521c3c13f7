// Dial-up connections through the remote-access functions of Windows.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/network/RemoteAccess.h"
#include "platform/network/windows/RasLibrary.h"

namespace quillmoor {

/// The system reports the progress of a dial on a thread of its own. The reports go into a mailbox that
/// takeStates empties; a report that arrives after its dial has ended finds no mailbox and is dropped.
class RasRemoteAccess final : public RemoteAccess {
 public:
  RasRemoteAccess(const RasLibrary& library, Pump pump);
  ~RasRemoteAccess() override;

  std::vector<std::string> entries() override;
  void dial(const std::string& entry) override;
  void close() override;
  std::vector<std::int32_t> takeStates() override;
  std::vector<ActiveConnection> activeConnections() override;
  std::int32_t stateOf(const ActiveConnection& connection) override;
  std::uint32_t hangUp(const ActiveConnection& connection) override;

 private:
  class Mailbox;

  std::int32_t stateOf(HRASCONN connection) const;
  std::uint32_t hangUpAndWait(HRASCONN connection);
  void waitUntilGone(HRASCONN connection);

  const RasLibrary& library_;
  Pump pump_;
  std::unique_ptr<Mailbox> mailbox_;  // of the dial in progress or the resulting connection
  HRASCONN connection_ = nullptr;
  bool connected_ = false;
  bool closing_ = false;
  std::int64_t closingSince_ = 0;  // ms, TickCountMs
};

}  // namespace quillmoor
