// Dial-up over the test's own functions in place of the system's, and over the system's.
#include "platform/network/windows/RasRemoteAccess.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <raserror.h>

#include <cwchar>
#include <map>
#include <thread>

namespace quillmoor {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

/// The system behind the functions; one at a time.
struct FakeRas {
  std::vector<std::wstring> entries;
  std::map<HRASCONN, RASCONNSTATE> connections;
  std::vector<HRASCONN> hungUp;
  DWORD dialError = ERROR_SUCCESS;
  std::wstring dialled, user;
  ULONG_PTR callbackId = 0;
  RASDIALFUNC2 report = nullptr;

  /// As the system does it: on a thread of its own.
  DWORD reports(RASCONNSTATE state, DWORD error = ERROR_SUCCESS) {
    DWORD result = 0;
    std::thread([&] {
      result = report(callbackId, 1, connection(1), WM_RASDIALEVENT, state, error, 0);
    }).join();
    return result;
  }
  static HRASCONN connection(std::uintptr_t number) { return reinterpret_cast<HRASCONN>(number); }
};
FakeRas* ras = nullptr;

const RasLibrary kLibrary = {
    .enumEntries = [](LPCWSTR, LPCWSTR, LPRASENTRYNAMEW names, LPDWORD bytes, LPDWORD count) -> DWORD {
      const DWORD room = *bytes / static_cast<DWORD>(sizeof *names);
      *count = static_cast<DWORD>(ras->entries.size());
      *bytes = *count * static_cast<DWORD>(sizeof *names);
      if (names->dwSize != sizeof *names) return ERROR_INVALID_SIZE;
      if (room < *count) return ERROR_BUFFER_TOO_SMALL;
      for (const std::wstring& entry : ras->entries) std::wcscpy(names++->szEntryName, entry.c_str());
      return ERROR_SUCCESS;
    },
    .getEntryDialParams = [](LPCWSTR, LPRASDIALPARAMSW parameters, LPBOOL) -> DWORD {
      if (parameters->dwSize != sizeof *parameters) return ERROR_INVALID_SIZE;
      if (std::wcscmp(parameters->szEntryName, L"Büro") != 0) return ERROR_CANNOT_FIND_PHONEBOOK_ENTRY;
      std::wcscpy(parameters->szUserName, L"joe");
      return ERROR_SUCCESS;
    },
    .dial = [](LPRASDIALEXTENSIONS, LPCWSTR, LPRASDIALPARAMSW parameters, DWORD kind, LPVOID report,
               LPHRASCONN connection) -> DWORD {
      EXPECT_EQ(kind, 2U);
      if (parameters->dwSize != sizeof *parameters) return ERROR_INVALID_SIZE;
      ras->dialled = parameters->szEntryName;
      ras->user = parameters->szUserName;
      ras->callbackId = parameters->dwCallbackId;
      ras->report = reinterpret_cast<RASDIALFUNC2>(report);
      *connection = FakeRas::connection(1);
      ras->connections[*connection] = RASCS_OpenPort;
      return ras->dialError;
    },
    .enumConnections = [](LPRASCONNA, LPDWORD, LPDWORD count) -> DWORD {
      *count = 0;
      return ERROR_SUCCESS;
    },
    .getConnectStatus = [](HRASCONN connection, LPRASCONNSTATUSA status) -> DWORD {
      if (status->dwSize != sizeof *status) return ERROR_INVALID_SIZE;
      const auto found = ras->connections.find(connection);
      if (found == ras->connections.end()) return ERROR_INVALID_HANDLE;
      status->rasconnstate = found->second;
      return ERROR_SUCCESS;
    },
    .hangUp = [](HRASCONN connection) -> DWORD {
      ras->hungUp.push_back(connection);
      return ras->connections.erase(connection) != 0 ? ERROR_SUCCESS : ERROR_INVALID_HANDLE;
    },
};

class RasRemoteAccessTest : public ::testing::Test {
 protected:
  RasRemoteAccessTest() { ras = &fake; }
  ~RasRemoteAccessTest() override {
    system.reset();
    ras = nullptr;
  }
  FakeRas fake;
  std::unique_ptr<RasRemoteAccess> system = std::make_unique<RasRemoteAccess>(kLibrary, Pump());
};

TEST_F(RasRemoteAccessTest, ListsThePhonebook) {
  EXPECT_THAT(system->entries(), IsEmpty());
  fake.entries = {L"Büro", L"Home", L"Büro"};
  EXPECT_THAT(system->entries(), ElementsAre("Büro", "Home"));
}

TEST_F(RasRemoteAccessTest, ReturnsTheReportsOfAnotherThread) {
  system->dial("Büro");
  EXPECT_EQ(fake.dialled, L"Büro");
  EXPECT_EQ(fake.user, L"joe") << "with what is stored for the entry";
  EXPECT_THAT(system->takeStates(), IsEmpty());
  EXPECT_NE(fake.reports(RASCS_OpenPort), 0U);
  fake.reports(RASCS_ConnectDevice);
  EXPECT_THAT(system->takeStates(), ElementsAre(0, 2));
  fake.connections[FakeRas::connection(1)] = RASCS_Connected;
  fake.reports(RASCS_Connected);
  EXPECT_THAT(system->takeStates(), ElementsAre(kDialUpConnected));
  EXPECT_THAT(system->takeStates(), IsEmpty());

  fake.connections.clear();  // the line drops
  EXPECT_THAT(system->takeStates(), ElementsAre(kDialUpDisconnected));
  EXPECT_THAT(system->takeStates(), IsEmpty());
  EXPECT_EQ(fake.reports(RASCS_Disconnected), 0U) << "nobody listens any more";
}

TEST_F(RasRemoteAccessTest, HangsUpAConnectionThatFailed) {
  for (const bool expired : {false, true}) {
    fake.hungUp.clear();
    system->dial("Büro");
    fake.reports(RASCS_Authenticate, expired ? ERROR_PASSWD_EXPIRED : ERROR_AUTHENTICATION_FAILURE);
    std::vector<std::int32_t> states = {20648, kDialUpDisconnected};
    if (!expired) states.erase(states.begin());
    EXPECT_EQ(system->takeStates(), states);
    EXPECT_THAT(fake.hungUp, ElementsAre(FakeRas::connection(1)));
  }
}

TEST_F(RasRemoteAccessTest, RaisesWhatCannotBeDialled) {
  EXPECT_THROW(system->dial("büro"), std::runtime_error);
  EXPECT_THROW(system->dial(std::string(300, 'x')), std::runtime_error);
  fake.dialError = ERROR_PORT_NOT_AVAILABLE;
  EXPECT_THROW(system->dial("Büro"), std::runtime_error);
  EXPECT_THAT(fake.hungUp, ElementsAre(FakeRas::connection(1))) << "hung up all the same";
  EXPECT_THAT(system->takeStates(), IsEmpty());
}

TEST_F(RasRemoteAccessTest, EndsADialButNoConnectionWhenItGoes) {
  for (const bool connected : {false, true}) {
    system = std::make_unique<RasRemoteAccess>(kLibrary, Pump());
    system->dial("Büro");
    if (connected) fake.connections[FakeRas::connection(1)] = RASCS_Connected;
    system.reset();
    EXPECT_THAT(fake.hungUp, ElementsAre(FakeRas::connection(1))) << "only the first, which was not up yet";
    EXPECT_EQ(fake.reports(RASCS_Connected), 0U);
  }
}

TEST(SystemRemoteAccess, WorksWithoutAPhonebookAndWithoutTheLibrary) {
  const auto system = MakeRemoteAccess({});
  EXPECT_THROW(system->dial("no such entry of this machine"), std::runtime_error);
  EXPECT_EQ(system->stateOf({}), kDialUpDisconnected);
  const RasLibrary empty;
  RasRemoteAccess none(empty, {});
  EXPECT_THAT(none.entries(), IsEmpty());
  EXPECT_THAT(none.activeConnections(), IsEmpty());
  EXPECT_THROW(none.dial("Office"), std::runtime_error);
}

}  // namespace
}  // namespace quillmoor
