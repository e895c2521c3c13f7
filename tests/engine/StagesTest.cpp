// What surrounds the download of a run: the programs and addresses of the actions, and the archive stage with
// a scripted packer.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <vector>

#include "engine/ArchiveStage.h"
#include "engine/LogColours.h"
#include "engine/RunActions.h"
#include "engine/RunWorld.h"
#include "platform/files/LocalPath.h"
#include "profiles/mRC4.h"

namespace quillmoor {
namespace {

using testing::contentsOf;
using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using testing::writeFile;
using Lines = std::vector<RecordingDisplay::Line>;
namespace fs = std::filesystem;

class ActionsTest : public ::testing::Test {
 protected:
  /// Records the requests and answers them with `status`.
  struct ScriptedWeb final : WebRequest {
    std::vector<std::string> calls;
    std::int32_t status = 200;
    void perform() override {
      calls.push_back("call " + request.address + " " + request.body + "within " + std::to_string(timeoutMs));
      response.statusCode = status;
    }
    bool busy() const override { return false; }
    void abort() override {}
  };

  void runAll() {
    display = {};
    web.calls.clear();
    actions.RunBeforeActions(log);
    actions.RunProfileActions(profile, log);
    actions.RunAfterActions(log);
  }

  ApplicationSettings settings;
  SiteProfile profile;
  ScriptedWeb web;
  bool shellThrows = false;
  ConfiguredActions actions{settings, web, [this](const std::string& target) {
                              web.calls.push_back("open " + target);
                              if (shellThrows) throw std::runtime_error("no shell");
                              return 2;  // an error code, which is ignored
                            }};
  RecordingDisplay display;
  RunLog log{display};
};

TEST_F(ActionsTest, StartTheProgramAndCallTheAddressOfEachGroup) {
  runAll();
  EXPECT_THAT(web.calls, ElementsAre()) << "nothing is set";
  EXPECT_EQ(display.log(), "");

  settings.RunBefore = "/bin/a b";
  settings.ConnectBefore = "http://before/";
  profile.RunProgram = "c";
  profile.RunURL = "profile";
  settings.RunAfter = "d";
  settings.ConnectAfter = "after";
  web.request.body = "left over";
  runAll();
  EXPECT_THAT(web.calls, ElementsAre("open /bin/a b", "call http://before/ within 120000", "open c",
                                     "call profile within 120000", "open d", "call after within 120000"));
  EXPECT_EQ(display.log(),
            "Running: /bin/a b...Done.\r\nConnecting to: http://before/\r\nConnection Status Success. \r\n"
            "Running: c...Done.\r\nConnecting to: profile\r\nConnection Success. \r\n"
            "Connecting to: after\r\nConnection Status Success. \r\n");
  for (const auto& line : display.lines)
    EXPECT_EQ(line, (RecordingDisplay::Line{line.text, {0, 0, 255}, true}));
}

TEST_F(ActionsTest, NoStatusBut200IsASuccess) {
  settings.ConnectBefore = profile.RunURL = "h";
  for (const std::int32_t failure : {0, 204, 302, 404}) {
    web.status = failure;
    runAll();
    EXPECT_EQ(display.log(),
              "Connecting to: h\r\nConnection Status Failed. \r\n"
              "Connecting to: h\r\nConnection Failed. \r\n")
        << failure;
  }
}

TEST_F(ActionsTest, WhatFailsEndsItsGroup) {
  settings.RunBefore = settings.RunAfter = "a";
  settings.ConnectBefore = settings.ConnectAfter = "h";
  shellThrows = true;
  EXPECT_THROW(actions.RunBeforeActions(log), std::runtime_error);
  EXPECT_THROW(actions.RunAfterActions(log), std::runtime_error);
  EXPECT_EQ(display.log(), "Running: a...");
}

/// Writes `endings` and the archive itself as files, after what a test wants to happen.
struct ScriptedPacker final : ArchivePacker {
  std::vector<PackingOrder> orders;
  std::vector<std::string> endings;  // of the further files of a set
  std::function<void(const PackingOrder&)> before;
  std::uintmax_t bytes = 7;  // of the archive

