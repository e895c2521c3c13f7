#include "engine/frmProcess.h"

#include <wx/msgdlg.h>
#include <wx/settings.h>
#include <wx/sizer.h>
#include <wx/splitter.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <initializer_list>
#include <utility>

#include "controls/AccessibleName.h"
#include "controls/Pictures.h"
#include "controls/QuickPaint.h"
#include "controls/WxColours.h"
#include "engine/LogColours.h"
#include "engine/ShownText.h"
#include "platform/system/ProgramFolder.h"

namespace quillmoor {
namespace {

// Device-independent pixels.
constexpr int kGap = 6;  // between controls
constexpr int kLowestLog = 40;
constexpr int kReportHeight = 105;  // initially; the log has the rest
constexpr int kShowFiguresEvery =
    LogView::kShowEvery;  // milliseconds; as the log, so that both are drawn together

const std::vector<ReportControl::Column>& reportColumns() {
  static const std::vector<ReportControl::Column> columns = [] {
    constexpr int widths[kReportColumns] = {150, 130, 130, 90, 70, 60, 90};
    constexpr bool right[kReportColumns] = {false, false, false, false, true, true, true};
    std::vector<ReportControl::Column> all;
    for (std::size_t i = 0; i < kReportColumns; ++i) all.push_back({kReportCaptions[i], widths[i], right[i]});
    return all;
  }();
  return columns;
}

/// The number in a text with thousands separators; 0 without digits.
double countIn(const std::string& text) {
  std::string digits;
  std::copy_if(text.begin(), text.end(), std::back_inserter(digits),
               [](unsigned char c) { return std::isdigit(c) != 0; });
  return std::strtod(digits.c_str(), nullptr);
}

void setText(wxStaticText* label, const wxString& text) {
  const wxString plain = wxControl::EscapeMnemonics(text);
  if (label->GetLabel() != plain) label->SetLabel(plain);
}

}  // namespace

frmProcess::frmProcess(wxWindow* parent, MachineServices& services, EventPump& pump)
    : wxPanel(parent, wxID_ANY, wxDefaultPosition, wxDefaultSize, wxTAB_TRAVERSAL, "frmProcess"),
      services_(services),
      pump_(pump) {
  layOut();
  cmdStop->Disable();
  cmdStart->Enable();
  pbProgress->SetMin(0);
  pbProgress->SetMax(100);
  controller_ = std::make_unique<RunController>(services_.forRun(*this));
  Animation1->Open(ProgramFolder() + "Server.avi");
  for (wxWindow* const often :
       std::initializer_list<wxWindow*>{Animation1, pbProgress, rtfLog, wndReportControl})
    PaintQuickly(*often);

  cmdStart->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) { cmdStart_Click(); });
  cmdShowFailure->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) { cmdShowFailure_Click(); });
  cmdStop->Bind(wxEVT_BUTTON, [this](wxCommandEvent&) { cmdStop_Click(); });
  TimerStartBackup.Bind(wxEVT_TIMER, [this](wxTimerEvent&) { TimerStartBackup_Timer(); });
  tmrFigures_.Bind(wxEVT_TIMER, [this](wxTimerEvent&) { showFigures(); });
  tmrFtpStatus.begin(this, kTmrFtpStatus, [this] { tmrFtpStatus_Timer(); });
}

frmProcess::~frmProcess() = default;

