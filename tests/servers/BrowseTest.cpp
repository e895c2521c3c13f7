// Browses a real server, started by browse_test.sh, which describes it in the environment.
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
using ::testing::IsSupersetOf;
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
    site.Host = given("FTP_HOST");
    site.Port = given("FTP_PORT");
    site.UserID = given("FTP_USER");
    site.Password = given("FTP_PASSWORD");
    site.PASV = given("FTP_MODE") == "passive" ? 1 : 0;
    site.DefaultDir = root;
    site.ProxyType = std::stoi(given("PROXY_TYPE"));
    site.ProxyHost = "127.0.0.1";
    site.ProxyPort = given("PROXY_PORT");
    site.ProxyUsername = given("PROXY_USER");
    site.ProxyPassword = given("PROXY_PASSWORD");
  }
  const std::string root = given("FTP_ROOT");
  const std::string base = root.ends_with('/') ? root : root + "/";
};

TEST_F(BrowseTest, WalksTheSiteAndAddsFolders) {
  open();
  EXPECT_THAT(rows(), UnorderedElementsAre("Cdup ..", "FolderClose www", "FolderClose cgi-bin",
                                           "FolderLink pics->www/images"));
  browser->setChecked(rowOf("pics->www/images"), true);
  browser->addChecked();

  activate("pics->www/images");
  EXPECT_THAT(rows(), ElementsAre("Cdup ..", "FolderClose 2019", "File logo.png"));

  changeFolder(base + "www");
  EXPECT_THAT(rows(), IsSupersetOf({"FolderClose with blanks in it", "File .htaccess", "TextFile SHOUT.TXT",
                                    "Link start.html->index.html"}));
  browser->setChecked(rowOf("grüße"), true);
  browser->addChecked();
  EXPECT_THAT(editor.shown.Folders, ElementsAre(base + "pics", base + "www/grüße"));
  EXPECT_THAT(logLines(), Each(Not(StartsWith("Error"))));

  activate("start.html->index.html");
  EXPECT_THAT(rows(), Contains("Link start.html->index.html"));
  activate("with blanks in it");
  EXPECT_THAT(rows(), ElementsAre("Cdup ..", "TextFile read me  first.txt"));
  EXPECT_EQ(view.folders.back(), "+" + base + "www/with blanks in it");
  activate("..");
  EXPECT_EQ(view.folders.back(), base + "www");

  browser->close({});
  takeUntil([&] { return view.isClosed; });
  EXPECT_THAT(logLines(), Contains("Connection Closed"));
}

}  // namespace
}  // namespace quillmoor
