#include "browser/UnparsedListing.h"

#include <algorithm>
#include <string_view>

#include "engine/ShownText.h"

namespace quillmoor {
namespace {

constexpr std::size_t kMostBytes = 8192;  // a listing may have 16 MiB, which no screen can show

/// The text made displayable, with its line breaks.
std::string shownLines(std::string_view text) {
  std::string shown;
  while (!text.empty()) {
    const std::size_t end = std::min(text.find('\n'), text.size());
    std::string_view line = text.substr(0, end);
    if (line.ends_with('\r')) line.remove_suffix(1);
    AppendShown(shown, line);
    if (end != text.size()) shown += "\r\n";
    text.remove_prefix(std::min(end + 1, text.size()));
  }
  return shown;
}

}  // namespace

void ReportUnparsedListing(const std::string& listingText, UserPrompts& prompts) {
  Message message;
  message.title = "Quillmoor";
  message.icon = Message::Icon::information;
  message.text =
      "Some non-UNIX or non-DOS listing were encountered. \r\n"
      "This sample only supports UNIX and DOS listings. \r\n\r\n"
      "Here are some of the lines that failed: \r\n\r\n" +
      shownLines(std::string_view(listingText).substr(0, kMostBytes));
  if (listingText.size() > kMostBytes)
    message.text += "... (" + std::to_string(listingText.size()) + " bytes in all)";
  prompts.ShowMessage(message);
}

}  // namespace quillmoor