void frmProcess::layOut() {
  auto* const all = new wxBoxSizer(wxVERTICAL);
  const int gap = FromDIP(kGap);
  all->Add(layOutHead(), wxSizerFlags().Expand().Border(wxALL, gap));
  pbProgress = new xpProgressBar(this);
  pbProgress->SetShowText(true);
  all->Add(pbProgress, wxSizerFlags().Expand().Border(wxLEFT | wxRIGHT, gap));
  all->Add(layOutFigures(), wxSizerFlags().Expand().Border(wxALL, gap));

  auto* const halves = new wxSplitterWindow(this, wxID_ANY, wxDefaultPosition, wxDefaultSize,
                                            wxSP_LIVE_UPDATE | wxSP_NO_XP_THEME);
  halves->SetMinimumPaneSize(FromDIP(kLowestLog));
  halves->SetSashGravity(1);
  rtfLog = new LogView(halves, log_, "rtfLog", "Log of the backup run");
  wndReportControl = new ReportControl(halves, reportColumns(), "Profiles of the backup runs");
  halves->SplitHorizontally(rtfLog, wndReportControl);
  // Part of each half is visible even in the lowest window.
  rtfLog->SetMinSize(FromDIP(wxSize(kLowestLog, kLowestLog)));
  halves->SetMinSize({-1, rtfLog->GetMinHeight() + halves->GetSashSize() + wndReportControl->GetMinHeight()});
  // Before the pane is first shown its height is too small to divide.
  const int report = std::max(FromDIP(kReportHeight), 6 * GetCharHeight());
  halves->Bind(wxEVT_SIZE, [halves, report, placed = false](wxSizeEvent& event) mutable {
    event.Skip();
    if (placed || event.GetSize().y < 2 * report) return;
    placed = true;
    halves->CallAfter([halves, report] { halves->SetSashPosition(-report); });
  });
  all->Add(halves, wxSizerFlags(1).Expand().Border(wxLEFT | wxRIGHT | wxBOTTOM, gap));
  all->Add(layOutNotice(), wxSizerFlags().Expand().Border(wxLEFT | wxRIGHT, gap));
  SetSizer(all);
}

wxSizer* frmProcess::layOutHead() {
  auto* const row = new wxBoxSizer(wxHORIZONTAL);
  const int gap = FromDIP(kGap);
  cmdStart = new wxButton(this, wxID_ANY, "&Start Now", wxDefaultPosition, wxDefaultSize, 0,
                          wxDefaultValidator, "cmdStart");
  cmdStop = new wxButton(this, wxID_ANY, "S&top", wxDefaultPosition, wxDefaultSize, 0, wxDefaultValidator,
                         "cmdStop");
  Animation1 = new AnimationPlayer(this);
  Animation1->SetMinSize(wxSize(gap, Animation1->GetBestSize().y));  // may shrink in a narrow pane
  picFtpConnected = new wxStaticBitmap(this, wxID_ANY, Picture("status/connected"));
  picFtpConnected->SetToolTip("Connected to the FTP server");
  picFtpConnected->Hide();
  picFtpDisonnected = new wxStaticBitmap(this, wxID_ANY, Picture("status/disconnected"));
  picFtpDisonnected->SetToolTip("Not connected to an FTP server");
  for (wxStaticBitmap* picture : {picFtpConnected, picFtpDisonnected})
    SetAccessibleName(*picture, picture->GetToolTipText(), AccessibleRole::picture);
  const wxSizerFlags centred = wxSizerFlags().CenterVertical();
  row->Add(cmdStart, centred);
  row->Add(cmdStop, wxSizerFlags(centred).Border(wxLEFT, gap));
  row->Add(Animation1, wxSizerFlags(1).CenterVertical().Border(wxLEFT | wxRIGHT, 2 * gap));
  row->Add(picFtpConnected, centred);
  row->Add(picFtpDisonnected, centred);
  return row;
}

wxSizer* frmProcess::layOutFigures() {
  auto* const row = new wxBoxSizer(wxHORIZONTAL);
  const auto label = [&](const char* name, long style, int characters) {
    auto* const text = new wxStaticText(this, wxID_ANY, "", wxDefaultPosition, wxDefaultSize,
                                        wxST_NO_AUTORESIZE | style, name);
    text->SetMinSize({GetTextExtent("0").x * characters, -1});
    return text;
  };
  lblFile = label("lblFile", wxST_ELLIPSIZE_MIDDLE, 8);
  lblFileSize = label("lblFileSize", wxALIGN_RIGHT, 14);
  lblRate = label("lblRate", wxALIGN_RIGHT, 16);
  row->Add(lblFile, wxSizerFlags(1).CenterVertical());
  row->Add(lblFileSize, wxSizerFlags().CenterVertical().Border(wxLEFT, FromDIP(kGap)));
  row->Add(lblRate, wxSizerFlags().CenterVertical().Border(wxLEFT, FromDIP(kGap)));
  return row;
}

