// The window is closed in the middle of something, or the program ends.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>

#include "browser/BrowserWorld.h"
#include "profiles/SettingsStore.h"

namespace quillmoor {
namespace {

using namespace testing;  // of this project
using std::chrono::steady_clock;
using ::testing::ElementsAre;

class ClosingTest : public ::testing::Test, protected BrowserWorld {
 protected:
  static constexpr BrowserPlacement kPlacement{BrowserPlacement::Rectangle{1, 2, 3, 4}, false};

  /// What is stored already is not written once more: for tests that measure what else the closing takes.
  static void storePlacement() { SaveBrowserPlacement(kPlacement); }

  /// Closes, and takes what still comes as the hidden window does. No call of the view may come meanwhile.
  void close() {
    browser->close(kPlacement);
    const auto calls = view.calls;
    const auto folders = view.folders;
    takeUntil([&] { return view.isClosed; });
    EXPECT_EQ(view.calls, calls);
    EXPECT_EQ(view.folders, folders);
    EXPECT_FALSE(browser->loggedIn());
    EXPECT_FALSE(browser->busy());
  }
};

TEST_F(ClosingTest, LogsOutAndStoresThePlacement) {
  open();
  browser->setFoldersOnly(true);
  settle();
  close();
  EXPECT_EQ(server.count("QUIT"), 1U);
  const auto log = logLines();
  EXPECT_THAT(std::vector(log.end() - 4, log.end()),
              ElementsAre("Logging out ...", "Closing Connection", "Connection Closed", ""));
  EXPECT_EQ(ReadSetting("FtpBrowseFoldersOnly", ""), "1");
  EXPECT_EQ(ReadSetting("FtpBrowseHeight", ""), "4");
  browser->refresh();
  browser->close({});
  EXPECT_FALSE(browser->busy()) << "it is over";
}

/// Where a window may be closed: in what the server does at a command.
struct Moment {
  const char* name;
  const char* command;
  ScriptedFtpServer::Action action;
  bool whenOpen;                   // the command comes of a refresh, or of closing
  bool (*reached)(BrowserWorld&);  // null: at once
};
void PrintTo(const Moment& moment, std::ostream* out) {
  *out << moment.name;
}

class ClosingInTheMiddle : public ClosingTest, public ::testing::WithParamInterface<Moment> {
 protected:
  ClosingInTheMiddle() {
    settings.Timeout = 3600;
    settings.ConnectionDelay = 3600;
    std::string links;
    for (int i = 0; i < 50; ++i) links += "lrwxrwxrwx 1 o g 1 Jan 1 2020 l" + std::to_string(i) + " -> x\r\n";
    server.setListing("/", links);
  }
  void prepare() {
    const Moment& moment = GetParam();
    if (moment.whenOpen) open();
    server.on(moment.command, moment.action);
    if (moment.whenOpen) {
      browser->refresh();
    } else {
      make();
      browser->connect();
    }
    if (moment.reached) takeUntil([&] { return moment.reached(*this); });
    if (moment.whenOpen && !moment.reached) browser->waitForEvents();
  }
};

const Moment kMoments[] = {{"Greeting", "", staysSilent(), false, nullptr},
                           {"LoginWait", "PASS", replies("530 No."), false,
                            [](BrowserWorld& world) {
                              return world.browser->log().lineCount() > 6 && world.logLines().back().empty();
                            }},
                           {"Listing", "LIST", staysSilent(), true,
                            [](BrowserWorld& world) { return world.browser->rowCount() == 1; }},
                           {"LinkTest", "CWD /l20", staysSilent(), false,
                            [](BrowserWorld& world) { return world.browser->rowCount() == 51; }},
                           {"NewsNotTaken", "no command", staysSilent(), true, nullptr},
                           {"Farewell", "QUIT", staysSilent(), false, [](BrowserWorld& world) {
                              return world.browser->rowCount() == 51 && !world.browser->busy();
                            }}};

TEST_P(ClosingInTheMiddle, ClosesAtOnce) {
  prepare();
  storePlacement();
  const auto begin = steady_clock::now();
  browser->close({});
  EXPECT_LT(steady_clock::now() - begin, std::chrono::seconds(1)) << "the caller does not wait";
  EXPECT_LE(server.count("PASS"), 1U) << "it logs in again without a delay";
  close();
  EXPECT_LT(steady_clock::now() - begin, std::chrono::seconds(10)) << "nor does the session for long";
}

TEST_P(ClosingInTheMiddle, CanBeDestroyed) {
  prepare();
  const auto calls = view.calls;
  browser.reset();
  EXPECT_EQ(view.calls, calls);
  EXPECT_EQ(server.count("QUIT"), 0U);
}

TEST_P(ClosingInTheMiddle, CanBeDestroyedBetweenClosingAndTheEnd) {
  prepare();
  browser->close({});
  browser.reset();
  EXPECT_FALSE(view.isClosed);
}

INSTANTIATE_TEST_SUITE_P(Moments, ClosingInTheMiddle, ::testing::ValuesIn(kMoments),
                         [](const auto& moment) { return moment.param.name; });

TEST_F(ClosingTest, GivesTheServerTimeToAnswerTheFarewell) {
  open();
  server.on("QUIT", staysSilent());
  const auto begin = steady_clock::now();
  close();
  EXPECT_GT(steady_clock::now() - begin, std::chrono::seconds(1));
}

TEST_F(ClosingTest, GivesAllThatGoesBeforeTheFarewellNoMoreTime) {
  // The request for a data connection has been sent ahead, and is asked after before anything else is said.
  server.on("PWD", replies("550 Somewhere."));
  for (const char* command : {"EPSV", "SYST", "QUIT"}) server.on(command, staysSilent());
  open();
  storePlacement();
  const auto begin = steady_clock::now();
  close();
  EXPECT_LT(steady_clock::now() - begin, std::chrono::milliseconds(3500)) << "two time-outs would be 4 s";
}

TEST_F(ClosingTest, NeverConnectsWhenItIsClosedBeforeItCould) {
  make();
  close();
  EXPECT_EQ(server.commands().size(), 0U);
  browser->connect();
  EXPECT_FALSE(browser->busy());
}

}  // namespace
}  // namespace quillmoor
