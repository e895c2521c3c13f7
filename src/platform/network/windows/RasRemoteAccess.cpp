#include "platform/network/windows/RasRemoteAccess.h"

#include <raserror.h>

#include <algorithm>
#include <cstring>
#include <deque>
#include <map>
#include <mutex>
#include <stdexcept>
#include <thread>
#include <utility>

#include "platform/network/RasConnections.h"
#include "platform/system/LocalTime.h"
#include "platform/system/windows/WideText.h"

namespace quillmoor {
namespace {

constexpr std::int64_t kHangUpTimeoutMs = 3'000;  // the time in which the system resets a modem
constexpr std::chrono::milliseconds kRest{10};

template <class Function>
void find(HMODULE library, const char* name, Function& function) {
  function = reinterpret_cast<Function>(reinterpret_cast<void*>(::GetProcAddress(library, name)));
}

}  // namespace

const RasLibrary& SystemRasLibrary() {
  static const RasLibrary found = [] {
    RasLibrary functions;
    const HMODULE library = ::LoadLibraryExW(L"rasapi32.dll", nullptr, LOAD_LIBRARY_SEARCH_SYSTEM32);
    if (!library) return functions;
    find(library, "RasEnumEntriesW", functions.enumEntries);
    find(library, "RasGetEntryDialParamsW", functions.getEntryDialParams);
    find(library, "RasDialW", functions.dial);
    find(library, "RasEnumConnectionsA", functions.enumConnections);
    find(library, "RasGetConnectStatusA", functions.getConnectStatus);
    find(library, "RasHangUpA", functions.hangUp);
    return functions;
  }();
  return found;
}

std::unique_ptr<RemoteAccess> MakeRemoteAccess(Pump pump) {
  return std::make_unique<RasRemoteAccess>(SystemRasLibrary(), std::move(pump));
}

/// Reports of one dial. The system gets its number instead of its address, as a report may come late.
class RasRemoteAccess::Mailbox {
 public:
  struct Report {
    std::int32_t state;
    std::uint32_t error;
  };

  Mailbox() {
    const std::lock_guard lock(mutex());
    all()[number_ = ++lastNumber()] = this;
  }
  ~Mailbox() {
    const std::lock_guard lock(mutex());
    all().erase(number_);
  }
  Mailbox(const Mailbox&) = delete;
  Mailbox& operator=(const Mailbox&) = delete;

  ULONG_PTR number() const { return number_; }

  std::deque<Report> take() {
    const std::lock_guard lock(mutex());
    return std::exchange(reports_, {});
  }

  /// RasDialFunc2, called on a thread of the system. Returning 0 ends the reports.
  static DWORD WINAPI report(ULONG_PTR number, DWORD, HRASCONN, UINT, RASCONNSTATE state, DWORD error,
                             DWORD) {
    const std::lock_guard lock(mutex());
    const auto found = all().find(number);
    if (found == all().end()) return 0;
    found->second->reports_.push_back({static_cast<std::int32_t>(state), error});
    return 1;
  }

 private:
  // Never destroyed: a report may arrive while the program ends.
  static std::mutex& mutex() {
    static std::mutex& one = *new std::mutex;
    return one;
  }
  static std::map<ULONG_PTR, Mailbox*>& all() {
    static auto& one = *new std::map<ULONG_PTR, Mailbox*>;
    return one;
  }
  static ULONG_PTR& lastNumber() {
    static ULONG_PTR number = 0;
    return number;
  }

