#include "controls/RtfReader.h"

#include <algorithm>
#include <array>
#include <map>
#include <utility>

#include "base/Utf8.h"
#include "base/Windows1252.h"
#include "controls/BoundedFile.h"

namespace quillmoor {
namespace {

constexpr char32_t kReplacement = 0xFFFD;
constexpr int kMaxLength = 31680;  // twips, 22 inches
constexpr std::size_t kMaxTabs = 64;
constexpr std::size_t kMaxNameLength = 128;
constexpr std::size_t kMaxTableEntries = 10'000;

// Control words that stand for a character.
struct NamedCharacter {
  std::string_view word;
  char32_t character;
};
constexpr std::array kCharacters = {
    NamedCharacter{"tab", '\t'},         NamedCharacter{"line", '\n'},
    NamedCharacter{"cell", '\t'},        NamedCharacter{"bullet", 0x2022},
    NamedCharacter{"emdash", 0x2014},    NamedCharacter{"endash", 0x2013},
    NamedCharacter{"lquote", 0x2018},    NamedCharacter{"rquote", 0x2019},
    NamedCharacter{"ldblquote", 0x201C}, NamedCharacter{"rdblquote", 0x201D},
    NamedCharacter{"emspace", 0x2003},   NamedCharacter{"enspace", 0x2002},
};

// Groups that are not part of the document's text, in addition to those marked with \*.
constexpr std::array<std::string_view, 21> kForeignDestinations = {
    "stylesheet", "info",    "pict",    "object",  "fldinst", "header",  "headerl",
    "headerr",    "headerf", "footer",  "footerl", "footerr", "footerf", "footnote",
    "listtable",  "rsidtbl", "filetbl", "revtbl",  "tc",      "xe",      "nonshppict",
};

struct Font {
  std::string name;
  int charset = 0;
  bool fixedPitch = false;
};

enum class Destination { document, fontTable, colourTable, skipped };

/// The state that a group may change and that is restored at its end.
struct State {
  Destination destination = Destination::document;
  RtfFormat format;
  RtfLayout layout;
  int font = -1;
  bool hidden = false;
  int fallbacks = 1;  // \uc: number of fallback characters after \u
};

class Reader {
 public:
  explicit Reader(std::string_view text) : tokens_(text) {}

  RtfDocument read();

 private:
  void open(std::size_t at);
  void close();
  void word(const RtfToken& token);
  bool destinationWord(const RtfToken& token);
  void documentWord(const RtfToken& token);
  void formatWord(const RtfToken& token);
  void layoutWord(const RtfToken& token);
  void tableWord(const RtfToken& token);
  void symbol(const RtfToken& token);
  void byte(unsigned char value, std::size_t at);
  void tableByte(unsigned char value);
  void unicode(int number, std::size_t at);
  void character(char32_t value, std::size_t at);
  void endParagraph();
  void useFont(int number);
  char32_t decoded(unsigned char value) const;
  State& state() { return states_.back(); }
  const State& state() const { return states_.back(); }

