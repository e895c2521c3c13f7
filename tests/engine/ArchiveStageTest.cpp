// The archive stage with a packer that does as it is told: what is packed, how it is logged, where copies go.
#include "engine/ArchiveStage.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <utility>

#include "TestPlatform.h"
#include "engine/LogColours.h"
#include "engine/RecordingDisplay.h"
#include "platform/files/LocalPath.h"
#include "profiles/mRC4.h"
#include "support/TemporaryFolder.h"

namespace quillmoor {
namespace {

using testing::contentsOf;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using testing::writeFile;
namespace fs = std::filesystem;

/// Writes the archive's files, or does what a test wants instead.
class ScriptedPacker final : public ArchivePacker {
 public:
  std::vector<PackingOrder> orders;
  std::vector<std::string> endings;  // of further files of the set, in the archive's place of its ending
  std::function<void(const PackingOrder&)> instead;
  std::uintmax_t bytes = 0;  // of the archive; 0: as it comes

  ZipResult pack(const PackingOrder& order) override {
    orders.push_back(order);
    if (instead) instead(order);
    ZipResult result;
    for (const std::string& ending : endings) {
      result.paths.push_back(fs::path(order.path).replace_extension(ending).string());
      writeFile(result.paths.back(), "segment " + ending);
    }
    writeFile(order.path, "archive");
    if (bytes != 0) fs::resize_file(order.path, bytes);
    result.paths.push_back(order.path);
    return result;
  }
};

class ArchiveStageTest : public ::testing::Test {
 protected:
  ArchiveStageTest() {
    run.profile.SaveTo = saveTo;
    run.localFolderName = "site";
    run.LocalTargetFolder = saveTo + "site";
    run.localTargetPath = run.LocalTargetFolder + kLocalSeparator;
    fs::create_directory(run.LocalTargetFolder);
    settings.CreateZip = 1;
  }

  void create() { stage.CreateArchive("site", run, log, display); }

  using Lines = std::vector<std::pair<std::string, Colour>>;
  Lines logged() const {
    Lines lines;
    for (const auto& line : display.lines) lines.emplace_back(line.text, line.colour);
    return lines;
  }

  std::string folderOf(const std::string& name) {
    fs::create_directory(folder / name);
    return (folder / name).string();
  }

