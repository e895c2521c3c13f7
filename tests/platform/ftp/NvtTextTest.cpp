#include "platform/ftp/NvtText.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace quillmoor {
namespace {

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
  const struct {
    const char *wire, *lf;
  } cases[] = {
      {"a\r\nb\r\n", "a\nb\n"},         {"no end", "no end"},       {"\r\n\r\n", "\n\n"},
      {"a\r\r\nb", "a\r\nb"},  // a file that held CR LF on a server that ends lines in LF
      {"a\rb\nc", "a\rb\nc"},  // a CR or LF standing alone is no line end of the wire
      {"ends in cr\r", "ends in cr\r"}, {"\r\r\r\n\r", "\r\r\n\r"},
  };
  for (const auto& c : cases) {
    for (std::size_t chunk = 1; chunk <= 5; ++chunk) {
      EXPECT_EQ(converted(c.wire, LineEnd::lf, chunk), c.lf) << chunk;
      EXPECT_EQ(converted(c.wire, LineEnd::crLf, chunk), c.wire) << chunk;
    }
  }
}

}  // namespace
}  // namespace quillmoor
