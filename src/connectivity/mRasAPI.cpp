#include "connectivity/mRasAPI.h"

#include <optional>

namespace quillmoor::mRasAPI {
namespace {

std::optional<ActiveConnection> firstIfUp(RemoteAccess& system) {
  const auto connections = system.activeConnections();
  if (connections.empty() || system.stateOf(connections.front()) != kDialUpConnected) return std::nullopt;
  return connections.front();
}

}  // namespace

bool IsDialUpConnected(RemoteAccess& system) {
  return firstIfUp(system).has_value();
}

bool HangUpDialUp(RemoteAccess& system) {
  const auto connection = firstIfUp(system);
  return connection && system.hangUp(*connection) != 0;
}

}  // namespace quillmoor::mRasAPI
