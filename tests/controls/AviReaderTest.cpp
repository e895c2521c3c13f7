#include "controls/AviReader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/files/LocalPath.h"
#include "support/TemporaryFolder.h"

namespace quillmoor {
namespace {

using ::testing::HasSubstr;
using ::testing::ThrowsMessage;

/// A small file that the fuzzers start from, with a number of four bytes in the place of another.
std::string small(const char* name, std::size_t place = 0, std::uint32_t value = 0x46464952 /* "RIFF" */) {
  std::string file = testing::contentsOf(LocalPath(QUILLMOOR_SEEDS "/avi/" + std::string(name)));
  for (std::size_t i = 0; i < 4; ++i) file.at(place + i) = static_cast<char>(value >> (8 * i));
  return file;
}

/// The pixels of every frame, red, green and blue ones as letters.
std::vector<std::string> letters(const AviAnimation& read) {
  std::vector<std::string> all;
  for (const auto& rgb : read.frames) {
    std::string& text = all.emplace_back();
    for (std::size_t i = 0; i < rgb.size(); i += 3)
      text += rgb[i] == 255 ? 'r' : rgb[i + 1] == 255 ? 'g' : rgb[i + 2] == 255 ? 'b' : '.';
  }
  return all;
}

constexpr std::size_t kScale = 128, kFirstFrame = 236, kFirstFrameData = 244;

TEST(AviReader, ReadsEveryKindOfFrame) {
  const struct {
    const char* what;
    std::string file;
    int microseconds;
    std::vector<std::string> frames;
  } cases[] = {
      {"the second is empty: as the one before", small("indexed.avi"), 83'333, {"bbgrgb", "bbgrgb"}},
      {"the main header's rate", small("indexed.avi", kScale, 0), 50'000, {"bbgrgb", "bbgrgb"}},
      {"runs", small("rle8.avi"), 83'333, {"bbbggg", "brbggg", "brbrgb"}},
      {"another stream's", small("rle8.avi", kFirstFrame, 0x62643130), 83'333, {"rrrrrr", "rrrrgb"}},
      {"24 bits", small("true-colour.avi"), 83'333, {"br"}},
  };
  for (const auto& c : cases) {
    const AviAnimation read = ReadAvi(c.file);
    EXPECT_EQ(letters(read), c.frames) << c.what;
    EXPECT_EQ(read.width * read.height * 3, static_cast<int>(read.frames[0].size())) << c.what;
    EXPECT_EQ(read.perFrame, std::chrono::microseconds(c.microseconds)) << c.what;
  }
}

TEST(AviReader, SaysWhatIsWrongAndWhere) {
  const struct {
    const char* name;
    std::string file;
    const char* message;
  } cases[] = {
      {"another file", "RIFF....WAVE", "byte 0: not an AVI file"},
      {"no video", small("indexed.avi", 108, 0), "frames without the header"},
      {"no width", small("indexed.avi", 176, 0), "byte 176: a picture whose sides"},
      {"16 bits", small("indexed.avi", 184, 0x100001), "16 bits a pixel in compression 0"},
      {"frame cut", small("indexed.avi", 176, 5), "a frame of 8 bytes instead of 16"},
      {"palette change", small("indexed.avi", kFirstFrame, 0x63703030), "a change of the palette"},
      {"file cut", small("indexed.avi", 4, 261), "byte 4: the file says 261 bytes and has 260"},
      {"a long run", small("rle8.avi", kFirstFrameData, 0x0104), "byte 244: a run that leaves"},
      {"a move beside", small("rle8.avi", kFirstFrameData, 0x040200), "byte 244: a move that leaves"},
  };
  for (const auto& c : cases)
    EXPECT_THAT([&] { ReadAvi(c.file); }, ThrowsMessage<AviError>(HasSubstr(c.message))) << c.name;
}

TEST(AviReader, PlaysTheAnimationOfTheRun) {
  const AviAnimation read = LoadAvi(QUILLMOOR_ASSETS "/Server.avi");
  EXPECT_EQ(read.frames.size(), 12U);
  EXPECT_NE(read.frames[0], read.frames[1]);
  EXPECT_THAT([] { LoadAvi("/nowhere/Missing.avi"); },
              ThrowsMessage<AviError>(HasSubstr("Missing.avi: cannot be opened")));
}

}  // namespace
}  // namespace quillmoor