wxSizer* frmProcess::layOutNotice() {
  auto* const row = new wxBoxSizer(wxHORIZONTAL);
  lblNotice = new wxStaticText(this, wxID_ANY, "", wxDefaultPosition, wxDefaultSize,
                               wxST_NO_AUTORESIZE | wxST_ELLIPSIZE_END, "lblNotice");
  lblNotice->SetMinSize({GetTextExtent("0").x * 8, -1});
  cmdShowFailure = new wxButton(this, wxID_ANY, "S&how", wxDefaultPosition, wxDefaultSize, 0,
                                wxDefaultValidator, "cmdShowFailure");
  cmdShowFailure->SetToolTip("Jumps to the first red line of this run in the log");
  const wxSizerFlags centred = wxSizerFlags().CenterVertical().Border(wxBOTTOM, FromDIP(kGap));
  row->Add(lblNotice, wxSizerFlags(centred).Proportion(1));
  row->Add(cmdShowFailure, wxSizerFlags(centred).Border(wxLEFT | wxBOTTOM, FromDIP(kGap)));
  lblNotice->Hide();
  cmdShowFailure->Hide();
  return row;
}

void frmProcess::showNotice(const std::string& text, std::optional<std::size_t> logLine) {
  failureLine_ = logLine.value_or(0);
  const wxColour background = GetBackgroundColour();
  lblNotice->SetForegroundColour(ToWx(ReadableOn(
      {log_colour::kError.red, log_colour::kError.green, log_colour::kError.blue}, FromWx(background))));
  setText(lblNotice, wxString::FromUTF8(ShownText(text)));
  lblNotice->SetToolTip(lblNotice->GetLabelText());
  lblNotice->Show(!text.empty());
  cmdShowFailure->Show(logLine.has_value());
  Layout();
}

void frmProcess::reportError(const std::string& line) {
  const std::size_t logLine = log_.firstLine() + log_.lineCount() - 1;
  setLogColour(log_colour::kError);
  insertLogText(line + "\r\n");
  showNotice(line, logLine);
}

/// Shows below the report what a finished run could not back up.
void frmProcess::showFailures(const std::vector<ProfileResult>& results) {
  const std::string notice = FailureNotice(results);
  if (notice.empty()) return;
  for (std::size_t line = std::max(firstLine_, log_.firstLine()); line < log_.firstLine() + log_.lineCount();
       ++line) {
    // "Skipped: " is red, too, but is not a failure.
    const LogLine& logged = log_.line(line - log_.firstLine());
    const bool red = !logged.runs.empty() && logged.runs.front().colour == log_colour::kError;
    if (red && !logged.text.starts_with("Skipped: ")) return showNotice(notice, line);
  }
  showNotice(notice);
}

void frmProcess::cmdShowFailure_Click() {
  rtfLog->showLine(failureLine_);
  rtfLog->SetFocus();
}

void frmProcess::cmdStart_Click() {
  startHadFocus_ = FindFocus() == cmdStart;
  cmdStart->Disable();
  startBackup();
  reopenAnimation();
}

void frmProcess::reopenAnimation() {
  Animation1->Open(ProgramFolder() + "Server.avi");
  Animation1->Play();
}

void frmProcess::cmdStop_Click() {
  if (asking_) return;
  asking_ = true;
  wxMessageDialog box(this, "Are you sure you want to stop the current backup process", "Warrning",
                      wxYES_NO | wxCANCEL | wxCANCEL_DEFAULT | wxICON_ERROR);
  const int answer = box.ShowModal();
  asking_ = false;
  if (answer != wxID_YES) return;
  stopConfirmed_ = true;
  controller_->Stop();
  Animation1->Stop();
}

void frmProcess::startBackup() {
  waitingTicks_ = 0;
  TimerStartBackup.Start(kTimerStartBackup);
}

void frmProcess::TimerStartBackup_Timer() {
  // A stopped run may still be unwinding further up the stack: the next tick tests again.
  if (controller_->active()) return;
  if (mustWait && mustWait()) {
    if (++waitingTicks_ == kReportWaitingAfter && onWaiting) onWaiting();
    return;
  }
  TimerStartBackup.Stop();
  stopConfirmed_ = false;
  firstRow_ = wndReportControl->rowCount();
  firstLine_ = log_.firstLine() + log_.lineCount() - 1;
  showNotice("");
  if (!Animation1->IsPlaying()) reopenAnimation();
  std::vector<ProfileResult> results;
  try {
    results = controller_->RunBackup();
  } catch (const ProgramEnding&) {
    return;
  }
  Animation1->Stop();
  figures_ = Figures();
  figures_.changed = true;
  showFigures();
  showFailures(results);
  if (onFinished) onFinished(outcome(std::move(results)));
}