  RtfTokenizer tokens_;
  std::vector<State> states_;
  RtfDocument document_;
  RtfParagraph paragraph_;
  std::size_t runs_ = 0;
  std::map<int, Font> fonts_;
  int defaultFont_ = 0;
  Font newFont_;
  int newFontNumber_ = -1;
  std::vector<std::optional<Rgb>> colours_;
  Rgb newColour_;
  bool newColourGiven_ = false;
  int codePage_ = 1252;
  bool groupBegins_ = false;    // the current word is the first of its group
  bool optional_ = false;       // it follows \*
  int toSkip_ = 0;              // fallback characters still to be skipped
  char16_t highSurrogate_ = 0;  // first half of a surrogate pair from \u
};

int lengthOf(int parameter) {
  return std::clamp(parameter, -kMaxLength, kMaxLength);
}

/// \b, \i and the like: off with the parameter 0.
bool switchedOn(const RtfToken& token) {
  return !token.hasParameter || token.parameter != 0;
}

RtfDocument Reader::read() {
  bool ended = false;
  while (!ended) {
    const RtfToken token = tokens_.next();
    if (states_.empty() && token.kind != RtfToken::Kind::open) throw RtfError(token.at, "not rich text");
    const bool first = std::exchange(groupBegins_, false);
    switch (token.kind) {
      case RtfToken::Kind::open:
        open(token.at);
        break;
      case RtfToken::Kind::close:
        ended = states_.size() == 1;
        close();
        break;
      case RtfToken::Kind::word:
        if (states_.size() == 1 && first && token.word != "rtf") throw RtfError(token.at, "not rich text");
        groupBegins_ = first;
        word(token);
        groupBegins_ = false;
        break;
      case RtfToken::Kind::symbol:
        symbol(token);
        if (token.character == '*') groupBegins_ = first;
        break;
      case RtfToken::Kind::byte:
        if (states_.size() == 1 && first) throw RtfError(token.at, "not rich text");
        byte(token.character, token.at);
        break;
      case RtfToken::Kind::end:
        throw RtfError(token.at, "the text ends inside a group");
    }
  }
  return std::move(document_);
}

void Reader::open(std::size_t at) {
  if (states_.size() == kMaxRtfDepth)
    throw RtfError(at, "more than " + std::to_string(kMaxRtfDepth) + " nested groups");
  states_.push_back(states_.empty() ? State{} : State(state()));
  groupBegins_ = true;
  optional_ = false;
  toSkip_ = 0;
}

void Reader::close() {
  toSkip_ = 0;
  if (states_.size() == 1 && !paragraph_.runs.empty()) endParagraph();
  states_.pop_back();
}

void Reader::word(const RtfToken& token) {
  if (token.word == "bin") return;
  if (toSkip_ > 0) {
    --toSkip_;
    return;
  }
  if (groupBegins_ && destinationWord(token)) return;
  switch (state().destination) {
    case Destination::document:
      documentWord(token);
      break;
    case Destination::fontTable:
    case Destination::colourTable:
      tableWord(token);
      break;
    case Destination::skipped:
      break;
  }
}

/// Whether the word, the first of its group, sets the group's destination.
bool Reader::destinationWord(const RtfToken& token) {
  const auto foreign = std::find(kForeignDestinations.begin(), kForeignDestinations.end(), token.word);
  if (std::exchange(optional_, false) || foreign != kForeignDestinations.end()) {
    state().destination = Destination::skipped;
  } else if (state().destination == Destination::document && token.word == "fonttbl") {
    state().destination = Destination::fontTable;
  } else if (state().destination == Destination::document && token.word == "colortbl") {
    state().destination = Destination::colourTable;
  } else {
    return false;
  }
  return true;
}

void Reader::documentWord(const RtfToken& token) {
  const std::string_view name = token.word;
  const auto* named = std::find_if(kCharacters.begin(), kCharacters.end(),
                                   [&](const NamedCharacter& entry) { return entry.word == name; });
  if (named != kCharacters.end()) {
    character(named->character, token.at);
  } else if (name == "par" || name == "sect" || name == "page" || name == "row") {
    endParagraph();
  } else if (name == "u") {
    unicode(token.parameter, token.at);
  } else if (name == "uc") {
    state().fallbacks = std::max(token.parameter, 0);
  } else if (name == "ansicpg") {
    codePage_ = token.parameter;
  } else if (name == "mac" || name == "pc" || name == "pca") {
    codePage_ = 0;
  } else if (name == "deff") {
    defaultFont_ = token.parameter;
  } else {
    formatWord(token);
    layoutWord(token);
  }
}

void Reader::formatWord(const RtfToken& token) {
  const std::string_view name = token.word;
  RtfFormat& format = state().format;
  if (name == "plain") {
    format = {};
    state().hidden = false;
    useFont(defaultFont_);
  } else if (name == "f") {
    useFont(token.parameter);
  } else if (name == "fs") {
    format.halfPoints = token.hasParameter ? std::clamp(token.parameter, 2, 400) : 24;
  } else if (name == "b") {
    format.bold = switchedOn(token);
  } else if (name == "i") {
    format.italic = switchedOn(token);
  } else if (name == "ulnone") {
    format.underline = false;
  } else if (name == "ul" || name == "ulw" || name == "uld" || name == "uldb" || name == "uldash") {
    format.underline = switchedOn(token);
  } else if (name == "v") {
    state().hidden = switchedOn(token);
  } else if (name == "cf") {
    const auto number = static_cast<std::size_t>(token.parameter);  // a negative number exceeds the table
    format.colour = number < colours_.size() ? colours_[number] : std::nullopt;
  }
}

void Reader::layoutWord(const RtfToken& token) {
  const std::string_view name = token.word;
  RtfLayout& layout = state().layout;
  const int length = lengthOf(token.parameter);
  if (name == "pard") {
    layout = {};
  } else if (name == "ql") {
    layout.alignment = RtfAlignment::left;
  } else if (name == "qc") {
    layout.alignment = RtfAlignment::centre;
  } else if (name == "qr") {
    layout.alignment = RtfAlignment::right;
  } else if (name == "qj") {
    layout.alignment = RtfAlignment::justified;
  } else if (name == "li") {
    layout.leftIndent = length;
  } else if (name == "fi") {
    layout.firstIndent = length;
  } else if (name == "ri") {
    layout.rightIndent = length;
  } else if (name == "sb") {
    layout.spaceBefore = std::max(length, 0);
  } else if (name == "sa") {
    layout.spaceAfter = std::max(length, 0);
  } else if (name == "tx" && layout.tabs.size() < kMaxTabs) {
    layout.tabs.push_back(std::max(length, 0));
  }
}

void Reader::tableWord(const RtfToken& token) {
  if (state().destination == Destination::fontTable) {
    if (token.word == "f") newFontNumber_ = token.parameter;
    if (token.word == "fcharset") newFont_.charset = token.parameter;
    if (token.word == "fmodern") newFont_.fixedPitch = true;
    return;
  }
  const auto part = static_cast<std::uint8_t>(std::clamp(token.parameter, 0, 255));
  if (token.word == "red") newColour_.red = part;
  if (token.word == "green") newColour_.green = part;
  if (token.word == "blue") newColour_.blue = part;
  newColourGiven_ = newColourGiven_ || token.word == "red" || token.word == "green" || token.word == "blue";
}

void Reader::tableByte(unsigned char value) {
  if (state().destination == Destination::fontTable) {
    if (value != ';') {
      if (newFont_.name.size() < kMaxNameLength) AppendUtf8(newFont_.name, decoded(value));
      return;
    }
    if (fonts_.size() < kMaxTableEntries) fonts_[newFontNumber_] = newFont_;
    newFont_ = {};
    newFontNumber_ = -1;
  } else if (value == ';') {
    // An empty entry is the default colour.
    if (colours_.size() < kMaxTableEntries)
      colours_.push_back(newColourGiven_ ? std::optional<Rgb>(newColour_) : std::nullopt);
    newColour_ = {};
    newColourGiven_ = false;
  }
}

void Reader::symbol(const RtfToken& token) {
  if (token.character == '*') {
    optional_ = true;
    return;
  }
  if (toSkip_ > 0) {
    --toSkip_;
    return;
  }
  if (state().destination == Destination::fontTable || state().destination == Destination::colourTable)
    return;
  switch (token.character) {
    case '\\':
    case '{':
    case '}':
      character(token.character, token.at);
      break;
    case '~':
      character(0xA0, token.at);
      break;
    case '_':
      character(0x2011, token.at);
      break;
    case '\r':
    case '\n':
      endParagraph();
      break;
    default:
      break;  // such as "\-", an optional hyphen
  }
}

void Reader::byte(unsigned char value, std::size_t at) {
  if (toSkip_ > 0) {
    --toSkip_;
    return;
  }
  switch (state().destination) {
    case Destination::document:
      character(decoded(value), at);
      break;
    case Destination::fontTable:
    case Destination::colourTable:
      tableByte(value);
      break;
    case Destination::skipped:
      break;
  }
}

char32_t Reader::decoded(unsigned char value) const {
  if (value < 0x80) return value;
  const auto font = fonts_.find(state().font);
  constexpr int kSymbolCharset = 2;
  if (font != fonts_.end() && font->second.charset == kSymbolCharset) {
    // Symbols in place of letters; only those used in lists are known.
    return value == 0xB7 ? 0x2022 : value == 0xA7 ? 0x25AA : kReplacement;
  }
  return codePage_ == 1252 ? FromWindows1252(value) : kReplacement;
}

void Reader::unicode(int number, std::size_t at) {
  toSkip_ = 0;
  if (number < 0) number += 0x10000;  // it is a signed 16-bit number
  const auto unit = static_cast<char32_t>(number);
  const bool high = unit >= 0xD800 && unit < 0xDC00;
  const bool low = unit >= 0xDC00 && unit < 0xE000;
  const char16_t before = std::exchange(highSurrogate_, u'\0');
  if (high) {
    highSurrogate_ = static_cast<char16_t>(unit);
  } else if (low && before != 0) {
    character(0x10000 + ((static_cast<char32_t>(before) - 0xD800) << 10) + (unit - 0xDC00), at);
  } else if (low || number < 0 || number > 0x10FFFF) {
    character(kReplacement, at);
  } else if (unit >= 0xF000 && unit <= 0xF0FF) {
    character(decoded(static_cast<unsigned char>(unit - 0xF000)), at);  // a character of a symbol font
  } else {
    character(unit, at);
  }
  toSkip_ = state().fallbacks;
}

void Reader::character(char32_t value, std::size_t at) {
  if (state().destination != Destination::document || state().hidden) return;
  const bool control = value < 0x20 && value != '\t' && value != '\n';
  if (control || value == 0x7F) return;
  std::vector<RtfRun>& runs = paragraph_.runs;
  if (runs.empty() || runs.back().format != state().format) {
    if (++runs_ > kMaxRtfRuns) throw RtfError(at, "too many changes of format");
    runs.push_back({"", state().format});
  }
  AppendUtf8(runs.back().text, value);
}

void Reader::endParagraph() {
  if (state().destination != Destination::document) return;
  if (++runs_ > kMaxRtfRuns) throw RtfError("too many paragraphs");
  paragraph_.layout = state().layout;
  document_.paragraphs.push_back(std::exchange(paragraph_, {}));
}

void Reader::useFont(int number) {
  state().font = number;
  const auto font = fonts_.find(number);
  state().format.font = font == fonts_.end() ? "" : font->second.name;
  state().format.fixedPitch = font != fonts_.end() && font->second.fixedPitch;
}

}  // namespace

RtfDocument ReadRtf(std::string_view text) {
  if (text.size() > kMaxRtfBytes) throw RtfError("is larger than " + std::to_string(kMaxRtfBytes) + " bytes");
  return Reader(text).read();
}

RtfDocument LoadRtf(const std::string& path) {
  try {
    return ReadRtf(ReadBoundedFile(path, kMaxRtfBytes));
  } catch (const std::exception& error) {
    throw RtfError(path + ": " + error.what());
  }
}

}  // namespace quillmoor
