// Reads rich text (RTF 1.9), as far as a help text needs it, into paragraphs.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "controls/ColourMath.h"
#include "controls/RtfTokenizer.h"

namespace quillmoor {

struct RtfFormat {
  std::string font;         // the file's name for it; "": none
  bool fixedPitch = false;  // use a monospaced font if `font` is missing
  int halfPoints = 24;      // 2 to 400
  bool bold = false;
  bool italic = false;
  bool underline = false;
  std::optional<Rgb> colour;  // none: the default text colour
  friend bool operator==(const RtfFormat&, const RtfFormat&) = default;
};

struct RtfRun {
  std::string text;  // UTF-8, never empty; a tab is "\t", a line break within the paragraph "\n"
  RtfFormat format;
};

enum class RtfAlignment { left, centre, right, justified };

/// Lengths are in twips (1440 per inch), at most 22 inches.
struct RtfLayout {
  RtfAlignment alignment = RtfAlignment::left;
  int leftIndent = 0;
  int firstIndent = 0;  // of the first line, added to leftIndent; negative for a hanging bullet
  int rightIndent = 0;
  int spaceBefore = 0;
  int spaceAfter = 0;
  std::vector<int> tabs;  // ascending, as in the file
  friend bool operator==(const RtfLayout&, const RtfLayout&) = default;
};

struct RtfParagraph {
  RtfLayout layout;
  std::vector<RtfRun> runs;  // none: an empty line
};

struct RtfDocument {
  std::vector<RtfParagraph> paragraphs;
};

inline constexpr std::size_t kMaxRtfBytes = std::size_t{4} << 20;
inline constexpr std::size_t kMaxRtfDepth = 100;  // nested groups
inline constexpr std::size_t kMaxRtfRuns = 200'000;

/// Reads fonts, sizes, bold, italic, underline, colours, indents, spacing, alignment, tabs, bullets, \u with
/// \uc, and bytes of code page 1252. Bytes beyond ASCII in any other code page become U+FFFD. Skips anything
/// else: pictures, styles, headers, every destination marked \*. A table's cells are separated by tabs.
/// Raises RtfError for a text that is not RTF, that ends inside a group, or that exceeds a bound above.
RtfDocument ReadRtf(std::string_view text);

/// Reads a file. Errors name the file; one that cannot be opened or read raises RtfError, too.
RtfDocument LoadRtf(const std::string& path);

}  // namespace quillmoor
