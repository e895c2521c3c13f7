// Dial-up connections through NetworkManager, as its program nmcli tells them.
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

/// The fields of each line of nmcli's terse output (nmcli(1), --terse and --escape): colons part them, and a
/// backslash stands before a colon or backslash that belongs to a field.
std::vector<std::vector<std::string>> ParseTerseOutput(std::string_view output);

/// Asks by one `nmcli connection show` for entries and connections alike. It runs in the background; what it
/// said last is the answer for a second, and for half a minute where there is nothing to dial at all. Only
/// one who has not asked for longer, or wants to know the entries, waits for the new answer; without a pump
/// nobody does, and a dial of an entry that is not known yet begins when the answer is there.
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
  /// A connection profile of a kind that dials.
  struct Profile {
    std::string name, uuid, type;
    std::string device;
    std::string state;  // "activating", "activated", "deactivating"; "" when it is not active
  };
  enum class Answer { known, fresh };

  void refresh(Answer wanted);
  void askAgain();
  void takeAnswer();
  bool waitFor(ChildProcess& child, std::int64_t mostMs);
  void beginUp(const Profile& profile);
  void beginDown();
  void dialWhatWaits();
  const Profile* find(std::string Profile::*field, const std::string& value) const;
  std::uint64_t handleOf(const std::string& uuid);

  Pump pump_;
  std::vector<Profile> profiles_;
  std::vector<std::string> handles_;  // UUIDs; a handle is a place in here, counted from 1
  std::optional<ChildProcess> query_;
  std::int64_t askedAt_ = 0;                // ms, TickCountMs
  std::optional<std::int64_t> answeredAt_;  // none: what is known is no longer true
  bool waiting_ = false;                    // for query_, inside the pump perhaps
  bool overtaken_ = false;                  // query_ began before what it asks for changed

  std::optional<std::int64_t> entriesAskedAt_;  // ms, TickCountMs

  std::optional<std::string> toDial_;  // the entry that an answer has yet to name
  std::string uuid_;                   // being dialled, connected or closed
  std::optional<ChildProcess> up_, down_;
  bool connected_ = false;
  bool toldActivating_ = false;
  bool over_ = false;  // nothing goes on any more, and nobody has been told
};

}  // namespace quillmoor
