// The closing of the remote browser, in the middle of something too.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>

#include "browser/BrowserWorld.h"
#include "browser/RemoteBrowser.h"
#include "profiles/SettingsStore.h"

namespace quillmoor {
namespace {

using namespace testing;  // of this project
using std::chrono::steady_clock;
using ::testing::ElementsAre;

constexpr BrowserPlacement kPlacement{BrowserPlacement::Rectangle{1, 2, 3, 4}, false};

/// Closes the window, and takes the last events as the hidden window does. They must not call the view.
void close(BrowserWorld& world) {
  world.browser->close(kPlacement);
  const auto calls = world.view.calls;
  const auto folders = world.view.folders;
  world.takeUntil([&] { return world.view.isClosed; });
  EXPECT_EQ(world.view.calls, calls);
  EXPECT_EQ(world.view.folders, folders);
  EXPECT_FALSE(world.browser->loggedIn());
  EXPECT_FALSE(world.browser->busy());
}

class ClosingTest : public ::testing::Test, protected BrowserWorld {};

TEST_F(ClosingTest, LogsOutAndStoresThePlacement) {
  open();
  browser->setFoldersOnly(true);
  finish();
  close(*this);
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

/// A moment at which a window may be closed: while the server answers a command so.
struct Moment {
  const char* name;
  const char* command;
  ScriptedFtpServer::Action action;
  bool whenOpen;                   // the command comes from a refresh, or from closing
  bool (*reached)(BrowserWorld&);  // null: at once
};
const Moment kMoments[] = {
    {"greeting", "", staysSilent(), false, nullptr},
    {"login wait", "PASS", replies("530 No."), false,
     [](auto& world) { return world.browser->log().lineCount() > 6 && world.logLines().back().empty(); }},
    {"listing", "LIST", staysSilent(), true, [](auto& world) { return world.browser->rowCount() == 1; }},
    {"link test", "CWD /l20", staysSilent(), false,
     [](auto& world) { return world.browser->rowCount() == 51; }},
    {"events not taken", "no command", staysSilent(), true, nullptr},
    {"logout", "QUIT", staysSilent(), false,
     [](auto& world) { return world.browser->rowCount() == 51 && !world.browser->busy(); }}};

struct ClosingWorld : BrowserWorld {
  explicit ClosingWorld(const Moment& moment) {
    settings.Timeout = 3600;
    settings.ConnectionDelay = 3600;
    std::string links;
    for (int i = 0; i < 50; ++i) links += "lrwxrwxrwx 1 o g 1 Jan 1 2020 l" + std::to_string(i) + " -> x\r\n";
    server.setListing("/", links);
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

TEST(ClosingInTheMiddle, ClosesAtOnce) {
  for (const Moment& moment : kMoments) {
    ClosingWorld world(moment);
    SaveBrowserPlacement(kPlacement);
    const auto begin = steady_clock::now();
    world.browser->close({});
    EXPECT_LT(steady_clock::now() - begin, std::chrono::seconds(1)) << moment.name << ": the caller waits";
    EXPECT_LE(world.server.count("PASS"), 1U) << moment.name << ": it logs in again without a delay";
    close(world);
    EXPECT_LT(steady_clock::now() - begin, std::chrono::seconds(10))
        << moment.name << ": the session ends late";
  }
}

TEST(ClosingInTheMiddle, CanBeDestroyed) {
  for (const Moment& moment : kMoments) {
    for (const bool closed : {false, true}) {
      ClosingWorld world(moment);
      if (closed) world.browser->close({});
      const auto calls = world.view.calls;
      world.browser.reset();
      EXPECT_EQ(world.view.calls, calls) << moment.name;
      EXPECT_FALSE(world.view.isClosed) << moment.name;
      EXPECT_TRUE(closed || world.server.count("QUIT") == 0) << moment.name;
    }
  }
}

TEST_F(ClosingTest, AllowsTheServerTimeToAnswerQuit) {
  open();
  server.on("QUIT", staysSilent());
  const auto begin = steady_clock::now();
  close(*this);
  EXPECT_GT(steady_clock::now() - begin, std::chrono::seconds(1));
}

TEST_F(ClosingTest, AllowsNoMoreTimeForWhatComesBeforeQuit) {
  // A request for a data connection has been sent ahead; its answer is awaited first.
  server.on("PWD", replies("550 Somewhere."));
  for (const char* command : {"EPSV", "SYST", "QUIT"}) server.on(command, staysSilent());
  open();
  SaveBrowserPlacement(kPlacement);  // is not written again, which would take time
  const auto begin = steady_clock::now();
  close(*this);
  EXPECT_LT(steady_clock::now() - begin, std::chrono::milliseconds(3500)) << "two time-outs would be 4 s";
}

TEST_F(ClosingTest, NeverConnectsWhenItIsClosedBefore) {
  make();
  close(*this);
  EXPECT_EQ(server.commands().size(), 0U);
  browser->connect();
  EXPECT_FALSE(browser->busy());
}

}  // namespace
}  // namespace quillmoor
