#include "platform/zip/ZipArchive.h"

#include <algorithm>
#include <chrono>
#include <map>

#include "ZipArchiveFixture.h"
#include "platform/files/AtomicFile.h"
#include "platform/files/Files.h"
#include "platform/system/LocalTime.h"
#include "platform/zip/ZipCrypto.h"
#include "platform/zip/ZipDeflate.h"
#include "platform/zip/ZipFormat.h"

namespace quillmoor {
namespace {

using ::testing::ElementsAre;
using ::testing::HasSubstr;
using testing::InspectedArchive;
using testing::InspectedEntry;
using ::testing::IsEmpty;
using ::testing::SizeIs;
using testing::ZipArchiveTest;

constexpr ZipSegmentOptions kSmallest{ZipSegmentOptions::kMinimum};

auto fails(ZipErrorNumber number) {
  return ::testing::Throws<ZipError>(::testing::Property(&ZipError::number, number));
}

TEST_F(ZipArchiveTest, KeepsContentsAroundTheSizesWhereItsWaysChange) {
  constexpr std::size_t kB = zip::kBlock;
  std::map<std::string, std::string> contents;
  for (const std::size_t size : {std::size_t{0}, std::size_t{1}, std::size_t{2}, kB - 1, kB, kB + 1, 2 * kB,
                                 2 * kB + 1, std::size_t{65'535}, std::size_t{65'536}}) {
    contents["text" + std::to_string(size)] = text(size);
    contents["noise" + std::to_string(size)] = noise(size);
    // Beginning as what cannot be compressed and going on as what can, and the other way round.
    contents["first-noise" + std::to_string(size)] = noise(size / 2) + text(size - size / 2);
    contents["first-text" + std::to_string(size)] = text(size / 2) + noise(size - size / 2);
  }
  for (const auto& [name, bytes] : contents) put(name, bytes);
  int pumped = 0;
  archive.pump = [&] { pumped += archive.busy(); };
  for (const std::optional<std::string>& password :
       {std::optional<std::string>(), std::optional<std::string>("geheim")}) {
    for (const std::optional<ZipSegmentOptions>& segments :
         {std::optional<ZipSegmentOptions>(), std::optional(kSmallest)}) {
      const InspectedArchive got = packed(segments, password);
      EXPECT_THAT(got.entries, SizeIs(contents.size()));
      for (const InspectedEntry& entry : got.entries) {
        EXPECT_TRUE(entry.contents == contents[entry.name]) << entry.name;
        EXPECT_EQ(entry.encrypted, password.has_value());
        EXPECT_LE(entry.packedSize, entry.size + (password ? zip::kAesOverhead : 0) + entry.size / 4096 + 10)
            << entry.name;
        if (entry.name.starts_with("noise")) {
          EXPECT_EQ(entry.method, zip::kStored) << entry.name;
        }
        if (entry.name.starts_with("text") && entry.size > 100) {
          EXPECT_LT(entry.packedSize, entry.size / 2) << entry.name;
        }
      }
    }
  }
  EXPECT_GT(pumped, 4) << "and not only once for each archive";
  EXPECT_FALSE(archive.busy());
  EXPECT_THAT(errors, IsEmpty());
}

TEST_F(ZipArchiveTest, EndsEverySegmentAtItsSizeAndNoRecordAcrossTwo) {
  // Names of many lengths and empty files, so that headers meet the ends of segments in many ways.
  for (int i = 0; i < 600; ++i)
    put(std::string(static_cast<std::size_t>(i % 200 + 1), 'n') + std::to_string(i), "");
  put("z-large", noise(500'000));
  for (const std::int64_t size : {65'536, 65'537, 65'600, 65'793, 70'001, 99'999, 131'072, 358'400}) {
    const InspectedArchive got = packed(ZipSegmentOptions{size});
    EXPECT_THAT(got.entries, SizeIs(601));
    for (const std::string& path : result.paths)
      EXPECT_LE(static_cast<std::int64_t>(std::filesystem::file_size(LocalPath(path))), size) << path;
    const auto needed = static_cast<std::size_t>((result.outputBytes + size - 1) / size);
    EXPECT_LE(result.paths.size(), needed + needed / 10 + 1) << size;
  }
}

TEST_F(ZipArchiveTest, WritesTheDirectoryWhereverItMeetsTheEndOfASegment) {
  // The data ends a little nearer to the end of a segment each time.
  for (int i = 0; i < 20; ++i) put("file" + std::to_string(i), "");
  for (std::size_t rest = 0; rest <= 2400; rest += 40) {
    put("z", noise(65'536 - 2'400 + rest - 20 * 50));
    EXPECT_NO_THROW(packed(kSmallest)) << rest;
    put("z", noise(65'536 * 2 - 2'400 + rest));
    EXPECT_NO_THROW(packed(kSmallest)) << rest;
  }
}

TEST_F(ZipArchiveTest, NamesTheSegmentsAndRemovesThoseOfALongerSet) {
  put("noise", noise(200'000));
  packed(kSmallest);
  EXPECT_THAT(filesOut(), ElementsAre("a.z01", "a.z02", "a.z03", "a.zip"));
  EXPECT_EQ(result.paths.back(), out("a.zip"));
  testing::writeFile(LocalPath(out("a.z05")), "a file that follows no set");
  put("noise", "x");
  packed(kSmallest);
  EXPECT_THAT(filesOut(), ElementsAre("a.z05", "a.zip")) << "a set that fits one segment is one file";
  EXPECT_EQ(testing::contentsOf(LocalPath(out("a.zip"))).substr(0, 4), "PK00");
  packed();
  EXPECT_EQ(testing::contentsOf(LocalPath(out("a.zip"))).substr(0, 4), "PK\3\4");

  put("noise", noise(100'000));
  packed(kSmallest);
  add();
  testing::writeFile(folder_ / "stub", "stub");
  archive.writeSelfExtracting(out("a.exe"), LocalPathText(folder_ / "stub"));
  EXPECT_THAT(filesOut(), ElementsAre("a.exe", "a.z01", "a.z05", "a.zip")) << "a plain set beside it";
  add();
  archive.writeSelfExtracting(out("a.exe"), LocalPathText(folder_ / "stub"), kSmallest);
  EXPECT_THAT(filesOut(), ElementsAre("a.exe", "a.z05", "a.zip")) << "whose .zip was replaced";
}

TEST_F(ZipArchiveTest, PutsTheStubInFrontWhateverItsSize) {
  put("noise", noise(150'000));
  for (const std::size_t stubSize : {100U, 65'531U, 65'532U, 65'533U, 65'536U, 90'000U}) {
    const std::string stub = text(stubSize);
    testing::writeFile(folder_ / "stub", stub);
    for (const bool split : {true, false}) {
      add();
      result = archive.writeSelfExtracting(out("a.exe"), LocalPathText(folder_ / "stub"),
                                           split ? std::optional(kSmallest) : std::nullopt);
      EXPECT_EQ(result.paths.front(), out("a.exe"));
      EXPECT_EQ(result.paths.back(), out(split ? "a.zip" : "a.exe"));
      EXPECT_THAT(filesOut(), SizeIs(result.paths.size())) << "the rest of a set must go";
      EXPECT_EQ(testing::inspectArchive(result.paths, "", stubSize)["noise"].contents, noise(150'000));
      EXPECT_EQ(testing::contentsOf(LocalPath(out("a.exe"))).substr(0, stubSize), stub);
      for (const std::string& path : split ? result.paths : std::vector<std::string>()) {
        const std::size_t most = path == out("a.exe") ? std::max<std::size_t>(65'536, stubSize + 4) : 65'536;
        EXPECT_LE(std::filesystem::file_size(LocalPath(path)), most) << path;
      }
    }
  }
}

TEST_F(ZipArchiveTest, PacksNamesOfAllKindsInTheOrderOfTheirBytes) {
  const std::string longest(250, 'l');
  put("b", "1");
  put(".htaccess", "2");
  put("with blank/ two  blanks", "3");
  put("gr\xC3\xBC\xC3\x9F/\xE6\x97\xA5\xE6\x9C\xAC.txt", "4");
  put(longest, "5");
  put("a/b/c/d", "6");
  std::filesystem::create_directory(tree() / "empty");
  const auto time = std::chrono::sys_seconds(std::chrono::seconds(1'250'000'001));
  ASSERT_TRUE(setModifiedTime(LocalPathText(tree() / "b"), time));
  const InspectedArchive got = packed();
  EXPECT_THAT(got.names(),
              ElementsAre(".htaccess", "a/", "a/b/", "a/b/c/", "a/b/c/d", "b", "empty/",
                          "gr\xC3\xBC\xC3\x9F/", "gr\xC3\xBC\xC3\x9F/\xE6\x97\xA5\xE6\x9C\xAC.txt", longest,
                          "with blank/", "with blank/ two  blanks"));
  EXPECT_EQ(got["gr\xC3\xBC\xC3\x9F/"].flags, zip::kFlagUtf8);
  EXPECT_EQ(got["b"].modified, 1'250'000'001);
  EXPECT_EQ(got["b"].dosTime, zip::dosTime(UtcToLocal(time)));
  EXPECT_EQ(got["empty/"].size, 0U);
  EXPECT_EQ(got["empty/"].attributes & 0x10, 0x10U);
  EXPECT_EQ(result.files, 6);
  EXPECT_EQ(result.folders, 6);
  EXPECT_EQ(result.inputBytes, 6);
}

TEST_F(ZipArchiveTest, PacksFilesBeyondTheLengthOfAPlainWindowsPath) {
  // With names outside the code page; made and removed by our own functions, since the standard library does
  // not reach so deep on Windows.
  std::string path = LocalPathText(tree());
  std::vector<std::string> made;
  for (const char letter : {'a', 'b', 'c', 'd'}) {
    path += kLocalSeparator + ("\xE6\x97\xA5\xE6\x9C\xAC-" + std::string(100, letter));
    ASSERT_FALSE(createFolder(path)) << path;
    made.push_back(path);
  }
  path += std::string(1, kLocalSeparator) + "\xD0\x9F.txt";
  made.push_back(path);
  {
    AtomicFile whole(path);
    whole.write("deep");
    whole.commit();
  }
  EXPECT_TRUE(pathExists(path) && !folderExists(path));
  const std::chrono::sys_seconds time{std::chrono::seconds(1'231'981'200)};
  EXPECT_TRUE(setModifiedTime(path, time));
  EXPECT_EQ(fileTimes(path).value().modified, time);
  EXPECT_EQ(packed().entries.back().contents, "deep");
  EXPECT_THAT(errors, IsEmpty());
  for (auto one = made.rbegin(); one != made.rend(); ++one)
    EXPECT_TRUE(removeFile(*one) || removeFolder(*one));
}

TEST_F(ZipArchiveTest, FindsByPatternAndGoesIntoFoldersOnlyWhenAsked) {
  for (const char* name : {"a.txt", "b.html", "sub/c.txt", "sub/d.html"}) put(name, "");
  const auto names = [&](const char* pattern, bool recurse) {
    archive.addFiles(LocalPathText(tree()) + kLocalSeparator + pattern, recurse);
    return testing::inspectArchive(archive.write(out("a.zip")).paths).names();
  };
  EXPECT_THAT(names("*", false), ElementsAre("a.txt", "b.html"));
  EXPECT_THAT(names("*.txt", true), ElementsAre("a.txt", "sub/", "sub/c.txt"));
  archive.addFiles(LocalPathText(tree()) + kLocalSeparator + "*.txt", false);
  const InspectedArchive both = packed(std::nullopt, "geheim");
  EXPECT_THAT(both.names(), ElementsAre("a.txt", "b.html", "sub/", "sub/c.txt", "sub/d.html"));
  EXPECT_FALSE(both["a.txt"].encrypted) << "the first of two files with one name counts";
  EXPECT_THAT(errors, ElementsAre(HasSubstr("a.txt")));
}

TEST_F(ZipArchiveTest, DoesNotPackItself) {
  put("a", "1");
  put("a.zip", "a former archive");
  for (const char* name : {"out.z01", "a.zoo", "a.z1"}) put(name, "not of this archive");
  put(".quillmoor-unfinished.tmp", "of a run that was killed");
  const std::string path = LocalPathText(tree() / "a.zip");
  for (int round = 0; round < 2; ++round) {
    add();
    result = archive.write(path, kSmallest);
    EXPECT_THAT(testing::inspectArchive(result.paths).names(), ElementsAre("a", "a.z1", "a.zoo", "out.z01"));
  }
  put("sub/a.zip", "another of that name");
  put("sub/.quillmoor-lock", "");
  add();
  archive.write(path);
  EXPECT_THAT(testing::inspectArchive({path}).names(),
              ElementsAre("a", "a.z1", "a.zoo", "out.z01", "sub/", "sub/a.zip"));
}

TEST_F(ZipArchiveTest, ReplacesTheFormerArchiveOnlyWhenAllIsWritten) {
  // As a killed run left it: half a new archive, and the former one set aside.
  const std::filesystem::path aside = LocalPath(out(".quillmoor-unfinished-a.zip"));
  std::filesystem::create_directory(aside);
  testing::writeFile(aside / "a.zip", "former");
  testing::writeFile(LocalPath(out(".quillmoor-unfinished-1.tmp")), "half");
  put("large", noise(3 << 20));
  archive.onProgress = [&](const ZipProgress&) {
    EXPECT_EQ(testing::contentsOf(LocalPath(out("a.zip"))), "former");
    archive.abort();
  };
  add();
  EXPECT_THAT([&] { archive.write(out("a.zip")); }, fails(ZipErrorNumber::aborted));
  EXPECT_THAT(errors, SizeIs(1));
  EXPECT_EQ(testing::contentsOf(LocalPath(out("a.zip"))), "former");
  EXPECT_THAT(filesOut(), ElementsAre("a.zip"));
  archive.onProgress = nullptr;
  EXPECT_THAT(packed().entries, SizeIs(1)) << "an abort must not reach the next archive";
}

TEST_F(ZipArchiveTest, ReportsEveryFileOnceAndInOrderAndBeginsNoOtherMeanwhile) {
  put("a", text(10));
  put("b", text(3 * zip::kBlock + 5));
  put("c", "");
  std::vector<std::string> seen;
  std::int64_t before = 0;
  archive.onProgress = [&](const ZipProgress& progress) {
    EXPECT_GE(progress.count, progress.item == "b" ? before : 0);
    EXPECT_LE(progress.count, progress.size);
    EXPECT_THAT([&] { archive.write(out("b.zip")); }, fails(ZipErrorNumber::busy));
    EXPECT_THAT([&] { add(); }, fails(ZipErrorNumber::busy));
    before = progress.count;
    if (progress.status == ZipStatus::done)
      seen.push_back(progress.item + " " + std::to_string(progress.count) + "/" +
                     std::to_string(progress.size));
  };
  packed();
  EXPECT_THAT(seen, ElementsAre("a 10/10", "b 786437/786437", "c 0/0"));
}

TEST_F(ZipArchiveTest, EndsWellWhenACallbackRaisesOrAbortsAtTheLastEvent) {
  put("small", "x");
  archive.onProgress = [&](const ZipProgress& progress) {
    if (progress.status == ZipStatus::done) archive.abort();
  };
  add();
  EXPECT_THAT([&] { archive.write(out("a.zip")); }, fails(ZipErrorNumber::aborted));
  archive.onProgress = [](const ZipProgress&) { throw std::logic_error("from the display"); };
  add();
  EXPECT_THROW(archive.write(out("a.zip")), std::logic_error);
  EXPECT_THAT(filesOut(), IsEmpty());
  EXPECT_FALSE(archive.busy());
}

TEST_F(ZipArchiveTest, SaysWhatCannotBe) {
  put("a", "x");
  const std::string tree = LocalPathText(this->tree());
  using Number = ZipErrorNumber;
  const std::pair<std::function<void()>, Number> cases[] = {
      {[&] { archive.addFiles(tree + kLocalSeparator, true); }, Number::badArgument},
      {[&] { archive.addFiles(tree + "/*", true, ""); }, Number::badArgument},
      {[&] { archive.addFiles(tree + "/*", true, std::string(1001, 'x')); }, Number::badArgument},
      {[&] { archive.write(""); }, Number::badArgument},
      {[&] { archive.write(out("a.zip"), ZipSegmentOptions{65'535}); }, Number::badArgument},
      {[&] { archive.write(out("a.tar"), kSmallest); }, Number::badArgument},
      {[&] { archive.write(out("no/such/folder/a.zip")); }, Number::cannotWrite},
      {[&] { archive.writeSelfExtracting(out("a.exe"), tree + "/no-stub"); }, Number::cannotRead},
  };
  for (const auto& [call, expected] : cases) EXPECT_THAT(call, fails(expected));
  archive.addFiles(tree + "/missing/*", true);
  EXPECT_THAT([&] { archive.write(out("a.zip")); }, fails(ZipErrorNumber::folderNotFound));
  EXPECT_THAT(errors, SizeIs(9)) << "each is reported by an event too";
  EXPECT_THAT(errors.back(), HasSubstr("missing"));
  EXPECT_THAT(filesOut(), IsEmpty());
  EXPECT_THAT(testing::inspectArchive(archive.write(out("a.zip")).paths).entries, IsEmpty())
      << "what was added is forgotten after a failure";
}

// --- files that change while they are packed. The first is so large that packing is far from its end at its
// first progress event, and the second has not been opened.

constexpr std::size_t kFarAhead = std::size_t{48} << 20;

class ChangingTreeTest : public ZipArchiveTest {
 protected:
  /// Packs "a", which is large, and "b"; `change` is called at the first progress event.
  InspectedArchive packedWith(const std::function<void()>& change) {
    put("a", "begin");
    std::filesystem::resize_file(tree() / "a", kFarAhead);
    put("b", "small");
    bool called = false;
    archive.onProgress = [&, called](const ZipProgress&) mutable {
      if (!std::exchange(called, true)) change();
    };
    return packed();
  }
};

TEST_F(ChangingTreeTest, PacksAFileAsFarAsItWentAndSaysWhatBecameOfIt) {
  const auto resize = [&](std::size_t size) { std::filesystem::resize_file(tree() / "a", size); };
  const auto longAgo = std::chrono::sys_seconds(std::chrono::seconds(1'000'000'000));
  const struct {
    std::function<void()> change;
    std::size_t packed;
    const char *error, *detail;
  } cases[] = {
      {[&] { resize(kFarAhead - 1000); }, kFarAhead - 1000, "shrank", "50330648 bytes"},
      {[&] { resize(kFarAhead + 5000); }, kFarAhead, "grew", "50331648 bytes"},
      {[&] { setModifiedTime(LocalPathText(tree() / "a"), longAgo); }, kFarAhead, "changed", "a"},
      {[&] { std::filesystem::remove(tree() / "b"); }, kFarAhead, "b", ""},
  };
  for (const auto& c : cases) {
    errors.clear();
    const InspectedArchive got = packedWith(c.change);
    EXPECT_EQ(got["a"].size, c.packed) << c.error;
    EXPECT_THAT(errors, ElementsAre(::testing::AllOf(HasSubstr(c.error), HasSubstr(c.detail))));
    EXPECT_EQ(result.errors, 1) << c.error;
    const int files = std::filesystem::exists(tree() / "b") ? 2 : 1;
    EXPECT_EQ(result.files, files) << c.error;
    EXPECT_THAT(got.entries, SizeIs(static_cast<std::size_t>(files))) << c.error;
  }
}

TEST_F(ChangingTreeTest, GoesOnWhenAFolderHasVanished) {
  put("c/d", "gone");
  put("e", "still there");
  const InspectedArchive got = packedWith([&] { std::filesystem::remove_all(tree() / "c"); });
  EXPECT_THAT(got.names(), ::testing::Contains("e"));
  EXPECT_THAT(got.names(), ::testing::Not(::testing::Contains("c/d")));
  EXPECT_THAT(errors, ::testing::Each(HasSubstr("c")));
  EXPECT_FALSE(errors.empty());
}

}  // namespace
}  // namespace quillmoor
