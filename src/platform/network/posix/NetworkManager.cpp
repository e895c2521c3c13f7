#include "platform/network/posix/NetworkManager.h"

#include <algorithm>
#include <stdexcept>
#include <system_error>
#include <utility>

#include "platform/system/LocalTime.h"

namespace quillmoor {
namespace {

constexpr std::int64_t kAnswerLastsMs = 1'000;
constexpr std::int64_t kNothingToDialLastsMs = 30'000;
constexpr std::int64_t kStillGoodMs = 2'000;       // usable beyond that; older, callers wait
constexpr std::int64_t kFollowUpMs = 2'000;        // between calls that belong together
constexpr std::int64_t kWaitTimeoutMs = 3'000;     // of a waiting caller
constexpr std::int64_t kQueryTimeoutMs = 10'000;   // a hanging nmcli is killed
constexpr std::int64_t kHangUpTimeoutMs = 12'000;  // longer than nmcli's own timeout
constexpr std::chrono::milliseconds kRest{10};

constexpr std::int32_t kConnecting = 2;
constexpr std::int32_t kClosing = 8198;

/// Types of profiles that dial (`connection.type`).
constexpr std::string_view kDiallingTypes[] = {"gsm", "cdma", "pppoe", "adsl", "bluetooth"};

std::vector<std::string> downCommand(const std::string& uuid) {
  return {"nmcli", "--wait", "10", "connection", "down", "uuid", uuid};
}

/// Sets the flag for its own lifetime.
class Waiting {
 public:
  explicit Waiting(bool& flag) : flag_(flag) { flag_ = true; }
  ~Waiting() { flag_ = false; }
  Waiting(const Waiting&) = delete;
  Waiting& operator=(const Waiting&) = delete;

