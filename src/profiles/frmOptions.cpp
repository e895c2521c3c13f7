#include "profiles/frmOptions.h"

#include <initializer_list>
#include <string>
#include <utility>

#include "controls/AccessibleName.h"
#include "controls/WindowPrompts.h"

namespace quillmoor {
namespace {

struct RunBox {
  const char* caption;
  const char* name;
  const char* browse;  // name of the button that chooses a file for it, nullptr where there is none
};
/// As in kRunTexts.
constexpr std::array<RunBox, kRunTexts.size()> kRunBoxes = {
    {{"&Program before the backup:", "txtRunBefore", "cmdBrowseRunBefore"},
     {"Program af&ter the backup:", "txtRunAfter", "cmdBrowseRunAfter"},
     {"Addre&ss before the backup:", "txtConnectBefore", nullptr},
     {"Address after the bac&kup:", "txtConnectAfter", nullptr}}};

constexpr const char* kProgramTip =
    "A program or document that is opened as if by a double click, without parameters. The run does not wait "
    "for its end. Empty: none";
constexpr const char* kAddressTip =
    "A web address that is called once, http://www.example.org/done for instance. Only an answer with status "
    "200 is a success. Empty: none";

}  // namespace

frmOptions::frmOptions(wxWindow* parent, ApplicationSettings& settings, std::unique_ptr<UserPrompts> prompts)
    : ScrolledForm(parent, "frmOptions"),
      prompts_(prompts ? std::move(prompts) : std::make_unique<WindowPrompts>(this)),
      editor_(settings, *prompts_) {
  layOutMode();
  layOutNames();
  layOutArchive();
  layOutCopies();
  layOutRunTexts();
  finish();
  show();
  showCopies();
  connect();
}

void frmOptions::layOutMode() {
  beginGroup("What is fetched");
  optFull = new wxRadioButton(group(), wxID_ANY, "&Full backup: every file", wxDefaultPosition, wxDefaultSize,
                              wxRB_GROUP, wxDefaultValidator, "optFull");
  optIncremental = new wxRadioButton(group(), wxID_ANY, "&Incremental backup", wxDefaultPosition,
                                     wxDefaultSize, 0, wxDefaultValidator, "optIncremental");
  chkUniqueBackup = checkBox("A folder with the &date for every backup", "chkUniqueBackup",
                             "Keeps the former backups: each goes into a folder of its own, such as My "
                             "site-11-24-2026, month first");
  add(optFull);
  add(optIncremental);
  addNote(
      "Fetches what is missing in the backup, and what the server lists with an earlier date than the "
      "copy's. A "
      "file with a later date there is left out.",
      indent());
  add(chkUniqueBackup);
  lblUniqueBackupNote = addNote("", indent());
  addNote("Changes take effect at the next start of the program.");
}

void frmOptions::layOutNames() {
  beginGroup("Names of folders");
  chkNamesAsListed = checkBox("K&eep them as the server lists them", "chkNamesAsListed",
                              "For sites that have folders such as \"photos [2024]\", and on Windows for a "
                              "network path under \"Save to\"");
  add(chkNamesAsListed);
  addNote(
      "Without the tick the path of a folder loses the text between \"[\" and \"]\", the blanks around "
      "it, "
      "and the first of the two backslashes of a network path.",
      indent());
}

void frmOptions::layOutArchive() {
  beginGroup("Archive");
  chkCreateZip = checkBox("C&reate an archive after the download", "chkCreateZip",
                          "Packs every profile's backup into one file beside its folder");
  chkSplitZip = checkBox("Sp&lit it into parts", "chkSplitZip", "To unpack, all parts must be in one folder");
  lblZipSpanSize = caption("Si&ze of a part:");
  txtZipSpanSize = textBox(12, "txtZipSpanSize",
                           "A number of KB, 350 or more: smaller ones count as 350. 1024 KB are one MB");
  lblZipSpanUnit = label("KB");
  chkZipSelfExtract = checkBox("Make it a program that &unpacks itself", "chkZipSelfExtract",
                               "A program for the kind of system that this one is");
  lblZipPassword = caption("Pass&word:");
  txtZipPassword = textBox(24, "txtZipPassword",
                           "Encrypts the contents of the files, not their names. It is needed to unpack, and "
                           "nothing can be unpacked without it. Empty: none",
                           wxTE_PASSWORD);
  SetLabelFor(*lblZipSpanSize, *txtZipSpanSize);
  SetAccessibleName(*txtZipSpanSize, "Size of a part, in KB");
  SetLabelFor(*lblZipPassword, *txtZipPassword);
  add(chkCreateZip);
  add(chkSplitZip, indent());
  addRow(lblZipSpanSize, txtZipSpanSize, Width::own, {lblZipSpanUnit}, indent());
  lblSpanSizeNote = addNote("", indent());
  add(chkZipSelfExtract, indent());
  addRow(lblZipPassword, txtZipPassword, Width::own, {}, indent());
  lblPasswordNote = addNote("", indent());
}

void frmOptions::layOutCopies() {
  beginGroup("Folders for copies of the archive");
  lstZipCopies = new wxListBox(group(), wxID_ANY, wxDefaultPosition, wxDefaultSize, 0, nullptr,
                               wxLB_SINGLE | wxLB_HSCROLL, wxDefaultValidator, "lstZipCopies");
  lstZipCopies->SetMinSize(FromDIP(wxSize(120, 90)));
  SetAccessibleName(*lstZipCopies, "Folders for copies of the archive");
  cmdAddCopy = button("&Add...", "cmdAddCopy", "An existing folder: none is created, since it may be a disk");
  cmdRemoveCopy = button("Re&move", "cmdRemoveCopy", "Removes the selected folder from the list");
  auto* const buttons = new wxBoxSizer(wxVERTICAL);
  buttons->Add(cmdAddCopy, wxSizerFlags().Expand());
  buttons->Add(cmdRemoveCopy, wxSizerFlags().Expand().Border(wxTOP, gap()));
  auto* const row = new wxBoxSizer(wxHORIZONTAL);
  row->Add(lstZipCopies, wxSizerFlags(1).Expand());
  row->Add(buttons, wxSizerFlags().Border(wxLEFT, gap()));
  add(row);
}

void frmOptions::layOutRunTexts() {
  beginGroup("Programs and addresses");
  for (std::size_t box = 0; box < kRunBoxes.size(); ++box) {
    const RunBox& it = kRunBoxes[box];
    wxStaticText* const text = caption(it.caption);
    txtRun[box] = textBox(10, it.name, it.browse ? kProgramTip : kAddressTip);
    SetLabelFor(*text, *txtRun[box]);
    if (!it.browse) {
      addRow(text, txtRun[box], Width::rest);
      lblRunNote[box] = addNote("", indent());
      continue;
    }
    wxButton* const browse = button("Browse...", it.browse);
    SetAccessibleName(*browse, "Browse: " + text->GetLabelText());
    addRow(text, txtRun[box], Width::rest, {browse});
    (box == 0 ? cmdBrowseRunBefore : cmdBrowseRunAfter) = browse;
  }
}

template <class Event>
void frmOptions::on(wxWindow* control, const wxEventTypeTag<Event>& event, std::function<void()> change) {
  control->Bind(event, [this, change = std::move(change)](Event&) {
    change();
    show();
  });
}

void frmOptions::connect() {
  on(optFull, wxEVT_RADIOBUTTON, [this] { editor_.ChooseFull(); });
  on(optIncremental, wxEVT_RADIOBUTTON, [this] { editor_.ChooseIncremental(); });
  on(chkUniqueBackup, wxEVT_CHECKBOX, [this] { editor_.SetUniqueBackup(chkUniqueBackup->GetValue()); });
  on(chkNamesAsListed, wxEVT_CHECKBOX, [this] { editor_.SetNamesAsListed(chkNamesAsListed->GetValue()); });
  on(chkCreateZip, wxEVT_CHECKBOX, [this] { editor_.SetCreateZip(chkCreateZip->GetValue()); });
  on(chkSplitZip, wxEVT_CHECKBOX, [this] { editor_.SetSplitZip(chkSplitZip->GetValue()); });
  on(txtZipSpanSize, wxEVT_TEXT, [this] { editor_.SetZipSpanSize(TextOf(*txtZipSpanSize)); });
  on(chkZipSelfExtract, wxEVT_CHECKBOX, [this] { editor_.SetZipSelfExtract(chkZipSelfExtract->GetValue()); });
  on(txtZipPassword, wxEVT_TEXT, [this] { editor_.SetZipPassword(TextOf(*txtZipPassword)); });
  txtZipPassword->Bind(wxEVT_SET_FOCUS, [this](wxFocusEvent& event) {
    editor_.BeginZipPassword();
    event.Skip();
  });
  for (std::size_t box = 0; box < txtRun.size(); ++box)
    on(txtRun[box], wxEVT_TEXT, [this, box] { editor_.SetRunText(box, TextOf(*txtRun[box])); });
  on(cmdBrowseRunBefore, wxEVT_BUTTON, [this] { editor_.BrowseRunText(0); });
  on(cmdBrowseRunAfter, wxEVT_BUTTON, [this] { editor_.BrowseRunText(1); });
  on(cmdAddCopy, wxEVT_BUTTON, [this] { addCopy(); });
  on(cmdRemoveCopy, wxEVT_BUTTON, [this] { removeCopy(); });
  on(lstZipCopies, wxEVT_LISTBOX, [] {});
}

void frmOptions::addCopy() {
  const std::size_t before = editor_.lstZipCopies.size();
  editor_.AddCopy();
  showCopies();
  if (editor_.lstZipCopies.size() > before) lstZipCopies->SetSelection(static_cast<int>(before));
}

void frmOptions::removeCopy() {
  editor_.RemoveCopy(SelectionOf(*lstZipCopies));
  showCopies();
  // The button is about to be disabled: the next key must not reach the box after it.
  if (lstZipCopies->IsEmpty()) cmdAddCopy->SetFocus();
}

void frmOptions::showCopies() {
  ShowItems(*lstZipCopies, editor_.lstZipCopies);
}

void frmOptions::show() {
  (editor_.optFull ? optFull : optIncremental)->SetValue(true);
  chkUniqueBackup->SetValue(editor_.chkUniqueBackup);
  chkUniqueBackup->Enable(editor_.chkUniqueBackupEnabled);
  setNote(lblUniqueBackupNote, wxString::FromUTF8(editor_.uniqueBackupNote));
  chkNamesAsListed->SetValue(editor_.chkNamesAsListed);
  chkCreateZip->SetValue(editor_.chkCreateZip);
  chkSplitZip->SetValue(editor_.chkSplitZip);
  ShowText(txtZipSpanSize, wxString::FromUTF8(editor_.txtZipSpanSize));
  setNote(lblSpanSizeNote, wxString::FromUTF8(editor_.spanSizeNote));
  chkZipSelfExtract->SetValue(editor_.chkZipSelfExtract);
  ShowText(txtZipPassword, wxString::FromUTF8(editor_.txtZipPassword));
  setNote(lblPasswordNote, wxString::FromUTF8(editor_.passwordNote));
  for (wxWindow* const control :
       std::initializer_list<wxWindow*>{chkSplitZip, lblZipSpanSize, txtZipSpanSize, lblZipSpanUnit,
                                        chkZipSelfExtract, lblZipPassword, txtZipPassword})
    control->Enable(editor_.archiveOptionsEnabled);
  for (std::size_t box = 0; box < txtRun.size(); ++box) {
    ShowText(txtRun[box], wxString::FromUTF8(editor_.txtRun[box]));
    if (lblRunNote[box]) setNote(lblRunNote[box], wxString::FromUTF8(editor_.runNote[box]));
  }
  cmdRemoveCopy->Enable(lstZipCopies->GetSelection() != wxNOT_FOUND);
}

}  // namespace quillmoor
