// The interface through which a backup run shows its progress.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

namespace quillmoor {

/// A colour of the log. `kButtonFace` is the system colour of that name, whatever its value.
struct Colour {
  std::uint8_t red = 0;
  std::uint8_t green = 0;
  std::uint8_t blue = 0;
  bool buttonFace = false;
  friend bool operator==(const Colour&, const Colour&) = default;
};
inline constexpr Colour kButtonFace{0, 0, 0, true};

/// Columns of the report, in the order they are shown.
enum class ReportColumn : std::size_t { profile, started, finished, status, files, errors, size };
inline constexpr std::size_t kReportColumns = 7;
inline constexpr const char* kReportCaptions[kReportColumns] = {"Profile", "Started", "Finished", "Status",
                                                                "Files",   "Errors",  "Size"};

/// Called on the run's thread, often during a transfer: an implementation must return quickly and raise
/// nothing. Texts are UTF-8, except that remote names keep the server's bytes, which may include control
/// characters.
class RunDisplay {
 public:
  virtual ~RunDisplay() = default;

  /// Length of the log as shown, in characters.
  virtual std::size_t logLength() const = 0;
  /// Drops that many characters from the start of the log.
  virtual void trimLog(std::size_t characters) = 0;
  /// Colour of the text appended next.
  virtual void setLogColour(Colour colour) = 0;
  /// Appends at the end and scrolls there. Line breaks (CR LF) are part of the text.
  virtual void insertLogText(std::string_view text) = 0;

  /// The remote file being fetched or the file being packed; "" when it is done. Optional.
  virtual void showCurrentFile(const std::string& /*remoteFile*/) {}
  /// Progress of the current transfer or packing, 0 to 100.
  virtual void showProgress(int percent) = 0;
  virtual void showRate(const std::string& text) = 0;
  virtual void showFileSize(const std::string& text) = 0;

  /// Adds a row and returns its index; `setReportItem` then sets its seven items.
  virtual std::size_t addReportRow() = 0;
  virtual void setReportItem(std::size_t row, ReportColumn column, const std::string& text) = 0;
  virtual void setReportColour(std::size_t row, ReportColumn column, Colour colour) = 0;
  /// Redraws the report after items have changed.
  virtual void repopulateReport() = 0;

  /// The hourglass cursor, on or off.
  virtual void showBusyCursor(bool busy) = 0;
  /// A run has begun ("Start Now" off, "Stop" on) or ended (the reverse).
  virtual void showRunning(bool running) = 0;
};

}  // namespace quillmoor
