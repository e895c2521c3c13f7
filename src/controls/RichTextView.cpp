#include "controls/RichTextView.h"

#include <wx/fontenum.h>
#include <wx/platinfo.h>
#include <wx/settings.h>
#include <wx/wupdlock.h>

#include <algorithm>
#include <cmath>
#include <utility>

#include "controls/WxColours.h"
#include "platform/LocalFiles.h"

namespace quillmoor {
namespace {

constexpr int kMargin = 200;  // twips around the text
constexpr double kTenthsOfMillimetrePerTwip = 254.0 / 1440;

bool isGtk() {
  return wxPlatformInfo::Get().GetPortId() == wxPORT_GTK;
}

/// The document's font, or the user's own in its place.
wxFont fontOf(const RtfFormat& format) {
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

/// `scale` is the screen's.
wxTextAttr layoutOf(const RtfLayout& layout, double scale) {
  wxTextAttr attributes;
  // GTK takes lengths for those of an unscaled screen.
  const auto tenthsOfMillimetre = [factor = kTenthsOfMillimetrePerTwip * (isGtk() ? scale : 1)](int twips) {
    return static_cast<int>(std::lround(twips * factor));
  };
  attributes.SetAlignment(alignmentOf(layout.alignment));
  // The toolkit counts from the first line, and the further ones from there.
  attributes.SetLeftIndent(tenthsOfMillimetre(kMargin + layout.leftIndent + layout.firstIndent),
                           tenthsOfMillimetre(-layout.firstIndent));
  attributes.SetRightIndent(tenthsOfMillimetre(kMargin + layout.rightIndent));
  wxArrayInt tabs;
  // GTK counts tabs from where the first line begins, Windows from the margin.
  const int origin = isGtk() ? layout.leftIndent + layout.firstIndent : -kMargin;
  for (const int tab : layout.tabs) tabs.Add(tenthsOfMillimetre(tab - origin));
  attributes.SetTabs(tabs);
  return attributes;
}

}  // namespace

RichTextView::RichTextView(wxWindow* parent, wxWindowID id, const wxString& label)
    : wxTextCtrl(parent, id, "", wxDefaultPosition, wxDefaultSize,
                 wxTE_MULTILINE | wxTE_READONLY | wxTE_RICH2 | wxBORDER_NONE) {
  SetName(label);
  Bind(wxEVT_SYS_COLOUR_CHANGED, [this](wxSysColourChangedEvent& event) {
    event.Skip();
    CallAfter([this] { fill(); });  // when the control has taken the new colours
  });
}

void RichTextView::Show(RtfDocument document) {
  document_ = std::move(document);
  fill();
  SetInsertionPoint(0);
}

bool RichTextView::LoadFile(const std::string& path) {
  RtfDocument document;
  bool shown = false;
  if (LocalPathExists(path)) {
    try {
      document = LoadRtf(path);
      shown = true;
    } catch (const RtfError& error) {
      document.paragraphs = {{{}, {{error.what(), {}}}}};
    }
  }
  Show(std::move(document));
  return shown;
}

void RichTextView::fill() {
  const wxWindowUpdateLocker lock(this);
  const long reading = GetInsertionPoint();
  Clear();
  int space = kMargin;
  for (const RtfParagraph& paragraph : document_.paragraphs) {
    appendSpace(space + paragraph.layout.spaceBefore);
    append(paragraph);
    space = paragraph.layout.spaceAfter;
  }
  SetInsertionPoint(reading);
  DiscardEdits();
}

/// Space between paragraphs is a low empty line: not every platform's control knows another.
void RichTextView::appendSpace(int twips) {
  if (twips <= 0) return;
  constexpr double kLineHeight = 1.2;  // of a font's size
  wxFont font = *wxNORMAL_FONT;
  font.SetFractionalPointSize(std::max(twips / 20.0 / kLineHeight, 1.0));
  wxTextAttr attributes;
  attributes.SetFont(font);
  SetDefaultStyle(attributes);
  AppendText("\n");
}

void RichTextView::append(const RtfParagraph& paragraph) {
  const Rgb background = FromWx(wxSystemSettings::GetColour(wxSYS_COLOUR_WINDOW));
  const Rgb ink = FromWx(wxSystemSettings::GetColour(wxSYS_COLOUR_WINDOWTEXT));
  wxTextAttr attributes = layoutOf(paragraph.layout, GetContentScaleFactor());
  for (const RtfRun& run : paragraph.runs) {
    const RtfFormat& format = run.format;
    attributes.SetFont(fontOf(format));
    attributes.SetTextColour(ToWx(format.colour ? ReadableOn(*format.colour, background) : ink));
    SetDefaultStyle(attributes);
    AppendText(wxString::FromUTF8(run.text));
  }
  AppendText("\n");
}

}  // namespace quillmoor
