#include "sfx/Unpack.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <vector>

#include "platform/files/Files.h"
#include "platform/zip/ZipArchiveFixture.h"
#include "platform/zip/ZipFormat.h"

namespace quillmoor::sfx {
namespace {

using quillmoor::testing::contentsOf;
using quillmoor::testing::writeFile;
using ::testing::AllOf;
using ::testing::AnyOf;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::Property;
using ::testing::Throws;
using namespace std::string_literals;

class UnpackTest : public quillmoor::testing::ZipArchiveTest {
 protected:
  UnpackTest() {
    events.refused = [this](const std::string& line) { refused.push_back(line); };
  }

  std::string target() const { return LocalPathText(folder_ / "target"); }
  std::filesystem::path inTarget(const std::string& name) const {
    return folder_ / "target" / LocalPath(name);
  }

  /// Packs the tree after a stub and returns the program's path.
  std::string made(const std::string& password = "",
                   const std::optional<ZipSegmentOptions>& segments = std::nullopt) {
    writeFile(folder_ / "stub", "a stub of some length");
    add(password.empty() ? std::nullopt : std::optional(password));
    result = archive.writeSelfExtracting(out("a.exe"), LocalPathText(folder_ / "stub"), segments);
    return out("a.exe");
  }
  UnpackResult unpacked(const std::string& program, const std::string& password = "") {
    ZipReader reader(program);
    return unpack(reader, target(), password, events);
  }
  /// A program whose archive holds just these entries, whatever their names; of a set of two, on request.
  std::string madeOf(const std::vector<std::pair<std::string, std::uint32_t>>& namesAndAttributes,
                     bool set = false) {
    std::string bytes = "stub", directory;
    zip::End end;
    for (const auto& [name, attributes] : namesAndAttributes) {
      const bool folder = name.ends_with('/');
      zip::Entry entry;
      entry.name = name;
      entry.attributes = attributes;
      entry.hostSystem = 3;
      entry.modifiedLocal = kModified;
      entry.modified = std::int64_t{1} << 40;  // too large for the field of exact times
      entry.offset = bytes.size();
      entry.size = entry.packedSize = folder ? 0 : 4;
      entry.crc = folder ? 0 : 0x8DFB3152;  // of "evil"
      bytes += zip::localHeader(entry) + (folder ? "" : "evil");
      directory += zip::centralHeader(entry);
    }
    end.entries = end.entriesOnDisk = namesAndAttributes.size();
    end.directoryOffset = bytes.size();
    end.directorySize = directory.size();
    end.disk = set;
    const std::string records = zip::endRecords(end);
    writeFile(LocalPath(out("made.exe")), bytes + directory + (set ? "" : records));
    if (set) writeFile(LocalPath(out("made.zip")), records);
    return out("made.exe");
  }

