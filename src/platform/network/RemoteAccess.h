// Dial-up connections: the system's phonebook, dialling, and the active connections.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "base/Pump.h"

namespace quillmoor {

/// The two states (RASCONNSTATE of Windows) with a meaning here; the others are only shown.
inline constexpr std::int32_t kDialUpConnected = 8192;
inline constexpr std::int32_t kDialUpDisconnected = 8193;
/// Not a RASCONNSTATE: the reason why a dial is about to be disconnected.
inline constexpr std::int32_t kDialUpPasswordExpired = 20648;

/// A connection that is up or being established, by any program.
struct ActiveConnection {
  std::uint64_t handle = 0;  // the system's; valid while the connection exists
  std::string entryName;
  std::string deviceType;
  std::string deviceName;
  std::string phonebook;
};

/// The system's remote access. Single-threaded: reports from other threads are kept until they are fetched.
/// The pump is called during longer waits; a call from inside it returns the previous answer.
class RemoteAccess {
 public:
  /// Cancels a dial in progress; an established connection stays.
  virtual ~RemoteAccess() = default;

  /// Names of the phonebook's entries, without duplicates.
  virtual std::vector<std::string> entries() = 0;

  /// Starts dialling and returns; one connection at a time. Raises std::runtime_error when the entry does not
  /// exist or dialling cannot be started.
  virtual void dial(const std::string& entry) = 0;

  /// Starts to end what `dial` has started, in any state.
  virtual void close() = 0;

  /// The states of the dialled connection since the last call, oldest first. kDialUpDisconnected comes once,
  /// as the last: closed, failed, or the line has dropped.
  virtual std::vector<std::int32_t> takeStates() = 0;

  virtual std::vector<ActiveConnection> activeConnections() = 0;
  /// kDialUpDisconnected when the connection is gone.
  virtual std::int32_t stateOf(const ActiveConnection& connection) = 0;
  /// Ends the connection and waits a few seconds until it is down. Returns the system's error code, 0 for
  /// success.
  virtual std::uint32_t hangUp(const ActiveConnection& connection) = 0;
};

/// This machine's remote access: rasapi32.dll on Windows, NetworkManager on Linux. Without these there are no
/// entries and no connections. Does not call the system before it is used. Without a pump nothing waits for
/// an answer from the system: changes are returned by a later call, and dialling a missing entry may end in
/// kDialUpDisconnected instead of being refused.
std::unique_ptr<RemoteAccess> MakeRemoteAccess(Pump pump);

}  // namespace quillmoor
