// A system with a phonebook that does what a test says.
#pragma once

#include <map>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "platform/network/RemoteAccess.h"

namespace quillmoor {

class ScriptedRemoteAccess final : public RemoteAccess {
 public:
  std::vector<std::string> phonebook = {"Office", "Home"};
  std::vector<std::string> calls;
  std::vector<std::int32_t> states;  // what takeStates gives next
  /// By handle, in the order of the map; each with its state.
  std::map<std::uint64_t, std::int32_t> connections;
  std::uint32_t hangUpError = 0;
  Pump pump;  // called by dial

  std::vector<std::string> entries() override { return phonebook; }
  void dial(const std::string& entry) override {
    if (pump) pump();
    calls.push_back("dial " + entry);
    for (const auto& known : phonebook) {
      if (known == entry) return;
    }
    throw std::runtime_error("no such entry");
  }
  void close() override { calls.push_back("close"); }
  std::vector<std::int32_t> takeStates() override { return std::exchange(states, {}); }
  std::vector<ActiveConnection> activeConnections() override {
    std::vector<ActiveConnection> active;
    for (const auto& [handle, state] : connections) active.push_back({handle, "", "", "", ""});
    return active;
  }
  std::int32_t stateOf(const ActiveConnection& connection) override {
    return connections.at(connection.handle);
  }
  std::uint32_t hangUp(const ActiveConnection& connection) override {
    calls.push_back("hang up " + std::to_string(connection.handle));
    return hangUpError;
  }
};

}  // namespace quillmoor
