// The remote browser against a server in memory.
#include "browser/RemoteBrowser.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "browser/BrowserWorld.h"
#include "profiles/SettingsStore.h"

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

std::string linkLine(const std::string& name, const std::string& target) {
  return "lrwxrwxrwx   1 0  0   11 Jan 15 2020 " + name + " -> " + target + "\r\n";
}
std::string folderLine(const std::string& name) {
  return "drwxr-xr-x 1 o g 0 Jan 1 2020 " + name + "\r\n";
}
/// The path of the last showFolder, without the "+" of a new one.
std::string lastFolder(const RecordingView& view) {
  return view.folders.back().substr(view.folders.back().find('/'));
}

class RemoteBrowserTest : public ::testing::Test, protected BrowserWorld {
 protected:
  /// Lists "www" and links "l0", "l1" and so on, and holds the server at the test of "l7".
  void openAtLink7(Gate& gate, int links, const std::string& more = "") {
    std::string listing = folderLine("www");
    for (int i = 0; i < links; ++i) listing += linkLine("l" + std::to_string(i), "target");
    server.setListing("/", listing + more);
    server.once("CWD /l7", gate.action());
    make();
    browser->connect();
    gate.waitUntilReached();
  }
};

// --- connecting

TEST_F(RemoteBrowserTest, LogsInAndListsTheProfilesFolder) {
  server.addFile("/pub/readme.txt", "hello");
  server.addFolder("/pub/images");
  site.DefaultDir = "/pub";
  foldersOnly = true;
  open();
  EXPECT_TRUE(browser->loggedIn());
  EXPECT_THAT(rows(), ElementsAre("Cdup ..", "FolderClose images"));
  browser->setFoldersOnly(false);
  finish();
  EXPECT_THAT(rows(), ElementsAre("Cdup ..", "FolderClose images", "TextFile readme.txt"));
  EXPECT_THAT(view.folders, ElementsAre("+/pub", "/pub"));
  EXPECT_THAT(logLines(), ElementsAre("Connecting... ", "Connected to: 127.0.0.1", ""));
  EXPECT_EQ(browser->cell(2, 1) + browser->cell(0, 1), "5");
}

TEST_F(RemoteBrowserTest, StaysWhereItIsWhenThereIsNoSuchFolder) {
  server.addFolder("/www");
  site.DefaultDir = "/gone";
  open();
  EXPECT_THAT(rows(), ElementsAre("Cdup ..", "FolderClose www"));
  EXPECT_THAT(view.folders, ElementsAre("+/"));
  EXPECT_THAT(logLines(), Contains(StartsWith("Error: 550, ")));

  browser->setChecked(1, true);
  changeFolder("/gone");
  EXPECT_THAT(tickedRows(), ElementsAre("www"));
  EXPECT_THAT(view.folders, ElementsAre("+/", "/")) << "the box holds the current folder again";
  EXPECT_THAT(logLines(), Contains(StartsWith("Error: 550, ")).Times(2));
}

TEST_F(RemoteBrowserTest, TriesAgainUntilALoginWorks) {
  server.once("PASS", replies("530 Not today."));
  server.once("", replies("421 Too many users."));
  open();
  EXPECT_THAT(logLines(),
              ElementsAre("Connecting... ", "Connection Closed",
                          "Error: 421, The server refused the connection: 421 Too many users.",
                          "Login error: 421,The server refused the connection: 421 Too many users.",
                          StartsWith("The server takes no more connections"), "Retry : 1",
                          "Waiting 0 Seconds...", "Connecting... ", "Connection Closed",
                          "Error: 530, The server refused the password: 530 Not today.",
                          "Login error: 530,The server refused the password: 530 Not today.", "Retry : 2",
                          "Waiting 0 Seconds...", "Connecting... ", "Connected to: 127.0.0.1", ""));
  EXPECT_TRUE(browser->loggedIn());
}

TEST_F(RemoteBrowserTest, UsesTheTimeoutOfTheSettingsInsteadOfTheProfiles) {
  server.once("PASS", staysSilent());
  settings.Timeout = 1;
  site.Timeout = "9999";
  open();
  EXPECT_THAT(logLines(), Contains(StartsWith("Login error: 1006,")));
  EXPECT_TRUE(browser->loggedIn());
}