 private:
  bool& flag_;
};

}  // namespace

std::unique_ptr<RemoteAccess> MakeRemoteAccess(Pump pump) {
  return std::make_unique<NetworkManager>(std::move(pump));
}

std::vector<std::vector<std::string>> ParseTerseOutput(std::string_view output) {
  std::vector<std::vector<std::string>> lines;
  bool lineBegins = true;
  for (std::size_t at = 0; at < output.size(); ++at) {
    char c = output[at];
    if (c == '\n') {
      lineBegins = true;
      continue;
    }
    if (lineBegins) lines.push_back({""});
    lineBegins = false;
    if (c == ':') {
      lines.back().emplace_back();
      continue;
    }
    if (c == '\\' && at + 1 < output.size() && output[at + 1] != '\n') c = output[++at];
    lines.back().back() += c;
  }
  return lines;
}

NetworkManager::~NetworkManager() {
  pump_ = nullptr;
  try {
    if (up_ && !(up_->poll() && up_->exitStatus() == 0)) beginDown();
    if (down_) waitFor(*down_, kWaitTimeoutMs);
  } catch (const std::exception&) {
    // Nobody left to report it to.
  }
}

std::vector<std::string> NetworkManager::entries() {
  // Without a pump, a repeated call returns the answer to the first one's query instead of starting another.
  const std::int64_t now = TickCountMs();
  const bool repeated = entriesAskedAt_ && now - *entriesAskedAt_ < kFollowUpMs;
  entriesAskedAt_ = now;
  refresh(!pump_ && repeated ? Answer::known : Answer::fresh);
  std::vector<std::string> names;
  for (const Profile& profile : profiles_) {
    // NetworkManager allows several profiles of one name; the first one is dialled.
    if (std::find(names.begin(), names.end(), profile.name) == names.end()) names.push_back(profile.name);
  }
  return names;
}

void NetworkManager::dial(const std::string& entry) {
  const Profile* profile = find(&Profile::name, entry);
  if (!profile) {
    refresh(Answer::fresh);
    profile = find(&Profile::name, entry);
  }
  if (!profile && (pump_ || !query_)) throw std::runtime_error("There is no dial-up entry " + entry + ".");
  connected_ = reportedActivating_ = over_ = false;
  toDial_.reset();
  if (profile) return beginUp(*profile);
  toDial_ = entry;
}

void NetworkManager::close() {
  connected_ = false;
  over_ = toDial_.has_value();
  toDial_.reset();
  if (over_) return;
  try {
    beginDown();
  } catch (const std::system_error&) {
    over_ = true;
  }
}

void NetworkManager::beginUp(const Profile& profile) {
  uuid_ = profile.uuid;
  up_.emplace(std::vector<std::string>{"nmcli", "--wait", "170", "connection", "up", "uuid", uuid_});
}

/// Dials when the answer that may contain the entry has arrived.
void NetworkManager::dialPending() {
  refresh(Answer::known);
  if (query_) return;
  const Profile* const profile = find(&Profile::name, *toDial_);
  toDial_.reset();
  over_ = !profile;
  try {
    if (profile) beginUp(*profile);
  } catch (const std::system_error&) {
    over_ = true;
  }
}

/// Ending the dialling nmcli does not end the dial.
void NetworkManager::beginDown() {
  up_.reset();
  down_.emplace(downCommand(uuid_));
}

std::vector<std::int32_t> NetworkManager::takeStates() {
  std::vector<std::int32_t> states;
  if (toDial_) dialPending();
  if (over_ || (down_ && down_->poll())) {
    down_.reset();
    over_ = false;
    invalidate();
    states.push_back(kDialUpDisconnected);
  } else if (up_ && up_->poll()) {
    connected_ = up_->exitStatus() == 0;
    up_.reset();
    invalidate();
    states.push_back(connected_ ? kDialUpConnected : kDialUpDisconnected);
  } else if (up_ || connected_) {
    refresh(Answer::known);
    const Profile* const profile = find(&Profile::uuid, uuid_);
    if (up_ && !reportedActivating_ && profile && profile->state == "activating") {
      reportedActivating_ = true;
      states.push_back(kConnecting);
    }
    // Only an answer from after the connection came up can show that it is gone.
    if (connected_ && answeredAt_ && (!profile || profile->state != "activated")) {
      connected_ = false;
      states.push_back(kDialUpDisconnected);
    }
  }
  return states;
}

std::vector<ActiveConnection> NetworkManager::activeConnections() {
  refresh(Answer::known);
  std::vector<ActiveConnection> connections;
  for (const Profile& profile : profiles_) {
    if (profile.state.empty()) continue;
    connections.push_back({handleOf(profile.uuid), profile.name, profile.type, profile.device, ""});
  }
  return connections;
}

std::int32_t NetworkManager::stateOf(const ActiveConnection& connection) {
  if (connection.handle == 0 || connection.handle > handles_.size()) return kDialUpDisconnected;
  const Profile* const profile = find(&Profile::uuid, handles_[connection.handle - 1]);
  if (!profile) return kDialUpDisconnected;
  if (profile->state == "activated") return kDialUpConnected;
  if (profile->state == "activating") return kConnecting;
  return profile->state == "deactivating" ? kClosing : kDialUpDisconnected;
}

std::uint32_t NetworkManager::hangUp(const ActiveConnection& connection) {
  constexpr std::uint32_t kFailed = 1;
  if (connection.handle == 0 || connection.handle > handles_.size()) return kFailed;
  try {
    ChildProcess down(downCommand(handles_[connection.handle - 1]));
    const bool ended = waitFor(down, kHangUpTimeoutMs);
    invalidate();
    return ended && down.exitStatus() >= 0 ? static_cast<std::uint32_t>(down.exitStatus()) : kFailed;
  } catch (const std::system_error&) {
    return kFailed;
  }
}

const NetworkManager::Profile* NetworkManager::find(std::string Profile::*field,
                                                    const std::string& value) const {
  const auto found = std::find_if(profiles_.begin(), profiles_.end(),
                                  [&](const Profile& profile) { return profile.*field == value; });
  return found == profiles_.end() ? nullptr : &*found;
}

std::uint64_t NetworkManager::handleOf(const std::string& uuid) {
  const auto known = std::find(handles_.begin(), handles_.end(), uuid);
  const auto place = static_cast<std::uint64_t>(known - handles_.begin());
  if (known == handles_.end()) handles_.push_back(uuid);
  return place + 1;
}

/// Invalidates the known answer and a running query. The query is not ended here, as a caller may be waiting
/// for it.
void NetworkManager::invalidate() {
  overtaken_ = query_.has_value();
  answeredAt_.reset();
}

void NetworkManager::refresh(Answer wanted) {
  if (waiting_) return;  // called from inside the pump
  if (std::exchange(overtaken_, false)) query_.reset();
  takeAnswer();
  const std::int64_t lasts = profiles_.empty() && uuid_.empty() ? kNothingToDialLastsMs : kAnswerLastsMs;
  const std::int64_t age = answeredAt_ ? TickCountMs() - *answeredAt_ : lasts + kStillGoodMs;
  if (wanted == Answer::known && age < lasts) return;
  if (!query_) {
    askedAt_ = TickCountMs();
    try {
      query_.emplace(std::vector<std::string>{"nmcli", "--terse", "--escape", "yes", "--fields",
                                              "UUID,TYPE,STATE,DEVICE,NAME", "connection", "show"});
    } catch (const std::system_error&) {
      profiles_.clear();  // no nmcli, no entries
      answeredAt_ = askedAt_;
      return;
    }
  }
  if (!pump_ || (wanted == Answer::known && age < lasts + kStillGoodMs)) return;
  {
    const Waiting waiting(waiting_);
    waitFor(*query_, kWaitTimeoutMs);
  }
  takeAnswer();
}

void NetworkManager::takeAnswer() {
  if (!query_) return;
  const bool ended = query_->poll();
  if (!ended && TickCountMs() - askedAt_ < kQueryTimeoutMs) return;
  if (overtaken_) return;
  profiles_.clear();
  if (ended && query_->exitStatus() == 0) {
    for (const auto& fields : ParseTerseOutput(query_->output())) {
      if (fields.size() != 5) continue;
      const bool dials = std::find(std::begin(kDiallingTypes), std::end(kDiallingTypes), fields[1]) !=
                         std::end(kDiallingTypes);
      if (dials) profiles_.push_back({fields[4], fields[0], fields[1], fields[3], fields[2]});
    }
  }
  query_.reset();
  answeredAt_ = TickCountMs();
}

bool NetworkManager::waitFor(ChildProcess& child, std::int64_t mostMs) {
  const std::int64_t end = TickCountMs() + mostMs;
  while (!child.poll()) {
    if (TickCountMs() >= end) return false;
    if (pump_) pump_();
    child.waitForOutput(kRest);
  }
  return true;
}

}  // namespace quillmoor
