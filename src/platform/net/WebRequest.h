// The web request: requests one address; only the status of the response counts.
//
// Protocol: HTTP/1.1 (RFC 9112) and HTTP/2 where the server offers it, over TLS for https addresses.
#pragma once

#include <cstdint>
#include <string>

#include "base/Pump.h"

namespace quillmoor {

/// A request that can be performed repeatedly, one at a time; blocks while it pumps.
class WebRequest {
 public:
  virtual ~WebRequest() = default;

  /// Timeout in milliseconds, from resolving the host name to the last byte. 0 or less means
  /// kDefaultTimeoutMs.
  std::int32_t timeoutMs = 0;
  static constexpr std::int32_t kDefaultTimeoutMs = 60'000;

  struct Request {
    /// The body of a POST request; when empty, the request is a GET.
    std::string body;
    /// An http or https address in UTF-8; without a scheme, http. Surrounding spaces are ignored; inner
    /// spaces and non-ASCII characters are percent-encoded.
    std::string address;
  } request;

  struct Response {
    /// Status of the final response; 0 without one.
    std::int32_t statusCode = 0;
  } response;

  /// Performs the request and sets the response. Whatever prevents a status (an invalid address, an unknown
  /// host, a timeout, a response that is not HTTP, an invalid certificate, an abort) results in status 0 and
  /// is not raised. Raises std::logic_error when called while busy, and std::runtime_error where the system
  /// cannot make web requests.
  virtual void perform() = 0;

  virtual bool busy() const = 0;

  /// Ends the request in progress, even while it resolves the host name; called from the pump. Returns
  /// without waiting; does nothing when none is in progress.
  virtual void abort() = 0;
};

/// The implementation with libcurl. Does not follow redirects. Reads and discards the response's body, up to
/// kMaxBodyBytes: a longer one is cut off and its status counts, as does that of an incomplete one.
/// Certificates are checked against the system's authorities. Uses a proxy where the environment names one
/// (http_proxy, https_proxy, no_proxy).
class HttpRequest final : public WebRequest {
 public:
  static constexpr std::int64_t kMaxBodyBytes = std::int64_t{16} << 20;
  static constexpr std::int64_t kMaxHeaderBytes = 256 << 10;

  /// `perform` calls it at least every 20 ms; may be empty.
  Pump pump;

  void perform() override;
  bool busy() const override { return busy_; }
  void abort() override { aborted_ = busy_; }

 private:
  bool busy_ = false;
  bool aborted_ = false;
};

}  // namespace quillmoor
