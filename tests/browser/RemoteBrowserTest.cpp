// The remote browser against a server in memory.
#include "browser/RemoteBrowser.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

#include "browser/BrowserWorld.h"

namespace quillmoor {
namespace {

using namespace testing;  // of this project
using ::testing::Contains;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Not;
using ::testing::StartsWith;

class RemoteBrowserTest : public ::testing::Test, protected BrowserWorld {};

std::string linkLine(const std::string& name, const std::string& target) {
  return "lrwxrwxrwx   1 0  0   11 Jan 15 2020 " + name + " -> " + target + "\r\n";
}

// --- connecting

TEST_F(RemoteBrowserTest, LogsInAndListsTheProfilesFolder) {
  server.addFile("/pub/readme.txt", "hello", "Jan  5  2009");
  server.addFolder("/pub/images");
  site.defaultDir = "/pub";
  open();
  EXPECT_TRUE(browser->loggedIn());
  EXPECT_THAT(rows(), ElementsAre("Cdup ..", "FolderClose images", "TextFile readme.txt"));
  EXPECT_THAT(view.folders, ElementsAre("+/pub"));
  EXPECT_THAT(logLines(), ElementsAre("Connecting... ", "Connected to: 127.0.0.1", ""));
  std::vector<std::string> cells;
  for (std::size_t i = 0; i < kBrowserColumns.size(); ++i) cells.push_back(browser->cell(2, i));
  EXPECT_THAT(cells, ElementsAre("readme.txt", "5", "Jan 5 2009", "owner", "group", "420"));
  EXPECT_EQ(browser->cell(0, 1) + browser->cell(0, 2), "");
}

TEST_F(RemoteBrowserTest, StaysWhereItIsWhenThereIsNoSuchFolder) {
  server.addFolder("/www");
  site.defaultDir = "/gone";
  open();
  EXPECT_THAT(rows(), ElementsAre("Cdup ..", "FolderClose www"));
  EXPECT_THAT(view.folders, ElementsAre("+/"));
  EXPECT_THAT(logLines(), Contains(StartsWith("Error: 550, ")));

  browser->setChecked(1, true);
  browser->changeFolder("/gone");
  settle();
  EXPECT_THAT(tickedRows(), ElementsAre("www"));
  EXPECT_THAT(view.folders, ElementsAre("+/", "/")) << "the box holds the current folder again";
  EXPECT_THAT(logLines(), Contains(StartsWith("Error: 550, ")).Times(2));
}

TEST_F(RemoteBrowserTest, TriesAgainUntilALoginWorks) {
  server.once("PASS", replies("530 Not today."));
  server.once("PASS", replies("530 Not today."));
  server.once("", replies("421 Too many users."));
  open();
  const std::vector<std::string> attempt = {
      "Connecting... ", "Connection Closed", "Error: 530, The server refused the password: 530 Not today.",
      "Login error: 530,The server refused the password: 530 Not today."};
  std::vector<std::string> expected;
  for (const char* retry : {"Retry : 2", "Retry : 3"}) {
    expected.insert(expected.end(), attempt.begin(), attempt.end());
    expected.insert(expected.end(), {retry, "Waiting 0 Seconds..."});
  }
  expected.insert(expected.end(), {"Connecting... ", "Connected to: 127.0.0.1", ""});
  auto lines = logLines();
  const auto advice = std::find_if(lines.begin(), lines.end(), [](const std::string& line) {
    return line.starts_with("The server takes no more connections");
  });
  ASSERT_NE(advice, lines.end());
  EXPECT_EQ(*(advice - 1), "Login error: 421,The server refused the connection: 421 Too many users.");
  lines.erase(lines.begin(), advice + 3);  // with "Retry : 1" and the waiting
  EXPECT_EQ(lines, expected);
  EXPECT_TRUE(browser->loggedIn());
}

TEST_F(RemoteBrowserTest, WaitsAsLongAsTheProgramsSettingSaysAndNotTheProfiles) {
  server.once("PASS", staysSilent());
  settings.Timeout = 1;
  site.timeout = "9999";
  open();
  EXPECT_THAT(logLines(), Contains(StartsWith("Login error: 1006,")));
  EXPECT_TRUE(browser->loggedIn());
}

TEST_F(RemoteBrowserTest, SaysThatAPortIsNone) {
  for (const char* port : {"", "abc", "0", "65536", "99999999999999999999"}) {
    site.port = port;
    make();
    browser->connect();
    takeUntil([&] { return browser->log().lineCount() > 4; });
    EXPECT_THAT(logLines(), Contains(HasSubstr("is not a valid port number"))) << port;
  }
}

// --- walking

TEST_F(RemoteBrowserTest, EntersFoldersAndLeavesThem) {
  server.addFile("/www/a b/x.zip", "x");
  open();
  activate("www");
  EXPECT_THAT(rows(), ElementsAre("Cdup ..", "FolderClose a b"));
  activate("a b");
  EXPECT_THAT(rows(), ElementsAre("Cdup ..", "ZipFile x.zip"));
  activate("..");
  EXPECT_THAT(rows(), ElementsAre("Cdup ..", "FolderClose a b"));
  EXPECT_THAT(view.folders, ElementsAre("+/", "+/www", "+/www/a b", "/www"));
  EXPECT_EQ(server.count("CWD www"), 1U);
  EXPECT_EQ(server.count("CWD a b"), 1U);
  EXPECT_EQ(server.count("CDUP"), 1U);

  const std::size_t before = server.commands().size();
  browser->changeFolder("/www/a b");  // out of the box's list
  settle();
  EXPECT_EQ(view.folders.back(), "/www/a b");
  activate("x.zip");
  browser->activate(browser->rowCount());
  EXPECT_FALSE(browser->busy());
  EXPECT_THAT(commandsSince(before), ElementsAre("CWD /www/a b", "PWD", "EPSV", "LIST -a"));
}

TEST_F(RemoteBrowserTest, ListsAgainOnRefresh) {
  server.addFolder("/www");
  open();
  server.addFolder("/new");
  view.calls.clear();
  browser->refresh();
  settle();
  EXPECT_THAT(rows(), ElementsAre("Cdup ..", "FolderClose new", "FolderClose www"));
  EXPECT_THAT(view.calls, ElementsAre("busy", "cleared", "added from 0", "added from 1", "idle"));
}

TEST_F(RemoteBrowserTest, ListsOnlyAnAskedForFolderBehindWhatTheClientIsBusyWith) {
  server.addFolder("/www");
  open();
  Gate gate;
  server.once("LIST", gate.action());
  browser->refresh();
  gate.waitUntilReached();
  takeUntil([&] { return browser->rowCount() == 1; });
  browser->changeFolder("/elsewhere");
  browser->changeFolder("/www");
  browser->activate(0);
  browser->keepAlive();
  browser->refresh();
  gate.open();
  settle();
  EXPECT_EQ(server.count("CDUP"), 0U);
  EXPECT_EQ(server.count("CWD"), 1U);
  EXPECT_EQ(server.count("LIST"), 3U);
  EXPECT_THAT(view.folders, ElementsAre("+/", "/", "+/www"));
}

// --- what is listed

TEST_F(RemoteBrowserTest, ShowsNoFilesWhenOnlyFoldersAreWanted) {
  server.addFile("/only/a.txt", "x");
  server.addFile("/only/b", "x");
  site.defaultDir = "/only";
  foldersOnly = true;
  open();
  EXPECT_THAT(rows(), ElementsAre("Cdup .."));
  browser->setFoldersOnly(false);
  settle();
  EXPECT_THAT(rows(), ElementsAre("Cdup ..", "TextFile a.txt", "File b"));

  // While the client is busy the change has to wait.
  Gate gate;
  server.once("LIST", gate.action());
  browser->refresh();
  gate.waitUntilReached();
  browser->setFoldersOnly(true);
  gate.open();
  settle();
  EXPECT_THAT(rows(), ElementsAre("Cdup .."));
}

TEST_F(RemoteBrowserTest, TellsOfAListingThatNobodyCanRead) {
  server.setListing("/", "gibberish\r\nand \x1b[2J more\r\n");
  open();
  EXPECT_THAT(rows(), ElementsAre("Cdup .."));
  ASSERT_EQ(prompts.messages.size(), 1U);
  const Message& message = prompts.messages[0];
  EXPECT_EQ(message.title, "Quillmoor");
  EXPECT_EQ(message.icon, Message::Icon::information);
  EXPECT_EQ(
      message.text,
      "Some non-UNIX or non-DOS listing were encountered. \r\nThis sample only supports UNIX and DOS "
      "listings. \r\n\r\nHere are some of the lines that failed: \r\n\r\ngibberish\r\nand ?[2J more\r\n");

  server.once("LIST", transfers("150 Here.", "", "226 Output truncated to 1 matches"));
  browser->refresh();
  settle();
  EXPECT_THAT(logLines(), Contains("The server has not listed all of /: Output truncated to 1 matches"));

  server.setListing("/", std::string(1'000'000, 'x'));
  browser->refresh();
  settle();
  EXPECT_LT(prompts.messages.at(1).text.size(), 10'000U);

  for (const auto& listing : {std::string(17 << 20, 'x'), std::string()}) {
    server.setListing("/", listing);
    browser->refresh();
    settle();
    EXPECT_EQ(prompts.messages.size(), 2U) << "of " << listing.size() << " bytes";
    EXPECT_THAT(rows(), ElementsAre("Cdup .."));
  }
  EXPECT_THAT(logLines(), Contains(HasSubstr("longer than 16777216 bytes")));
}

TEST_F(RemoteBrowserTest, ShowsOddNamesAndAddsNoneThatAProfileWouldChange) {
  server.setListing("/",
                    "drwxr-xr-x 1 o g 0 Jan 1 2020 caf\xe9\r\ndrwxr-xr-x 1 o g 0 Jan 1 2020 a\x1b[31mb\r\n"
                    "drwxr-xr-x 1 o g 0 Jan 1 2020 pl\xc3\xa4ne\r\n"
                    "drwxr-xr-x 1 o g 0 Jan 1 2020 日本\r\ndrwxr-xr-x 1 o g 0 Jan 1 2020 a~|~b\r\n");
  server.addFolder("/caf\xe9");
  open();
  EXPECT_THAT(rows(), ElementsAre("Cdup ..", "FolderClose caf\xc3\xa9", "FolderClose a?[31mb",
                                  "FolderClose pl\xc3\xa4ne", "FolderClose 日本", "FolderClose a~|~b"));
  browser->selectAll();
  browser->addChecked();
  browser->addChecked();
  EXPECT_THAT(editor.shown.Folders, ElementsAre("/pl\xc3\xa4ne"));
  EXPECT_THAT(logLines(), Contains(StartsWith("Not added: ")).Times(8));
  EXPECT_THAT(logLines(), Contains("Added to the profile: 1"));
  EXPECT_THAT(logLines(), Contains("Added to the profile: 0, already in it: 1"));
  EXPECT_THAT(logLines(), Contains(HasSubstr("the profile file cannot keep: /日本")));
  EXPECT_THAT(logLines(), Contains(HasSubstr("\"/a~|~b\" cannot be a folder.")));

  // What the box shows leads back to the server's own bytes.
  activate("caf\xc3\xa9");
  EXPECT_EQ(view.folders.back(), "+/caf\xc3\xa9");
  activate("..");
  browser->changeFolder("/caf\xc3\xa9");
  settle();
  EXPECT_EQ(server.commands().at(server.commands().size() - 4), "CWD /caf\xe9");
}

// --- links

TEST_F(RemoteBrowserTest, TellsLinksToFoldersFromOthers) {
  server.setListing("/pub", linkLine("current", "../releases/42") + linkLine("file", "a.txt") +
                                "-rw-r--r-- 1 o g 1 Jan 1 2020 z.txt\r\n");
  server.addFile("/pub/current/inside.gif", "x");
  site.defaultDir = "/pub";
  open();
  EXPECT_THAT(rows(), ElementsAre("Cdup ..", "FolderLink current->../releases/42", "Link file->a.txt",
                                  "TextFile z.txt"));
  EXPECT_THAT(logLines(), Each(Not(HasSubstr("Error")))) << "a link to a file is no error";

  browser->setChecked(1, true);
  browser->addChecked();
  EXPECT_THAT(editor.shown.Folders, ElementsAre("/pub/current"));

  const std::size_t before = server.commands().size();
  activate("file->a.txt");
  EXPECT_EQ(rows()[2], "Link file->a.txt");
  EXPECT_THAT(commandsSince(before), ElementsAre("CWD file->a.txt")) << "nothing changes, nothing is listed";
  EXPECT_THAT(logLines(), Contains(StartsWith("Error: 550, ")));

  activate("current->../releases/42");
  EXPECT_THAT(rows(), ElementsAre("Cdup ..", "ImageFile inside.gif"));
  EXPECT_EQ(view.folders.back(), "+/pub/current");
}

TEST_F(RemoteBrowserTest, EntersLinksByTheirTextAndByTheirPathBeforeAnArrow) {
  server.setListing("/", linkLine("odd", "place"));
  server.addFolder("/odd->place");
  open();
  EXPECT_THAT(rows(), ElementsAre("Cdup ..", "Link odd->place"));
  const std::size_t before = server.commands().size();
  view.calls.clear();
  activate("odd->place");
  EXPECT_THAT(rows(), ElementsAre("Cdup ..", "FolderLink odd->place"));
  EXPECT_THAT(commandsSince(before), ElementsAre("CWD odd->place", "CWD /"));
  EXPECT_THAT(view.calls, ElementsAre("busy", "changed 1 to 1", "idle"));

  // The arrow may stand in a folder above.
  server.addFolder("/x->y/link");
  server.setListing("/x->y", linkLine("link", "elsewhere"));
  server.addFolder("/x/inside");
  site.defaultDir = "/x->y";
  open();
  activate("link->elsewhere");
  EXPECT_EQ(server.count("CWD /x"), 1U + server.count("CWD /x->y"));
  EXPECT_THAT(rows(), ElementsAre("Cdup ..", "FolderClose inside"));
}

TEST_F(RemoteBrowserTest, ShowsEveryRowAndAnswersClicksWhileLinksAreTested) {
  std::string listing = "drwxr-xr-x 1 o g 0 Jan 1 2020 images\r\n";
  for (int i = 0; i < 300; ++i) {
    listing += linkLine("l" + std::to_string(i), "target");
    if (i % 3 == 0) server.addFolder("/l" + std::to_string(i));
  }
  listing += "-rw-r--r-- 1 o g 1 Jan 1 2020 last.txt\r\n";
  server.setListing("/", listing);
  Gate gate;
  server.once("CWD /l7", gate.action());
  make();
  browser->connect();
  gate.waitUntilReached();
  takeUntil([&] { return browser->rowCount() == 303; });
  EXPECT_EQ(rows().back(), "TextFile last.txt");

  browser->selectAll();
  browser->setChecked(302, true);
  browser->setChecked(2, false);
  browser->addChecked();
  EXPECT_EQ(editor.shown.Folders.size(), 300U);  // images and the links but one
  EXPECT_TRUE(browser->busy());
  gate.open();
  settle();

  for (std::size_t i = 0; i < 300; ++i)
    EXPECT_EQ(browser->icon(i + 2), i % 3 == 0 ? RowIcon::FolderLink : RowIcon::Link) << i;
  EXPECT_EQ(tickedRows().size(), 301U) << "the ticks outlast the tests";
  EXPECT_GT(server.commandsSentAhead(), 300U) << "a test should not cost a round trip";
  EXPECT_EQ(server.count("CWD /l8"), 1U + 10U);
}

TEST_F(RemoteBrowserTest, LetsCommandsEndTheTestsOfLinks) {
  std::string listing = "drwxr-xr-x 1 o g 0 Jan 1 2020 www\r\n";
  for (int i = 0; i < 100; ++i) listing += linkLine("l" + std::to_string(i), "target");
  server.addFolder("/www");
  // One of those whose commands are under way when the tests are ended.
  server.addFile("/l9/inside", "x");
  server.setListing("/", listing);
  const struct {
    const char* name;
    void (*command)(RemoteBrowser&);
    const char* endsIn;
    std::size_t rows;
  } cases[] = {
      {"combo box", [](auto& b) { b.changeFolder("/www"); }, "/www", 1},
      {"combo box, to such a link", [](auto& b) { b.changeFolder("/l9"); }, "/l9", 2},
      {"a folder's row", [](auto& b) { b.activate(1); }, "/www", 1},
      {"a link's row, whose test comes yet", [](auto& b) { b.activate(99); }, "/", 102},
      {"refresh", [](auto& b) { b.refresh(); }, "/", 102},
      {"folders only", [](auto& b) { b.setFoldersOnly(true); }, "/", 102},
      {"the last of several", [](auto& b) { b.refresh(), b.changeFolder("/www"); }, "/www", 1},
  };
  for (const auto& one : cases) {
    Gate gate;
    server.once("CWD /l7", gate.action());
    make();
    browser->connect();
    gate.waitUntilReached();
    browser->takeEvents();
    ASSERT_EQ(browser->rowCount(), 102U) << one.name;
    const std::size_t before = server.count("CWD /l");
    one.command(*browser);
    gate.open();
    settle();
    EXPECT_EQ(view.folders.back().substr(view.folders.back().find('/')), one.endsIn) << one.name;
    EXPECT_EQ(browser->rowCount(), one.rows) << one.name;
    if (std::string(one.endsIn) != "/") {
      EXPECT_LT(server.count("CWD /l") - before, 50U) << one.name;
    } else {
      EXPECT_EQ(browser->icon(11), RowIcon::FolderLink) << one.name;
    }
    browser.reset();
  }
}

TEST_F(RemoteBrowserTest, TestsLinksWhateverBecomesOfTheirCommands) {
  server.setListing("/", linkLine("l0", "x") + linkLine("l1", "x"));
  server.addFolder("/l1");
  settings.Timeout = 1;
  const BrowsedSite direct = site;
  const struct {
    const char* name;
    std::function<void()> prepare;
    std::size_t errors;
  } cases[] = {{"the connection is lost, of which alone there is a trace",
                [&] { server.once("CWD /l0", drops()); }, 1},
               {"nothing is sent ahead through a pipe, and from no link that was not entered it goes back",
                [&] {
                  site.host = "ftp.example.org";
                  site.proxyType = 7;
                  site.proxyHost = "127.0.0.1";
                  site.proxyPort = site.port;
                },
                0},
               {"the server does not read ahead", [&] { server.discardInputBehindCommands(); }, 0}};
  for (const auto& one : cases) {
    site = direct;
    one.prepare();
    open();
    EXPECT_THAT(rows(), ElementsAre("Cdup ..", "Link l0->x", "FolderLink l1->x")) << one.name;
    EXPECT_THAT(logLines(), Contains(StartsWith("Error: ")).Times(static_cast<int>(one.errors))) << one.name;
    EXPECT_THAT(logLines(), Contains(StartsWith("Error: 1005, ")).Times(static_cast<int>(one.errors)))
        << one.name;
    const auto all = server.commands();
    if (site.proxyType == 7) {
      EXPECT_THAT(std::vector(all.end() - 3, all.end()), ElementsAre("CWD /l0", "CWD /l1", "CWD /"));
    }
    browser.reset();
  }
}

TEST_F(RemoteBrowserTest, ListsWhereALinkLeadsWhenThereIsNoWayBack) {
  server.setListing("/pub", linkLine("tested", "x") + linkLine("tried", "y"));
  server.addFile("/pub/tested/a.txt", "x");
  server.addFile("/pub/tried->y/b.txt", "x");
  site.defaultDir = "/pub";
  const auto noWayBack = [](auto& session) {
    session.line == "CWD /pub" ? session.reply("550 No more.") : session.answerAsUsual();
  };
  server.once("CWD /pub", [](auto& session) { session.answerAsUsual(); });
  open();
  EXPECT_THAT(rows(), ElementsAre("Cdup ..", "FolderLink tested->x", "Link tried->y"));
  server.on("CWD /pub", noWayBack);
  activate("tried->y");
  EXPECT_THAT(rows(), ElementsAre("Cdup ..", "TextFile b.txt"));
  EXPECT_EQ(view.folders.back(), "+/pub/tried->y");

  activate("..");
  EXPECT_THAT(rows(), ElementsAre("Cdup ..", "TextFile a.txt"));
  EXPECT_EQ(view.folders.back(), "+/pub/tested");
  EXPECT_THAT(logLines(), Contains(StartsWith("Cannot return from a link to /pub")));
}

// --- ticks

TEST_F(RemoteBrowserTest, TicksWhatCanBeEnteredAndNothingElse) {
  server.addFolder("/www");
  server.addFile("/a.txt", "x");
  server.setListing("/", "drwxr-xr-x 1 o g 0 Jan 1 2020 www\r\n-rw-r--r-- 1 o g 1 Jan 1 2020 a.txt\r\n" +
                             linkLine("link", "a.txt"));
  open();
  view.calls.clear();
  browser->setChecked(2, true);
  EXPECT_THAT(view.calls, ElementsAre("changed 2 to 2")) << "the tick is undone at once";
  EXPECT_THAT(tickedRows(), IsEmpty());
  for (const std::size_t row : {0, 1, 3}) browser->setChecked(row, true);
  EXPECT_THAT(view.calls, ElementsAre("changed 2 to 2")) << "what the user sees already";
  EXPECT_THAT(tickedRows(), ElementsAre("..", "www", "link->a.txt"));
  browser->setChecked(1, false);
  EXPECT_THAT(tickedRows(), ElementsAre("..", "link->a.txt"));

  browser->selectAll();
  EXPECT_THAT(tickedRows(), ElementsAre("..", "www", "link->a.txt"));
  EXPECT_EQ(view.calls.back(), "changed 0 to 3");
  browser->unselectAll();
  EXPECT_THAT(tickedRows(), IsEmpty());
}

TEST_F(RemoteBrowserTest, AddsEachTickedPathOnce) {
  server.addFolder("/www");
  server.addFolder("/cgi-bin");
  editor.shown.Folders = {"/www", "/WWW"};
  open();
  browser->selectAll();
  browser->addChecked();
  browser->addChecked();
  EXPECT_THAT(editor.shown.Folders, ElementsAre("/www", "/WWW", "/cgi-bin"));
  EXPECT_THAT(tickedRows(), ElementsAre("..", "cgi-bin", "www")) << "they stay ticked";
  browser->refresh();
  settle();
  EXPECT_THAT(tickedRows(), IsEmpty());
}

// --- staying connected

TEST_F(RemoteBrowserTest, KeepsAnIdleConnectionAlive) {
  open();
  const auto log = logLines();
  const std::size_t before = server.commands().size();
  browser->keepAlive();
  settle();
  EXPECT_THAT(commandsSince(before), ElementsAre("PWD"));
  EXPECT_EQ(logLines(), log);

  server.once("PWD", drops());
  browser->keepAlive();
  settle();
  const std::size_t logins = server.count("USER");
  browser->keepAlive();
  settle();
  EXPECT_EQ(server.count("USER"), logins) << "only a connected session is kept alive";
}

TEST_F(RemoteBrowserTest, ComesBackToItsFolderWhenTheServerHasDroppedTheConnection) {
  server.addFolder("/a/b/c");
  server.addFolder("/a/b/link->x");
  server.setListing("/a/b", "drwxr-xr-x 1 o g 0 Jan 1 2020 c\r\n" + linkLine("link", "x"));
  const struct {
    const char* dropsAt;
    void (*command)(RemoteBrowser&);
    const char* endsIn;
  } cases[] = {{"CDUP", [](auto& b) { b.activate(0); }, "/a"},
               {"CWD c", [](auto& b) { b.activate(1); }, "/a/b/c"},
               {"PWD", [](auto& b) { b.refresh(); }, "/a/b"},
               {"LIST", [](auto& b) { b.refresh(); }, "/a/b"},
               {"CWD link", [](auto& b) { b.activate(2); }, "/a/b"},
               {"CWD /a/b", [](auto& b) { b.activate(2); }, "/a/b"},
               // While the first listing is being made.
               {"CWD /a/b", nullptr, "/a/b"},
               {"PWD", nullptr, "/a/b"},
               {"LIST", nullptr, "/a/b"}};
  site.defaultDir = "/a/b";
  for (const auto& one : cases) {
    if (one.command) open();
    server.once(one.dropsAt, drops());
    one.command ? one.command(*browser) : open();
    settle();
    EXPECT_TRUE(browser->loggedIn());
    EXPECT_EQ(view.folders.back().substr(view.folders.back().find('/')), one.endsIn) << one.dropsAt;
    EXPECT_EQ(logLines().at(logLines().size() - 2), "Connected to: 127.0.0.1") << one.dropsAt;
  }
}

TEST_F(RemoteBrowserTest, ChangesNoFolderFromAnotherThanTheOneShown) {
  server.addFolder("/a/www");
  server.addFolder("/www");  // where the server puts a new session
  site.defaultDir = "/a";
  open();
  server.once("CWD www", drops());
  server.once("CWD /a", replies("550 Gone."));
  activate("www");
  EXPECT_EQ(view.folders.back(), "+/");
  EXPECT_THAT(rows(), ElementsAre("Cdup ..", "FolderClose a", "FolderClose www"));
  EXPECT_EQ(server.count("CWD www"), 1U);

  open();
  server.once("CWD /www", drops());
  server.once("CWD /a", replies("550 Gone."));
  browser->changeFolder("/www");
  settle();
  EXPECT_EQ(view.folders.back(), "+/www") << "a whole path leads there from anywhere";
}

}  // namespace
}  // namespace quillmoor
