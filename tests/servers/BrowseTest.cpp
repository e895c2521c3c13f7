// Browses the site of a real server, which browse_test.sh has started and describes in the environment.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <string>

#include "browser/BrowserWorld.h"

namespace quillmoor {
namespace {

using ::testing::Contains;
using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::Not;
using ::testing::StartsWith;
using ::testing::UnorderedElementsAre;

std::string given(const char* name) {
  const char* const value = std::getenv(name);
  EXPECT_TRUE(value) << name << " is set by browse_test.sh";
  return value ? value : "";
}

class BrowseTest : public ::testing::Test, protected BrowserWorld {
 protected:
  BrowseTest() {
    site.host = given("FTP_HOST");
    site.port = given("FTP_PORT");
    site.userId = given("FTP_USER");
    site.password = given("FTP_PASSWORD");
    site.passive = given("FTP_MODE") == "passive";
    site.defaultDir = root;
    site.proxyType = static_cast<std::int16_t>(std::stoi(given("PROXY_TYPE")));
    site.proxyHost = "127.0.0.1";
    site.proxyPort = given("PROXY_PORT");
    site.proxyUsername = given("PROXY_USER");
    site.proxyPassword = given("PROXY_PASSWORD");
  }
  const std::string root = given("FTP_ROOT");
  const std::string base = root.ends_with('/') ? root : root + "/";
};

TEST_F(BrowseTest, WalksTheSiteAndAddsFolders) {
  open();
  EXPECT_THAT(rows(), UnorderedElementsAre("Cdup ..", "FolderClose www", "FolderClose cgi-bin",
                                           "FolderLink pics->www/images"));
  EXPECT_EQ(rows().front(), "Cdup ..");
  EXPECT_THAT(rows().back(), StartsWith("FolderLink"));
  browser->setChecked(rowOf("pics->www/images"), true);
  browser->addChecked();

  activate("pics->www/images");
  EXPECT_THAT(rows(), ElementsAre("Cdup ..", "FolderClose 2019", "File logo.png"));

  browser->changeFolder(base + "www");
  settle();
  EXPECT_THAT(rows(), Contains("FolderClose with blanks in it"));
  EXPECT_THAT(rows(), Contains("File .htaccess"));
  EXPECT_THAT(rows(), Contains("TextFile SHOUT.TXT"));
  EXPECT_THAT(rows(), Contains("Link start.html->index.html"));
  browser->setChecked(rowOf("gr\xc3\xbc\xc3\x9f"
                            "e"),
                      true);
  browser->addChecked();
  EXPECT_THAT(editor.shown.Folders, ElementsAre(base + "pics", base + "www/gr\xc3\xbc\xc3\x9f"
                                                                      "e"));
  EXPECT_THAT(logLines(), Each(Not(StartsWith("Error"))));

  activate("start.html->index.html");
  EXPECT_THAT(rows(), Contains("Link start.html->index.html"));
  activate("with blanks in it");
  EXPECT_THAT(rows(), ElementsAre("Cdup ..", "TextFile read me  first.txt"));
  EXPECT_EQ(view.folders.back(), "+" + base + "www/with blanks in it");
  activate("..");
  EXPECT_EQ(view.folders.back(), base + "www");

  browser->setFoldersOnly(true);
  settle();
  EXPECT_EQ(browser->cell(browser->rowCount() - 1, 0), "start.html->index.html");
  browser->keepAlive();
  settle();
  browser->close({});
  takeUntil([&] { return view.isClosed; });
  EXPECT_THAT(logLines(), Contains("Connection Closed"));
}

}  // namespace
}  // namespace quillmoor
