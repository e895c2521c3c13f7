// Rich text (RTF 1.9) as far as a help text needs it, read into plain paragraphs.
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
  std::string font;         // as the file names it; "": it names none
  bool fixedPitch = false;  // of the typewriter kind, for who has not that font
  int halfPoints = 24;      // 2 to 400
  bool bold = false;
  bool italic = false;
  bool underline = false;
  std::optional<Rgb> colour;  // none: the reader's own text colour
  friend bool operator==(const RtfFormat&, const RtfFormat&) = default;
};

struct RtfRun {
  std::string text;  // UTF-8, never empty; a tab is "\t", a line break within the paragraph "\n"
  RtfFormat format;
};

enum class RtfAlignment { left, centre, right, justified };

/// Lengths are twips, 1440 to the inch, within 22 inches.
struct RtfLayout {
  RtfAlignment alignment = RtfAlignment::left;
  int leftIndent = 0;
  int firstIndent = 0;  // of the first line, beside the left one; below 0 for a bullet that hangs
  int rightIndent = 0;
  int spaceBefore = 0;
  int spaceAfter = 0;
  std::vector<int> tabs;  // rising as the file gives them
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
inline constexpr std::size_t kMaxRtfDepth = 100;  // groups within groups
inline constexpr std::size_t kMaxRtfRuns = 200'000;

/// Reads fonts, sizes, bold, italic, underline, colours, indents, spacing, alignment, tabs, bullets, \u with
/// \uc, and bytes of code page 1252. Bytes beyond ASCII in any other code page become U+FFFD. What it does
/// not know it passes over: pictures, styles, headers, every destination marked \*; a table's cells come out
/// with tabs between them. Raises RtfError for a text that is no RTF, that ends inside a group, or that is
/// beyond the bounds above.
RtfDocument ReadRtf(std::string_view text);

/// Reads a file. The errors name it; one that cannot be opened or read is an RtfError too.
RtfDocument LoadRtf(const std::string& path);

}  // namespace quillmoor
