// How a listing becomes rows, the icon of each row, and how the place of the window is stored.
#include "browser/BrowserRow.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TestPlatform.h"
#include "browser/BrowserPlacement.h"
#include "profiles/SettingsStore.h"

namespace quillmoor {
namespace {

using ::testing::ElementsAre;

TEST(FileIcon, GoesByTheLastFourCharactersWhateverTheirCase) {
  const std::pair<const char*, std::vector<const char*>> icons[] = {
      {"TextFile", {"readme.txt", "README.TXT", ".txt"}},
      {"ZipFile", {"a.zip", "a.arj", "a.tgz", "a.Tar", "a.lzh", "a.lza"}},
      {"ExeFile", {"run.exe", "run.COM", "run.bat"}},
      {"ImageFile", {"a.jpg", "a.bmp", "a.img", "a.gif"}},
      {"HelpFile", {"a.hlp"}},
      {"File", {"a.tar.gz", "a.jpeg", "index.html", "x.b", "txt", "", "a.txt "}}};
  for (const auto& [key, names] : icons) {
    for (const char* name : names) EXPECT_EQ(IconKey(FileIcon(name)), key) << name;
  }
}

RemoteEntry entry(const std::string& type, const std::string& name, const std::string& target = "") {
  RemoteEntry one;
  one.type = type;
  one.name = name;
  one.linkTarget = target;
  return one;
}

std::string names(const std::vector<BrowserRow>& rows) {
  std::string all;
  for (const auto& row : rows) all += std::string(IconKey(row.icon)) + " " + row.text() + "|";
  return all;
}

TEST(FolderRows, ShowsFoldersFirstAndThenLinksAndFilesInTheOrderOfTheListing) {
  RemoteListing listing;
  listing.entries = {entry("-", "z.txt"), entry("d", "www"),    entry("d", "."), entry("l", "b", "x/y"),
                     entry("d", ".."),    entry("-", "a"),      entry("d", "a"), entry("L", "c", ""),
                     entry("c", "null"),  entry("D", "capital")};
  EXPECT_EQ(
      names(FolderRows(listing, "/", false)),
      "FolderClose www|FolderClose a|TextFile z.txt|Link b->x/y|File a|Link c->|File null|File capital|");
  EXPECT_EQ(names(FolderRows(listing, "/", true)), "FolderClose www|FolderClose a|Link b->x/y|Link c->|");
}

TEST(FolderRows, FillsTheColumnsAndTheWholePath) {
  RemoteListing listing;
  RemoteEntry big = entry("-", "big.iso");
  big.sizeBytes = 5'000'000'000;
  big.dateText = "Jan 5 2009";
  big.user = "joe";
  big.group = "www";
  big.permissions = 0644;
  listing.entries = {big, entry("l", "now", "releases/42")};

  const auto rows = FolderRows(listing, "/pub", false);
  EXPECT_THAT(rows[0].cells, ElementsAre("big.iso", "5000000000", "Jan 5 2009", "joe", "www", "420"));
  EXPECT_EQ(rows[0].tag, "/pub/big.iso");
  EXPECT_EQ(rows[1].tag, "/pub/now") << "the target is no part of a link's path";

  const char* folders[][2] = {
      {"/", "/now"}, {"/pub/", "/pub/now"}, {" /a b ", "/a b/now"}, {"/x[1]y", "/xy/now"}};
  for (const auto& [folder, tag] : folders) EXPECT_EQ(FolderRows(listing, folder, false)[1].tag, tag);
}

TEST(BrowserPlacement, ComesBackAsItWasStored) {
  const testing::OwnRegistry registry;
  EXPECT_FALSE(LoadBrowserPlacement().window);
  SaveBrowserPlacement({BrowserPlacement::Rectangle{-1200, 15, 9000.4, 6000}, true});
  const BrowserPlacement stored = LoadBrowserPlacement();
  EXPECT_EQ(stored.window, (BrowserPlacement::Rectangle{-1200, 15, 9000, 6000}));
  EXPECT_TRUE(stored.foldersOnly);
  EXPECT_EQ(ReadSetting("FtpBrowseLeft", ""), "-1200");

  SaveBrowserPlacement({std::nullopt, false});
  EXPECT_EQ(LoadBrowserPlacement().window, stored.window) << "a window without a place leaves the stored one";
  EXPECT_FALSE(LoadBrowserPlacement().foldersOnly);
}

TEST(BrowserPlacement, IgnoresAnInvalidPlace) {
  const testing::OwnRegistry registry;
  const char* const keys[] = {"FtpBrowseLeft", "FtpBrowseTop", "FtpBrowseWidth", "FtpBrowseHeight"};
  const char* bad[][4] = {
      {"1", "2", "3", ""}, {"1", "2", "0", "4"}, {"1", "2", "3", "-4"}, {"1e9", "2", "3", "4"}};
  for (const auto& values : bad) {
    for (std::size_t i = 0; i < std::size(keys); ++i) WriteSetting(keys[i], values[i]);
    EXPECT_FALSE(LoadBrowserPlacement().window) << values[0] << ' ' << values[2] << ' ' << values[3];
  }
  WriteSetting("FtpBrowseFoldersOnly", "2");
  EXPECT_FALSE(LoadBrowserPlacement().foldersOnly) << "only 1 means yes";
}

}  // namespace
}  // namespace quillmoor
