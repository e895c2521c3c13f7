#include "profiles/SiteFields.h"

#include <algorithm>
#include <utility>

#include "controls/AccessibleName.h"
#include "controls/Pictures.h"
#include "profiles/ProfileHints.h"

namespace quillmoor {
namespace {

constexpr int kNumberDigits = 7;
constexpr int kTextDigits = 14;    // minimum width of a box
constexpr int kFolderLines = 120;  // height of the folder list, device-independent pixels

wxString fromUtf8(std::string_view text) {
  return wxString::FromUTF8(text.data(), text.size());
}

}  // namespace

SiteFields::SiteFields(wxWindow* parent, SiteProfileEditor& editor, const ApplicationSettings& settings)
    : ScrolledForm(parent, "SiteFields"), editor_(editor), settings_(settings) {
  layOutSite();
  layOutFolders();
  layOutConnection();
  layOutProxy();
  layOutActions();
  finish();
  show();
}

wxSizerItem* SiteFields::addText(std::string_view key, const char* captionText, Size size, long style,
                                 const std::function<wxWindow*()>& after) {
  const wxString tip = fromUtf8(FieldHint(key));
  const bool number = size == Size::number;
  wxStaticText* const label = caption(captionText);
  const wxString name = key == "name" ? wxString("txtName") : "txt" + fromUtf8(key);
  wxTextCtrl* const text = textBox(number ? kNumberDigits : kTextDigits, name, tip, style);
  SetLabelFor(*label, *text);
  const Width width = number ? Width::own : Width::rest;
  wxSizerItem* const row = after ? addRow(label, text, width, {after()}) : addRow(label, text, width);
  const auto value = key == "name" ? &SiteProfile::name : FieldOf(key)->text();
  texts_.push_back({key, value, label, text, addNote("")});
  text->Bind(wxEVT_TEXT, [this, text, value](wxCommandEvent&) {
    change([&] { editor_.shown.*value = text->GetValue().utf8_string(); });
  });
  selectsAll(text);
  return row;
}

template <std::size_t count>
wxChoice* SiteFields::addChoice(std::string_view key, const char* captionText,
                                const std::array<const char*, count>& texts) {
  wxStaticText* const label = caption(captionText);
  auto* const choice = new wxChoice(group(), wxID_ANY, wxDefaultPosition, wxDefaultSize, 0, nullptr, 0,
                                    wxDefaultValidator, "cbo" + fromUtf8(key));
  for (const char* const text : texts) choice->Append(text);
  choice->SetToolTip(fromUtf8(FieldHint(key)));
  SetLabelFor(*label, *choice);
  addRow(label, choice, Width::own);
  return choice;
}

wxCheckBox* SiteFields::addCheck(std::string_view key, const char* captionText) {
  wxCheckBox* const check = checkBox(captionText, "chk" + fromUtf8(key), fromUtf8(FieldHint(key)));
  add(check);
  const auto flag = FieldOf(key)->number();
  checks_.push_back({flag, check});
  check->Bind(wxEVT_CHECKBOX, [this, check, flag](wxCommandEvent&) {
    change([&] { editor_.shown.*flag = check->GetValue() ? 1 : 0; });
  });
  return check;
}

wxButton* SiteFields::buttonOf(const char* captionText, const char* name, const char* accessibleName,
                               std::function<void()> command) {
  wxButton* const made = button(captionText, name);
  SetAccessibleName(*made, accessibleName);
  made->Bind(wxEVT_BUTTON, [this, command = std::move(command)](wxCommandEvent&) { change(command); });
  return made;
}

void SiteFields::layOutSite() {
  beginGroup("Site");
  addText("name", "&Name:", Size::rest);
  addText("Host", "&Host:", Size::rest);
  addText("Port", "&Port:", Size::number);
  cboSecurity = addChoice("Security", "Security:", kSecurityTypes);
  cboSecurity->Bind(wxEVT_CHOICE, [this](wxCommandEvent&) {
    change([&] { editor_.ChooseSecurity(cboSecurity->GetSelection()); });
  });
  lblSecurityNote = addNote("");
  certificate_ = addText("Certificate", "Certificate:", Size::rest, wxTE_READONLY, [this] {
    return cmdForgetCertificate = buttonOf("Forget", "cmdForgetCertificate", "Certificate: Forget", [this] {
             editor_.shown.Certificate.clear();
             cboSecurity->SetFocus();  // the button is hidden
           });
  });
  addText("UserID", "&User ID:", Size::rest);
  addText("Password", "Pass&word:", Size::rest, wxTE_PASSWORD);
  chkStatus = addCheck("Status", "Acti&ve: backup runs take this profile");
  box("Host")->SetHint("ftp.example.org");
}

void SiteFields::layOutFolders() {
  beginGroup("Folders");
  addText("SaveTo", "Save &to:", Size::rest, 0, [this] {
    return cmdBrowseSaveTo = buttonOf("&Browse...", "cmdBrowseSaveTo", "Save to: Browse",
                                      [this] { editor_.BrowseSaveTo(); });
  });
  const std::vector<ReportControl::Column> columns = {{"Name", wxCOL_WIDTH_AUTOSIZE, false, true}};
  lvwFolders = new ReportControl(group(), columns, "Folders of the server to back up", wxDV_MULTIPLE);
  lvwFolders->SetName("lvwFolders");
  lvwFolders->SetMinSize(FromDIP(wxSize(120, kFolderLines)));
  lvwFolders->setEmptyLines({kNoFolders.begin(), kNoFolders.end()});
  cmdConnect = button("C&onnect", "cmdConnect", "Shows the folders of the server, to tick those to back up");
  txtAddFolder = textBox(kNumberDigits, "txtAddFolder", fromUtf8(FieldHint("Folders")), wxTE_PROCESS_ENTER);
  txtAddFolder->SetHint("/www");
  SetAccessibleName(*txtAddFolder, "Folder of the server to add");
  cmdAddFolder = button("Add &Folder", "cmdAddFolder", "Adds the text of the box to the list");
  cmdRemoveFolders = button("&Remove", "cmdRemoveFolders", "Removes the selected folders from the list");
  cmdClearFolders = button("&Clear", "cmdClearFolders", "Removes all folders from the list");
  auto* const list = new wxBoxSizer(wxHORIZONTAL);
  list->Add(lvwFolders, wxSizerFlags(1).Expand());
  add(list);
  auto* const row = new wxBoxSizer(wxHORIZONTAL);
  row->Add(cmdConnect, wxSizerFlags().CenterVertical().Border(wxRIGHT, 2 * gap()));
  row->Add(txtAddFolder, wxSizerFlags(1).CenterVertical());
  for (wxButton* const one : {cmdAddFolder, cmdRemoveFolders, cmdClearFolders})
    row->Add(one, wxSizerFlags().CenterVertical().Border(wxLEFT, gap()));
  add(row);

  cmdConnect->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) {
    if (onConnect) onConnect();
  });
  selectsAll(txtAddFolder);
  const auto addFolder = [this](wxCommandEvent&) {
    change([&] {
      editor_.txtAddFolder = txtAddFolder->GetValue().utf8_string();
      editor_.AddFolder();
      ShowText(txtAddFolder, fromUtf8(editor_.txtAddFolder));
    });
  };
  cmdAddFolder->Bind(wxEVT_BUTTON, addFolder);
  txtAddFolder->Bind(wxEVT_TEXT_ENTER, addFolder);
  const auto removeFolders = [this] { change([&] { editor_.RemoveFolders(lvwFolders->selectedRows()); }); };
  cmdRemoveFolders->Bind(wxEVT_BUTTON, [removeFolders](wxCommandEvent&) { removeFolders(); });
  lvwFolders->GetMainWindow()->Bind(wxEVT_KEY_DOWN, [removeFolders](wxKeyEvent& event) {
    if (event.GetKeyCode() != WXK_DELETE) return event.Skip();
    removeFolders();
  });
  cmdClearFolders->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) { change([&] { editor_.ClearFolders(); }); });
}

