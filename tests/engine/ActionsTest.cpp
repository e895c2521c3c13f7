// What is started and called around a run, and what the log says about it.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <vector>

#include "engine/LogColours.h"
#include "engine/RecordingDisplay.h"
#include "engine/RunActions.h"

namespace quillmoor {
namespace {

using ::testing::Each;
using ::testing::ElementsAre;
using ::testing::Field;

class ActionsTest : public ::testing::Test {
 protected:
  /// Answers with a status, and notes how it was asked.
  class ScriptedWeb final : public WebRequest {
   public:
    explicit ScriptedWeb(ActionsTest& test) : test_(test) {}
    void perform() override {
      test_.calls.push_back("call " + request.address + " " + request.body + "within " +
                            std::to_string(timeoutMs));
      if (test_.webThrows) throw std::runtime_error("the pump has failed");
      response.statusCode = test_.status;
    }
    bool busy() const override { return false; }
    void abort() override {}

   private:
    ActionsTest& test_;
  };

  std::vector<std::string> calls;
  std::int32_t status = 200;
  bool shellThrows = false, webThrows = false;

  ApplicationSettings settings;
  RunProfileFields profile;
  ScriptedWeb web{*this};
  ConfiguredActions actions{settings, web, [this](const std::string& target) {
                              calls.push_back("open " + target);
                              if (shellThrows) throw std::runtime_error("no shell");
                              return 2;  // a failure, of which nobody takes note
                            }};
  RecordingDisplay display;
  RunLog log{display};
};

enum class Group { before, after, profile };

TEST_F(ActionsTest, DoesWhatIsAskedForAndSaysSo) {
  const struct {
    const char* name;
    Group group;
    const char* program;
    const char* address;
    std::int32_t status;
    const char* logged;
  } cases[] = {
      {"nothing before", Group::before, "", "", 200, ""},
      {"nothing after", Group::after, "", "", 200, ""},
      {"nothing of the profile", Group::profile, "", "", 200, ""},
      {"both before", Group::before, "/bin/a b", "http://h/", 200,
       "Running: /bin/a b...Done.\r\nConnecting to: http://h/\r\nConnection Status Success. \r\n"},
      {"a program before", Group::before, "a", "", 200, "Running: a...Done.\r\n"},
      {"an address before", Group::before, "", "h", 302,
       "Connecting to: h\r\nConnection Status Failed. \r\n"},
      {"both after", Group::after, "a", "h", 200, "Connecting to: h\r\nConnection Status Success. \r\n"},
      {"a program after", Group::after, "a", "", 200, ""},
      {"no answer after", Group::after, "", "h", 0, "Connecting to: h\r\nConnection Status Failed. \r\n"},
      {"both of the profile", Group::profile, "a", "h", 200,
       "Running: a...Done.\r\nConnecting to: h\r\nConnection Success. \r\n"},
      {"refused to the profile", Group::profile, "", "h", 404, "Connecting to: h\r\nConnection Failed. \r\n"},
      {"another success", Group::profile, "", "h", 204, "Connecting to: h\r\nConnection Failed. \r\n"},
  };
  for (const auto& c : cases) {
    // What another group has must not be done.
    const auto of = [&](Group group, const char* text) -> std::string {
      return c.group == group ? text : "other";
    };
    settings.RunBefore = of(Group::before, c.program);
    settings.ConnectBefore = of(Group::before, c.address);
    settings.RunAfter = of(Group::after, c.program);
    settings.ConnectAfter = of(Group::after, c.address);
    profile.RunProgram = of(Group::profile, c.program);
    profile.RunURL = of(Group::profile, c.address);
    status = c.status;
    web.request.body = "left over";
    calls.clear();
    display = {};
    if (c.group == Group::before) actions.RunBeforeActions(log);
    if (c.group == Group::after) actions.RunAfterActions(log);
    if (c.group == Group::profile) actions.RunProfileActions(profile, log);

    EXPECT_EQ(display.log(), c.logged) << c.name;
    EXPECT_THAT(display.lines, Each(Field(&RecordingDisplay::Line::colour, Colour{0, 0, 255}))) << c.name;
    EXPECT_EQ(std::count(display.colours.begin(), display.colours.end(), kButtonFace),
              static_cast<std::ptrdiff_t>(display.lines.size()))
        << c.name << ": every line is emphasised";
    std::vector<std::string> expected;
    if (*c.program) expected.push_back(std::string("open ") + c.program);
    if (*c.address) expected.push_back(std::string("call ") + c.address + " within 120000");
    EXPECT_EQ(calls, expected) << c.name;
  }
}

TEST_F(ActionsTest, WhatFailsEndsItsGroup) {
  settings.RunBefore = settings.RunAfter = "a";
  settings.ConnectBefore = settings.ConnectAfter = "h";
  shellThrows = true;
  EXPECT_THROW(actions.RunBeforeActions(log), std::runtime_error);
  EXPECT_THROW(actions.RunAfterActions(log), std::runtime_error);
  EXPECT_EQ(display.log(), "Running: a...");
  EXPECT_THAT(calls, ElementsAre("open a", "open a"));

  display = {};
  shellThrows = false;
  webThrows = true;
  EXPECT_THROW(actions.RunBeforeActions(log), std::runtime_error);
  EXPECT_EQ(display.log(), "Running: a...Done.\r\nConnecting to: h\r\n");
}

}  // namespace
}  // namespace quillmoor
