#include "platform/ftp/FtpReply.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace quillmoor {
namespace {

std::vector<std::string> repliesIn(const std::string& bytes, std::size_t chunk) {
  FtpReplyReader reader;
  std::vector<std::string> texts;
  for (std::size_t at = 0; at < bytes.size(); at += chunk) {
    reader.append(std::string_view(bytes).substr(at, chunk));
    while (auto reply = reader.next()) texts.push_back(std::to_string(reply->code) + "|" + reply->text);
  }
  return texts;
}

TEST(FtpReplyReader, TakesRepliesAsServersWriteThemHoweverTheBytesArrive) {
  const struct {
    const char* name;
    std::string bytes;
    std::vector<std::string> replies;
  } cases[] = {
      {"one line", "220 hi\r\n", {"220|220 hi"}},
      {"code alone", "226\r\n", {"226|226"}},
      {"bare line feeds", "220 a\n331 b\n", {"220|220 a", "331|331 b"}},
      {"CR CR LF", "220 a\r\r\n", {"220|220 a"}},
      {"two at once", "150 go\r\n226 done\r\n", {"150|150 go", "226|226 done"}},
      {"several lines", "220-a\r\n220-b\r\n220 c\r\n", {"220|220-a\r\n220-b\r\n220 c"}},
      {"inner lines with other codes",
       "211-Features\r\n 226 no\r\n331 no\r\n211-more\r\n211 End\r\n200 x\r\n",
       {"211|211-Features\r\n 226 no\r\n331 no\r\n211-more\r\n211 End", "200|200 x"}},
      {"empty inner lines", "230-\r\n\r\n230 ok\r\n", {"230|230-\r\n\r\n230 ok"}},
      {"unfinished", "220-a\r\n220", {}},
  };
  for (const auto& c : cases) {
    for (const std::size_t chunk : {std::size_t{1}, std::size_t{3}, c.bytes.size()}) {
      EXPECT_EQ(repliesIn(c.bytes, chunk), c.replies) << c.name << ", " << chunk << " bytes at a time";
    }
  }
}

TEST(FtpReply, NamesTheDataPort) {
  const struct {
    const char* reply;
    std::optional<std::uint16_t> epsv, pasv;
  } cases[] = {
      {"229 Entering Extended Passive Mode (|||6446|)", 6446, std::nullopt},
      {"229 ok (!!!21!)", 21, std::nullopt},
      {"229 (see below) (|||6446|)", 6446, std::nullopt},
      {"229 ok (|||0|)", std::nullopt, std::nullopt},
      {"229 ok (|||70000|)", std::nullopt, std::nullopt},
      {"229 ok (|||6446)", std::nullopt, std::nullopt},
      {"229 ok (11112341)", std::nullopt, std::nullopt},
      {"227 Entering Passive Mode (10,0,0,1,4,1)", std::nullopt, 1025},
      {"227 Entering Passive Mode. 10,0,0,1,0,21", std::nullopt, 21},
      {"227 =10,0,0,1,255,255", std::nullopt, 65535},
      {"227 (10,0,0,1,256,1)", std::nullopt, std::nullopt},
      {"227 (10,0,0,1,4)", std::nullopt, std::nullopt},
      {"227 1,2,3 (10,0,0,1,4,2)", std::nullopt, 1026},
      {"227", std::nullopt, std::nullopt},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(epsvPort(c.reply), c.epsv) << c.reply;
    EXPECT_EQ(pasvPort(c.reply), c.pasv) << c.reply;
  }
}

TEST(FtpReply, NamesTheFolder) {
  const struct {
    const char* reply;
    std::optional<std::string> path;
  } cases[] = {
      {"257 \"/a b\" is your current location", "/a b"},
      {"257 \"/a \"\"quoted\"\" dir\" text", "/a \"quoted\" dir"},
      {"257 \"\" root", "/"},
      {"257 /plain is current", "/plain"},
      {"257 ", std::nullopt},
      {"257 \"/never closed", std::nullopt},
  };
  for (const auto& c : cases) EXPECT_EQ(pwdPath(c.reply), c.path) << c.reply;
}

TEST(FtpReply, MentionsTheSize) {
  EXPECT_EQ(announcedSize("150 Opening BINARY mode data connection for a (1).txt (5000000000 bytes)."),
            5'000'000'000);
  EXPECT_EQ(announcedSize("150 Sending a (7 bytes).txt(42 bytes) (so to speak)"), 42);
  for (const char* none : {"150 Here it comes", "150 part (5 of 10)", "150 (-5 bytes)", "(", "150 ("})
    EXPECT_EQ(announcedSize(none), std::nullopt) << none;
  EXPECT_EQ(statedSize({213, "213  5000000000 "}), 5'000'000'000);
  for (const char* none : {"213", "213 ", "213 -1", "213 5k", "213 1,024", "213 99999999999999999999"})
    EXPECT_EQ(statedSize({213, none}), std::nullopt) << none;
  EXPECT_EQ(statedSize({226, "226 5"}), std::nullopt);
}

TEST(FtpReply, ShowsNeitherSecretsNorControlCharacters) {
  EXPECT_EQ(printableReply("530 no \"hunter22\" here, hunter22", "hunter22"), "530 no \"****\" here, ****");
  EXPECT_EQ(printableReply("230 User lo logged in", "lo"), "230 User **** logged in");
  EXPECT_EQ(printableReply("220-a\r\n220 \x1b[31mred\x07\r", ""), "220-a\r\n220 ?[31mred??");
  EXPECT_EQ(printableReply("220 \xc3\xbc\xfc\x9b\xc2\x9b", ""), "220 \xc3\xbc\xfc??");
  EXPECT_EQ(printableReply("220 a\tbanner", ""), "220 a banner");
}

}  // namespace
}  // namespace quillmoor
