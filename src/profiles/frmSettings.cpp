#include "profiles/frmSettings.h"

#include <wx/sizer.h>
#include <wx/statbox.h>

#include <algorithm>
#include <utility>

#include "connectivity/modProcessPriority.h"
#include "profiles/ScheduleText.h"

namespace quillmoor {
namespace {

void setText(wxStaticText* label, const std::string& text) {
  const wxString shown = wxString::FromUTF8(text);
  if (label->GetLabelText() != shown) label->SetLabelText(shown);
}

}  // namespace

frmSettings::frmSettings(wxWindow* parent, Sources sources)
    : wxPanel(parent, wxID_ANY, wxDefaultPosition, wxDefaultSize, wxTAB_TRAVERSAL, "frmSettings"),
      sources_(std::move(sources)),
      Ras1_(MakeDialUp(Pump())),  // no events in the middle of a tick: they may end the program
      dialUp_(*Ras1_, sources_.settings) {
  layOut();
  cmdResetLayout->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) {
    if (onResetLayout) onResetLayout();
  });
  tmrOnlineStatus.begin(this, kTmrOnlineStatus, [this] { tmrOnlineStatus_Timer(); });
  tmrLANstatus.begin(this, kTmrLANstatus, [this] { tmrLANstatus_Timer(); });
  tmrTimeNow.begin(this, kTmrTimeNow, [this] { tmrTimeNow_Timer(); });
}

void frmSettings::layOut() {
  const int gap = FromDIP(6);
  auto* const all = new wxBoxSizer(wxVERTICAL);
  const auto group = [&](const char* title) {
    auto* const box = new wxStaticBoxSizer(wxVERTICAL, this, title);
    auto* const grid = new wxFlexGridSizer(2, gap, 2 * gap);
    grid->AddGrowableCol(1);
    box->Add(grid, wxSizerFlags(1).Expand().Border(wxALL, gap));
    all->Add(box, wxSizerFlags().Expand().Border(wxALL, gap));
    return std::pair(box->GetStaticBox(), grid);
  };
  const auto row = [&](auto where, const char* caption, const char* name) {
    auto* const text = new wxStaticText(where.first, wxID_ANY, caption);
    text->SetMinSize({std::max(text->GetBestSize().x, FromDIP(150)), -1});
    auto* const value = new wxStaticText(where.first, wxID_ANY, " ", wxDefaultPosition, wxDefaultSize,
                                         wxST_NO_AUTORESIZE | wxST_ELLIPSIZE_END, name);
    where.second->Add(text);
    where.second->Add(value, wxSizerFlags().Expand());
    return value;
  };
  const auto network = group("Network");
  lblLANstatus = row(network, "Local network:", "lblLANstatus");
  lblRasStatus = row(network, "Dial-up:", "lblRasStatus");
  const auto schedule = group("Schedule");
  lblSchedule = row(schedule, "Backup:", "lblSchedule");
  lblTimeNow = row(schedule, "Time now:", "lblTimeNow");
  const auto program = group("Program");
  lblPriority = row(program, "Priority:", "lblPriority");
  setText(lblPriority, modProcessPriority::ClassName(sources_.settings.ProcessPriority));
  lblAutoStartUp = row(program, "Starts with the session:", "lblAutoStartUp");
  cmdResetLayout = new wxButton(this, wxID_ANY, "&Put Panes Back", wxDefaultPosition, wxDefaultSize, 0,
                                wxDefaultValidator, "cmdResetLayout");
  cmdResetLayout->SetToolTip("Puts all panes behind one row of tabs again");
  all->Add(cmdResetLayout, wxSizerFlags().Border(wxALL, gap));
  SetSizer(all);
}

void frmSettings::showAutostartProblem(const std::string& problem) {
  setText(lblAutoStartUp, !problem.empty()                     ? "Could not be set: " + problem
                          : sources_.settings.AutoStartUp == 1 ? "Yes"
                                                               : "No");
}

void frmSettings::tmrOnlineStatus_Timer() {
  dialUp_.RefreshStatus();
  setText(lblRasStatus, dialUp_.lblRasStatus);
}

void frmSettings::tmrLANstatus_Timer() {
  setText(lblLANstatus, IsLanConnected(sources_.network) ? "Connected" : "Not Connected");
}

void frmSettings::tmrTimeNow_Timer() {
  setText(lblTimeNow, ClockText(sources_.now()));
  const ApplicationSettings& settings = sources_.settings;
  setText(lblSchedule, ScheduleText(sources_.ScheduleDays, settings.ScheduleHour, settings.ScheduleMinute));
}

void frmSettings::wake() {
  tmrOnlineStatus.wake();
  tmrLANstatus.wake();
  tmrTimeNow.wake();
}

void frmSettings::unload() {
  tmrOnlineStatus.Stop();
  tmrLANstatus.Stop();
  tmrTimeNow.Stop();
}

}  // namespace quillmoor
