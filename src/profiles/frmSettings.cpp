#include "profiles/frmSettings.h"

#include <wx/dateevt.h>

#include <algorithm>
#include <initializer_list>
#include <utility>

#include "base/ErrorGuard.h"
#include "connectivity/modProcessPriority.h"
#include "controls/AccessibleName.h"
#include "controls/TimePicker.h"
#include "controls/WindowPrompts.h"
#include "profiles/ScheduleText.h"

namespace quillmoor {
namespace {

constexpr int kLastPosition = static_cast<int>(modProcessPriority::kClasses.size());

}  // namespace

frmSettings::frmSettings(wxWindow* parent, Sources sources)
    : ScrolledForm(parent, "frmSettings"),
      sources_(std::move(sources)),
      dialUp_(*sources_.dialUp, sources_.settings),
      editor_(sources_.settings, dialUp_, prompts()) {
  layOutSchedule();
  layOutConnection();
  layOutDialUp();
  layOutExtensions();
  layOutProgram();
  finish();
  fillConnections();
  showExtensions();
  show();
  connect();
  startTimers();
}

UserPrompts& frmSettings::prompts() {
  if (!sources_.prompts) sources_.prompts = std::make_unique<WindowPrompts>(this);
  return *sources_.prompts;
}

/// A label that the program updates, of fixed size.
wxStaticText* frmSettings::status(const char* name) {
  wxStaticText* const made = label(" ", wxST_NO_AUTORESIZE | wxST_ELLIPSIZE_END, name);
  made->SetMinSize({GetTextExtent("0").x * 12, -1});
  return made;
}

void frmSettings::layOutSchedule() {
  beginGroup("Schedule");
  wxStaticText* const start = caption("&Start at:");
  dtpStartTime = new TimePicker(group(), "dtpStartTime");
  dtpStartTime->SetToolTip("The hour and the minute at which a backup starts; the seconds are ignored");
  SetLabelFor(*start, *dtpStartTime);
  addRow(start, dtpStartTime, Width::own);
  wxStaticText* const now = caption("Time now:");
  lblTimeNow = status("lblTimeNow");
  addRow(now, lblTimeNow, Width::rest);
  for (std::size_t day = 1; day < chkDay.size(); ++day)
    chkDay[day] = checkBox(kWeekdayNames.at(day), wxString("chk") + kWeekdayNames.at(day));
  addColumns({chkDay.begin() + 1, chkDay.end()});
  lblSchedule = addNote("");
  addNote("A change of the days takes effect at the next start of the program, a new time at once.");
}

void frmSettings::layOutConnection() {
  beginGroup("Connection");
  wxStaticText* const lan = caption("Local network:");
  lblLANstatus = status("lblLANstatus");
  addRow(lan, lblLANstatus, Width::rest);
  wxStaticText* const attempts = caption("A&ttempts:");
  txtRetryCount = textBox(8, "txtRetryCount",
                          "A number: how often each step on the server is tried before it is skipped");
  SetLabelFor(*attempts, *txtRetryCount);
  addRow(attempts, txtRetryCount, Width::own);
  lblRetryCountNote = addNote("", indent());
  wxStaticText* const delay = caption("Dela&y:");
  txtConnectionDelay =
      textBox(8, "txtConnectionDelay", "A number of seconds between two attempts to connect");
  SetLabelFor(*delay, *txtConnectionDelay);
  SetAccessibleName(*txtConnectionDelay, "Delay, in seconds");
  addRow(delay, txtConnectionDelay, Width::own, {label("seconds")});
  lblConnectionDelayNote = addNote("", indent());
  wxStaticText* const logins = caption("L&ogin attempts:");
  txtLoginAttempts = textBox(8, "txtLoginAttempts",
                             "A number from 1 to 99: how often a profile may be refused its login before the "
                             "next profile has its turn. 0: there is no limit");
  SetLabelFor(*logins, *txtLoginAttempts);
  SetAccessibleName(*txtLoginAttempts, "Login attempts of a profile, 0 for no limit");
  addRow(logins, txtLoginAttempts, Width::own, {label("0: no limit")});
  lblLoginAttemptsNote = addNote("", indent());
}

void frmSettings::layOutDialUp() {
  beginGroup("Dial-up");
  wxStaticText* const entry = caption("&Entry:");
  cboConnections = new wxChoice(group(), wxID_ANY, wxDefaultPosition, wxDefaultSize, 0, nullptr, 0,
                                wxDefaultValidator, "cboConnections");
  cboConnections->SetMinSize({GetTextExtent("0").x * 24, -1});
  cboConnections->SetToolTip("The dial-up connections that this computer knows");
  SetLabelFor(*entry, *cboConnections);
  chkAutoDial =
      checkBox("Dial &before a backup", "chkAutoDial",
               "Leave this off on a computer that has a network of its own: a run would wait for the "
               "dial-up connection");
  chkAutoHangUp =
      checkBox("Hang up a&fter a backup", "chkAutoHangUp", "Also a connection that was there before");
  wxStaticText* const state = caption("Status:");
  lblRasStatus = status("lblRasStatus");
  cmdDial = button("&Dial", "cmdDial");
  cmdHangUp = button("&Hang Up", "cmdHangUp");
  addRow(entry, cboConnections, Width::own);
  add(chkAutoDial);
  add(chkAutoHangUp);
  addRow(state, lblRasStatus, Width::rest, {cmdDial, cmdHangUp});
}

void frmSettings::layOutExtensions() {
  beginGroup("Files transferred as text");
  lstExtensions = new wxListBox(group(), wxID_ANY, wxDefaultPosition, wxDefaultSize, 0, nullptr,
                                wxLB_SINGLE | wxLB_HSCROLL, wxDefaultValidator, "lstExtensions");
  lstExtensions->SetMinSize(FromDIP(wxSize(100, 130)));
  SetAccessibleName(*lstExtensions, "Extensions of files transferred as text");
  wxStaticText* const extension = label("Ne&w extension:");
  txtExtension = textBox(14, "txtExtension", "One extension, such as .txt", wxTE_PROCESS_ENTER);
  txtExtension->SetHint(".txt");
  SetLabelFor(*extension, *txtExtension);
  cmdAddExtension = button("&Add", "cmdAddExtension");
  cmdRemoveExtension =
      button("&Remove", "cmdRemoveExtension", "Removes the selected extension from the list");
  cmdRestoreExtensions = button("Restore Defau&lt", "cmdRestoreExtensions", "Restores the default list");
  auto* const side = new wxBoxSizer(wxVERTICAL);
  side->Add(extension);
  for (wxWindow* const control : std::initializer_list<wxWindow*>{txtExtension, cmdAddExtension,
                                                                  cmdRemoveExtension, cmdRestoreExtensions})
    side->Add(control, wxSizerFlags().Expand().Border(wxTOP, gap()));
  auto* const row = new wxBoxSizer(wxHORIZONTAL);
  row->Add(lstExtensions, wxSizerFlags(1).Expand());
  row->Add(side, wxSizerFlags().Border(wxLEFT, gap()));
  add(row);
  addNote(
      "Their line ends become those of this computer. All other files are transferred byte by byte. "
      "A change of the list takes effect at the next start of the program.");
}

void frmSettings::layOutProgram() {
  beginGroup("Program");
  chkAutoStartUp = checkBox("Start the program when I log &in", "chkAutoStartUp",
                            "It has to be running when a backup is due");
  add(chkAutoStartUp);
  lblAutoStartNote = addNote("", indent());
  wxStaticText* const priority = caption("&Priority:");
  SliderlPriority =
      new wxSlider(group(), wxID_ANY, modProcessPriority::ClassToPosition(modProcessPriority::kNormalClass),
                   1, kLastPosition, wxDefaultPosition, wxDefaultSize, wxSL_HORIZONTAL | wxSL_AUTOTICKS,
                   wxDefaultValidator, "SliderlPriority");
  SliderlPriority->SetMinSize(FromDIP(wxSize(160, -1)));
  SliderlPriority->SetToolTip(
      "How much of the computer's time the program may claim, also while it backs up. \"Normal\" is right "
      "for "
      "nearly everyone");
  SetLabelFor(*priority, *SliderlPriority);
  lblPriority = status("lblPriority");
  int widest = lblPriority->GetMinSize().x;
  for (const auto& each : modProcessPriority::kClasses)
    widest = std::max(widest, GetTextExtent(wxString::FromUTF8(std::string(each.name))).x);
  lblPriority->SetMinSize({widest, -1});
  addRow(priority, SliderlPriority, Width::own, {lblPriority});
  cmdResetLayout = button("Put Panes Bac&k", "cmdResetLayout", "Puts all panes behind one row of tabs again");
  add(cmdResetLayout);
}

void frmSettings::fillConnections() {
  const DialUpPanel::EntryList entries = dialUp_.LoadEntries();
  for (const std::string& name : entries.names) cboConnections->Append(wxString::FromUTF8(name));
  if (entries.selected) cboConnections->SetSelection(static_cast<int>(*entries.selected));
}

template <class Event>
void frmSettings::on(wxWindow* control, const wxEventTypeTag<Event>& event, std::function<void()> change) {
  control->Bind(event, [this, change = std::move(change)](Event&) {
    change();
    show();
  });
}

void frmSettings::connect() {
  on(dtpStartTime, wxEVT_TIME_CHANGED, [this] { setStartTime(); });
  for (std::size_t day = 1; day < chkDay.size(); ++day)
    on(chkDay[day], wxEVT_CHECKBOX, [this, day] { editor_.SetDay(day, chkDay[day]->GetValue()); });
  on(txtRetryCount, wxEVT_TEXT, [this] { editor_.SetRetryCount(TextOf(*txtRetryCount)); });
  on(txtConnectionDelay, wxEVT_TEXT, [this] { editor_.SetConnectionDelay(TextOf(*txtConnectionDelay)); });
  on(txtLoginAttempts, wxEVT_TEXT, [this] { editor_.SetLoginAttempts(TextOf(*txtLoginAttempts)); });
  on(cboConnections, wxEVT_CHOICE,
     [this] { editor_.ChooseDialUpEntry(cboConnections->GetStringSelection().utf8_string()); });
  on(chkAutoDial, wxEVT_CHECKBOX, [this] { editor_.SetAutoDial(chkAutoDial->GetValue()); });
  on(chkAutoHangUp, wxEVT_CHECKBOX, [this] { editor_.SetAutoHangUp(chkAutoHangUp->GetValue()); });
  on(cmdDial, wxEVT_BUTTON, [this] { dialUp_.Dial(); });
  on(cmdHangUp, wxEVT_BUTTON, [this] { dialUp_.HangUp(); });
  on(lstExtensions, wxEVT_LISTBOX, [] {});
  on(txtExtension, wxEVT_TEXT, [this] { editor_.txtExtension = TextOf(*txtExtension); });
  on(txtExtension, wxEVT_TEXT_ENTER, [this] { addExtension(); });
  on(cmdAddExtension, wxEVT_BUTTON, [this] { addExtension(); });
  on(cmdRemoveExtension, wxEVT_BUTTON, [this] { removeExtension(); });
  on(cmdRestoreExtensions, wxEVT_BUTTON, [this] {
    editor_.RestoreExtensions();
    showExtensions();
  });
  on(chkAutoStartUp, wxEVT_CHECKBOX, [this] { editor_.SetAutoStartUp(chkAutoStartUp->GetValue()); });
  // Only at the end of a drag: on its way the slider must not set the realtime class.
  on(SliderlPriority, wxEVT_SCROLL_CHANGED, [this] { editor_.MovePriority(SliderlPriority->GetValue()); });
  on(cmdResetLayout, wxEVT_BUTTON, [this] {
    if (onResetLayout) onResetLayout();
  });
}

void frmSettings::startTimers() {
  // The component handles events of a dial only when it is asked for its state.
  tmrOnlineStatus.begin(
      this, kTmrOnlineStatus, [this] { tmrOnlineStatus_Timer(); },
      [this] { return sources_.dialUp->Busy(); });
  tmrLANstatus.begin(this, kTmrLANstatus, [this] { tmrLANstatus_Timer(); });
  tmrTimeNow.begin(this, kTmrTimeNow, [this] { tmrTimeNow_Timer(); });
  tmrLANstatus_Timer();
  tmrTimeNow_Timer();
}

void frmSettings::setStartTime() {
  int hour = 0, minute = 0, second = 0;
  if (dtpStartTime->GetTime(&hour, &minute, &second)) editor_.SetStartTime(hour, minute);
}

void frmSettings::addExtension() {
  editor_.AddExtension();
  showExtensions();
  ShowText(txtExtension, wxString::FromUTF8(editor_.txtExtension));
  const int added = lstExtensions->FindString(txtExtension->GetValue(), true);
  if (added != wxNOT_FOUND) lstExtensions->SetSelection(added);
  txtExtension->SetFocus();
  txtExtension->SelectAll();
}

void frmSettings::removeExtension() {
  editor_.RemoveExtension(SelectionOf(*lstExtensions));
  showExtensions();
  // The button is about to be disabled: the next key must not reach the one after it.
  if (lstExtensions->IsEmpty()) txtExtension->SetFocus();
}

void frmSettings::showExtensions() {
  ShowItems(*lstExtensions, editor_.lstExtensions);
}

void frmSettings::show() {
  showStartTime();
  for (std::size_t day = 1; day < chkDay.size(); ++day) chkDay[day]->SetValue(editor_.days[day]);
  ShowText(txtRetryCount, wxString::FromUTF8(editor_.txtRetryCount));
  ShowText(txtConnectionDelay, wxString::FromUTF8(editor_.txtConnectionDelay));
  setNote(lblRetryCountNote, wxString::FromUTF8(editor_.retryCountNote));
  ShowText(txtLoginAttempts, wxString::FromUTF8(editor_.txtLoginAttempts));
  setNote(lblConnectionDelayNote, wxString::FromUTF8(editor_.connectionDelayNote));
  setNote(lblLoginAttemptsNote, wxString::FromUTF8(editor_.loginAttemptsNote));
  chkAutoDial->SetValue(editor_.chkAutoDial);
  chkAutoHangUp->SetValue(editor_.chkAutoHangUp);
  cmdRemoveExtension->Enable(lstExtensions->GetSelection() != wxNOT_FOUND);
  chkAutoStartUp->SetValue(editor_.chkAutoStartUp);
  const std::string& problem = editor_.autoStartUpNote;
  setNote(lblAutoStartNote, wxString::FromUTF8(problem.empty() ? "" : "Could not be set:\n" + problem));
  showPriority();
  showDialUp();
}

/// A picker that shows this time already is not set: the user may be typing in it.
void frmSettings::showStartTime() {
  int hour = 0, minute = 0, second = 0;
  if (dtpStartTime->GetTime(&hour, &minute, &second) && hour == editor_.startHour &&
      minute == editor_.startMinute)
    return;
  dtpStartTime->SetTime(editor_.startHour, editor_.startMinute, 0);
}

/// The slider is not moved for a class that is not on it.
void frmSettings::showPriority() {
  if (editor_.priorityPosition <= kLastPosition) SliderlPriority->SetValue(editor_.priorityPosition);
  ShowText(lblPriority, wxString::FromUTF8(editor_.lblPriority));
}

void frmSettings::showDialUp() {
  ShowText(lblRasStatus, wxString::FromUTF8(dialUp_.lblRasStatus));
  cmdDial->Enable(dialUp_.cmdDialEnabled);
  cmdHangUp->Enable(dialUp_.cmdHangUpEnabled);
}

void frmSettings::showAutostartProblem(const std::string& problem) {
  editor_.autoStartUpNote = problem;
  show();
}

void frmSettings::tmrOnlineStatus_Timer() {
  dialUp_.RefreshStatus();
  showDialUp();
}

void frmSettings::tmrLANstatus_Timer() {
  ShowText(lblLANstatus, IsLanConnected(sources_.network) ? "Connected" : "Not Connected");
  refillConnections();
}

void frmSettings::tmrTimeNow_Timer() {
  ShowText(lblTimeNow, wxString::FromUTF8(ClockText(sources_.now())));
  const ApplicationSettings& settings = sources_.settings;
  const std::string inForce =
      ScheduleText(sources_.ScheduleDays, settings.ScheduleHour, settings.ScheduleMinute);
  setNote(lblSchedule, wxString::FromUTF8("In force: " + inForce));
}

/// The system may not have listed its connections when the form was loaded, which does not wait for them.
void frmSettings::refillConnections() {
  if (cboConnections->GetCount() != 0) return;
  Guarded([&] {
    for (const std::string& name : sources_.dialUp->Entries())
      cboConnections->Append(wxString::FromUTF8(name));
    const wxString chosen = wxString::FromUTF8(sources_.settings.AutoDialUpConnection);
    cboConnections->SetSelection(cboConnections->FindString(chosen, true));
  });
}

void frmSettings::wake() {
  refillConnections();
  tmrOnlineStatus.wake();
  tmrLANstatus.wake();
  tmrTimeNow.wake();
}

void frmSettings::unload() {
  tmrOnlineStatus.Stop();
  tmrLANstatus.Stop();
  tmrTimeNow.Stop();
  editor_.Save();
}

}  // namespace quillmoor
