#include "platform/ftp/FtpTransfer.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace quillmoor {
namespace {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

// Grace period for a cancelled transfer to end before the connection is closed.
constexpr milliseconds kGracePeriod{2000};
constexpr milliseconds kProgressInterval{100};

/// Carries the sink's exception past the handlers for connection errors.
struct SinkFailure {
  std::exception_ptr cause;
};

}  // namespace

/// State of a transfer in progress.
struct FtpTransfer::Reception {
  std::optional<FtpReply> finalReply;
  std::optional<std::int64_t> announced;
  bool controlLost = false;
  bool dataEnded = false;
  bool dataBroken = false;
  std::string whyBroken;  // with encryption: part of a sentence
  std::int64_t count = 0;
  std::size_t preliminaries = 0;
  steady_clock::time_point lastEvent = steady_clock::now();
  steady_clock::time_point lastProgress = lastEvent;
  steady_clock::time_point windowStart =
      lastEvent;  // start of the period for the minimum rate of a byte a second
  std::int64_t windowCount = 0;

  bool over() const {
    return (finalReply && finalReply->refusal()) || (dataEnded && (finalReply || controlLost));
  }
};

FtpTransfer::Outcome FtpTransfer::run(const Order& order) {
  struct CloseData {
    FtpDataConnection& data;
    ~CloseData() { data.close(); }
  } const closing{data_};

  bool sent = false;
  try {
    FtpControl::checkLine(order.command);
    data_.open(order.dataPortRange, order.timeout);
    control_.send(order.command, order.timeout);
    sent = true;
    data_.encrypt();
    return receive(order);
  } catch (const FtpError& error) {
    switch (static_cast<FtpErrorNumber>(error.number())) {
      case FtpErrorNumber::dataConnectionFailed:
        if (sent) endInOrder(order.timeout);
        break;
      case FtpErrorNumber::badArgument:
      case FtpErrorNumber::incomplete:
        break;
      case FtpErrorNumber::timedOut:
      case FtpErrorNumber::aborted:
        sent ? endInOrder(order.timeout) : control_.close();
        break;
      default:
        if (error.number() == 421 || error.number() >= static_cast<int>(FtpErrorNumber::notConnected)) {
          control_.close();
        }
    }
    throw;
  } catch (const Aborted&) {
    sent ? endInOrder(order.timeout) : control_.close();
    throw;
  } catch (const SinkFailure& failure) {
    // The session is fine, but the server is still sending.
    endInOrder(order.timeout);
    std::rethrow_exception(failure.cause);
  }
}

FtpTransfer::Outcome FtpTransfer::receive(const Order& order) {
  Reception state;
  if (!buffer_) buffer_ = std::make_unique<char[]>(kBufferSize + 1);
  wait(order, state);
  while (!state.over()) {
    bool moved = takeReplies(state);
    data_.acceptIncoming();
    if (data_.isOpen() && !state.dataEnded && !state.over()) moved |= readData(order, state);
    if (!moved && !state.over()) wait(order, state);
  }

  const bool complete = order.exactSize && !state.dataBroken && state.announced == state.count &&
                        order.listedSize.value_or(state.count) == state.count;
  if (!state.finalReply) {
    // A long transfer may outlive the control connection; then the size shows whether the file is complete.
    control_.close();
    if (!complete) {
      throw FtpError(FtpErrorNumber::connectionLost,
                     "The connection was lost before the server had confirmed the transfer.");
    }
    return {{226, "226 Connection lost after the last byte."}, state.count, state.announced};
  }
  if (state.finalReply->code == 421) {
    throw FtpError(
        421, "The " + control_.peer() + " closed the session: " + printableReply(state.finalReply->text, ""));
  }
  if (control_.tls()) requireProtectedData(order, state);
  if (state.finalReply->completion() && state.dataBroken) {
    throw FtpError(FtpErrorNumber::incomplete,
                   "The data connection broke before the end" +
                       (state.whyBroken.empty() ? "." : ": " + state.whyBroken + "."));
  }
  if (order.progress && state.finalReply->completion())
    order.progress(state.count, state.announced.value_or(0));
  return {*std::move(state.finalReply), state.count, state.announced};
}

/// Some servers demand that the data connection resumes the control connection's TLS session, and answer 522
/// or 425 when it does not. The session of this login is used up then: the next login makes another.
void FtpTransfer::requireProtectedData(const Order& order, const Reception& state) {
  const int code = state.finalReply->code;
  if (code != 522 && code != 425) return;
  const FtpReply reply = *state.finalReply;
  control_.close();
  control_.raiseRefused(order.command, reply);
}

