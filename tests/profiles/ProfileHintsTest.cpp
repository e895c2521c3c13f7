// What is said beside the fields of a site profile.
#include "profiles/ProfileHints.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "profiles/ProfileText.h"

namespace quillmoor {
namespace {

TEST(ProfileHints, NoteWhatWillNotDo) {
  const struct {
    const char* key;
    const char* text;
    bool noted;
  } rows[] = {{"Host", "ftp.example.org", false},
              {"Host", " 192.0.2.1 ", false},
              {"Host", "::1", false},
              {"Host", "ftp://example.org", true},
              {"Host", "example.org/www", true},
              {"Host", "example.org:2121", true},
              {"Host", "joe@example.org", true},
              {"Host", "two words", true},
              {"Port", "1", false},
              {"Port", "65535", false},
              {"Port", "0", true},
              {"Port", "65536", true},
              {"Port", "ftp", true},
              {"Timeout", "9999", false},
              {"Timeout", "60 s", false},
              {"Timeout", "10000", true},
              {"MinData", "70000", true},
              {"MaxData", "0", true},
              {"MaxData", "65536", true},
              {"ProxyPort", "-1", true},
              {"ProxyHost", "", true},
              {"ProxyPort", " ", true},
              {"ProxyUsername", "", false},
              {"SaveTo", "backup", true},
              {"RunURL", "www.example.org/a?b", false},
              {"RunURL", "https://example.org", false},
              {"RunURL", "ftp://example.org", true},
              {"RunURL", "example org", true}};
  for (const auto& row : rows) {
    SiteProfile profile;
    profile.ManualPort = 1;
    profile.ProxyType = 1;
    for (const ProfileText& text : kProfileTexts) {
      if (text.key == row.key) profile.*text.field = row.text;
    }
    EXPECT_EQ(!FieldNote(profile, row.key).empty(), row.noted) << row.key << " " << row.text;
  }
}

TEST(ProfileHints, SayNothingOfANewProfileAndOfWhatNothingLooksAt) {
  SiteProfile profile;
  for (const ProfileText& text : kProfileTexts) {
    EXPECT_EQ(FieldNote(profile, text.key), "") << text.key;
    profile.*text.field = " ";
    EXPECT_EQ(FieldNote(profile, text.key), "") << text.key << " is empty";
    EXPECT_NE(FieldHint(text.key), "") << text.key;
  }
  profile.MinData = profile.MaxData = profile.ProxyPort = "x";
  for (const char* key : {"MinData", "MaxData", "ProxyPort"}) EXPECT_EQ(FieldNote(profile, key), "") << key;
}

TEST(ProfileHints, SayWhatToDoWithANetworkPath) {
  SiteProfile profile;
  for (const char* path : {R"(\\nas\backup)", R"( \\?\C:\backup)"}) {
    profile.SaveTo = path;
    EXPECT_THAT(FieldNote(profile, "SaveTo", false, LocalNameRules::windows),
                ::testing::HasSubstr("drive letter"));
    EXPECT_EQ(FieldNote(profile, "SaveTo", true, LocalNameRules::windows), "");
    EXPECT_THAT(FieldNote(profile, "SaveTo", false, LocalNameRules::posix),
                ::testing::Not(::testing::HasSubstr("drive letter")));
  }
}

TEST(ProfileHints, MeasureTheHighestPortByTheLowest) {
  SiteProfile profile;
  profile.ManualPort = 1;
  profile.MinData = "5000";
  profile.MaxData = "4999";
  EXPECT_NE(FieldNote(profile, "MaxData"), "");
  profile.MaxData = "5000";
  EXPECT_EQ(FieldNote(profile, "MaxData"), "");
  profile.MinData = "70000";  // 1 will be saved
  EXPECT_EQ(FieldNote(profile, "MaxData"), "");
}

}  // namespace
}  // namespace quillmoor
