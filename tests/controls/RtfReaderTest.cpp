#include "controls/RtfReader.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "platform/files/LocalPath.h"
#include "support/TemporaryFolder.h"

namespace quillmoor {
namespace {

using ::testing::HasSubstr;

/// The text of a document: paragraphs end in "|".
std::string plain(const RtfDocument& document) {
  std::string text;
  for (const RtfParagraph& paragraph : document.paragraphs) {
    for (const RtfRun& run : paragraph.runs) text += run.text;
    text += '|';
  }
  return text;
}

/// Runs with their formats: "[bi]text" is bold and italic.
std::string marked(const RtfDocument& document) {
  std::string text;
  for (const RtfParagraph& paragraph : document.paragraphs) {
    for (const RtfRun& run : paragraph.runs) {
      text += '[';
      if (run.format.bold) text += 'b';
      if (run.format.italic) text += 'i';
      if (run.format.underline) text += 'u';
      if (run.format.halfPoints != 24) text += std::to_string(run.format.halfPoints);
      if (run.format.colour) {
        const Rgb c = *run.format.colour;
        text += "#" + std::to_string(c.red) + "," + std::to_string(c.green) + "," + std::to_string(c.blue);
      }
      text += run.format.font + (run.format.fixedPitch ? "=]" : "]") + run.text;
    }
    text += '|';
  }
  return text;
}

/// What reading raises; "" when it raises nothing.
template <class Read>
std::string messageOf(Read read) {
  try {
    read();
  } catch (const RtfError& error) {
    return error.what();
  }
  return "";
}

TEST(RtfReader, ReadsText) {
  struct Case {
    const char* name;
    const char* rtf;
    const char* text;
  };
  for (const Case& c : {
           Case{"paragraphs", R"({\rtf1 one\par two\par})", "one|two|"},
           Case{"empty paragraphs, and a last one without its end", R"({\rtf1\par\par x})", "||x|"},
           Case{"line ends of the file", "{\\rtf1 on\r\ne\ntwo\\par}", "onetwo|"},
           Case{"a backslash before the line's end", "{\\rtf1 one\\\ntwo\\par}", "one|two|"},
           Case{"one blank ends a word", R"({\rtf1 a\b0  b\b0c\par})", "a bc|"},
           Case{"escaped characters", R"({\rtf1 \{a\}\\b\~c\_d\-e\par})", "{a}\\b\u00A0c\u2011de|"},
           Case{"named characters", R"({\rtf1\bullet\tab a\line b\emdash\lquote c\rquote\par})",
                "•\ta\nb—‘c’|"},
           Case{"code page 1252", R"({\rtf1\ansi\ansicpg1252 M\'fcller \'80\'93x\'94\par})", "Müller €“x”|"},
           Case{"another code page", R"({\rtf1\ansicpg1251 \'ff A\par})", "\uFFFD A|"},
           Case{"unicode with its fallback", R"({\rtf1 \u8364?5 \u8364\'805\par})", "€5 €5|"},
           Case{"two fallbacks", R"({\rtf1\uc2 \u8364 EUR {\uc0\u8364 x}\u8364 ??y\par})", "€R €x€y|"},
           Case{"a fallback ends with its group", R"({\rtf1\uc3 {\u8364 a}bcd\par})", "€bcd|"},
           Case{"a word is one fallback", R"({\rtf1\u8364\bullet x\par})", "€x|"},
           Case{"signed unicode", R"({\rtf1\u-3 ?\par})", "\uFFFD|"},
           Case{"surrogates", R"({\rtf1\u-10179?\u-8704?\par})", "😀|"},
           Case{"half a surrogate", R"({\rtf1\u-8704?a\u-10179?b\u8364?\par})",
                "\uFFFDa"
                "b€|"},
           Case{"a number beyond unicode", R"({\rtf1\u99999999999999?\par})", "\uFFFD|"},
           Case{"symbol fonts", R"({\rtf1{\fonttbl{\f3\fcharset2 Symbol;}}\f3\'b7\u-3913?\par})", "••|"},
           Case{"lists", R"({\rtf1{\pntext\f0\'95\tab}{\*\pn\pnlvlblt}one\par})", "•\tone|"},
           Case{"destinations",
                R"({\rtf1{\info{\title x}}{\*\generator y;}{\stylesheet{z;}}{\pict 89}{\header h}a\par})",
                "a|"},
           Case{"hidden text", R"({\rtf1 a{\v b}\v c\v0 d\plain e\par})", "ade|"},
           Case{"binary data", "{\\rtf1 a\\bin5 {{{{{b\\par}", "ab|"},
           Case{"a table", R"({\rtf1\trowd a\cell b\cell\row c\par})", "a\tb\t|c|"},
           Case{"control characters",
                "{\\rtf1 a\x01\x1B\x7F"
                "b\\'07\\par}",
                "ab|"},
           Case{"what follows the end", "{\\rtf1 a\\par}\n{\\rtf1 b", "a|"},
       })
    EXPECT_EQ(plain(ReadRtf(c.rtf)), c.text) << c.name;
}

TEST(RtfReader, ReadsFormats) {
  struct Case {
    const char* rtf;
    const char* text;
  };
  for (
      const Case& c : {
          Case{R"({\rtf1 a{\b b{\i c}d}e\par})", "[]a[b]b[bi]c[b]d[]e|"},
          Case{R"({\rtf1\b a\b0 b\ul c\ulnone d\ul e\ul0\fs40 f\fs0 g\par})", "[b]a[]b[u]c[]d[u]e[40]f[2]g|"},
          Case{R"({\rtf1\b\i a\par b\plain c\par})", "[bi]a|[bi]b[]c|"},
          Case{
              R"({\rtf1{\colortbl;\red1\green2\blue3;\red400\green-5\blue6;}a\cf1 b\cf2 c\cf0 d\cf9 e\cf-1 f\par})",
              "[]a[#1,2,3]b[#255,0,6]c[]def|"},
          Case{
              R"({\rtf1\deff1{\fonttbl{\f0\fswiss\fcharset0 Sans;}{\f1{\*\falt x}Se\'72if;}}\plain a\f0 b\f7 c\par})",
              "[Serif]a[Sans]b[]c|"},
      })
    EXPECT_EQ(marked(ReadRtf(c.rtf)), c.text) << c.rtf;
}

TEST(RtfReader, ReadsLayouts) {
  const RtfDocument document = ReadRtf(
      R"({\rtf1\li360\fi-180\ri20\sb60\sa120\qc\tx360\tx720 a\par{\qr b\par}\pard c\par\li99999999999\sb-4\qj d\par})");
  ASSERT_EQ(document.paragraphs.size(), 4U);
  RtfLayout expected{RtfAlignment::centre, 360, -180, 20, 60, 120, {360, 720}};
  EXPECT_EQ(document.paragraphs[0].layout, expected);
  expected.alignment = RtfAlignment::right;
  EXPECT_EQ(document.paragraphs[1].layout, expected);
  EXPECT_EQ(document.paragraphs[2].layout, RtfLayout());
  EXPECT_EQ(document.paragraphs[3].layout, (RtfLayout{RtfAlignment::justified, 31680, 0, 0, 0, 0, {}}));
}

TEST(RtfReader, SaysWhatIsWrongAndWhere) {
  std::string deep = "{\\rtf1";
  for (int i = 0; i < 100; ++i) deep += '{';
  std::string restless = "{\\rtf1";
  for (std::size_t i = 0; i <= kMaxRtfRuns; ++i) restless += i % 2 == 0 ? "\\b x" : "\\b0 y";
  std::string long_ = "{\\rtf1";
  for (std::size_t i = 0; i <= kMaxRtfRuns; ++i) long_ += "\\par\n";
  for (const auto& [rtf, message] : std::initializer_list<std::pair<std::string, const char*>>{
           {"", "byte 0: not rich text"},
           {"{plain}", "byte 1: not rich text"},
           {"{\\pard x}", "byte 1: not rich text"},
           {"{\\rtf1 {a}", "byte 10: the text ends inside a group"},
           {"{\\rtf1 \\'4", "byte 7: \\' without two"},
           {"{\\rtf1 \\'-1}", "byte 7: \\' without two"},
           {"{\\rtf1 \\", "byte 7: a backslash with nothing after it"},
           {"{\\rtf1\\bin10 {}", "byte 6: \\bin of 10 bytes"},
           {deep, "byte 105: more than 100 groups"},
           {restless, "more changes of format than"},
           {long_, "more paragraphs than"},
           {"{\\rtf1 " + std::string(kMaxRtfBytes, ' ') + "}", "is larger than"}}) {
    EXPECT_THAT(messageOf([&] { ReadRtf(rtf); }), HasSubstr(message)) << rtf.substr(0, 40);
  }
}

TEST(RtfReader, ReadsTheUsersGuide) {
  const RtfDocument guide = LoadRtf(QUILLMOOR_ASSETS "/Help.rtf");
  const std::string text = plain(guide);
  EXPECT_GT(guide.paragraphs.size(), 100U);
  EXPECT_EQ(text.find("\uFFFD"), std::string::npos);
  EXPECT_EQ(text.find("**"), std::string::npos) << "a mark of the source that was not understood";
  EXPECT_EQ(text.find('`'), std::string::npos);
  const RtfRun& title = guide.paragraphs.at(0).runs.at(0);
  EXPECT_EQ(title.text, "Quillmoor");
  EXPECT_EQ(title.format.halfPoints, 40);
  EXPECT_TRUE(title.format.bold && title.format.colour);
}

TEST(RtfReader, NamesTheFileThatCannotBeRead) {
  const testing::TemporaryFolder folder;
  testing::writeFile(folder / "Help.rtf", "{\\rtf1");
  EXPECT_THAT(messageOf([&] { LoadRtf(LocalPathText(folder / "Help.rtf")); }),
              HasSubstr("Help.rtf: byte 6: the text ends"));
}

}  // namespace
}  // namespace quillmoor
