#include "controls/RichTextView.h"

#include <wx/fontenum.h>
#include <wx/platinfo.h>
#include <wx/settings.h>
#include <wx/wupdlock.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <utility>
#include <vector>

#include "controls/AccessibleName.h"
#include "controls/TextMargin.h"
#include "controls/WxColours.h"
#include "platform/files/Files.h"

namespace quillmoor {
namespace {

constexpr int kMargin = 200;  // twips around the text
constexpr int kTwipsPerInch = 1440;
constexpr double kTenthsOfMillimetrePerTwip = 254.0 / kTwipsPerInch;

bool isGtk() {
  return wxPlatformInfo::Get().GetPortId() == wxPORT_GTK;
}

/// The document's font, or the default font if the system lacks it. Slow: asks the system for the font.
wxFont madeFor(const RtfFormat& format) {
  wxFont font = *wxNORMAL_FONT;
  if (!format.font.empty() && wxFontEnumerator::IsValidFacename(wxString::FromUTF8(format.font))) {
    font.SetFaceName(wxString::FromUTF8(format.font));
  } else if (format.fixedPitch) {
    font = wxFont(wxFontInfo().Family(wxFONTFAMILY_TELETYPE));
  }
  font.SetFractionalPointSize(format.halfPoints / 2.0);
  font.SetWeight(format.bold ? wxFONTWEIGHT_BOLD : wxFONTWEIGHT_NORMAL);
  font.SetStyle(format.italic ? wxFONTSTYLE_ITALIC : wxFONTSTYLE_NORMAL);
  font.SetUnderlined(format.underline);
  return font;
}

/// The fonts of a document, each looked up once.
class Fonts {
 public:
  const wxFont& of(const RtfFormat& format) {
    const auto known =
        std::find_if(fonts_.begin(), fonts_.end(), [&](const auto& font) { return font.first == format; });
    if (known != fonts_.end()) return known->second;
    return fonts_.emplace_back(format, madeFor(format)).second;
  }

 private:
  std::vector<std::pair<RtfFormat, wxFont>> fonts_;
};

wxTextAttrAlignment alignmentOf(RtfAlignment alignment) {
  switch (alignment) {
    case RtfAlignment::centre:
      return wxTEXT_ALIGNMENT_CENTRE;
    case RtfAlignment::right:
      return wxTEXT_ALIGNMENT_RIGHT;
    case RtfAlignment::justified:
      return wxTEXT_ALIGNMENT_JUSTIFIED;
    case RtfAlignment::left:
      break;
  }
  return wxTEXT_ALIGNMENT_LEFT;
}

/// `scale` is the screen's scale factor.
wxTextAttr layoutOf(const RtfLayout& layout, double scale) {
  wxTextAttr attributes;
  // GTK interprets lengths as those of an unscaled screen.
  const auto tenthsOfMillimetre = [factor = kTenthsOfMillimetrePerTwip * (isGtk() ? scale : 1)](int twips) {
    return static_cast<int>(std::lround(twips * factor));
  };
  attributes.SetAlignment(alignmentOf(layout.alignment));
  // The toolkit takes the first line's indent, and that of further lines relative to it.
  attributes.SetLeftIndent(tenthsOfMillimetre(kMargin + layout.leftIndent + layout.firstIndent),
                           tenthsOfMillimetre(-layout.firstIndent));
  attributes.SetRightIndent(tenthsOfMillimetre(kMargin + layout.rightIndent));
  wxArrayInt tabs;
  // GTK measures tabs from the first line's indent, Windows from the margin.
  const int origin = isGtk() ? layout.leftIndent + layout.firstIndent : -kMargin;
  for (const int tab : layout.tabs) tabs.Add(tenthsOfMillimetre(tab - origin));
  attributes.SetTabs(tabs);
  return attributes;
}

}  // namespace

RichTextView::RichTextView(wxWindow* parent, wxWindowID id, const wxString& label)
    : wxTextCtrl(parent, id, "", wxDefaultPosition, wxDefaultSize,
                 wxTE_MULTILINE | wxTE_READONLY | wxTE_RICH2 | wxBORDER_NONE) {
  SetAccessibleName(*this, label);
  SetRightMargin(*this, FromDIP(kMargin * 96 / kTwipsPerInch));
  Bind(wxEVT_SYS_COLOUR_CHANGED, [this](wxSysColourChangedEvent& event) {
    event.Skip();
    toFill_ = true;  // refill after the control has taken the new colours
  });
}

void RichTextView::ShowDocument(RtfDocument document) {
  document_ = std::move(document);
  Clear();
  toFill_ = true;
  if (IsShownOnScreen()) fill();
}

void RichTextView::OnInternalIdle() {
  wxTextCtrl::OnInternalIdle();
  if (toFill_ && IsShownOnScreen()) fill();
}

bool RichTextView::LoadFile(const std::string& path) {
  RtfDocument document;
  bool shown = false;
  if (pathExists(path)) {
    try {
      document = LoadRtf(path);
      shown = true;
    } catch (const RtfError& error) {
      document.paragraphs = {{{}, {{error.what(), {}}}}};
    }
  }
  ShowDocument(std::move(document));
  return shown;
}

void RichTextView::fill() {
  toFill_ = false;
  const wxWindowUpdateLocker lock(this);
  const long reading = GetInsertionPoint();
  const Rgb background = FromWx(wxSystemSettings::GetColour(wxSYS_COLOUR_WINDOW));
  const Rgb ink = FromWx(wxSystemSettings::GetColour(wxSYS_COLOUR_WINDOWTEXT));
  const double scale = GetContentScaleFactor();
  Fonts fonts;
  Clear();
  int space = kMargin;
  for (const RtfParagraph& paragraph : document_.paragraphs) {
    appendSpace(space + paragraph.layout.spaceBefore);
    space = paragraph.layout.spaceAfter;
    wxTextAttr attributes = layoutOf(paragraph.layout, scale);
    for (std::size_t i = 0; i < paragraph.runs.size(); ++i) {
      const RtfRun& run = paragraph.runs[i];
      attributes.SetFont(fonts.of(run.format));
      attributes.SetTextColour(ToWx(run.format.colour ? ReadableOn(*run.format.colour, background) : ink));
      SetDefaultStyle(attributes);
      AppendText(wxString::FromUTF8(run.text) + (i + 1 == paragraph.runs.size() ? "\n" : ""));
    }
    if (paragraph.runs.empty()) AppendText("\n");
  }
  SetInsertionPoint(std::min(reading, GetLastPosition()));
  DiscardEdits();
}

/// Space between paragraphs is an empty line of small height, since not every platform's control supports
/// spacing.
void RichTextView::appendSpace(int twips) {
  if (twips <= 0) return;
  constexpr double kLineHeight = 1.2;  // relative to the font size
  wxFont font = *wxNORMAL_FONT;
  font.SetFractionalPointSize(std::max(twips / 20.0 / kLineHeight, 1.0));
  wxTextAttr attributes;
  attributes.SetFont(font);
  SetDefaultStyle(attributes);
  AppendText("\n");
}

}  // namespace quillmoor
