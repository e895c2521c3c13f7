// What is read in the bytes of a server: replies, the facts and wordings in them, and lines of text.
#include "platform/ftp/FtpReply.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "platform/ftp/FtpWording.h"
#include "platform/ftp/NvtText.h"

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
       "211-F\r\n 226 no\r\n331 no\r\n211-more\r\n211 End\r\n200 x\r\n",
       {"211|211-F\r\n 226 no\r\n331 no\r\n211-more\r\n211 End", "200|200 x"}},
      {"empty inner lines", "230-\r\n\r\n230 ok\r\n", {"230|230-\r\n\r\n230 ok"}},
      {"unfinished", "220-a\r\n220", {}},
  };
  for (const auto& c : cases) {
    for (const std::size_t chunk : {std::size_t{1}, std::size_t{3}, c.bytes.size()})
      EXPECT_EQ(repliesIn(c.bytes, chunk), c.replies) << c.name << ", " << chunk << " bytes at a time";
  }
}

TEST(FtpReply, NamesTheDataPort) {
  EXPECT_EQ(epsvPort("229 Entering Extended Passive Mode (|||6446|)"), 6446);
  EXPECT_EQ(epsvPort("229 ok (!!!9!"), 9);
  EXPECT_EQ(epsvPort("229 (see below) (|||6446|)"), 6446);
  for (const char* none :
       {"229 ok (|||0|)", "229 ok (|||70000|)", "229 ok (|||6446)", "229 ok (11112341)", "229 ok (||6446|)"})
    EXPECT_EQ(epsvPort(none), std::nullopt) << none;
  EXPECT_EQ(epsvPort(std::string_view("229 (|||64461|)").substr(0, 10)), std::nullopt) << "past its end";
  EXPECT_EQ(pasvPort("227 Entering Passive Mode (10,0,0,1,4,1)"), 1025);
  EXPECT_EQ(pasvPort("227 Entering Passive Mode. 10,0,0,1,0,21"), 21);
  EXPECT_EQ(pasvPort("227 =10,0,0,1,255,255"), 65535);
  EXPECT_EQ(pasvPort("227 1,2,3 (10,0,0,1,4,2)"), 1026);
  for (const char* none : {"227 (10,0,0,1,256,1)", "227 (10,0,0,1,4)", "227 (10,0,0,1,0,0)", "227"})
    EXPECT_EQ(pasvPort(none), std::nullopt) << none;
}