  const LocalDateTime kModified = *MakeLocalDateTime({2011, 6, 23, 17, 44, 58, 0});
  UnpackEvents events;
  std::vector<std::string> refused;
};

TEST_F(UnpackTest, BringsBackWhatWasPackedWhateverTheKindOfArchive) {
  put("text", text(700'000));
  put("noise", noise(300'000));
  put("empty", "");
  put("sub/gr\xC3\xBC\xC3\x9F \xE6\x97\xA5/x", "deep");
  std::filesystem::create_directory(tree() / "hollow");
  const auto time = std::chrono::sys_seconds(std::chrono::seconds(1'300'000'001));
  ASSERT_TRUE(setModifiedTime(LocalPathText(tree() / "text"), time));
  for (const char* const password : {"", "geheim"}) {
    for (const std::optional<ZipSegmentOptions>& segments :
         {std::optional<ZipSegmentOptions>(), std::optional(ZipSegmentOptions{65'536})}) {
      std::filesystem::remove_all(folder_ / "target");
      const UnpackResult got = unpacked(made(password, segments), password);
      EXPECT_EQ(got.files, 4U);
      EXPECT_TRUE(contentsOf(inTarget("text")) == text(700'000));
      EXPECT_TRUE(contentsOf(inTarget("noise")) == noise(300'000));
      EXPECT_EQ(contentsOf(inTarget("empty")), "");
      EXPECT_EQ(contentsOf(inTarget("sub/gr\xC3\xBC\xC3\x9F \xE6\x97\xA5/x")), "deep");
      EXPECT_TRUE(std::filesystem::is_directory(inTarget("hollow")));
      EXPECT_EQ(fileTimes(LocalPathText(inTarget("text")))->modified, time);
      EXPECT_THAT(refused, IsEmpty());
    }
  }
}

TEST_F(UnpackTest, AsksBeforeItReplacesAFile) {
  put("a", "new");
  put("b", "new");
  std::filesystem::create_directory(folder_ / "target");
  writeFile(inTarget("a"), "old");
  writeFile(inTarget("b"), "old");
  events.replace = [](const std::string& name) { return name == "b"; };
  EXPECT_EQ(unpacked(made()).refused, 1U);
  EXPECT_EQ(contentsOf(inTarget("a")), "old");
  EXPECT_EQ(contentsOf(inTarget("b")), "new");
  events.replace = nullptr;
  EXPECT_EQ(unpacked(made()).refused, 2U) << "nobody to ask: what is there stays";
}

TEST_F(UnpackTest, RefusesNamesThatLeadElsewhereAndUnpacksTheRest) {
  const std::vector<std::string> evil = {
      "../evil",    "a/../../evil", "/evil", "a//evil", "a/./evil", "..",
      "with\nline", "\x1b[31mred",  "",      "/",       "../",      std::string("nul\0x", 5)};
  std::vector<std::pair<std::string, std::uint32_t>> entries;
  for (const std::string& name : evil) entries.emplace_back(name, 0100644U << 16);
  entries.emplace_back("link", 0120777U << 16);
  entries.emplace_back("pipe", 0010644U << 16);
  entries.emplace_back("good", 0100644U << 16);
  const UnpackResult got = unpacked(madeOf(entries));
  EXPECT_EQ(got.files, 1U);
  EXPECT_EQ(got.refused, evil.size() + 2);
  EXPECT_EQ(contentsOf(inTarget("good")), "evil");
  EXPECT_EQ(fileTimes(LocalPathText(inTarget("good")))->modified, LocalToUtc(kModified));
  EXPECT_FALSE(std::filesystem::exists(folder_ / "evil"));
  for (const std::string& line : refused) EXPECT_EQ(line.find_first_of("\n\x1b"), std::string::npos) << line;
}

TEST_F(UnpackTest, ReportsAWrongPasswordBeforeItWritesAnything) {
  put("a", "secret");
  const std::string program = made("right");
  // The verifier has 16 bits, so that a wrong password could pass it; these do not.
  for (const char* const wrong : {"", "wrong", "Right", "right "}) {
    EXPECT_THAT([&] { unpacked(program, wrong); },
                Throws<ArchiveError>(Property(&ArchiveError::fault,
                                              AnyOf(ArchiveFault::wrongPassword, ArchiveFault::damaged))));
    EXPECT_TRUE(std::filesystem::is_empty(folder_ / "target"));
  }
  EXPECT_EQ(unpacked(program, "right").files, 1U);
}

TEST_F(UnpackTest, SaysWhichPartOfASetIsMissing) {
  put("noise", noise(200'000));
  const std::string program = made("", ZipSegmentOptions{65'536});
  ASSERT_THAT(filesOut(), ElementsAre("a.exe", "a.z02", "a.z03", "a.zip"));
  for (const char* const name : {"a.z02", "a.z03", "a.zip"}) {
    std::filesystem::rename(LocalPath(out(name)), folder_ / "aside");
    EXPECT_THAT([&] { unpacked(program); },
                Throws<ArchiveError>(AllOf(Property(&ArchiveError::fault, ArchiveFault::incomplete),
                                           Property(&ArchiveError::what, HasSubstr(name)))));
    std::filesystem::rename(folder_ / "aside", LocalPath(out(name)));
  }
  EXPECT_EQ(unpacked(program).files, 1U);
}

TEST_F(UnpackTest, FindsAnArchiveWhoseOffsetsDoNotCountTheStub) {
  put("a", "x");
  packed();
  writeFile(LocalPath(out("b.exe")), "another stub" + contentsOf(LocalPath(out("a.zip"))));
  EXPECT_EQ(unpacked(out("b.exe")).files, 1U);
}

TEST_F(UnpackTest, ReadsMoreEntriesThanTheShortRecordCounts) {
  const std::vector<std::pair<std::string, std::uint32_t>> folders(70'000, {"a/", 0});
  for (const bool set : {false, true}) {
    ZipReader reader(madeOf(folders, set));
    std::size_t count = 0;
    reader.forEach([&](const ArchiveEntry& entry) { count += entry.folder(); });
    EXPECT_EQ(count, folders.size());
  }
}

TEST_F(UnpackTest, SaysWhatIsDamaged) {
  const std::string end = "PK\5\6", central = "PK\1\2", local = "PK\3\4", n16(2, '\xFF'), n32(4, '\xFF');
  const struct {
    std::string record;
    std::size_t at;  // counted from the record
    std::string bytes;
    const char* words;
  } rows[] = {
      {end, 4, "\1",
       "there is no archive at the end of made.exe: it is damaged, or its last part, made.zip, is"},
      {end, 6, "\1", "made.exe is damaged: its end records contradict each other"},
      {end, 10, "\2", "its directory is too short"},
      {end, 14, "\1", "its directory is outside the archive"},
      {end, 18, "\1", "its directory is outside the archive"},
      {central, 0, "X", "its directory is not readable"},
      {central, 28, n16, "its directory ends too early"},
      {central, 34, "\1", "its directory points outside the archive"},
      {central, 20, n32, "a size in its directory is missing"},
      {central, 8, "\1", "made.exe is packed or encrypted by a method that this program does not support"},
      {central, 10, "\x0C", "is packed or encrypted by a method that this program does not support"},
      {central, 10, "\x63", "made.exe is encrypted by a method that this program does not support"},
      {central, 10, "\x08", "good ends too early"},
      {central, 16, "\1", "good does not match its checksum"},
      {central, 20, "\5", "good has contradicting sizes"},
      {central, 20, "\0\0\1\0\0\0\1"s, "good ends too early"},
      {local, 0, "X", "good is not where it should be"},
      {local, 28, n16, "good ends too early"},
      {local, 30, "f", "good has a different name in its local header"},
  };
  const std::string good = contentsOf(LocalPath(madeOf({{"good", 0100644U << 16}})));
  for (const auto& row : rows) {
    std::string bytes = good;
    bytes.replace(bytes.rfind(row.record) + row.at, row.bytes.size(), row.bytes);
    writeFile(LocalPath(out("made.exe")), bytes);
    EXPECT_THAT([&] { unpacked(out("made.exe")); },
                Throws<ArchiveError>(Property(&ArchiveError::what, HasSubstr(row.words))));
  }
}

// However its bytes are damaged, an archive is either read as it was or refused: no file comes out changed,
// and no byte outside of the archive is touched (which the sanitizers watch).
TEST_F(UnpackTest, ReadsADamagedArchiveAsItWasOrRefusesIt) {
  const std::string a = "some text that is long enough, some text that is long enough", b = noise(40);
  put("a", a);
  put("sub/b", b);
  put("c", "");
  const auto isRefused = [&](const std::string& bytes, const std::string& password) {
    writeFile(LocalPath(out("mutant.exe")), bytes);
    try {
      ZipReader reader(out("mutant.exe"));
      reader.forEach([&](const ArchiveEntry& entry) {
        std::string got;
        reader.contents(entry, password,
                        [&](std::span<const std::uint8_t> piece) { got.append(piece.begin(), piece.end()); });
        EXPECT_TRUE(got == a || got == b || got.empty()) << entry.name << " has come out changed";
      });
    } catch (const std::runtime_error&) {  // ArchiveError, or that a file cannot be read
      return true;
    }
    return false;
  };
  for (const std::string password : {"", "p"}) {
    const std::string bytes = contentsOf(LocalPath(made(password)));
    int refusals = 0, changes = 0;
    for (std::size_t at = 0; at < bytes.size(); ++at) {
      EXPECT_TRUE(isRefused(bytes.substr(0, at), password)) << "cut at " << at;
      // One change to each byte of the encrypted one, where every try costs the making of keys.
      for (const int change : password.empty() ? std::vector<int>{0x01, 0xFF} : std::vector<int>{0x80}) {
        SCOPED_TRACE("byte " + std::to_string(at));
        std::string changed = bytes;
        changed[at] = static_cast<char>(changed[at] ^ change);
        refusals += isRefused(changed, password);
        ++changes;
      }
    }
    EXPECT_GT(refusals, changes / 4);
  }
}

}  // namespace
}  // namespace quillmoor::sfx
