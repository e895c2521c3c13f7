// Text as the system takes it, and the form of paths that are longer than its plain one allows.
#include "platform/system/windows/WideText.h"

#include <gtest/gtest.h>

namespace quillmoor {
namespace {

TEST(WideText, ConvertsToUtf16AndBack) {
  const struct {
    const char* utf8;
    std::wstring wide;
  } cases[] = {{"", L""},
               {"gr\xC3\xBC\xC3\x9F", L"gr\u00FC\u00DF"},
               {"\xE6\x97\xA5", L"\u65E5"},
               {"\xF0\x9F\x98\x80", {0xD83D, 0xDE00}}};
  for (const auto& c : cases) {
    EXPECT_EQ(Widen(c.utf8), c.wide) << c.utf8;
    EXPECT_EQ(Narrow(c.wide), c.utf8);
  }
  EXPECT_EQ(Widen("\xE4x\xFF"), L"\u00E4x\u00FF") << "in the code page, which is 1252 where the tests run";
  EXPECT_EQ(Narrow(std::wstring{0xD83D, L'x'}), "\xEF\xBF\xBDx");
}

TEST(WideText, ReadsWhatIsNoUtf8InTheCodePage) {
  const struct {
    unsigned codePage;
    const char* text;
    std::wstring wide;
  } cases[] = {
      {936, "\xD6\xD0\xCE\xC4.txt", L"\u4E2D\u6587.txt"},
      {936, "a\xCD\xA8\xC1\xAA", L"a\u901A\u8054"},  // the first two bytes look like UTF-8
      {936, "\x81@b",
       L"\u4E02"
       L"b"},  // half of it is ASCII
      {950, "\xA4\xA4\xA4\xE5", L"\u4E2D\u6587"},
      {932, "\xB1\x93\xFA", L"\uFF71\u65E5"},
      {1252, "\xC3\xA4\xE4\xC3\xA4", L"\u00E4\u00E4\u00E4"},
      {1252, "\xD6\xD0\xFC\x80", L"\u00D6\u00D0\u00FC\u20AC"},
  };
  for (const auto& c : cases) EXPECT_EQ(Widen(c.text, c.codePage), c.wide) << c.codePage << " " << c.text;
  for (const unsigned codePage : {932U, 936U, 949U, 950U})
    EXPECT_TRUE(Widen("a\x95\\b", codePage).ends_with(L"\\b")) << "a separator stays one";
}

TEST(CodePage, ComparesWholeCharacters) {
  const struct {
    unsigned codePage;
    const char *a, *b;
    int order;
  } cases[] = {{932, "\x83\x41", "\x83\x61", -1},     // the second byte looks like a letter
               {932, "\x83\x7C", "\x83\x5C", 1},      // a bar, a backslash
               {932, "\x83\x5B", "\x83\x5D", -1},     // brackets
               {932, "\x82\x60 x", "\x82\x81 X", 0},  // a wide letter, capital and small
               {936, "\x81\x41site", "\x81\x61SITE", -1},
               {950, "\xA4\x41", "\xA4\x61", -1},
               {1252, "k\xD6ln", "K\xF6LN", 0},
               {1252, "10", "2", -1},
               {1252, "", "a", -1}};
  const auto sign = [](int order) { return (order > 0) - (order < 0); };
  for (const auto& c : cases) {
    EXPECT_EQ(sign(CompareAnsiNames(c.a, c.b, c.codePage)), c.order) << c.codePage << " " << c.a;
    EXPECT_EQ(sign(CompareAnsiNames(c.b, c.a, c.codePage)), -c.order) << c.codePage << " " << c.a;
  }
}

TEST(WidePath, TakesTheUnlimitedFormWhenItIsLong) {
  EXPECT_EQ(WidePath(std::string("C:\\short")), L"C:\\short");
  const std::string name(200, 'n');
  EXPECT_EQ(WidePath("C:\\" + name + "/" + name), Widen("\\\\?\\C:\\" + name + "\\" + name));
  EXPECT_EQ(WidePath("\\\\server\\share\\" + name + "\\" + name),
            Widen("\\\\?\\UNC\\server\\share\\" + name + "\\" + name));
  EXPECT_EQ(WidePath("\\\\?\\C:\\" + name + "\\" + name), Widen("\\\\?\\C:\\" + name + "\\" + name))
      << "once";
}

}  // namespace
}  // namespace quillmoor