TEST(FtpReply, NamesTheFolder) {
  EXPECT_EQ(pwdPath("257 \"/a b\" is your current location"), "/a b");
  EXPECT_EQ(pwdPath("257 \"/a \"\"quoted\"\" dir\" text"), "/a \"quoted\" dir");
  EXPECT_EQ(pwdPath("257 \"\" root"), "/");
  EXPECT_EQ(pwdPath("257 /plain is current"), "/plain");
  for (const char* none : {"257 ", "257 \"/never closed"}) EXPECT_EQ(pwdPath(none), std::nullopt) << none;
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

TEST(FtpWording, FindsTheWordsOfAServerThatCutsAListing) {
  for (const char* cut :
       {"Output truncated to 2000 matches", "Listing \"/pub\" TRUNCATED.",
        "Directory listing truncated (too many entries)", "Transfer complete (listing limited to 1000)",
        "Output is limited to the first 10,000 entries.", "Transfer complete. Limited to 500 files.",
        "Only the first 1000 files are shown", "Restricted to 9 lines", "Only 1000 of 3214 entries listed",
        "Too many files; stopped.", "Listing limit of 5000 reached", "Maximum number of entries exceeded",
        "Sortie tronqu\u00e9e \u00e0 2000 r\u00e9sultats"})
    EXPECT_EQ(listingCut("226 " + std::string(cut)), cut);
  std::istringstream listed(
      "entry entries file files item items line lines match matches name names object objects record "
      "records result results listing folders file(s) list output directories directory");
  for (std::string word; listed >> word;) EXPECT_NE(listingCut("226 Limited to 5 " + word), "") << word;
  EXPECT_EQ(listingCut("226-Options: -a -l \r\n226 Listing truncated"), "Listing truncated");
  EXPECT_EQ(listingCut("226-Listing truncated\r\n226 Transfer complete."), "Listing truncated");
  for (const char* whole :
       {"226 Directory send OK.", "226-Options: -a -l \r\n226 2000 matches total",
        "226 Transfer complete. 1,234 bytes transferred. 12.00 KB/sec.",
        "226 Successfully transferred \"/truncated\"", "226 Listing of /www/truncated-logs completed",
        "226 ABOR command successful; 0 lines truncated.", "226 Listing complete, not truncated",
        "226 Done. Truncated: no", "226 Transfer complete (rate limited to 100 KB/s)",
        "226-Your quota is limited to 100 MB\r\n226 Listed 12 files.",
        "226 Transfer complete; daily limit not reached",
        "226 Transfer complete. Quota limit 100 files not reached",
        "226 There are 5 of 50 users; only 1 of 2 logins is yours", "226", ""})
    EXPECT_EQ(listingCut(whole), "") << whole;
  for (const char* negated :
       {"Done; none truncated", "It never truncated a listing", "It wasn't truncated", "Sent (\"truncated\")",
        "Only the owner sees all files", "Files go to 100 users", "Limited to files",
        "End of directory listing reached"})
    EXPECT_EQ(listingCut("226 " + std::string(negated)), "") << negated;
}

TEST(FtpWording, DistinguishesAnEmptyFolderFromARefusal) {
  const auto saysEmpty = [](const char* text) { return saysFolderIsEmpty({std::stoi(text), text}); };
  for (const char* empty :
       {"550 No files found.", "550 no files found in /www/empty.", "450 /my docs: No files found",
        "450 *: no matching files found", "550 No files match '*'", "550 -a: No file found",
        "550 No files or directories found.", "550 No data sets found.", "550 No members found",
        "550 There were no file(s) in the folder", "450-No files found\r\n450 Total 0 files",
        "550 There are no files in this directory.", "550 Directory is empty.",
        "550 Directory \"/a b\" is empty", "450 Empty directory", "550 The folder contains no files!",
        "550 Dir \"/a\" is empty"})
    EXPECT_TRUE(saysEmpty(empty)) << empty;
  for (const char* refusal :
       {"550 Permission denied: no files visible", "550 /x: No such file or directory.",
        "550 /x: Permission denied: no files",
        "550 No files found or invalid directory or permission problem", "550 Directory not empty",
        "550 Directory is empty or does not exist", "550 No files for guests",
        "450 No files available: server busy", "450-Too many users\r\n450 No files found", "550 No",
        "550 found", "550", "425 No files found.", "226 No files found."})
    EXPECT_FALSE(saysEmpty(refusal)) << refusal;
}

std::string converted(const std::string& wire, LineEnd lineEnd, std::size_t chunk) {
  NvtText text(lineEnd);
  std::string file;
  for (std::size_t at = 0; at < wire.size(); at += chunk) {
    std::string buffer = "#" + wire.substr(at, chunk);  // room for a CR held back
    const auto out = text.convert(buffer.data() + 1, buffer.size() - 1);
    file.append(out.data, out.size);
  }
  if (text.heldCarriageReturn()) file += '\r';
  return file;
}

TEST(NvtText, EndsLinesThePlatformsWayWhereverTheChunksAreCut) {
  const std::pair<const char*, const char*> cases[] = {
      {"a\r\nb\r\n", "a\nb\n"},   {"no end", "no end"}, {"\r\n\r\n", "\n\n"},
      {"a\r\r\nb", "a\r\nb"},  // a file that held CR LF on a server that ends lines in LF
      {"a\rb\nc", "a\rb\nc"},  // a CR or LF alone is no line end of the wire
      {"\r\r\r\n\r", "\r\r\n\r"},
  };
  for (const auto& [wire, lf] : cases) {
    for (std::size_t chunk = 1; chunk <= 5; ++chunk) {
      EXPECT_EQ(converted(wire, LineEnd::lf, chunk), lf) << chunk;
      EXPECT_EQ(converted(wire, LineEnd::crLf, chunk), wire) << chunk;
    }
  }
}

}  // namespace
}  // namespace quillmoor
