#include "platform/ftp/FtpReply.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "platform/system/PrintableText.h"

namespace quillmoor {
namespace {

bool isDigit(char c) {
  return c >= '0' && c <= '9';
}

bool hasCode(std::string_view line) {
  return line.size() >= 3 && isDigit(line[0]) && isDigit(line[1]) && isDigit(line[2]);
}

/// The text after "227 ", so that the code's digits are not taken for numbers of the reply.
std::string_view afterCode(std::string_view text) {
  return text.substr(std::min<std::size_t>(4, text.size()));
}

bool isWordCharacter(char c) {
  return isDigit(c) || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || c == '_' ||
         static_cast<unsigned char>(c) >= 0x80;
}

}  // namespace

void FtpReplyReader::append(std::string_view bytes) {
  if (at_ == bytes_.size()) {
    bytes_.clear();
    at_ = scan_ = 0;
  }
  bytes_.append(bytes);
}

void FtpReplyReader::clear() {
  *this = FtpReplyReader();
}

std::optional<FtpReply> FtpReplyReader::next() {
  for (;;) {
    const auto end = bytes_.find('\n', scan_);
    if ((end == std::string::npos ? bytes_.size() : end) - at_ > kMaxLine) {
      throw FtpError(FtpErrorNumber::tooLong, "The " + peer + " sent a reply line of more than " +
                                                  std::to_string(kMaxLine) + " bytes.");
    }
    if (end == std::string::npos) {
      bytes_.erase(0, at_);
      at_ = 0;
      scan_ = bytes_.size();
      return std::nullopt;
    }
    std::string_view line(bytes_.data() + at_, end - at_);
    while (line.ends_with('\r')) line.remove_suffix(1);
    at_ = scan_ = end + 1;

    if (multiLineCode_.empty()) {
      if (!hasCode(line) || line[0] < '1' || line[0] > '5') {
        throw FtpError(FtpErrorNumber::badReply, "The " + peer +
                                                     " sent something that is not an FTP reply: " +
                                                     printableReply(line.substr(0, 200), ""));
      }
      reply_.code = (line[0] - '0') * 100 + (line[1] - '0') * 10 + (line[2] - '0');
      reply_.text = line;
      if (line.size() <= 3 || line[3] != '-') return std::move(reply_);
      multiLineCode_ = line.substr(0, 3);
      continue;
    }
    reply_.text += "\r\n";
    reply_.text += line;
    if (reply_.text.size() > kMaxReply) {
      throw FtpError(FtpErrorNumber::tooLong,
                     "The " + peer + " sent a reply of more than " + std::to_string(kMaxReply) + " bytes.");
    }
    // Inner lines may begin with other digits; only this code and a space end the reply.
    if (line.starts_with(multiLineCode_) && (line.size() == 3 || line[3] == ' ')) {
      multiLineCode_.clear();
      return std::move(reply_);
    }
  }
}

std::optional<std::uint16_t> epsvPort(std::string_view replyText) {
  const std::string_view text = afterCode(replyText);
  for (auto open = text.find('('); open != std::string_view::npos; open = text.find('(', open + 1)) {
    const std::string_view body = text.substr(open + 1);
    if (body.size() < 5 || body[0] != body[1] || body[0] != body[2] || isDigit(body[0])) continue;
    std::uint16_t port = 0;
    const auto [rest, error] = std::from_chars(body.data() + 3, body.data() + body.size(), port);
    if (error == std::errc() && rest != body.data() + body.size() && *rest == body[0] && port != 0)
      return port;
  }
  return std::nullopt;
}

std::optional<std::uint16_t> pasvPort(std::string_view replyText) {
  const std::string_view text = afterCode(replyText);
  const char* const end = text.data() + text.size();
  for (const char* at = text.data(); at != end; ++at) {
    if (!isDigit(*at) || (at != text.data() && isDigit(at[-1]))) continue;
    std::array<unsigned, 6> numbers{};
    const char* here = at;
    std::size_t count = 0;
    while (count < numbers.size()) {
      const auto [rest, error] = std::from_chars(here, end, numbers[count]);
      if (error != std::errc() || numbers[count] > 255) break;
      ++count;
      here = rest;
      if (count == numbers.size() || here == end || *here != ',') break;
      ++here;
    }
    if (count != numbers.size()) continue;
    const unsigned port = numbers[4] * 256 + numbers[5];
    if (port != 0) return static_cast<std::uint16_t>(port);
  }
  return std::nullopt;
}

std::optional<std::string> pwdPath(std::string_view replyText) {
  const std::string_view text = afterCode(replyText);
  const auto open = text.find('"');
  std::string path;
  if (open == std::string_view::npos) {
    path = text.substr(0, text.find_first_of(" \r\n"));
    return path.empty() ? std::nullopt : std::optional(path);
  }
  for (std::size_t i = open + 1; i < text.size(); ++i) {
    if (text[i] != '"') {
      path += text[i];
    } else if (i + 1 < text.size() && text[i + 1] == '"') {
      path += '"';
      ++i;
    } else {
      return path.empty() ? std::string("/") : path;
    }
  }
  return std::nullopt;  // no closing quote
}

std::optional<std::int64_t> announcedSize(std::string_view replyText) {
  for (auto open = replyText.rfind('('); open != std::string_view::npos;
       open = open == 0 ? std::string_view::npos : replyText.rfind('(', open - 1)) {
    const std::string_view body = replyText.substr(open + 1);
    std::int64_t size = 0;
    const auto [rest, error] = std::from_chars(body.data(), body.data() + body.size(), size);
    if (error != std::errc() || size < 0) continue;
    if (std::string_view(rest, static_cast<std::size_t>(body.data() + body.size() - rest))
            .starts_with(" bytes")) {
      return size;
    }
  }
  return std::nullopt;
}

std::optional<std::int64_t> statedSize(const FtpReply& reply) {
  std::string_view text = afterCode(reply.text);
  text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
  std::int64_t size = 0;
  const auto [rest, error] = std::from_chars(text.data(), text.data() + text.size(), size);
  const bool whole = rest == text.data() + text.size() || *rest == ' ';
  if (reply.code != 213 || error != std::errc() || size < 0 || !whole) return std::nullopt;
  return size;
}

std::string describeReply(std::string_view peer, const FtpReply& reply) {
  return (peer == kProxy ? "the proxy says " : "") + printableReply(reply.text, "");
}

std::string printableReply(std::string_view replyText, std::string_view secret) {
  std::string text(replyText);
  if (!secret.empty()) {
    // A short secret is masked only as a word of its own: masking it inside words would give it away ("230
    // User **gged **" for a password "lo").
    const bool wordsOnly = secret.size() < 4;
    constexpr std::string_view mask = "****";
    for (auto at = text.find(secret); at != std::string::npos; at = text.find(secret, at)) {
      const auto end = at + secret.size();
      const bool word =
          (at == 0 || !isWordCharacter(text[at - 1])) && (end == text.size() || !isWordCharacter(text[end]));
      if (wordsOnly && !word) {
        ++at;
        continue;
      }
      text.replace(at, secret.size(), mask);
      at += mask.size();
    }
  }
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n') {
      ++i;  // between two lines
    } else if (text[i] == '\t') {
      text[i] = ' ';
    } else if (text[i] == '\r' || text[i] == '\n') {
      text[i] = '?';
    }
  }
  return PrintableText(text, "\r\n");
}

}  // namespace quillmoor
