#include "shell/RunNotice.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace quillmoor {
namespace {

TEST(RunTip, CutsTheNameAndKeepsThePercentage) {
  EXPECT_EQ(RunTip("Quillmoor", "My site", 45), "Quillmoor - My site: 45%");
  std::string name, shown;
  for (int i = 0; i < 100; ++i) name += "\u00E4";
  for (int i = 0; i < 45; ++i) shown += "\u00E4";
  EXPECT_EQ(RunTip("Quillmoor", name, 100), "Quillmoor - " + shown + ": 100%") << "63 characters";
}

TEST(RunNotice, CountsWhatBecameOfTheProfiles) {
  ProfileResult whole{"a", true, "", {}}, lacking{"b", true, "", {}}, refused{"c", false, "No host", {}};
  EXPECT_EQ(RunNotice({whole}, false, 1), "1 profile completed. 1 file.");
  lacking.failures.add("/x", "550 No.");
  EXPECT_EQ(RunNotice({lacking}, false, 9), "1 profile completed. 9 files.\nb: 1 failure: /x: 550 No.");
  lacking.failures.add("/y", "");
  EXPECT_EQ(RunNotice({whole, lacking, refused}, false, 1204),
            "2 profiles completed, 1 not. 1204 files.\nb: 2 failures, the first: /x: 550 No.\nc: No host");
  EXPECT_THAT(RunNotice(std::vector<ProfileResult>(9, refused), false, 0),
              ::testing::EndsWith("\n... See the log for the rest."));
  EXPECT_EQ(RunNotice({{"a", false, "", {}}}, true, 3),
            "The backup was stopped. 0 profiles completed, 1 not. 3 files.");
  EXPECT_EQ(RunNotice({}, false, 0), "No profile is enabled.");
  EXPECT_EQ(RunNotice({}, true, 0), "The backup was stopped.");
}

}  // namespace
}  // namespace quillmoor
