// Connections that are dialled: the system's phonebook, dialling from it, and what is up already.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "base/Pump.h"

namespace quillmoor {

/// The two state numbers (RASCONNSTATE of Windows) that decide something; the others are only shown.
inline constexpr std::int32_t kDialUpConnected = 8192;
inline constexpr std::int32_t kDialUpDisconnected = 8193;
/// No RASCONNSTATE, but why a dial is about to be disconnected.
inline constexpr std::int32_t kDialUpPasswordExpired = 20648;

/// A connection that is up or coming up, whoever made it.
struct ActiveConnection {
  std::uint64_t handle = 0;  // the system's, for as long as the connection lives
  std::string entryName;
  std::string deviceType;
  std::string deviceName;
  std::string phonebook;
};

/// What the system offers. All on one thread: what comes in on others waits until it is asked for. Where an
/// answer takes longer than a moment the pump is called meanwhile; what is called from inside it gets the
/// answer that was known before.
class RemoteAccess {
 public:
  /// Ends a dial in progress; a connection that is up stays.
  virtual ~RemoteAccess() = default;

  /// Names of the entries of the phonebook, each once.
  virtual std::vector<std::string> entries() = 0;

  /// Starts to dial and returns; one connection at a time. Raises std::runtime_error when there is no such
  /// entry or it could not be started.
  virtual void dial(const std::string& entry) = 0;

  /// Begins to end what `dial` has begun, in whatever state it is.
  virtual void close() = 0;

  /// The states that what `dial` has begun went through since this was last asked, oldest first.
  /// kDialUpDisconnected comes once, as the last: closed, failed, or the line has dropped.
  virtual std::vector<std::int32_t> takeStates() = 0;

  virtual std::vector<ActiveConnection> activeConnections() = 0;
  /// kDialUpDisconnected when it is gone.
  virtual std::int32_t stateOf(const ActiveConnection& connection) = 0;
  /// Ends it and waits a few seconds until it is down. The system's error number, 0 when it went well.
  virtual std::uint32_t hangUp(const ActiveConnection& connection) = 0;
};

/// This machine's: the remote-access functions of Windows (rasapi32.dll), NetworkManager on Linux. On a
/// machine without them there are no entries and no connections. Asks nothing of the system until it is used.
/// Without a pump nobody waits to learn of a connection or an entry: what is not known yet is told of when it
/// is asked for again, and an entry that turns out not to be there may end its dial instead of being refused.
std::unique_ptr<RemoteAccess> MakeRemoteAccess(Pump pump);

}  // namespace quillmoor