  ZipResult pack(const PackingOrder& order) override {
    orders.push_back(order);
    if (before) before(order);
    ZipResult result;
    for (const std::string& ending : endings) {
      result.paths.push_back(fs::path(order.path).replace_extension(ending).string());
      writeFile(result.paths.back(), "segment " + ending);
    }
    writeFile(order.path, "archive");
    fs::resize_file(order.path, bytes);
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

  void create() {
    display = {};
    packer.orders.clear();
    stage.CreateArchive("site", run, log, display);
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
  Pump pump = [] {};
  ZipArchiveStage stage{settings, packer, "/stub/MsSFX.bin", [this] { pump(); }};
};

TEST_F(ArchiveStageTest, OrdersWhatTheSettingsSay) {
  const struct {
    std::int32_t selfExtract, split;
    const char* password;
  } cases[] = {{0, 0, ""}, {0, 1, "p\xC3\xA4ss"}, {1, 0, "secret"}, {-1, -1, ""}};
  for (const auto& c : cases) {
    settings.ZipSelfExtract = c.selfExtract;
    settings.SplitZip = c.split;
    settings.ZipPassword = mRC4::Encipher(c.password);
    create();
    const bool exe = c.selfExtract != 0;
    const std::string path = saveTo + "site" + (exe ? ".exe" : ".zip");
    EXPECT_EQ(
        display.lines,
        (Lines{
            {exe ? "\r\nCreating Self-Extract Zip File: " : "\r\nCreating Zip File: ", {255, 0, 255}, true},
            {path + "\r\n", {0, 0, 255}},
            {exe ? "Done Self-Extracting Zip File.\r\n" : "Done Zip File.\r\n", {51, 102, 102}, true}}));

    const PackingOrder& order = packer.orders.at(0);
    EXPECT_EQ(order.pattern, saveTo + "site" + kLocalSeparator + kLocalSeparator + "*");
    EXPECT_EQ(order.path, path);
    EXPECT_EQ(order.stubPath, exe ? "/stub/MsSFX.bin" : "");
    EXPECT_EQ(order.password, *c.password ? std::optional<std::string>(c.password) : std::nullopt);
    EXPECT_EQ(order.segments.value_or(ZipSegmentOptions{}).segmentBytes, c.split != 0 ? 1024 * 1024 : 0);
  }
}

TEST_F(ArchiveStageTest, RaisesASpanSizeThatIsTooSmallForGood) {
  const struct {
    std::int32_t set, becomes, create;
  } cases[] = {{349, 350, 1}, {351, 351, 1}, {-7, 350, 0}, {2097151, 2097151, 1}};
  settings.SplitZip = 1;
  for (const auto& c : cases) {
    settings.ZipSpanSize = c.set;
    settings.CreateZip = c.create;
    create();
    EXPECT_EQ(settings.ZipSpanSize, c.becomes) << c.set;
    ASSERT_THAT(packer.orders, SizeIs(static_cast<std::size_t>(c.create)));
    if (c.create == 0) continue;
    EXPECT_EQ(packer.orders[0].segments.value().segmentBytes, std::int64_t{c.becomes} * 1024) << c.set;
  }
  settings.ZipSpanSize = 2097152;  // 2^31 bytes
  settings.ZipCopies = folderOf("copies");
  for (const std::int32_t createZip : {0, 1}) {
    settings.CreateZip = createZip;
    EXPECT_THROW(create(), std::overflow_error);
    EXPECT_EQ(display.log(), "") << "not even copies are tried";
    EXPECT_THAT(packer.orders, IsEmpty());
  }
}

TEST_F(ArchiveStageTest, CopiesInTheOrderOfTheNamesAndGoesOnPastAFailure) {
  const std::string b = folderOf("b[1] copies"), a = folderOf("A");
  const std::string missing = (folder / "aa").string() + kLocalSeparator;
  settings.ZipCopies = "|" + b + "|" + missing + "||" + a + "|";
  create();
  const std::string name = std::string(1, kLocalSeparator) + "site.zip\r\n";
  Lines lines = display.lines;
  lines.erase(lines.begin(), lines.begin() + 3);  // of the packing
  const Lines expected = {{"Copy Zip file to: " + a + name, {0, 0, 255}, true},
                          {"Copy files success.\r\n", {0, 0, 255}, true},
                          {"Copy Zip file to: " + missing + "site.zip\r\n", {0, 0, 255}, true},
                          {"Copy files failed.\r\n", {255, 0, 0}, true},
                          {"Copy Zip file to: " + b + name, {0, 0, 255}, true},
                          {"Copy files success.\r\n", {0, 0, 255}, true}};
  EXPECT_EQ(lines, expected);
  for (const std::string& copy : {a, b}) EXPECT_EQ(contentsOf(fs::path(copy) / "site.zip"), "archive");
  EXPECT_FALSE(fs::exists(missing)) << "the folder of a disk that is not mounted is not created";
  ASSERT_EQ(run.failures.count(), 1U);
  EXPECT_EQ(run.failures.named()[0].name, missing + "site.zip");
}

TEST_F(ArchiveStageTest, CopiesEverySegmentOfASet) {
  settings.SplitZip = 1;
  packer.endings = {".z01", ".z02"};
  settings.ZipCopies = folderOf("copies");
  create();
  EXPECT_EQ(contentsOf(folder / "copies/site.z01") + contentsOf(folder / "copies/site.z02"),
            "segment .z01segment .z02");
  EXPECT_EQ(contentsOf(folder / "copies/site.zip"), "archive");
  EXPECT_EQ(display.count("Copy "), 2) << display.log();

  packer.endings = {};
  create();
  EXPECT_EQ(testing::filesIn(folder / "copies"), 1U) << "the longer set is gone";
}

TEST_F(ArchiveStageTest, WithoutAnArchiveEveryCopyFails) {
  settings.ZipCopies = folderOf("a");
  for (const std::int32_t createZip : {0, 2, -1}) {
    settings.CreateZip = createZip;
    create();
    EXPECT_EQ(display.log(),
              "Copy Zip file to: " + saveTo + "a" + kLocalSeparator + "\r\nCopy files failed.\r\n");
    EXPECT_THAT(packer.orders, IsEmpty());
  }
  EXPECT_EQ(run.failures.count(), 3U);
  EXPECT_TRUE(fs::is_empty(folder / "a"));
}

TEST_F(ArchiveStageTest, AFileThatCannotBePackedIsNamedAndAPackingThatFailsEndsIt) {
  packer.before = [](const PackingOrder& order) { order.onError("a.txt cannot be read"); };
  create();
  EXPECT_EQ(display.log(), "\r\nCreating Zip File: " + archive +
                               "\r\nZip Error: a.txt cannot be read\r\nDone Zip File.\r\n");
  ASSERT_EQ(run.failures.count(), 1U);
  EXPECT_EQ(run.failures.named()[0].reason, "a.txt cannot be read");
  packer.before = [](const PackingOrder& order) {
    order.onError("the disk is full\x1b[2J");
    throw ZipError(ZipErrorNumber::cannotWrite, "the disk is full");
  };
  EXPECT_THROW(create(), ZipError);
  EXPECT_EQ(display.log(), "\r\nCreating Zip File: " + archive + "\r\nZip Error: the disk is full?[2J\r\n");
  EXPECT_EQ(display.lines.back().colour, (Colour{255, 0, 0}));
}

TEST_F(ArchiveStageTest, NeverPacksWithoutAPasswordThatItCannotRead) {
  for (const char* stored : {"no Base64!", "AA"}) {
    settings.ZipPassword = stored;
    EXPECT_ANY_THROW(create()) << stored;
    EXPECT_EQ(display.log(), "Zip Error: The setting ZipPassword cannot be deciphered. Set it again.\r\n")
        << stored;
  }
  EXPECT_FALSE(fs::exists(archive));
}

TEST_F(ArchiveStageTest, ShowsTheProgressOfThePacking) {
  packer.before = [](const PackingOrder& order) {
    const auto report = [&](ZipStatus status, const char* item, std::int64_t size, std::int64_t count) {
      order.onProgress({status, item, size, count});
    };
    report(ZipStatus::inProgress, "a", 2048, 5);
    report(ZipStatus::done, "a", 2048, 2048);
    report(ZipStatus::inProgress, "empty", 0, 0);
    report(ZipStatus::inProgress, "grown", 1, 3);
    throw ZipError(ZipErrorNumber::cannotWrite, "");
  };
  EXPECT_THROW(create(), ZipError);
  EXPECT_THAT(display.progress, ElementsAre(0, 0, 100, 0)) << "the bar is reset after a failure";
  EXPECT_THAT(display.sizes, ElementsAre("2.000 KB", "1.000 Bytes"));
}

TEST_F(ArchiveStageTest, TheEndOfTheProgramEndsTheCopies) {
  struct Ending {};
  settings.ZipCopies = folderOf("a") + "|" + folderOf("b");
  packer.bytes = testing::kLongToCopy;
  pump = [] { throw Ending{}; };
  EXPECT_THROW(create(), Ending);
  EXPECT_EQ(display.count("Copy Zip file to: "), 1) << "the second is not started";
  EXPECT_TRUE(fs::is_empty(folder / "a"));
}

}  // namespace
}  // namespace quillmoor