  testing::TemporaryFolder folder;
  const std::string saveTo = folder.path().string() + kLocalSeparator;
  const std::string archive = saveTo + "site.zip";
  ApplicationSettings settings;
  RunState run;
  RecordingDisplay display;
  RunLog log{display};
  ScriptedPacker packer;
  std::function<void()> pump;
  ZipArchiveStage stage{settings, packer, "/stub/MsSFX.bin", [this] {
                          if (pump) pump();
                        }};
};

TEST_F(ArchiveStageTest, OrdersWhatTheSettingsSay) {
  const struct {
    std::int32_t selfExtract, split;
    const char* password;
    const char* stub;
    const char* ending;
    const char* begins;
    const char* ends;
  } cases[] = {
      {0, 0, "", "", ".zip", "\r\nCreating Zip File: ", "Done Zip File.\r\n"},
      {0, 1, "p\xC3\xA4ss", "", ".zip", "\r\nCreating Zip File: ", "Done Zip File.\r\n"},
      {1, 0, "secret", "/stub/MsSFX.bin", ".exe",
       "\r\nCreating Self-Extract Zip File: ", "Done Self-Extracting Zip File.\r\n"},
      {-1, -1, "", "/stub/MsSFX.bin", ".exe",
       "\r\nCreating Self-Extract Zip File: ", "Done Self-Extracting Zip File.\r\n"},
  };
  for (const auto& c : cases) {
    settings.ZipSelfExtract = c.selfExtract;
    settings.SplitZip = c.split;
    settings.ZipPassword = mRC4::Encipher(c.password);
    packer.orders.clear();
    display = {};
    create();
    const std::string path = saveTo + "site" + c.ending;
    EXPECT_EQ(logged(),
              (Lines{{c.begins, {255, 0, 255}}, {path + "\r\n", {0, 0, 255}}, {c.ends, {51, 102, 102}}}));
    EXPECT_EQ(std::count(display.colours.begin(), display.colours.end(), kButtonFace), 2) << "not the path";

    ASSERT_THAT(packer.orders, SizeIs(1));
    const PackingOrder& order = packer.orders[0];
    EXPECT_EQ(order.pattern, saveTo + "site" + kLocalSeparator + kLocalSeparator + "*");
    EXPECT_EQ(order.path, path);
    EXPECT_EQ(order.stubPath, c.stub);
    EXPECT_EQ(order.password, *c.password ? std::optional<std::string>(c.password) : std::nullopt);
    EXPECT_EQ(order.segments.has_value(), c.split != 0);
    EXPECT_EQ(order.segments.value_or(ZipSegmentOptions{}).segmentBytes, c.split != 0 ? 1024 * 1024 : 0);
  }
}

TEST_F(ArchiveStageTest, RaisesASpanSizeThatIsTooSmallForGood) {
  const struct {
    std::int32_t set, becomes, create, split;
  } cases[] = {{100, 350, 1, 1}, {349, 350, 1, 1}, {350, 350, 1, 1},        {351, 351, 1, 1},
               {-7, 350, 0, 0},  {1, 350, 1, 0},   {2097151, 2097151, 1, 1}};
  for (const auto& c : cases) {
    settings.ZipSpanSize = c.set;
    settings.CreateZip = c.create;
    settings.SplitZip = c.split;
    packer.orders.clear();
    create();
    EXPECT_EQ(settings.ZipSpanSize, c.becomes) << c.set;
    if (c.split == 0) continue;
    EXPECT_EQ(packer.orders.at(0).segments.value().segmentBytes, std::int64_t{c.becomes} * 1024) << c.set;
  }
}

TEST_F(ArchiveStageTest, ASpanSizeBeyondAllNumbersEndsItInSilence) {
  settings.ZipSpanSize = 2097152;
  settings.ZipCopies = folderOf("copies");
  for (const std::int32_t CreateZip : {0, 1}) {
    settings.CreateZip = CreateZip;
    EXPECT_THROW(create(), std::overflow_error);
  }
  EXPECT_EQ(display.log(), "");
  EXPECT_THAT(packer.orders, IsEmpty());
}

TEST_F(ArchiveStageTest, CopiesInTheOrderOfTheNamesAndGoesOnPastAFailure) {
  const std::string b = folderOf("b[1] copies"), a = folderOf("A");
  const std::string missing = (folder / "aa").string() + kLocalSeparator;
  settings.ZipCopies = "|" + b + "|" + missing + "||" + a + "|";
  writeFile(fs::path(a) / "site.zip", "an older and longer one");
  create();
  const std::string name = std::string(1, kLocalSeparator) + "site.zip\r\n";
  Lines lines = logged();
  lines.erase(lines.begin(), lines.begin() + 3);  // of the packing
  const Lines expected = {{"Copy Zip file to: " + a + name, {0, 0, 255}},
                          {"Copy files success.\r\n", {0, 0, 255}},
                          {"Copy Zip file to: " + missing + "site.zip\r\n", {0, 0, 255}},
                          {"Copy files failed.\r\n", {255, 0, 0}},
                          {"Copy Zip file to: " + b + name, {0, 0, 255}},
                          {"Copy files success.\r\n", {0, 0, 255}}};
  EXPECT_EQ(lines, expected);
  EXPECT_EQ(std::count(display.colours.begin(), display.colours.end(), kButtonFace), 2 + 6);
  for (const std::string& copy : {a, b}) EXPECT_EQ(contentsOf(fs::path(copy) / "site.zip"), "archive");
  EXPECT_FALSE(fs::exists(missing)) << "a disk that is not there is not made a folder";
  ASSERT_EQ(run.failures.count(), 1U);
  EXPECT_EQ(run.failures.named()[0].name, missing + "site.zip");
}

TEST_F(ArchiveStageTest, CopiesEverySegmentOfASet) {
  settings.SplitZip = 1;
  packer.endings = {".z01", ".z02"};
  settings.ZipCopies = folderOf("copies");
  create();
  for (const char* ending : {".z01", ".z02"}) {
    EXPECT_EQ(contentsOf(folder / "copies" / (std::string("site") + ending)),
              std::string("segment ") + ending);
  }
  EXPECT_EQ(contentsOf(folder / "copies" / "site.zip"), "archive");
  EXPECT_EQ(display.count("Copy "), 2) << display.log();

  writeFile(folder / "copies" / "mine.z01", "x");
  settings.SplitZip = 0;
  packer.endings = {};
  create();
  EXPECT_FALSE(fs::exists(folder / "copies" / "site.z01") || fs::exists(folder / "copies" / "site.z02"))
      << "of the longer set";
  EXPECT_TRUE(fs::exists(folder / "copies" / "site.zip") && fs::exists(folder / "copies" / "mine.z01"));
}

TEST_F(ArchiveStageTest, WithoutAnArchiveEveryCopyFails) {
  settings.ZipCopies = folderOf("b") + "|" + folderOf("a");
  for (const std::int32_t CreateZip : {0, 2, -1}) {
    display = {};
    settings.CreateZip = CreateZip;
    create();
    EXPECT_EQ(display.log(), "Copy Zip file to: " + saveTo + "a" + kLocalSeparator +
                                 "\r\nCopy files failed.\r\nCopy Zip file to: " + saveTo + "b" +
                                 kLocalSeparator + "\r\nCopy files failed.\r\n");
  }
  EXPECT_EQ(run.failures.count(), 6U);
  EXPECT_THAT(packer.orders, IsEmpty());
  EXPECT_TRUE(fs::is_empty(folder / "a"));
}

TEST_F(ArchiveStageTest, AFileThatCannotBePackedIsNamedAndAPackingThatFailsEndsIt) {
  packer.instead = [](const PackingOrder& order) { order.onError("a.txt cannot be read"); };
  create();
  EXPECT_EQ(display.log(), "\r\nCreating Zip File: " + archive +
                               "\r\nZip Error: a.txt cannot be read\r\nDone Zip File.\r\n");
  ASSERT_EQ(run.failures.count(), 1U);
  EXPECT_EQ(run.failures.named()[0].reason, "a.txt cannot be read");
  display = {};
  settings.ZipCopies = folderOf("copies");
  writeFile(archive, "the archive of the run before");
  packer.instead = [](const PackingOrder& order) {
    order.onError("the disk is full\x1b[2J");
    throw ZipError(ZipErrorNumber::cannotWrite, "the disk is full");
  };
  EXPECT_THROW(create(), ZipError);
  EXPECT_EQ(display.log(), "\r\nCreating Zip File: " + archive + "\r\nZip Error: the disk is full?[2J\r\n");
  EXPECT_EQ(display.lines.back().colour, (Colour{255, 0, 0}));
  EXPECT_EQ(contentsOf(archive), "the archive of the run before");
  EXPECT_TRUE(fs::is_empty(folder / "copies"));
}

TEST_F(ArchiveStageTest, NeverPacksWithoutAPasswordThatItCannotRead) {
  settings.ZipCopies = folderOf("copies");
  for (const char* stored : {"no Base64!", "AA"}) {
    display = {};
    settings.ZipPassword = stored;
    EXPECT_ANY_THROW(create()) << stored;
    EXPECT_EQ(display.log(), "Zip Error: The setting ZipPassword cannot be deciphered. Set it again.\r\n")
        << stored;
  }
  EXPECT_THAT(packer.orders, IsEmpty());
  EXPECT_FALSE(fs::exists(archive));
}

TEST_F(ArchiveStageTest, ShowsHowFarItIs) {
  packer.instead = [](const PackingOrder& order) {
    const auto tell = [&](ZipStatus status, const char* item, std::int64_t size, std::int64_t count) {
      order.onProgress({status, item, size, count});
    };
    tell(ZipStatus::inProgress, "a", 2048, 5);
    tell(ZipStatus::inProgress, "a", 2048, 2048);
    tell(ZipStatus::done, "a", 2048, 2048);
    tell(ZipStatus::inProgress, "empty", 0, 0);
    tell(ZipStatus::inProgress, "grown", 1, 3);
    throw ZipError(ZipErrorNumber::cannotWrite, "");
  };
  EXPECT_THROW(create(), ZipError);
  EXPECT_THAT(display.progress, ElementsAre(0, 100, 0, 100, 0))
      << "the bar does not stay where packing failed";
  EXPECT_THAT(display.sizes, ElementsAre("2.000 KB", "2.000 KB", "1.000 Bytes"));
}

TEST_F(ArchiveStageTest, TheEndOfTheProgramEndsTheCopies) {
  struct Ending {};
  settings.ZipCopies = folderOf("a") + "|" + folderOf("b");
  packer.bytes = testing::kLongToCopy;
  pump = [] { throw Ending{}; };
  EXPECT_THROW(create(), Ending);
  EXPECT_EQ(display.count("Copy Zip file to: "), 1) << "the second is not begun";
  EXPECT_TRUE(fs::is_empty(folder / "a"));
}

}  // namespace
}  // namespace quillmoor
