#include "shell/PaneLayout.h"

#include <gtest/gtest.h>

namespace quillmoor {
namespace {

TEST(PaneLayout, ComesBackFromItsText) {
  const PaneLayout layout{{{{8, 2}, 2}, {{3}, 3}, {{5, 4}, 5}},
                          "layout2|name=a;caption=b c|dock_size(5,0,0)=10|"};
  EXPECT_EQ(WriteLayout(layout), "8,2*;3*;5*,4 layout2|name=a;caption=b c|dock_size(5,0,0)=10|");
  EXPECT_EQ(ReadLayout(WriteLayout(layout)), layout);
  EXPECT_EQ(WriteLayout(DefaultLayout()), "2*,3,4,5,8 ") << "at first all share one row of tabs";
}

TEST(PaneLayout, RefusesWhatIsNoLayoutOfThesePanes) {
  for (const char* text : {"", " ", "rubbish", "2*,3,4,5 ", "2*,3,4,5,8,8 ", "2*,3,4,5,5 ", "2*,3,4,5,9 ",
                           "2*,3*,4,5,8 ", "2,3,4,5,8 ", "2*,3,4;;5*,8 ", "2*,3,4;5,8 ", "2*,3,,4,5,8 ",
                           "2*,3,4,5,8x ", "-2*,3,4,5,8 ", "2*,3,4,5,99999999999 ", "2*,3,4,5,8 a\nb"}) {
    EXPECT_FALSE(ReadLayout(text)) << text;
  }
  EXPECT_FALSE(ReadLayout("2*,3,4,5,8 " + std::string(kLongestLayout, 'a')));
}

}  // namespace
}  // namespace quillmoor