void SiteFields::layOutConnection() {
  beginGroup("Connection");
  addText("Account", "Account:", Size::rest);
  addText("DefaultDir", "Defau&lt folder:", Size::rest);
  addText("Timeout", "Ti&meout:", Size::number, 0, [this] { return label("seconds"); });
  chkPASV = addCheck("PASV", "Pass&ive mode");
  chkManualPort = addCheck("ManualPort", "Port ran&ge for active mode:");
  addText("MinData", "Lowest port:", Size::number);
  addText("MaxData", "Highest port:", Size::number);
}

void SiteFields::layOutProxy() {
  beginGroup("Proxy");
  cboProxyType = addChoice("ProxyType", "T&ype:", kProxyTypes);
  cboProxyType->Bind(wxEVT_CHOICE, [this](wxCommandEvent&) {
    change([&] { editor_.shown.ProxyType = cboProxyType->GetSelection(); });
  });
  addText("ProxyHost", "Proxy host:", Size::rest);
  addText("ProxyPort", "Proxy port:", Size::number);
  addText("ProxyUsername", "Proxy user name:", Size::rest);
  addText("ProxyPassword", "Proxy password:", Size::rest, wxTE_PASSWORD);
}

void SiteFields::layOutActions() {
  beginGroup("Before the run connects to the site");
  addText("RunProgram", "Run program:", Size::rest, 0, [this] {
    return cmdBrowseRunProgram = buttonOf("Brows&e...", "cmdBrowseRunProgram", "Run program: Browse",
                                          [this] { editor_.BrowseRunProgram(); });
  });
  addText("RunURL", "Run URL:", Size::rest);
  box("RunURL")->SetHint("http://www.example.org/export");
}

