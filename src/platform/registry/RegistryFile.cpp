#include "platform/registry/RegistryFile.h"

#include <strings.h>

#include <algorithm>
#include <charconv>
#include <optional>

#include "base/Utf8.h"
#include "platform/system/CodePage.h"

namespace quillmoor {
namespace {

constexpr std::string_view kHeader = "Windows Registry Editor Version 5.00";
constexpr std::string_view kUtf16ByteOrderMark = "\xFF\xFE";
constexpr std::size_t kLineLength = 77;  // of hex lines, without the backslash that continues them

/// Unpaired surrogates become U+FFFD.
std::string fromUtf16(std::string_view bytes) {
  const auto unitAt = [&](std::size_t i) {
    return static_cast<char32_t>(static_cast<unsigned char>(bytes[i]) |
                                 (static_cast<unsigned char>(bytes[i + 1]) << 8));
  };
  std::string text;
  for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
    char32_t c = unitAt(i);
    if (c >= 0xD800 && c < 0xE000) {
      const char32_t low = c < 0xDC00 && i + 3 < bytes.size() ? unitAt(i + 2) : 0;
      if (low >= 0xDC00 && low < 0xE000) {
        c = 0x10000 + ((c - 0xD800) << 10) + (low - 0xDC00);
        i += 2;
      } else {
        c = 0xFFFD;
      }
    }
    AppendUtf8(text, c);
  }
  return text;
}

std::string toUtf16(std::string_view ofProgram) {
  const std::string utf8 = ToUtf8(ofProgram);
  std::string_view text = utf8;
  std::string bytes;
  const auto append = [&](char32_t unit) {
    bytes += static_cast<char>(unit & 0xFF);
    bytes += static_cast<char>(unit >> 8);
  };
  while (!text.empty()) {
    const Utf8Character next = DecodeUtf8(text);
    const char32_t c = next.character;
    text.remove_prefix(next.length);
    if (c < 0x10000) {
      append(c);
    } else {
      append(0xD800 + ((c - 0x10000) >> 10));
      append(0xDC00 + ((c - 0x10000) & 0x3FF));
    }
  }
  return bytes;
}

class Parser {
 public:
  explicit Parser(std::string_view text) : text_(text) {}

  std::vector<RegistryFileKey> parse() {
    skipBlankLines();
    if (atEnd()) return {};
    const std::size_t number = line_;
    if (restOfLine() != kHeader) {
      throw RegistryFileError(number, "the first line is not \"" + std::string(kHeader) + "\"");
    }
    for (skipBlankLines(); !atEnd(); skipBlankLines()) {
      if (peek() == '[') {
        parseKey();
      } else if (current_) {
        parseValue();
      } else {
        fail("there is a value before the first key");
      }
    }
    return std::move(keys_);
  }

 private:
  [[noreturn]] void fail(const std::string& what) const { throw RegistryFileError(line_, what); }

  bool atEnd() const { return at_ == text_.size(); }
  char peek() const { return atEnd() ? '\0' : text_[at_]; }
  char next() {
    if (atEnd()) fail("the file ends in the middle of a line");
    if (text_[at_] == '\n') ++line_;
    return text_[at_++];
  }
  void expect(std::string_view token) {
    if (!text_.substr(at_).starts_with(token)) fail("\"" + std::string(token) + "\" is missing");
    at_ += token.size();
  }

  /// The rest of the line without trailing whitespace; moves to the next line.
  std::string_view restOfLine() {
    const std::size_t end = std::min(text_.find('\n', at_), text_.size());
    std::string_view line = text_.substr(at_, end - at_);
    at_ = end;
    if (!atEnd()) next();
    line.remove_suffix(line.size() - (line.find_last_not_of(" \t\r") + 1));
    return line;
  }

  void skipBlankLines() {
    while (!atEnd()) {
      if (peek() == ';') {
        restOfLine();
      } else if (peek() == ' ' || peek() == '\t' || peek() == '\r' || peek() == '\n') {
        next();
      } else {
        return;
      }
    }
  }

