// The web request: one address is called, and the status of the answer is what counts.
//
// Protocol: HTTP/1.1 (RFC 9112) and HTTP/2 where the server offers it, over TLS for https addresses.
#pragma once

#include <cstdint>
#include <string>

#include "base/Pump.h"

namespace quillmoor {

/// A request that can be performed again and again, one at a time, each blocking while it pumps.
class WebRequest {
 public:
  virtual ~WebRequest() = default;

  /// Longest time, in milliseconds, that a request may take from the look-up of the host's name to the last
  /// byte. 0 or less means kDefaultTimeoutMs.
  std::int32_t timeoutMs = 0;
  static constexpr std::int32_t kDefaultTimeoutMs = 60'000;

  struct Request {
    /// Text to send with the request (POST); without one it is a plain GET.
    std::string body;
    /// An http or https address in UTF-8; one without a scheme is http. Blanks around it do not count, those
    /// in it and characters beyond ASCII are sent encoded.
    std::string address;
  } request;

  struct Response {
    /// Status of the final answer; 0 when there was none.
    std::int32_t statusCode = 0;
  } response;

  /// Performs the request and sets the response. Whatever keeps a status from coming (an address that cannot
  /// be, no such host, no answer in time, an answer that is no HTTP, a certificate that does not prove the
  /// host, an abort) gives the status 0 and is not raised. Raises std::logic_error when called while busy,
  /// and std::runtime_error where the system cannot make web requests.
  virtual void perform() = 0;

  virtual bool busy() const = 0;

  /// Ends the request in progress, also while it looks the host's name up; to be called from the pump.
  /// Returns without waiting; nothing happens when none is in progress.
  virtual void abort() = 0;
};

/// The real one. Redirects are not followed. The body of an answer is read and dropped, up to kMaxBodyBytes:
/// what is longer is cut off, and its status counts; a body that breaks off changes nothing either.
/// Certificates are judged by the system's authorities. A proxy is used where the environment names one
/// (http_proxy, https_proxy, no_proxy).
class HttpRequest final : public WebRequest {
 public:
  static constexpr std::int64_t kMaxBodyBytes = std::int64_t{16} << 20;
  static constexpr std::int64_t kMaxHeaderBytes = 256 << 10;

  /// Called at least every 20 ms by `perform`; may be empty.
  Pump pump;

  void perform() override;
  bool busy() const override { return busy_; }
  void abort() override { aborted_ = busy_; }

 private:
  bool busy_ = false;
  bool aborted_ = false;
};

}  // namespace quillmoor
