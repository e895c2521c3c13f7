#include <gtest/gtest.h>

#include <string>

#include "profiles/mBase64.h"
#include "profiles/mRC4.h"

namespace quillmoor {
namespace {

// Made with another RC4 and Base64 from the same key.
constexpr struct {
  const char* plain;
  const char* stored;
} kStored[] = {
    {"", ""},
    {"a", "Hw=="},
    {"ab", "H8o="},
    {"abc", "H8o4"},
    {"secret", "Dc04NDak"},
    {"Straße €", "LdwpJ4y12Kw="},
    {"xxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxxx",
     "BtAjPiuogFRsGl8/exCpQvYyEzUodQT7u/4GLaV+tzdJvWP5WzH+0TWAZ4QGkt5z9yHPRGztLEujwH1N"},
};

TEST(PasswordCipher, WritesWhatOtherProgramsOfItsKindRead) {
  for (const auto& c : kStored) {
    EXPECT_EQ(mRC4::Encipher(c.plain), c.stored);
    EXPECT_EQ(mRC4::Decipher(c.stored), c.plain);
  }
}

TEST(Base64, EncodesAndDecodesTheVectorsOfItsStandard) {
  const struct {
    const char *bytes, *text;
  } cases[] = {{"", ""}, {"f", "Zg=="}, {"fo", "Zm8="}, {"foobar", "Zm9vYmFy"}, {"\xFF\xFE\xFD", "//79"}};
  for (const auto& c : cases) {
    EXPECT_EQ(mBase64::Encode(c.bytes), c.text);
    EXPECT_EQ(mBase64::Decode(c.text), c.bytes);
  }
  EXPECT_EQ(mBase64::Decode("Zm9vZm9"), "foo") << "what is behind the last whole group does not count";
}

TEST(Base64, RefusesWhatIsOutsideItsAlphabet) {
  for (const char* text : {"Zm9 ", "Zm9v\r\n", "Zm-v",
                           "\xC3\xA4"
                           "bcd",
                           "Zm9vx!"}) {
    EXPECT_THROW(mBase64::Decode(text), mBase64::DecodeError) << text;
  }
}

}  // namespace
}  // namespace quillmoor
