#include "platform/ftp/FtpWording.h"

#include <gtest/gtest.h>

#include <string>

namespace quillmoor {
namespace {

TEST(FtpWording, FindsWhereAServerSaysThatItHasCutAListing) {
  const char* const cut[] = {"226 Output truncated to 2000 matches",
                             "226-Options: -a -l \r\n226 Output truncated to 2000 matches",
                             "226-Output truncated to 2000 matches\r\n226 Transfer complete.",
                             "226 Listing \"/pub\" TRUNCATED.",
                             "250 Directory listing truncated (too many entries)",
                             "226 Transfer complete (listing limited to 1000)",
                             "226 Output is limited to the first 10,000 entries.",
                             "226 Transfer complete. Limited to 500 files.",
                             "226 Only the first 1000 files are shown",
                             "226 Only 1000 of 3214 entries listed",
                             "226 Too many files; stopped.",
                             "226 Listing limit of 5000 reached",
                             "226 Maximum number of entries exceeded",
                             "226 Sortie tronqu\u00e9e \u00e0 2000 r\u00e9sultats"};
  const char* const whole[] = {"226 Directory send OK.",
                               "226 Transfer complete.",
                               "226-Options: -a -l \r\n226 2000 matches total",
                               "226-ASCII\r\n226-Options: -l\r\n226 0 matches total",
                               "226 Transfer complete. 1,234 bytes transferred. 12.00 KB/sec.",
                               "226 Successfully transferred \"/truncated\"",
                               "226 Listing of /www/truncated-logs completed",
                               "226 ABOR command successful; 0 lines truncated.",
                               "226 Listing complete, not truncated",
                               "226 Done. Truncated: no",
                               "226 Transfer complete (rate limited to 100 KB/s)",
                               "226-Your quota is limited to 100 MB\r\n226 Listed 12 files.",
                               "226 Transfer complete; daily limit not reached",
                               "226 Transfer complete. Quota limit 100 files not reached",
                               "226 There are 5 of 50 users; only 1 of 2 logins is yours",
                               "226",
                               ""};
  for (const char* reply : cut) EXPECT_NE(listingCut(reply), "") << reply;
  for (const char* reply : whole) EXPECT_EQ(listingCut(reply), "") << reply;
  EXPECT_EQ(listingCut(cut[1]), "Output truncated to 2000 matches");
}

TEST(FtpWording, TellsAnEmptyFolderFromARefusal) {
  const char* const empty[] = {"550 No files found.",
                               "450 No files found",
                               "550 no files found in /www/empty.",
                               "450 /my docs: No files found",
                               "450 *: no matching files found",
                               "550 No files match '*'",
                               "550 -a: No file found",
                               "550 No files or directories found.",
                               "550 No data sets found.",
                               "550 No members found",
                               "450-No files found\r\n450 Total 0 files",
                               "550 There are no files in this directory.",
                               "550 Directory is empty.",
                               "550 Directory \"/a b\" is empty",
                               "450 Empty directory",
                               "550 The folder contains no files!"};
  const char* const refusal[] = {"550 Permission denied: no files visible",
                                 "550 Permission denied.",
                                 "550 No such file or directory",
                                 "550 /x: No such file or directory.",
                                 "550 /x: Permission denied: no files",
                                 "550 No files found or invalid directory or permission problem",
                                 "550 Directory not empty",
                                 "550 Directory is empty or does not exist",
                                 "550 No files for guests",
                                 "450 No files available: server busy",
                                 "450-Too many users\r\n450 No files found",
                                 "550 No",
                                 "550 found",
                                 "550",
                                 "425 No files found.",
                                 "226 No files found."};
  const auto reply = [](const char* text) { return FtpReply{std::stoi(text), text}; };
  for (const char* text : empty) EXPECT_TRUE(saysFolderIsEmpty(reply(text))) << text;
  for (const char* text : refusal) EXPECT_FALSE(saysFolderIsEmpty(reply(text))) << text;
}

}  // namespace
}  // namespace quillmoor
