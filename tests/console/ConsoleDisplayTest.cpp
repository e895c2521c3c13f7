#include "console/ConsoleDisplay.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace quillmoor {
namespace {

using ::testing::EndsWith;
using ::testing::HasSubstr;

struct Screen {
  std::string written;
  int columns = 40;
  std::int64_t now = 0;

  ConsoleScreen on(bool terminal) {
    return {[this](std::string_view bytes) { written += bytes; }, terminal, [this] { return columns; },
            [this] { return now; }};
  }
};

TEST(ConsoleDisplay, NeverPassesControlCharactersToATerminal) {
  EXPECT_EQ(terminalText("a\x1b[2J\rb\r\nc\td\x7f\xc2\x9b\x9b[\xc2\xa0\xc3\xbc\n"),
            "a?[2J?b\nc?d???[\xc2\xa0\xc3\xbc\n");
}

TEST(ConsoleDisplay, ChangesTheColourOnlyWithTheText) {
  Screen screen;
  ConsoleDisplay display(screen.on(true));
  display.setLogColour({1, 2, 3});
  display.insertLogText("a");
  display.setLogColour({9, 9, 9});
  display.setLogColour({1, 2, 3});
  display.insertLogText("b\r\n");
  EXPECT_EQ(screen.written, "\x1b[38;2;1;2;3mab\n");
}

TEST(ConsoleDisplay, ShowsTheCurrentFileBetweenTheLinesOfTheLog) {
  Screen screen;
  ConsoleDisplay display(screen.on(true));
  display.insertLogText("log\r\n");
  display.showFileSize("2.000 MB");
  display.showCurrentFile("/www/a/very/long/path/to/some/f\xc3\xbcle.bin");
  display.showProgress(50);
  display.showRate("1.0 KB/sec");
  screen.written.clear();
  display.refresh();
  EXPECT_EQ(screen.written, "") << "a file that is there at once needs no line";
  screen.now = 150;
  display.refresh();
  EXPECT_THAT(screen.written, EndsWith("\x1b[0m...\xc3\xbcle.bin 50 % of 2.000 MB, 1.0 KB/sec"));
  screen.written.clear();
  display.insertLogText("next\r\n");
  EXPECT_THAT(screen.written, ::testing::StartsWith("\r\x1b[K")) << "the log line must not stand behind it";
  screen.now = 300;
  display.refresh();
  screen.written.clear();
  display.showCurrentFile("");
  EXPECT_EQ(screen.written, "\r\x1b[K");
  display.showCurrentFile("/a");
  display.insertLogText("Retriving: ");
  screen.written.clear();
  screen.now = 800;
  display.refresh();
  EXPECT_EQ(screen.written, "") << "a log line is half written";
}

TEST(ConsoleDisplay, WritesPlainTextAndAReportWhereThereIsNoTerminal) {
  Screen screen;
  ConsoleDisplay display(screen.on(false));
  display.setLogColour({255, 0, 0});
  display.insertLogText("Started\r\n");
  display.showCurrentFile("/a");
  screen.now = 10'000;
  display.refresh();
  display.finish();
  EXPECT_EQ(screen.written, "Started\n");
  EXPECT_EQ(display.reportTable({}), "");
  const auto row = display.addReportRow();
  const char* const items[kReportColumns] = {
      "W\xc3\xbcrzburg", "11-14-2026 10:00", " - ", "Running", "12", " - ", "1.000 KB"};
  for (std::size_t i = 0; i < kReportColumns; ++i) {
    display.setReportItem(row, static_cast<ReportColumn>(i), items[i]);
  }
  display.setReportItem(row, ReportColumn::status, "Completed");
  EXPECT_EQ(display.reportTable({}),
            "Profile   Started           Finished  Status     Files  Errors  Size\n"
            "--------  ----------------  --------  ---------  -----  ------  --------\n"
            "W\xc3\xbcrzburg  11-14-2026 10:00   -        Completed  12      -      1.000 KB\n");
}

}  // namespace
}  // namespace quillmoor
