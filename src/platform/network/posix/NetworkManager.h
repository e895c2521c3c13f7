// Dial-up connections through NetworkManager's program nmcli.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/network/RemoteAccess.h"
#include "platform/system/posix/ChildProcess.h"

namespace quillmoor {

/// The fields of each line of nmcli's terse output (nmcli(1), --terse and --escape): separated by colons; a
/// backslash escapes a colon or backslash in a field.
std::vector<std::vector<std::string>> ParseTerseOutput(std::string_view output);

/// One background `nmcli connection show` serves for entries and connections alike. Its answer is valid for a
/// second, or for half a minute when there is nothing to dial. A caller waits for a new answer only when the
/// last one is too old or when it asks for the entries; without a pump nobody waits, and dialling an unknown
/// entry starts when the answer has arrived.
class NetworkManager final : public RemoteAccess {
 public:
  explicit NetworkManager(Pump pump) : pump_(std::move(pump)) {}
  ~NetworkManager() override;

  std::vector<std::string> entries() override;
  void dial(const std::string& entry) override;
  void close() override;
  std::vector<std::int32_t> takeStates() override;
  std::vector<ActiveConnection> activeConnections() override;
  std::int32_t stateOf(const ActiveConnection& connection) override;
  std::uint32_t hangUp(const ActiveConnection& connection) override;

 private:
  /// A connection profile of a type that dials.
  struct Profile {
    std::string name, uuid, type;
    std::string device;
    std::string state;  // "activating", "activated", "deactivating"; "" when it is not active
  };
  enum class Answer { known, fresh };

  void refresh(Answer wanted);
  void invalidate();
  void takeAnswer();
  bool waitFor(ChildProcess& child, std::int64_t mostMs);
  void beginUp(const Profile& profile);
  void beginDown();
  void dialPending();
  const Profile* find(std::string Profile::*field, const std::string& value) const;
  std::uint64_t handleOf(const std::string& uuid);

  Pump pump_;
  std::vector<Profile> profiles_;
  std::vector<std::string> handles_;  // UUIDs; a handle is an index, from 1
  std::optional<ChildProcess> query_;
  std::int64_t askedAt_ = 0;                // ms, TickCountMs
  std::optional<std::int64_t> answeredAt_;  // nullopt: the known answer is outdated
  bool waiting_ = false;                    // for query_, possibly inside the pump
  bool overtaken_ = false;                  // query_ started before a change

  std::optional<std::int64_t> entriesAskedAt_;  // ms, TickCountMs

  std::optional<std::string> toDial_;  // the entry to dial once an answer has it
  std::string uuid_;                   // being dialled, connected or closed
  std::optional<ChildProcess> up_, down_;
  bool connected_ = false;
  bool reportedActivating_ = false;
  bool over_ = false;  // ended, but not reported yet
};

}  // namespace quillmoor