TEST_F(RemoteBrowserTest, RefusesAnInvalidPort) {
  for (const char* port : {"abc", "0", "65536", "99999999999999999999"}) {
    site.Port = port;
    make();
    browser->connect();
    takeUntil([&] { return browser->log().lineCount() > 4; });
    EXPECT_THAT(logLines(), Contains(HasSubstr("is not a valid port number"))) << port;
  }
}

TEST_F(RemoteBrowserTest, LogsInWithAnUnknownCertificateOnceTheUserAcceptsIt) {
  server.offerTls();
  server.addFolder("/www");
  site.Security = 1;
  const std::string known = server.fingerprint(), former(64, 'f');
  for (const std::string& before : {std::string(), former}) {
    site.Certificate = editor.shown.Certificate = before;
    prompts.answer = UserPrompts::Answer::no;
    open();
    EXPECT_FALSE(browser->loggedIn());
    EXPECT_EQ(server.count("USER"), before.empty() ? 0U : 2U);
    EXPECT_THAT(logLines(), Contains("The certificate is not accepted. \"Refresh\" asks again."));
    EXPECT_EQ(editor.shown.Certificate, before);
    prompts.answer = UserPrompts::Answer::yes;
    refresh();
    EXPECT_THAT(rows(), ElementsAre("Cdup ..", "FolderClose www"));
    EXPECT_EQ(editor.shown.Certificate, known);
    const auto questions = prompts.takeMessages();
    ASSERT_EQ(questions.size(), 2U);
    for (const Message& question : questions) {
      EXPECT_EQ(question.buttons, Message::Buttons::yesNo);
      EXPECT_EQ(question.defaultButton, 2);
      for (const std::string& part :
           {known, std::string(before.empty() ? "127.0.0.1 is unknown" : "127.0.0.1 has changed"),
            std::string("Issued by: CN=localhost"), std::string("no, self-signed")})
        EXPECT_THAT(question.text, HasSubstr(part));
    }
    server.once("PWD", drops());
    refresh();
    EXPECT_TRUE(browser->loggedIn() && prompts.messages.empty()) << "asks about what was accepted";
  }
}

TEST_F(RemoteBrowserTest, SaysOfALoginThatItCouldBeEncrypted) {
  const char* const line =
      "The server offers encryption: choose TLS under \"Security\" in the profile to use it.";
  server.on("FEAT", replies("211-Features:\r\n AUTH TLS\r\n211 End"));
  open();
  refresh();
  EXPECT_THAT(logLines(), Contains(line).Times(1));
  editor.shown = site;
  EXPECT_THAT(editor.securityNote(), HasSubstr("offers encryption"));
}

// --- walking

TEST_F(RemoteBrowserTest, EntersFoldersAndLeavesThemAndRefreshes) {
  open();
  server.addFile("/www/a b/x.zip", "x");
  view.calls.clear();
  refresh();
  EXPECT_THAT(view.calls, ElementsAre("busy", "cleared", "added from 0", "added from 1", "idle"));
  activate("www");
  EXPECT_THAT(rows(), ElementsAre("Cdup ..", "FolderClose a b"));
  activate("a b");
  EXPECT_THAT(rows(), ElementsAre("Cdup ..", "ZipFile x.zip"));
  activate("..");
  EXPECT_THAT(rows(), ElementsAre("Cdup ..", "FolderClose a b"));
  EXPECT_THAT(view.folders, ElementsAre("+/", "/", "+/www", "+/www/a b", "/www"));
  for (const char* command : {"CWD www", "CWD a b", "CDUP"}) EXPECT_EQ(server.count(command), 1U);

  const std::size_t before = server.commands().size();
  browser->changeFolder("/www/a b");  // out of the box's list
  finish();
  EXPECT_EQ(view.folders.back(), "/www/a b");
  activate("x.zip");
  browser->activate(browser->rowCount());
  EXPECT_FALSE(browser->busy());
  EXPECT_THAT(commandsSince(before), ElementsAre("CWD /www/a b", "PWD", "EPSV", "LIST -a"));
}

