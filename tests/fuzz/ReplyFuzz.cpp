// What an FTP server says, any bytes at all, is replies within their bounds or an FtpError, never anything
// else, and the same however the bytes arrive.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "platform/ftp/FtpReply.h"
#include "platform/ftp/FtpWording.h"

namespace {

using namespace quillmoor;

std::vector<std::string> repliesIn(std::string_view bytes, std::size_t chunk) {
  std::vector<std::string> replies;
  FtpReplyReader reader;
  try {
    for (std::size_t at = 0; at < bytes.size(); at += chunk) {
      reader.append(bytes.substr(at, chunk));
      while (const auto reply = reader.next()) {
        if (reply->code < 100 || reply->code > 599 || reply->text.size() > FtpReplyReader::kMaxReply)
          std::abort();
        replies.push_back(reply->text);
      }
    }
  } catch (const FtpError& error) {
    replies.emplace_back(error.what());
  }
  return replies;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  const auto replies = repliesIn(bytes, bytes.size() + 1);
  if (replies != repliesIn(bytes, 1) || replies != repliesIn(bytes, 7)) std::abort();
  for (const std::string& text : replies) {
    if (epsvPort(text) == 0 || pasvPort(text) == 0) std::abort();
    if (pwdPath(text) == "" || announcedSize(text).value_or(0) < 0) std::abort();
    if (statedSize({213, text}).value_or(0) < 0 || listingCut(text).size() > text.size()) std::abort();
    saysFolderIsEmpty({450, text});
    for (const char c : printableReply(text, "150")) {
      if (static_cast<unsigned char>(c) < 0x20 && c != '\r' && c != '\n') std::abort();
    }
  }
  return 0;
}