frmProcess::Outcome frmProcess::outcome(std::vector<ProfileResult> results) const {
  Outcome all{std::move(results), stopConfirmed_, 0, controller_->refused()};
  for (std::size_t row = firstRow_; row < wndReportControl->rowCount(); ++row)
    all.files += countIn(wndReportControl->item(row, static_cast<std::size_t>(ReportColumn::files)));
  return all;
}

void frmProcess::tmrFtpStatus_Timer() {
  const bool connected = controller_->ftpState() == FtpState::connected;
  if (picFtpConnected->IsShown() == connected) return;
  picFtpConnected->Show(connected);
  picFtpDisonnected->Show(!connected);
  Layout();
}

void frmProcess::unload() {
  if (controller_->ftpState() == FtpState::connected) controller_->Stop();
  services_.webRequest().abort();
  Animation1->Stop();
  TimerStartBackup.Stop();
  tmrOnlineLogin.Stop();
  tmrFtpStatus.Stop();
  tmrFigures_.Stop();
}

void frmProcess::figuresChanged() {
  figures_.changed = true;
  if (!tmrFigures_.IsRunning()) tmrFigures_.StartOnce(kShowFiguresEvery);
}

void frmProcess::showFigures() {
  if (!std::exchange(figures_.changed, false)) return;
  pbProgress->SetValue(figures_.percent);
  setText(lblFile, wxString::FromUTF8(ShownText(figures_.file)));
  setText(lblFileSize, wxString::FromUTF8(figures_.size));
  setText(lblRate, wxString::FromUTF8(figures_.rate));
  wndReportControl->populate();
  if (onProgress && controller_->active()) {  // also after a Stop, until the run is unwound
    const std::size_t rows = wndReportControl->rowCount();
    onProgress({rows > firstRow_ ? wndReportControl->item(rows - 1, 0) : std::string(), figures_.percent});
  }
}

void frmProcess::setLogColour(Colour colour) {
  if (colour.buttonFace) {
    const wxColour face = wxSystemSettings::GetColour(wxSYS_COLOUR_BTNFACE);
    colour = {face.Red(), face.Green(), face.Blue()};
  }
  log_.setColour(colour);
}

void frmProcess::insertLogText(std::string_view text) {
  log_.append(text);
  rtfLog->logChanged();
}

void frmProcess::showCurrentFile(const std::string& remoteFile) {
  figures_.file = remoteFile;
  figuresChanged();
}

void frmProcess::showProgress(int percent) {
  figures_.percent = percent;
  figuresChanged();
}

void frmProcess::showRate(const std::string& text) {
  figures_.rate = text;
  figuresChanged();
}

void frmProcess::showFileSize(const std::string& text) {
  figures_.size = text;
  figuresChanged();
}

std::size_t frmProcess::addReportRow() {
  return wndReportControl->addRow();
}

void frmProcess::setReportItem(std::size_t row, ReportColumn column, const std::string& text) {
  wndReportControl->setItem(row, static_cast<std::size_t>(column), text);
  figuresChanged();
}

void frmProcess::setReportColour(std::size_t row, ReportColumn column, Colour colour) {
  wndReportControl->setItemColour(row, static_cast<std::size_t>(column), colour);
  figuresChanged();
}

void frmProcess::showBusyCursor(bool busy) {
  SetCursor(busy ? *wxHOURGLASS_CURSOR : wxNullCursor);
}

void frmProcess::showRunning(bool running) {
  // Disabling the button that has the focus would leave the keyboard without a target.
  const wxWindow* const focus = FindFocus();
  const bool moveFocus = std::exchange(startHadFocus_, false) || focus == cmdStart || focus == cmdStop;
  cmdStart->Enable(!running);
  cmdStop->Enable(running);
  if (moveFocus) (running ? cmdStop : cmdStart)->SetFocus();
}

}  // namespace quillmoor