  void parseKey() {
    const std::size_t number = line_;
    const std::string_view line = restOfLine();
    if (line.size() < 3 || !line.ends_with(']'))
      throw RegistryFileError(number, "the key has no closing bracket");
    std::string_view path = line.substr(1, line.size() - 2);
    const bool removed = path.starts_with('-');
    if (removed) path.remove_prefix(1);
    auto found = std::find_if(keys_.begin(), keys_.end(), [&](const RegistryFileKey& key) {
      return key.path.size() == path.size() && ::strncasecmp(key.path.data(), path.data(), path.size()) == 0;
    });
    if (removed) {  // with its subkeys
      std::erase_if(keys_, [&](const RegistryFileKey& key) {
        const bool within = key.path.size() == path.size() ||
                            (key.path.size() > path.size() && key.path[path.size()] == '\\');
        return within && ::strncasecmp(key.path.data(), path.data(), path.size()) == 0;
      });
      current_.reset();
      return;
    }
    if (found == keys_.end()) found = keys_.insert(keys_.end(), {std::string(path), {}});
    current_ = static_cast<std::size_t>(found - keys_.begin());
  }

  void parseValue() {
    RegistryFileValue value;
    if (peek() == '@') {
      next();
    } else {
      value.name = quotedText();
    }
    expect("=");
    std::vector<RegistryFileValue>& values = keys_[*current_].values;
    const auto same = [&](const RegistryFileValue& other) {
      return ::strcasecmp(other.name.c_str(), value.name.c_str()) == 0;
    };
    std::erase_if(values, same);
    if (peek() == '-') {
      next();
    } else {
      value.data = parseData();
      values.push_back(std::move(value));
    }
    const std::size_t number = line_;
    if (!restOfLine().empty()) throw RegistryFileError(number, "unexpected text after the value");
  }

  std::string quotedText() {
    expect("\"");
    std::string text;
    for (;;) {
      const char c = next();
      if (c == '"') return text;
      text += c == '\\' ? escaped(next()) : c;
    }
  }

  /// The registry editor writes line breaks unescaped; other programs escape them.
  static char escaped(char c) { return c == 'n' ? '\n' : c == 'r' ? '\r' : c; }

  RegistryData parseData() {
    if (peek() == '"') return {RegistryType::text, quotedText()};
    if (text_.substr(at_).starts_with("dword:")) {
      at_ += 6;
      const std::uint32_t number = hexNumber(8);
      std::string bytes;
      for (unsigned shift = 0; shift < 32; shift += 8) bytes += static_cast<char>((number >> shift) & 0xFF);
      return {RegistryType::dword, bytes};
    }
    expect("hex");
    std::uint32_t type = 3;
    if (peek() == '(') {
      next();
      type = hexNumber(8);
      expect(")");
    }
    expect(":");
    std::string bytes = hexBytes();
    if (type == 1 || type == 2) {
      bytes = fromUtf16(bytes);
      if (bytes.ends_with('\0')) bytes.pop_back();
    }
    return {static_cast<RegistryType>(type), std::move(bytes)};
  }

  std::uint32_t hexNumber(std::size_t mostDigits) {
    std::uint32_t number = 0;
    const char* const begin = text_.data() + at_;
    const char* const end = begin + std::min(mostDigits, text_.size() - at_);
    const auto [rest, error] = std::from_chars(begin, end, number, 16);
    if (error != std::errc()) fail("a hexadecimal number is missing");
    at_ += static_cast<std::size_t>(rest - begin);
    return number;
  }

