// Which files are fetched as text.
#include "engine/TransferType.h"

#include <gtest/gtest.h>

namespace quillmoor {
namespace {

TEST(TransferType, MatchesTheEndOfTheNameInLowerCase) {
  struct Case {
    const char* extensions;
    const char* fileName;
    const char* type;
  };
  const Case cases[] = {
      {".php|.html", "index.PHP", "A"},
      {".PHP", "index.PHP", "I"},
      {".PHP", "index.php", "I"},
      {".t", "notes.t", "A"},
      {".c", "main.c", "A"},
      {".html", "page.HTM", "I"},
      {".t", "t", "I"},
      {"php", "php", "A"},
      {"e", "archive", "A"},
      {"", "anything", "I"},
      {"||.css|", "a.css", "A"},
      {"||", "name", "I"},
      {".html", "html", "I"},
      {".gz", "a.tar.gz", "A"},
      {"\xC3\xA4", "x\xC3\x84", "I"},
  };
  for (const Case& c : cases) {
    EXPECT_STREQ(ChooseTransferType(c.fileName, LoadAsciiFilesTypes(c.extensions)), c.type)
        << c.fileName << " by " << c.extensions;
  }
}

}  // namespace
}  // namespace quillmoor