  ULONG_PTR number_ = 0;
  std::deque<Report> reports_;
};

RasRemoteAccess::RasRemoteAccess(const RasLibrary& library, Pump pump)
    : library_(library), pump_(std::move(pump)) {}

RasRemoteAccess::~RasRemoteAccess() {
  if (!connection_ || connected_) return;
  // Connected, but the report is still in the mailbox or on its way.
  if (!closing_ && stateOf(connection_) == kDialUpConnected) return;
  pump_ = nullptr;
  if (closing_) {
    waitUntilGone(connection_);  // hanging up twice fails, and would skip the wait
  } else {
    hangUpAndWait(connection_);
  }
}

std::vector<std::string> RasRemoteAccess::entries() {
  if (!library_.complete()) return {};
  std::vector<RASENTRYNAMEW> records(1);
  DWORD count = 0;
  DWORD result = ERROR_BUFFER_TOO_SMALL;
  // Retries while entries are added in between.
  for (int attempt = 0; attempt < 4 && result == ERROR_BUFFER_TOO_SMALL; ++attempt) {
    for (RASENTRYNAMEW& record : records) record.dwSize = sizeof record;
    auto bytes = static_cast<DWORD>(records.size() * sizeof records[0]);
    result = library_.enumEntries(nullptr, nullptr, records.data(), &bytes, &count);
    if (result == ERROR_BUFFER_TOO_SMALL)
      records.resize(std::min<std::size_t>(bytes / sizeof records[0] + 1, 10'000));
  }
  std::vector<std::string> names;
  if (result != ERROR_SUCCESS) return names;
  for (std::size_t i = 0; i < std::min<std::size_t>(count, records.size()); ++i) {
    records[i].szEntryName[RAS_MaxEntryName] = L'\0';
    std::string name = Narrow(records[i].szEntryName);
    // An entry may be in both the user's phonebook and that of all users.
    if (std::find(names.begin(), names.end(), name) == names.end()) names.push_back(std::move(name));
  }
  return names;
}

void RasRemoteAccess::dial(const std::string& entry) {
  if (!library_.complete()) throw std::runtime_error("This machine has no remote access.");
  const std::wstring name = Widen(entry);
  RASDIALPARAMSW parameters{};
  parameters.dwSize = sizeof parameters;
  if (name.size() > RAS_MaxEntryName) throw std::runtime_error("There is no dial-up entry " + entry + ".");
  std::copy(name.begin(), name.end(), parameters.szEntryName);
  BOOL hasPassword = FALSE;
  if (library_.getEntryDialParams(nullptr, &parameters, &hasPassword) != ERROR_SUCCESS) {
    throw std::runtime_error("There is no dial-up entry " + entry + ".");
  }
  mailbox_ = std::make_unique<Mailbox>();
  parameters.dwCallbackId = mailbox_->number();
  connection_ = nullptr;
  connected_ = closing_ = false;
  constexpr DWORD kRasDialFunc2 = 2;
  const DWORD error = library_.dial(nullptr, nullptr, &parameters, kRasDialFunc2,
                                    reinterpret_cast<LPVOID>(&Mailbox::report), &connection_);
  ::SecureZeroMemory(&parameters, sizeof parameters);
  if (error == ERROR_SUCCESS) return;
  // Even after a failure there may be a connection that must be released.
  if (connection_) library_.hangUp(std::exchange(connection_, nullptr));
  mailbox_.reset();
  throw std::runtime_error("The dial-up entry " + entry + " cannot be dialled: error " +
                           std::to_string(error) + ".");
}

void RasRemoteAccess::close() {
  if (!connection_ || closing_) return;
  connected_ = false;
  closing_ = true;
  closingSince_ = TickCountMs();
  library_.hangUp(connection_);
}

std::vector<std::int32_t> RasRemoteAccess::takeStates() {
  std::vector<std::int32_t> states;
  if (!connection_) return states;
  for (const Mailbox::Report& report : mailbox_->take()) {
    if (closing_) break;
    if (report.error != 0 || report.state == kDialUpDisconnected) {
      if (report.error == ERROR_PASSWD_EXPIRED) states.push_back(kDialUpPasswordExpired);
      close();
    } else {
      states.push_back(report.state);
      if (report.state == kDialUpConnected) connected_ = true;
    }
  }
  if (connected_ && stateOf(connection_) != kDialUpConnected) close();  // the line has dropped
  // A connection must be kept until the system has released it.
  const bool gone = closing_ && (stateOf(connection_) == kDialUpDisconnected ||
                                 TickCountMs() - closingSince_ > kHangUpTimeoutMs);
  if (gone) {
    states.push_back(kDialUpDisconnected);
    connection_ = nullptr;
    mailbox_.reset();
    closing_ = false;
  }
  return states;
}

std::vector<ActiveConnection> RasRemoteAccess::activeConnections() {
  if (!library_.complete()) return {};
  const RasEnumerate ask = [this](std::byte* records, std::uint32_t& bytes, std::uint32_t& count) {
    DWORD room = bytes, found = count;
    const DWORD result = library_.enumConnections(reinterpret_cast<LPRASCONNA>(records), &room, &found);
    bytes = room;
    count = found;
    return static_cast<std::uint32_t>(result);
  };
  return EnumerateRasConnections(ask, sizeof(HRASCONN));
}

std::int32_t RasRemoteAccess::stateOf(const ActiveConnection& connection) {
  return stateOf(reinterpret_cast<HRASCONN>(static_cast<std::uintptr_t>(connection.handle)));
}

std::uint32_t RasRemoteAccess::hangUp(const ActiveConnection& connection) {
  return hangUpAndWait(reinterpret_cast<HRASCONN>(static_cast<std::uintptr_t>(connection.handle)));
}

std::int32_t RasRemoteAccess::stateOf(HRASCONN connection) const {
  if (!library_.complete() || !connection) return kDialUpDisconnected;
  RASCONNSTATUSA status{};
  status.dwSize = sizeof status;
  if (library_.getConnectStatus(connection, &status) != ERROR_SUCCESS) return kDialUpDisconnected;
  return static_cast<std::int32_t>(status.rasconnstate);
}

std::uint32_t RasRemoteAccess::hangUpAndWait(HRASCONN connection) {
  if (!library_.complete()) return ERROR_INVALID_HANDLE;
  const DWORD error = library_.hangUp(connection);
  if (error == ERROR_SUCCESS) waitUntilGone(connection);
  return error;
}

void RasRemoteAccess::waitUntilGone(HRASCONN connection) {
  const std::int64_t end = TickCountMs() + kHangUpTimeoutMs;
  while (stateOf(connection) != kDialUpDisconnected && TickCountMs() < end) {
    if (pump_) pump_();
    std::this_thread::sleep_for(kRest);
  }
}

}  // namespace quillmoor