  std::string hexBytes() {
    std::string bytes;
    for (;;) {
      while (peek() == ' ' || peek() == '\t') next();
      if (peek() == '\\') {  // continues on the next line
        next();
        if (!restOfLine().empty()) fail("unexpected text after the backslash");
      } else if (peek() == '\r' || peek() == '\n' || atEnd()) {
        return bytes;
      } else {
        const std::uint32_t byte = hexNumber(2);
        bytes += static_cast<char>(byte);
        if (peek() == ',') next();
      }
    }
  }

  std::string_view text_;
  std::size_t at_ = 0;
  std::size_t line_ = 1;
  std::vector<RegistryFileKey> keys_;
  std::optional<std::size_t> current_;
};

bool isAscii(std::string_view text) {
  return std::all_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

/// Whether text can be written in quotes; not every editor keeps a line break in them, for example.
bool isQuotable(std::string_view text) {
  return std::none_of(text.begin(), text.end(), [](char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte < 0x20 || byte == 0x7F;
  });
}

bool isText(const RegistryData& data) {
  return data.type == RegistryType::text || data.type == RegistryType::expandText;
}

bool isQuoted(const RegistryData& data) {
  return data.type == RegistryType::text && isQuotable(data.bytes);
}

std::string quoted(std::string_view text) {
  std::string result = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') result += '\\';
    result += c;
  }
  return result + "\"";
}

/// Appends bytes to `start`, wrapped like the registry editor does.
std::string hexLines(std::string start, std::string_view bytes) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string result;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const auto byte = static_cast<unsigned char>(bytes[i]);
    start += kDigits[byte >> 4];
    start += kDigits[byte & 0xF];
    if (i + 1 == bytes.size()) break;
    start += ',';
    if (start.size() + 3 > kLineLength) {
      result += start + "\\\r\n";
      start = "  ";
    }
  }
  return result + start;
}

std::string formatData(std::string name, const RegistryData& data) {
  name += '=';
  if (isQuoted(data)) return name + quoted(data.bytes);
  if (data.type == RegistryType::dword && data.bytes.size() == 4) {
    std::uint32_t number = 0;
    for (std::size_t i = 4; i-- > 0;) number = (number << 8) | static_cast<unsigned char>(data.bytes[i]);
    std::string digits(8, '0');
    for (std::size_t i = 8; i-- > 0; number >>= 4) digits[i] = "0123456789abcdef"[number & 0xF];
    return name + "dword:" + digits;
  }
  if (data.type == RegistryType::binary) return hexLines(name + "hex:", data.bytes);
  char type[9] = {};
  std::to_chars(type, type + 8, static_cast<std::uint32_t>(data.type), 16);
  const std::string bytes = isText(data) ? toUtf16(data.bytes) + std::string(2, '\0') : data.bytes;
  return hexLines(name + "hex(" + type + "):", bytes);
}

}  // namespace

std::vector<RegistryFileKey> parseRegistryFile(std::string_view bytes) {
  if (bytes.starts_with(kUtf16ByteOrderMark)) {
    const std::string text = fromUtf16(bytes.substr(kUtf16ByteOrderMark.size()));
    return Parser(text).parse();
  }
  if (bytes.starts_with("\xEF\xBB\xBF")) bytes.remove_prefix(3);
  // Bytes that are not UTF-8 are converted here: unconverted, they would change when the file is next
  // written.
  const std::string text = ToUtf8(bytes);
  return Parser(text).parse();
}

std::string formatRegistryFile(const std::vector<RegistryFileKey>& keys) {
  std::string text = std::string(kHeader) + "\r\n";
  bool inUtf16 = false;
  for (const RegistryFileKey& key : keys) {
    text += "\r\n[" + key.path + "]\r\n";
    for (const RegistryFileValue& value : key.values) {
      inUtf16 = inUtf16 || (isText(value.data) && !isQuoted(value.data));
      text += formatData(value.name.empty() ? "@" : quoted(value.name), value.data) + "\r\n";
    }
  }
  return inUtf16 || !isAscii(text) ? std::string(kUtf16ByteOrderMark) + toUtf16(text) : text;
}

}  // namespace quillmoor
