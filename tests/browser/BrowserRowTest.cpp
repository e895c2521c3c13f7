// How a listing becomes rows, and which icon a row bears.
#include "browser/BrowserRow.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

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

std::vector<std::string> names(const std::vector<BrowserRow>& rows) {
  std::vector<std::string> all;
  for (const auto& row : rows) all.push_back(std::string(IconKey(row.icon)) + " " + row.text());
  return all;
}

TEST(FolderRows, ShowsFoldersFirstAndThenLinksAndFilesInTheOrderOfTheListing) {
  RemoteListing listing;
  listing.entries = {entry("-", "z.txt"), entry("d", "www"),    entry("d", "."), entry("l", "b", "x/y"),
                     entry("d", ".."),    entry("-", "a"),      entry("d", "a"), entry("L", "c", ""),
                     entry("c", "null"),  entry("D", "capital")};
  EXPECT_THAT(names(FolderRows(listing, "/", false)),
              ElementsAre("FolderClose www", "FolderClose a", "TextFile z.txt", "Link b->x/y", "File a",
                          "Link c->", "File null", "File capital"));
  EXPECT_THAT(names(FolderRows(listing, "/", true)),
              ElementsAre("FolderClose www", "FolderClose a", "Link b->x/y", "Link c->"));
}

TEST(FolderRows, FillsTheColumnsAndTellsTheWholePath) {
  RemoteListing listing;
  RemoteEntry big = entry("-", "big.iso");
  big.size = 2147483647;
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

}  // namespace
}  // namespace quillmoor
