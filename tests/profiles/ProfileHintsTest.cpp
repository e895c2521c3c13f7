// The notes and hints beside the fields of a site profile.
#include "profiles/ProfileHints.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace quillmoor {
namespace {

TEST(ProfileHints, NoteInvalidValues) {
  const struct {
    const char *key, *text;
    bool noted;
    const char* minData = "";
  } rows[] = {{"Host", " ftp.example.org ", false},
              {"Host", "::1", false},
              {"Host", "ftp://example.org", true},
              {"Host", "example.org:2121", true},
              {"Host", "joe@example.org", true},
              {"Host", "two words", true},
              {"Port", "65535", false},
              {"Port", "0", true},
              {"Port", "65536", true},
              {"Timeout", "9999 s", false},
              {"Timeout", "10000", true},
              {"MinData", "70000", true},
              {"MaxData", "65536", true},
              {"MaxData", "4999", true, "5000"},
              {"MaxData", "5000", false, "5000"},
              {"MaxData", "5000", false, "70000"},  // 1 will be saved
              {"ProxyPort", "-1", true},
              {"ProxyHost", "", true},
              {"SaveTo", "backup", true},
              {"RunURL", "www.example.org/a?b", false},
              {"RunURL", "ftp://example.org", true},
              {"RunURL", "example org", true}};
  for (const auto& row : rows) {
    SiteProfile profile;
    profile.ManualPort = profile.ProxyType = 1;
    profile.MinData = row.minData;
    profile.*FieldOf(row.key)->text() = row.text;
    EXPECT_EQ(!FieldNote(profile, row.key).empty(), row.noted) << row.key << " " << row.text;
  }
}

TEST(ProfileHints, IgnoreEmptyAndUnusedFields) {
  SiteProfile profile;
  for (const ProfileField& field : kProfileFields) {
    EXPECT_EQ(FieldNote(profile, field.key), "") << field.key;
    if (field.text()) profile.*field.text() = " ";
    EXPECT_EQ(FieldNote(profile, field.key), "") << field.key << " is empty";
  }
  profile.MinData = profile.MaxData = profile.ProxyPort = "x";
  for (const char* key : {"MinData", "MaxData", "ProxyPort"}) EXPECT_EQ(FieldNote(profile, key), "") << key;
}

TEST(ProfileHints, AdviseOnANetworkPath) {
  SiteProfile profile;
  profile.SaveTo = R"( \\nas\backup)";
  const std::string note = FieldNote(profile, "SaveTo", false, LocalNameRules::windows);
  EXPECT_THAT(note, ::testing::HasSubstr("drive letter"));
  EXPECT_EQ(FieldNote(profile, "SaveTo", true, LocalNameRules::windows), "");
  EXPECT_NE(FieldNote(profile, "SaveTo", false, LocalNameRules::posix), note);
}

}  // namespace
}  // namespace quillmoor
