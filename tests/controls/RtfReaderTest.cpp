#include "controls/RtfReader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/files/LocalPath.h"
#include "support/TemporaryFolder.h"

namespace quillmoor {
namespace {

using ::testing::HasSubstr;
using ::testing::ThrowsMessage;

/// "[bi]" means bold and italic from here on, "[]" plain again; "|" ends a paragraph.
std::string marked(const RtfDocument& document) {
  std::string text;
  for (const RtfParagraph& paragraph : document.paragraphs) {
    for (const RtfRun& run : paragraph.runs) {
      const RtfFormat& format = run.format;
      std::string marks = format.font + (format.fixedPitch ? "=" : "");
      if (format.bold) marks += 'b';
      if (format.italic) marks += 'i';
      if (format.underline) marks += 'u';
      if (format.halfPoints != 24) marks += std::to_string(format.halfPoints);
      if (const auto& c = format.colour)
        marks +=
            '#' + std::to_string(c->red) + ',' + std::to_string(c->green) + ',' + std::to_string(c->blue);
      if (!marks.empty() || &run != &paragraph.runs.front()) text += '[' + marks + ']';
      text += run.text;
    }
    text += '|';
  }
  return text;
}

TEST(RtfReader, ReadsTextAndFormats) {
  const struct {
    const char *name, *rtf, *text;
  } cases[] = {
      {"paragraphs, and a last one without its end", "{\\rtf1 on\r\ne\\par\\par two\\\nx}", "one||two|x|"},
      {"one blank ends a word", R"({\rtf1 a\bullet  b\bullet c\par})", "a• b•c|"},
      {"escaped characters", R"({\rtf1 \{a\}\\b\~c\_d\-e\par})", "{a}\\b\u00A0c\u2011de|"},
      {"named characters", R"({\rtf1\tab a\line b\emdash\lquote c\rquote\par})", "\ta\nb—‘c’|"},
      {"code page 1252", R"({\rtf1\ansi\ansicpg1252 M\'fcller \'80\'93x\'94\par})", "Müller €“x”|"},
      {"unicode and its fallbacks",
       R"({\rtf1\u8364?5 \u8364\'805 \uc2\u8364 EUR {\uc0\u8364 x}\u8364\bullet?y{\u8364 a}bc\par})",
       "€5 €5 €R €x€y€bc|"},
      {"lists", R"({\rtf1{\fonttbl{\f3\fcharset2 S;}}{\pntext\f3\'b7\u-3913?\tab}{\*\pn\pnlvlblt}one\par})",
       "[S]••\t[]one|"},
      {"no text of the document",
       R"({\rtf1{\info{\title x}}{\*\generator y;}{\pict 89}a{\v b}\v c\plain d\par})", "ad|"},
      {"binary data, controls, the end", "{\\rtf1 a\\bin5 {{{{{b\x01\x7F\\'07\\par}\n{\\rtf1 c", "ab|"},
      {"groups", R"({\rtf1 a{\b b{\i c}d}e\par})", "a[b]b[bi]c[b]d[]e|"},
      {"on and off", R"({\rtf1\b a\b0 b\ul c\ulnone d\ul e\ul0\fs40 f\fs0 g\par})",
       "[b]a[]b[u]c[]d[u]e[40]f[2]g|"},
      {"formats outlast a paragraph", R"({\rtf1\b\i a\par b\plain c\par})", "[bi]a|[bi]b[]c|"},
      {"colours",
       R"({\rtf1{\colortbl;\red1\green2\blue3;\red400\green-5\blue6;}a\cf1 b\cf2 c\cf0 d\cf9 e\cf-1 f\par})",
       "a[#1,2,3]b[#255,0,6]c[]def|"},
      {"fonts",
       R"({\rtf1\deff1{\fonttbl{\f0\fmodern Mono;}{\f1{\*\falt x}Se\'72if;}}\plain a\f0 b\f7 c\par})",
       "[Serif]a[Mono=]b[]c|"},
  };
  for (const auto& c : cases) EXPECT_EQ(marked(ReadRtf(c.rtf)), c.text) << c.name;
}

TEST(RtfReader, ReadsLayouts) {
  const RtfDocument read = ReadRtf(
      R"({\rtf1\li360\fi-180\ri20\sb60\sa120\qc\tx36\tx72 a\par\pard c\par\li99999999999\sb-4\qj d\par})");
  ASSERT_EQ(read.paragraphs.size(), 3U);
  EXPECT_EQ(read.paragraphs[0].layout, (RtfLayout{RtfAlignment::centre, 360, -180, 20, 60, 120, {36, 72}}));
  EXPECT_EQ(read.paragraphs[1].layout, RtfLayout());
  EXPECT_EQ(read.paragraphs[2].layout, (RtfLayout{RtfAlignment::justified, 31680, 0, 0, 0, 0, {}}));
}

TEST(RtfReader, SaysWhatIsWrongAndWhere) {
  std::string deep = "{\\rtf1" + std::string(100, '{'), runs = "{\\rtf1";
  for (std::size_t i = 0; i <= kMaxRtfRuns; ++i) runs += i % 2 == 0 ? "\\b x" : "\\b0 y";
  const struct {
    std::string rtf;
    const char* message;
  } cases[] = {
      {"", "byte 0: not rich text"},
      {"{plain}", "byte 1: not rich text"},
      {"{\\rtf1 {a}", "byte 10: the text ends inside a group"},
      {"{\\rtf1 \\'4", "byte 7: \\' without two"},
      {"{\\rtf1 \\", "byte 7: a backslash with nothing after it"},
      {"{\\rtf1\\bin10 {}", "byte 6: \\bin of 10 bytes"},
      {deep, "byte 105: more than 100 nested groups"},
      {runs, "too many changes of format"},
      {"{\\rtf1 " + std::string(kMaxRtfBytes, ' ') + "}", "is larger than"},
  };
  for (const auto& c : cases)
    EXPECT_THAT([&] { ReadRtf(c.rtf); }, ThrowsMessage<RtfError>(HasSubstr(c.message)));
  const testing::TemporaryFolder folder;
  testing::writeFile(folder / "Help.rtf", "{\\rtf1");
  EXPECT_THAT([&] { LoadRtf(LocalPathText(folder / "Help.rtf")); },
              ThrowsMessage<RtfError>(HasSubstr("Help.rtf: byte 6: the text ends")));
}

}  // namespace
}  // namespace quillmoor
