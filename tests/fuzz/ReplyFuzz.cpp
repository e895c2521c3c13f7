// What an FTP server says: replies within their bounds, the same however the bytes arrive; or an FtpError.
#include "Fuzz.h"
#include "platform/ftp/FtpReply.h"
#include "platform/ftp/FtpWording.h"

namespace quillmoor {
namespace {

std::vector<std::string> repliesIn(std::string_view bytes, std::size_t chunk) {
  std::vector<std::string> replies;
  FtpReplyReader reader;
  try {
    for (std::size_t at = 0; at < bytes.size(); at += chunk) {
      reader.append(bytes.substr(at, chunk));
      while (const auto reply = reader.next()) {
        require(reply->code >= 100 && reply->code <= 599 && reply->text.size() <= FtpReplyReader::kMaxReply);
        replies.push_back(reply->text);
      }
    }
  } catch (const FtpError& error) {
    replies.emplace_back(error.what());
  }
  return replies;
}

}  // namespace
}  // namespace quillmoor

void quillmoor::tryInput(std::string_view input) {
  const auto replies = repliesIn(input, input.size() + 1);
  require(replies == repliesIn(input, 1) && replies == repliesIn(input, 7));
  for (const std::string& text : replies) {
    require(epsvPort(text) != 0 && pasvPort(text) != 0 && pwdPath(text) != "");
    require(announcedSize(text).value_or(0) >= 0 && statedSize({213, text}).value_or(0) >= 0);
    require(listingCut(text).size() <= text.size());
    saysFolderIsEmpty({450, text});
    for (const char c : printableReply(text, "150"))
      require(static_cast<unsigned char>(c) >= 0x20 || c == '\r' || c == '\n');
  }
}
