#include "controls/AviReader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

#include "controls/AviFile.h"
#include "controls/ColourMath.h"
#include "controls/Rle8.h"
#include "platform/LocalPath.h"
#include "support/TemporaryFolder.h"

namespace quillmoor {
namespace {

using std::chrono::microseconds;
using testing::AviFile;
using testing::chunk;
using ::testing::HasSubstr;
using testing::le;
using testing::list;

std::string letters(const std::vector<std::uint8_t>& rgb) {
  std::string text;
  for (std::size_t i = 0; i < rgb.size(); i += 3)
    text += rgb[i] == 255 ? 'r' : rgb[i + 1] == 255 ? 'g' : rgb[i + 2] == 255 ? 'b' : '.';
  return text;
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

TEST(AviReader, ReadsRowsFromTheBottomWithTheirPadding) {
  AviFile file;
  file.frames = {{"db", std::string("\0\1\2\7\2\2\1\7", 8)}};
  const AviAnimation read = ReadAvi(file.bytes());
  EXPECT_EQ(read.width, 3);
  EXPECT_EQ(read.height, 2);
  EXPECT_EQ(read.perFrame, microseconds(50'000));
  ASSERT_EQ(read.frames.size(), 1U);
  EXPECT_EQ(letters(read.frames[0]), "bbgrgb");
}

TEST(AviReader, ReadsTrueColour) {
  AviFile file;
  file.bits = 24;
  file.width = 1;
  file.palette.clear();
  file.usedColours = 0;
  file.frames = {{"db", std::string("\0\0\xFF\0\xFF\0\0\0", 8)}};  // red below blue
  EXPECT_EQ(letters(ReadAvi(file.bytes()).frames.at(0)), "br");
}

TEST(AviReader, BuildsRunLengthFramesOnTheOneBefore) {
  AviFile file;
  file.compression = 1;
  file.frames = {{"dc", std::string("\3\1\0\0\3\2\0\1", 8)},        // green row, blue row above it
                 {"dc", std::string("\0\2\1\1\1\0\0\1", 8)},        // a move, then one red pixel
                 {"dc", ""},                                        // as before
                 {"dc", std::string("\0\3\0\1\2\0\0\0\0\1", 10)}};  // the lower row as it is
  const AviAnimation read = ReadAvi(file.bytes());
  ASSERT_EQ(read.frames.size(), 4U);
  EXPECT_EQ(letters(read.frames[0]), "bbbggg");
  EXPECT_EQ(letters(read.frames[1]), "brbggg");
  EXPECT_EQ(letters(read.frames[2]), "brbggg");
  EXPECT_EQ(letters(read.frames[3]), "brbrgb");
}

TEST(AviReader, TakesTheRateOfTheStreamBeforeThatOfTheFile) {
  struct Case {
    std::uint32_t header, scale, rate;
    int expected;
  };
  for (const Case& c : {Case{50'000, 1, 10, 100'000}, Case{50'000, 0, 10, 50'000}, Case{0, 0, 0, 100'000},
                        Case{1, 0, 0, 10'000}, Case{4'000'000'000, 0, 0, 10'000'000},
                        Case{0, 4'000'000'000, 1, 10'000'000}, Case{0, 1, 4'000'000'000, 10'000}}) {
    AviFile file;
    file.microseconds = c.header;
    file.scale = c.scale;
    file.rate = c.rate;
    file.frames = {{"db", std::string(8, '\0')}};
    EXPECT_EQ(ReadAvi(file.bytes()).perFrame, microseconds(c.expected))
        << c.header << " " << c.scale << "/" << c.rate;
  }
}

TEST(AviReader, FindsTheVideoBesideOtherStreamsAndInGroups) {
  AviFile file;
  file.streamsBefore = list("strl", chunk("strh", "auds" + std::string(52, '\0')) + chunk("strf", "sound"));
  file.videoNumber = "01";
  const std::string red(8, '\0');
  const std::string blue(8, '\2');
  const std::string movie = chunk("00wb", "noise") + list("rec ", chunk("01db", red) + chunk("00db", blue)) +
                            chunk("01db", blue) + chunk("JUNK", "x");
  const std::string bytes =
      chunk("RIFF", "AVI " + file.headers() + list("movi", movie) + chunk("idx1", "")) + "tail";
  const AviAnimation read = ReadAvi(bytes);
  ASSERT_EQ(read.frames.size(), 2U);
  EXPECT_EQ(letters(read.frames[0]), "rrrrrr");
  EXPECT_EQ(letters(read.frames[1]), "bbbbbb");
}

TEST(AviReader, SaysWhatIsWrongAndWhere) {
  struct Case {
    const char* name;
    std::function<void(AviFile&)> spoil;
    const char* message;
  };
  const Case cases[] = {
      {"no frame", [](AviFile& f) { f.frames.clear(); }, "no frame"},
      {"no width", [](AviFile& f) { f.width = 0; }, "byte 176: a picture whose sides"},
      {"rows from the top", [](AviFile& f) { f.height = 0xFFFFFFFE; }, "a picture whose sides"},
      {"too wide", [](AviFile& f) { f.width = kMaxAviSide + 1; }, "a picture whose sides"},
      {"16 bits", [](AviFile& f) { f.bits = 16; }, "pictures of 16 bits a pixel in compression 0"},
      {"run-length at 24 bits", [](AviFile& f) { f.bits = 24, f.compression = 1; },
       "24 bits a pixel in compression 1"},
      {"another codec", [](AviFile& f) { f.compression = 0x44495658; }, "in compression 1145656920"},
      {"palette too long", [](AviFile& f) { f.usedColours = 257; }, "a palette of 257 colours"},
      {"palette cut", [](AviFile& f) { f.usedColours = 4; }, "the file ends before the end of the palette"},
      {"frame cut", [](AviFile& f) { f.frames[0].second = "abc"; }, "a frame of 3 bytes instead of 8"},
      {"palette change", [](AviFile& f) { f.frames[0].first = "pc"; }, "a change of the palette"},
      {"too many frames", [](AviFile& f) { f.frames.resize(kMaxAviFrames + 1); }, "more frames than"},
      {"too many pixels",
       [](AviFile& f) { f.width = f.height = kMaxAviSide, f.compression = 1, f.frames.resize(3); },
       "more frames than"},
  };
  for (const Case& c : cases) {
    AviFile file;
    file.frames = {{"db", std::string(8, '\0')}};
    c.spoil(file);
    EXPECT_THAT(messageOf([&] { ReadAvi(file.bytes()); }), HasSubstr(c.message)) << c.name;
  }
  AviFile file;
  file.frames = {{"db", std::string(8, '\0')}};
  const std::string good = file.bytes();
  const std::string noHeaders = chunk("RIFF", "AVI " + list("movi", file.movie()));
  for (const auto& [bytes, message] : std::initializer_list<std::pair<std::string, const char*>>{
           {"", "byte 0: no AVI file"},
           {"RIFF....WAVE", "byte 0: no AVI file"},
           {good.substr(0, good.size() - 1), "byte 4: the file says"},
           {chunk("RIFF", "AVI "), "no video stream"},
           {noHeaders, "frames without the header"},
           {chunk("RIFF", "AVI JUNK" + le(100)), "byte 12: a chunk of 100 bytes where 0 are left"}})
    EXPECT_THAT(messageOf([&] { ReadAvi(bytes); }), HasSubstr(message));
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
  for (const auto& [name, message] : {std::pair{"Broken.avi", "Broken.avi: byte 0: no AVI file"},
                                      std::pair{"Missing.avi", "Missing.avi: cannot be opened"}})
    EXPECT_THAT(messageOf([&] { LoadAvi(LocalPathText(folder / name)); }), HasSubstr(message));
}

}  // namespace
}  // namespace quillmoor
