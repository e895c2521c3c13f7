#include "platform/ftp/FtpSizeCheck.h"

namespace quillmoor {
namespace {

using std::chrono::milliseconds;

std::optional<std::int64_t> askSize(FtpControl& control, const std::string& path, milliseconds timeout) {
  try {
    const std::string line = "SIZE " + path;
    auto size = statedSize(control.exchange(line, timeout));
    if (size || !control.asciiType()) return size;
    // Many servers refuse SIZE in ASCII type, as they would have to read every byte. The binary size is a
    // lower bound for the bytes to receive.
    if (!control.exchange("TYPE I", timeout).completion()) return std::nullopt;
    size = statedSize(control.exchange(line, timeout));
    if (!control.exchange("TYPE A", timeout).completion()) control.close();
    return size;
  } catch (...) {
    control.close();  // a late reply would be taken for the next command's
    throw;
  }
}

}  // namespace

void RequireWholeFile(FtpControl& control, const FtpReceivedFile& file, milliseconds timeout) {
  const bool text = control.asciiType();
  const bool notAsListed = file.listed && (text ? file.count < *file.listed : file.count != *file.listed);
  const bool notAsAnnounced = !text && file.announced && file.count < *file.announced;
  const bool unknown = !file.listed && (text || !file.announced);
  if (!notAsListed && !notAsAnnounced && !unknown) return;

  // Without a connection, which was lost after the last byte, nobody can be asked.
  const auto size = control.isOpen() ? askSize(control, file.remotePath, timeout) : std::nullopt;
  if (unknown && !size && !notAsAnnounced) return;  // nothing contradicts the server
  if (size && (text ? file.count >= *size : file.count == *size)) return;
  std::string claim;
  if (notAsListed) claim = "lists " + std::to_string(*file.listed) + " and ";
  if (!notAsListed && notAsAnnounced) claim = "announces " + std::to_string(*file.announced) + " and ";
  throw FtpError(FtpErrorNumber::incomplete,
                 std::to_string(file.count) + " bytes were received, but the server " + claim +
                     (size ? "now reports " + std::to_string(*size) : "reports no size") + ".");
}

}  // namespace quillmoor
