#include "engine/LogText.h"

#include <gtest/gtest.h>

#include <string>

namespace quillmoor {
namespace {

constexpr Colour kRed{255, 0, 0};
constexpr Colour kBlue{0, 0, 255};

/// Lines as "red{...}blue{...}", one a row.
std::string drawn(const LogText& log) {
  std::string all;
  for (std::size_t i = 0; i < log.lineCount(); ++i) {
    const LogLine& line = log.line(i);
    for (std::size_t r = 0; r < line.runs.size(); ++r) {
      const std::size_t begin = line.runs[r].begin;
      const std::size_t end = r + 1 < line.runs.size() ? line.runs[r + 1].begin : line.text.size();
      all += (line.runs[r].colour == kRed ? "red{" : "blue{") + line.text.substr(begin, end - begin) + "}";
    }
    all += "|";
  }
  return all;
}

LogText sample() {
  LogText log;
  log.setColour(kRed);
  log.append("Skipped: ");
  log.setColour(kBlue);
  log.append("upto date\r\nnext");
  return log;
}

TEST(LogText, GoesOnWithTheLineUntilABreak) {
  LogText log = sample();
  EXPECT_EQ(drawn(log), "red{Skipped: }blue{upto date}|blue{next}|");
  log.append(" word\r\n");
  EXPECT_EQ(drawn(log),
            "red{Skipped: }blue{upto date}|blue{next word}|"
            "|");
  EXPECT_EQ(log.length(), 9u + 9 + 2 + 9 + 2);
}

TEST(LogText, TrimsWherever) {
  const struct {
    std::size_t characters;
    const char* left;
  } cases[] = {{0, "red{Skipped: }blue{upto date}|blue{next}|"},
               {4, "red{ped: }blue{upto date}|blue{next}|"},
               {9, "blue{upto date}|blue{next}|"},
               {12, "blue{o date}|blue{next}|"},
               {18, "blue{}|blue{next}|"},  // the break is left
               {19, "blue{}|blue{next}|"},  // half of it
               {20, "blue{next}|"},
               {23, "blue{t}|"},
               {24, "blue{}|"},
               {1000, "blue{}|"}};
  for (const auto& one : cases) {
    LogText log = sample();
    log.trim(one.characters);
    EXPECT_EQ(drawn(log), one.left) << one.characters;
    EXPECT_EQ(log.length(), one.characters > 24 ? 0 : 24 - one.characters);
    EXPECT_EQ(log.firstLine() + log.lineCount(), 2U) << one.characters;
    log.append("!");
    EXPECT_EQ(drawn(log).substr(drawn(log).size() - 3), "!}|") << one.characters;
    log.trim(log.length());
    EXPECT_EQ(drawn(log), "blue{}|") << one.characters;
  }
}

TEST(LogText, CountsAndCutsCharactersNotBytes) {
  LogText log;
  log.setColour(kRed);
  log.append(
      "gr\xC3\xBC\xC3\x9F"
      "e \xE2\x82\xAC\r\n");
  EXPECT_EQ(log.length(), 9u);
  log.trim(3);
  EXPECT_EQ(drawn(log),
            "red{\xC3\x9F"
            "e \xE2\x82\xAC}||");
}

TEST(LogText, ShowsWhateverBytesAServerSends) {
  const struct {
    std::string_view bytes;
    const char* shown;
  } cases[] = {{"caf\xE9.html", "caf\xC3\xA9.html"},              // ANSI
               {"\xC3", "\xC3\x83"},                              // the beginning of a character
               {"\xED\xA0\x80", "\xC3\xAD\xC2\xA0\xE2\x82\xAC"},  // half a surrogate pair
               {"\xC0\xAF", "\xC3\x80\xC2\xAF"},                  // an overlong "/"
               {"a\rb\x1b[31m\t\x7F", "a?b?[31m ?"},
               {"\x9B\xC2\x9B"
                "31m",
                "??31m"}};
  for (const auto& one : cases) {
    LogText log;
    log.setColour(kRed);
    log.append(one.bytes);
    EXPECT_EQ(log.line(0).text, one.shown);
    log.trim(log.length());
    EXPECT_EQ(log.line(0).text, "");
  }
}

}  // namespace
}  // namespace quillmoor