/// Reads the replies that have arrived. False when there were none.
bool FtpTransfer::takeReplies(Reception& state) {
  bool any = false;
  try {
    while (!state.finalReply && !state.controlLost) {
      auto reply = control_.pollReply();
      if (!reply) break;
      any = true;
      if (!reply->preliminary()) {
        state.lastEvent = steady_clock::now();
        state.finalReply = std::move(reply);
        break;
      }
      // Only the first one extends the deadline.
      if (state.preliminaries++ == 0) state.lastEvent = steady_clock::now();
      if (state.preliminaries == FtpControl::kMostReplies) {
        throw FtpError(FtpErrorNumber::badReply, "The server keeps sending replies that answer no command.");
      }
      if (const auto size = announcedSize(reply->text)) state.announced = size;
    }
  } catch (const FtpError& error) {
    const bool dataCame = state.dataEnded || data_.isOpen();
    if (error.number() != static_cast<int>(FtpErrorNumber::connectionLost) || !dataCame) throw;
    state.controlLost = any = true;
  }
  return any;
}

/// Reads the data that has arrived. False when there was none.
bool FtpTransfer::readData(const Order& order, Reception& state) {
  data_.stream().consumeReadiness();
  bool any = false;
  for (;;) {
    asio::error_code error;
    const std::size_t size = data_.stream().readSome(buffer_.get() + 1, kBufferSize, error);
    if (error == asio::error::would_block || error == asio::error::interrupted) return any;
    const auto now = steady_clock::now();
    state.lastEvent = now;
    any = true;
    if (error) {
      // Only a regular end of the connection is the end of a file (RFC 959 §3.4.1); a reset is not, whatever
      // the reply says.
      state.dataBroken = error != asio::error::eof;
      state.whyBroken = data_.stream().problem();
      // Encrypted, this announces our end too; servers confirm a transfer only after that.
      data_.stream().close();
      if (error == TlsConnection::kWrongCertificate)
        throw FtpError(FtpErrorNumber::certificateRejected,
                       "The transfer was ended: " + state.whyBroken + ".");
      state.dataEnded = true;
      if (!state.dataBroken && order.onDataEnd) order.onDataEnd();
      return true;
    }
    if (state.count == 0) state.windowStart = now;  // a late start does not count as slow
    state.count += static_cast<std::int64_t>(size);
    state.windowCount += static_cast<std::int64_t>(size);
    try {
      order.sink(buffer_.get() + 1, size);
    } catch (...) {
      throw SinkFailure{std::current_exception()};
    }
    if (order.progress && now - state.lastProgress >= kProgressInterval) {
      state.lastProgress = now;
      order.progress(state.count, state.announced.value_or(0));
    }
    io_.pumpIfDue(now);
  }
}

void FtpTransfer::wait(const Order& order, Reception& state) {
  const auto now = steady_clock::now();
  if (data_.isOpen() && now - state.windowStart > order.timeout) {
    if (state.windowCount < std::chrono::duration_cast<std::chrono::seconds>(order.timeout).count()) {
      throw FtpError(FtpErrorNumber::timedOut, "The server sends less than a byte a second.");
    }
    state.windowStart = now;
    state.windowCount = 0;
  }
  const bool forReply = !state.finalReply && !state.controlLost;
  if (forReply) control_.stream().arm();
  data_.arm();
  const auto arrived = [&] { return data_.ready() || (forReply && control_.stream().ready()); };
  if (io_.runUntil(arrived, state.lastEvent + order.timeout)) return;
  if (state.dataEnded) {
    // All data has arrived; only the server's confirmation is missing.
    state.controlLost = true;
    return;
  }
  if (data_.isOpen()) throw FtpError(FtpErrorNumber::timedOut, "No data arrived in time.");
  const std::string rejected =
      data_.unexpectedPeer().empty()
          ? ""
          : " A connection from another machine, " + data_.unexpectedPeer() + ", was rejected.";
  throw FtpError(FtpErrorNumber::timedOut, "The server did not open the data connection in time." + rejected);
}

/// Ends a transfer whose reply is outstanding (RFC 959 §4.1.3, ABOR). Servers answer ABOR with 426 and 226,
/// with 226 or 225 alone, or not at all, and the transfer's own reply may still arrive: the reply to SYST,
/// whose code is unique, shows when all of them have been read. Without it the connection is closed.
void FtpTransfer::endInOrder(milliseconds timeout) {
  const PumpedIo::AbortGuard guard(io_);
  try {
    control_.sendAbort();
    data_.close();  // unblocks a server that is stuck sending
    const auto deadline = steady_clock::now() + std::min(timeout, kGracePeriod);
    for (int code = 0; code != 215;) {
      code = control_.readReply(deadline).code;
      if (code == 421) return control_.close();
    }
    control_.forgetAhead();
  } catch (...) {
    control_.close();
  }
}

}  // namespace quillmoor