/// After the click that brought the focus has set the caret. Text typed meanwhile, as by a password manager,
/// is kept.
void SiteFields::selectsAll(wxTextCtrl* text) {
  text->Bind(wxEVT_SET_FOCUS, [text](wxFocusEvent& event) {
    event.Skip();
    text->CallAfter([text, before = text->GetValue()] {
      if (text->GetValue() == before) text->SelectAll();
    });
  });
}

const SiteFields::Text& SiteFields::textOf(std::string_view key) const {
  return *std::find_if(texts_.begin(), texts_.end(), [&](const Text& text) { return text.key == key; });
}

void SiteFields::change(const std::function<void()>& command) {
  command();
  show();
}

void SiteFields::show() {
  for (const Text& text : texts_) ShowText(text.box, fromUtf8(editor_.shown.*text.value));
  for (const auto& [flag, check] : checks_) check->SetValue(editor_.shown.*flag == 1);
  cboSecurity->SetSelection(editor_.shown.Security);
  cboProxyType->SetSelection(editor_.shown.ProxyType);
  showRow(certificate_, !editor_.shown.Certificate.empty());
  showFolders();
  showNotes();
  enableControls();
}

void SiteFields::showNotes() {
  setNote(lblSecurityNote, fromUtf8(editor_.securityNote()));
  for (const Text& text : texts_) {
    const bool password = text.key == "Password";
    setNote(text.note, fromUtf8(password ? editor_.passwordNote()
                                         : FieldNote(editor_.shown, text.key, settings_.NamesAsListed == 1)));
  }
}

void SiteFields::showFolders() {
  const std::vector<std::string>& folders = editor_.shown.Folders;
  if (folders == shownFolders_) return;
  const auto place = static_cast<std::size_t>(
      std::mismatch(shownFolders_.begin(), shownFolders_.end(), folders.begin(), folders.end()).first -
      shownFolders_.begin());  // of the first difference
  const bool grown = !shownFolders_.empty() && place == shownFolders_.size();
  const wxBitmapBundle folder = Picture("browser/FolderClose");
  if (!grown) lvwFolders->clear();
  for (std::size_t i = lvwFolders->rowCount(); i < folders.size(); ++i) {
    const std::size_t row = lvwFolders->addRow();
    lvwFolders->setItem(row, 0, folders[i]);
    lvwFolders->setItemPicture(row, 0, folder);
  }
  lvwFolders->populate(grown);
  // A refilled list is scrolled to its top: go back to where the rows were removed.
  const bool shrunk = folders.size() < shownFolders_.size();
  if (shrunk && !folders.empty())
    lvwFolders->EnsureVisible(lvwFolders->itemAt(std::min(place, folders.size() - 1)));
  shownFolders_ = folders;
}

void SiteFields::enableControls() {
  cmdConnect->Enable(editor_.connectEnabled());
  const ProxyBoxes proxy = editor_.proxyBoxesEnabled();
  const bool ports = editor_.portRangeEnabled();
  const struct {
    std::string_view key;
    bool enabled;
  } rules[] = {{"MinData", ports},
               {"MaxData", ports},
               {"ProxyHost", proxy.host},
               {"ProxyPort", proxy.port},
               {"ProxyUsername", proxy.username},
               {"ProxyPassword", proxy.password}};
  for (const auto& rule : rules) {
    box(rule.key)->Enable(rule.enabled);
    captionOf(rule.key)->Enable(rule.enabled);
  }
}

void SiteFields::putFocusOn(std::string_view key) {
  if (key.empty()) return;
  wxWindow* const field = key == "Folders"    ? static_cast<wxWindow*>(lvwFolders)
                          : key == "Security" ? static_cast<wxWindow*>(cboSecurity)
                                              : box(key);
  field->SetFocus();
  bringIntoView(field);
}

}  // namespace quillmoor