TEST_F(RemoteBrowserTest, ListsOnlyARequestedFolderAfterWhatTheClientIsBusyWith) {
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
  finish();
  EXPECT_EQ(server.count("CDUP"), 0U);
  EXPECT_EQ(server.count("CWD"), 1U);
  EXPECT_EQ(server.count("LIST"), 3U);
  EXPECT_THAT(view.folders, ElementsAre("+/", "/", "+/www"));
}

// --- what is listed

TEST_F(RemoteBrowserTest, ReportsAListingThatCannotBeRead) {
  server.setListing("/", "gibberish\r\nand \x1b[2J more\r\n");
  open();
  EXPECT_THAT(rows(), ElementsAre("Cdup .."));
  const Message message = prompts.messages.at(0);
  EXPECT_EQ(message.title, "Quillmoor");
  EXPECT_EQ(message.icon, Message::Icon::information);
  EXPECT_EQ(
      message.text,
      "Some non-UNIX or non-DOS listing were encountered. \r\nThis sample only supports UNIX and DOS "
      "listings. \r\n\r\nHere are some of the lines that failed: \r\n\r\ngibberish\r\nand ?[2J more\r\n");

  server.once("LIST", transfers("150 Here.", "", "226 Output truncated to 1 matches"));
  refresh();
  EXPECT_THAT(logLines(), Contains("The server has not listed all of /: Output truncated to 1 matches"));

  server.setListing("/", std::string(1'000'000, 'x'));
  refresh();
  EXPECT_LT(prompts.messages.at(1).text.size(), 10'000U);
  EXPECT_THAT(prompts.messages[1].text, ::testing::EndsWith("xxx... (1000000 bytes in all)"));

  server.setListing("/", std::string(17 << 20, 'x'));
  refresh();
  EXPECT_EQ(prompts.messages.size(), 2U) << "no message for a listing that is refused";
  EXPECT_THAT(rows(), ElementsAre("Cdup .."));
  EXPECT_THAT(logLines(), Contains(HasSubstr("longer than 16777216 bytes")));
}

TEST_F(RemoteBrowserTest, ShowsOddNamesAndAddsNoneThatAProfileWouldChange) {
  std::string listing;
  for (const char* name : {"caf\xe9", "a\x1b[31mb", "pläne", "日本", "a~|~b"}) listing += folderLine(name);
  server.setListing("/", listing);
  server.addFolder("/caf\xe9");
  open();
  EXPECT_THAT(rows(), ElementsAre("Cdup ..", "FolderClose café", "FolderClose a?[31mb", "FolderClose pläne",
                                  "FolderClose 日本", "FolderClose a~|~b"));
  browser->selectAll();
  browser->addChecked();
  browser->addChecked();
  EXPECT_THAT(editor.shown.Folders, ElementsAre("/pläne"));
  EXPECT_THAT(logLines(), Contains(StartsWith("Not added: ")).Times(8));
  EXPECT_THAT(logLines(), Contains("Added to the profile: 1"));
  EXPECT_THAT(logLines(), Contains("Added to the profile: 0, already in it: 1"));
  EXPECT_THAT(logLines(), Contains(HasSubstr("the profile file cannot keep: /日本")));
  EXPECT_THAT(logLines(), Contains(HasSubstr("\"/a~|~b\" cannot be a folder.")));

  // The text in the box stands for the server's own bytes.
  activate("café");
  EXPECT_EQ(view.folders.back(), "+/café");
  activate("..");
  changeFolder("/caf\xc3\xa9");
  EXPECT_EQ(server.commands().at(server.commands().size() - 4), "CWD /caf\xe9");
}

// --- links

TEST_F(RemoteBrowserTest, DistinguishesLinksToFoldersFromOthers) {
  server.setListing("/pub", linkLine("current", "../releases/42") + linkLine("file", "a.txt") +
                                "-rw-r--r-- 1 o g 1 Jan 1 2020 z.txt\r\n");
  server.addFile("/pub/current/inside.gif", "x");
  site.DefaultDir = "/pub";
  open();
  EXPECT_THAT(rows(), ElementsAre("Cdup ..", "FolderLink current->../releases/42", "Link file->a.txt",
                                  "TextFile z.txt"));
  EXPECT_THAT(logLines(), Each(Not(HasSubstr("Error")))) << "a link to a file is logged as an error";

  const std::size_t before = server.commands().size();
  activate("file->a.txt");
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
  view.calls.clear();
  activate("odd->place");
  EXPECT_THAT(rows(), ElementsAre("Cdup ..", "FolderLink odd->place"));
  EXPECT_THAT(view.calls, ElementsAre("busy", "changed 1 to 1", "idle"));

  // The arrow may stand in a folder above.
  server.addFolder("/x->y/link");
  server.setListing("/x->y", linkLine("link", "elsewhere"));
  server.addFolder("/x/inside");
  site.DefaultDir = "/x->y";
  open();
  activate("link->elsewhere");
  EXPECT_EQ(server.count("CWD /x"), 1U + server.count("CWD /x->y"));
  EXPECT_THAT(rows(), ElementsAre("Cdup ..", "FolderClose inside"));
}

TEST_F(RemoteBrowserTest, ShowsEveryRowAndAnswersClicksWhileLinksAreTested) {
  for (int i = 0; i < 300; i += 3) server.addFolder("/l" + std::to_string(i));
  Gate gate;
  openAtLink7(gate, 300, "-rw-r--r-- 1 o g 1 Jan 1 2020 last.txt\r\n");
  takeUntil([&] { return browser->rowCount() == 303; });
  EXPECT_EQ(rows().back(), "TextFile last.txt");

  browser->selectAll();
  browser->setChecked(302, true);
  browser->setChecked(2, false);
  browser->addChecked();
  EXPECT_EQ(editor.shown.Folders.size(), 300U);  // www and all links but one
  EXPECT_TRUE(browser->busy());
  gate.open();
  finish();

  for (std::size_t i = 0; i < 300; ++i)
    EXPECT_EQ(browser->icon(i + 2), i % 3 == 0 ? RowIcon::FolderLink : RowIcon::Link) << i;
  EXPECT_EQ(tickedRows().size(), 301U) << "the ticks outlast the tests";
  EXPECT_GT(server.commandsSentAhead(), 300U) << "a test should not cost a round trip";
  EXPECT_EQ(server.count("CWD /l8"), 1U + 10U);
}

TEST_F(RemoteBrowserTest, LetsCommandsEndTheTestsOfLinks) {
  server.addFolder("/www");
  // One of those whose commands have been sent when the tests are ended.
  server.addFile("/l9/inside", "x");
  const struct {
    const char* name;
    void (*command)(RemoteBrowser&);
    const char* endsIn;
    std::size_t rows;
  } cases[] = {
      {"combo box", [](auto& b) { b.changeFolder("/www"); }, "/www", 1},
      {"combo box, to such a link", [](auto& b) { b.changeFolder("/l9"); }, "/l9", 2},
      {"a folder's row", [](auto& b) { b.activate(1); }, "/www", 1},
      {"a link's row, before its test", [](auto& b) { b.activate(99); }, "/", 102},
      {"folders only", [](auto& b) { b.setFoldersOnly(true); }, "/", 102},
      {"the last of several", [](auto& b) { b.refresh(), b.changeFolder("/www"); }, "/www", 1},
  };
  for (const auto& one : cases) {
    Gate gate;
    openAtLink7(gate, 100);
    browser->takeEvents();
    ASSERT_EQ(browser->rowCount(), 102U) << one.name;
    const std::size_t before = server.count("CWD /l");
    one.command(*browser);
    gate.open();
    finish();
    EXPECT_EQ(lastFolder(view), one.endsIn) << one.name;
    EXPECT_EQ(browser->rowCount(), one.rows) << one.name;
    if (std::string(one.endsIn) != "/") {
      EXPECT_LT(server.count("CWD /l") - before, 50U) << one.name;
    } else {
      EXPECT_EQ(browser->icon(11), RowIcon::FolderLink) << one.name;
    }
    browser.reset();
  }
}

TEST_F(RemoteBrowserTest, TestsLinksHoweverTheServerTreatsCommandsSentAhead) {
  server.setListing("/", linkLine("l0", "x") + linkLine("l1", "x"));
  server.addFolder("/l1");
  settings.Timeout = 1;
  const SiteProfile direct = site;
  const struct {
    const char* name;
    std::function<void()> prepare;
    int errors;
  } cases[] = {{"the connection is lost, which alone is logged", [&] { server.once("CWD /l0", drops()); }, 1},
               {"nothing is sent ahead through a pipe, and it goes back from entered links only",
                [&] {
                  site.Host = "ftp.example.org";
                  site.ProxyType = 7;
                  site.ProxyHost = "127.0.0.1";
                  site.ProxyPort = site.Port;
                },
                0},
               {"the server does not read ahead", [&] { server.discardInputBehindCommands(); }, 0}};
  for (const auto& one : cases) {
    site = direct;
    one.prepare();
    open();
    EXPECT_THAT(rows(), ElementsAre("Cdup ..", "Link l0->x", "FolderLink l1->x")) << one.name;
    EXPECT_THAT(logLines(), Contains(StartsWith("Error: ")).Times(one.errors)) << one.name;
    EXPECT_THAT(logLines(), Contains(StartsWith("Error: 1005, ")).Times(one.errors)) << one.name;
    const auto all = server.commands();
    if (site.ProxyType == 7) {
      EXPECT_THAT(std::vector(all.end() - 3, all.end()), ElementsAre("CWD /l0", "CWD /l1", "CWD /"));
    }
    browser.reset();
  }
}

TEST_F(RemoteBrowserTest, ListsWhereALinkLeadsWhenThereIsNoWayBack) {
  server.setListing("/pub", linkLine("tested", "x") + linkLine("tried", "y"));
  server.addFile("/pub/tested/a.txt", "x");
  server.addFile("/pub/tried->y/b.txt", "x");
  site.DefaultDir = "/pub";
  open();
  EXPECT_THAT(rows(), ElementsAre("Cdup ..", "FolderLink tested->x", "Link tried->y"));
  server.on("CWD /pub", [](auto& session) {
    session.line == "CWD /pub" ? session.reply("550 No more.") : session.answerAsUsual();
  });
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
  server.setListing(
      "/", folderLine("www") + "-rw-r--r-- 1 o g 1 Jan 1 2020 a.txt\r\n" + linkLine("link", "a.txt"));
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
  browser->selectAll();
  refresh();
  EXPECT_THAT(tickedRows(), IsEmpty());
}

// --- staying connected

TEST_F(RemoteBrowserTest, KeepsAnIdleConnectionAlive) {
  open();
  const auto log = logLines();
  const std::size_t before = server.commands().size();
  const auto keepAlive = [&] {
    browser->keepAlive();
    finish();
  };
  keepAlive();
  EXPECT_THAT(commandsSince(before), ElementsAre("PWD"));
  EXPECT_EQ(logLines(), log);

  server.once("PWD", drops());
  keepAlive();
  keepAlive();
  EXPECT_EQ(server.count("USER"), 1U) << "only a connected session is kept alive";
}

TEST_F(RemoteBrowserTest, ComesBackToItsFolderWhenTheServerHasDroppedTheConnection) {
  server.addFolder("/a/b/c");
  server.addFolder("/a/b/link->x");
  server.setListing("/a/b", folderLine("c") + linkLine("link", "x"));
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
  site.DefaultDir = "/a/b";
  for (const auto& one : cases) {
    if (one.command) open();
    server.once(one.dropsAt, drops());
    one.command ? one.command(*browser) : open();
    finish();
    EXPECT_EQ(lastFolder(view), one.endsIn) << one.dropsAt;
    EXPECT_EQ(logLines().at(logLines().size() - 2), "Connected to: 127.0.0.1") << one.dropsAt;
  }
}

TEST_F(RemoteBrowserTest, ChangesFolderOnlyFromTheOneShown) {
  server.addFolder("/a/www");
  server.addFolder("/www");  // where the server puts a new session
  site.DefaultDir = "/a";
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
  changeFolder("/www");
  EXPECT_EQ(view.folders.back(), "+/www") << "a whole path leads there from anywhere";
}

}  // namespace
}  // namespace quillmoor
