#include "controls/AviReader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "controls/ColourMath.h"
#include "controls/Rle8.h"
#include "platform/files/LocalPath.h"
#include "support/TemporaryFolder.h"

namespace quillmoor {
namespace {

using std::chrono::microseconds;
using ::testing::HasSubstr;

// Where the fields stand in the small files that the fuzzers start from.
enum Place : std::size_t {
  kFileSize = 4,
  kFirstChunkSize = 16,
  kHeaderList = 20,
  kMicroseconds = 32,
  kStreamType = 108,
  kScale = 128,
  kRate = 132,
  kWidth = 176,
  kHeight = 180,
  kPlanesAndBits = 184,
  kCompression = 188,
  kUsedColours = 204,
  kMovieSize = 228,
  kMovieList = 232,
  kFirstFrame = 236,
};
using Changes = std::vector<std::pair<Place, std::uint32_t>>;

std::string small(const std::string& name, const Changes& changes = {}) {
  std::string file = testing::contentsOf(LocalPath(QUILLMOOR_SEEDS "/avi/" + name));
  for (const auto& [place, value] : changes) {
    for (std::size_t i = 0; i < 4; ++i) file.at(place + i) = static_cast<char>(value >> (8 * i));
  }
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

/// What reading raises; "" when it raises nothing.
template <class Read>
std::string messageOf(Read read) {
  try {
    read();
  } catch (const AviError& error) {
    return error.what();
  }
  return "";
}

TEST(AviReader, ReadsEveryKindOfFrame) {
  constexpr std::uint32_t kOfNoVideo = 0x62773030, kOfAnotherStream = 0x62643130;  // "00wb", "01db"
  const struct {
    const char* file;
    Changes changes;
    std::vector<std::string> frames;
  } cases[] = {
      {"indexed.avi", {}, {"bbgrgb", "bbgrgb"}},  // the second is empty: as the one before
      {"rle8.avi", {}, {"bbbggg", "brbggg", "brbrgb"}},
      {"rle8.avi", {{kFirstFrame, kOfNoVideo}}, {"rrrrrr", "rrrrgb"}},
      {"rle8.avi", {{kFirstFrame, kOfAnotherStream}}, {"rrrrrr", "rrrrgb"}},
      {"true-colour.avi", {}, {"br"}},
  };
  for (const auto& c : cases) {
    const AviAnimation read = ReadAvi(small(c.file, c.changes));
    EXPECT_EQ(letters(read), c.frames) << c.file;
    EXPECT_EQ(read.width * read.height * 3, static_cast<int>(read.frames[0].size())) << c.file;
  }
}

TEST(AviReader, TakesTheRateOfTheStreamBeforeThatOfTheFile) {
  const struct {
    std::uint32_t header, scale, rate;
    int expected;
  } cases[] = {{50'000, 1, 10, 100'000},
               {50'000, 0, 10, 50'000},
               {0, 0, 0, 100'000},
               {4'000'000'000, 0, 0, 10'000'000},
               {0, 1, 4'000'000'000, 10'000}};
  for (const auto& c : cases) {
    const auto file = small("indexed.avi", {{kMicroseconds, c.header}, {kScale, c.scale}, {kRate, c.rate}});
    EXPECT_EQ(ReadAvi(file).perFrame, microseconds(c.expected))
        << c.header << " " << c.scale << "/" << c.rate;
  }
}

TEST(AviReader, SaysWhatIsWrongAndWhere) {
  const std::string sides = "byte 176: a picture whose sides";
  const struct {
    const char* name;
    const char* file;
    Changes changes;
    std::string message;
  } cases[] = {
      {"no frame", "indexed.avi", {{kMovieList, 0}}, "no frame"},
      {"no headers", "indexed.avi", {{kHeaderList, 0}}, "frames without the header"},
      {"no video", "indexed.avi", {{kStreamType, 0}}, "frames without the header"},
      {"no width", "indexed.avi", {{kWidth, 0}}, sides},
      {"rows from the top", "indexed.avi", {{kHeight, 0xFFFFFFFE}}, sides},
      {"too wide", "indexed.avi", {{kWidth, kMaxAviSide + 1}}, sides},
      {"16 bits", "indexed.avi", {{kPlanesAndBits, 0x100001}}, "16 bits a pixel in compression 0"},
      {"24 bits in runs", "true-colour.avi", {{kCompression, 1}}, "24 bits a pixel in compression 1"},
      {"another codec", "indexed.avi", {{kCompression, 0x44495658}}, "in compression 1145656920"},
      {"palette too long", "indexed.avi", {{kUsedColours, 257}}, "a palette of 257 colours"},
      {"palette cut", "indexed.avi", {{kUsedColours, 4}}, "the file ends before the end of the palette"},
      {"frame cut", "indexed.avi", {{kWidth, 5}}, "a frame of 8 bytes instead of 16"},
      {"palette change", "indexed.avi", {{kFirstFrame, 0x63703030}}, "a change of the palette"},
      {"chunk too long", "indexed.avi", {{kFirstChunkSize, 1000}}, "byte 12: a chunk of 1000 bytes where"},
      {"file cut", "indexed.avi", {{kFileSize, 261}}, "byte 4: the file says 261 bytes and has 260"},
      {"pixels", "rle8.avi", {{kWidth, kMaxAviSide}, {kHeight, kMaxAviSide}}, "more frames than"},
  };
  for (const auto& c : cases)
    EXPECT_THAT(messageOf([&] { ReadAvi(small(c.file, c.changes)); }), HasSubstr(c.message)) << c.name;

  EXPECT_THAT(messageOf([] { ReadAvi("RIFF....WAVE"); }), HasSubstr("byte 0: not an AVI file"));
  EXPECT_THAT(messageOf([] { ReadAvi(std::string("RIFF\4\0\0\0AVI ", 12)); }), HasSubstr("no video stream"));
  constexpr std::uint32_t kFrameBytes = (kMaxAviFrames + 1) * 8;
  std::string long_ =
      small("indexed.avi", {{kFileSize, kFirstFrame - 8 + kFrameBytes}, {kMovieSize, 4 + kFrameBytes}})
          .substr(0, kFirstFrame);
  for (std::size_t i = 0; i <= kMaxAviFrames; ++i) long_ += std::string("00dc\0\0\0\0", 8);
  EXPECT_THAT(messageOf([&] { ReadAvi(long_); }), HasSubstr("more frames than"));
}

TEST(Rle8, StopsAtTheCodeThatIsWrong) {
  struct Case {
    std::string code;
    std::size_t at;
    const char* fault;
  };
  for (const Case& c :
       {Case{"\3\1"
             "\1\1",
             2, "leaves"},
        Case{std::string("\0\0\0\0\1\1", 6), 4, "leaves"}, Case{"\1", 0, "half a run"},
        Case{std::string("\0\2\1", 3), 0, "half a move"}, Case{std::string("\0\2\4\0", 4), 0, "leaves"},
        Case{std::string("\0\2\0\3", 4), 0, "leaves"}, Case{std::string("\0\3ab", 4), 0, "does not hold"},
        Case{std::string("\0\4abcd", 6), 0, "leaves"}}) {
    std::vector<std::uint8_t> pixels(6);
    const Rle8Result result = DecodeRle8(c.code, 3, 2, pixels);
    ASSERT_NE(result.fault, nullptr);
    EXPECT_THAT(result.fault, HasSubstr(c.fault));
    EXPECT_EQ(result.at, c.at);
  }
}

TEST(AviReader, PlaysTheAnimationOfTheRun) {
  const AviAnimation read = LoadAvi(QUILLMOOR_ASSETS "/Server.avi");
  EXPECT_EQ(read.width, 544);
  EXPECT_EQ(read.height, 120);
  ASSERT_EQ(read.frames.size(), 12U);
  for (const auto& frame : read.frames) {
    // The corner is the colour that players let the background through for; something else is there too.
    EXPECT_EQ((Rgb{frame[0], frame[1], frame[2]}), (Rgb{255, 0, 255}));
    EXPECT_GT(std::count(frame.begin(), frame.end(), 0x6F), 1000);
  }
  EXPECT_NE(read.frames[0], read.frames[1]);
}

TEST(AviReader, NamesTheFileThatCannotBeRead) {
  const testing::TemporaryFolder folder;
  testing::writeFile(folder / "Broken.avi", "RIFF");
  for (const auto& [name, message] : {std::pair{"Broken.avi", "Broken.avi: byte 0: not an AVI file"},
                                      std::pair{"Missing.avi", "Missing.avi: cannot be opened"}})
    EXPECT_THAT(messageOf([&] { LoadAvi(LocalPathText(folder / name)); }), HasSubstr(message));
}

}  // namespace
}  // namespace quillmoor
