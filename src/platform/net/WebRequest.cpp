#include "platform/net/WebRequest.h"

#include <chrono>
#include <memory>
#include <stdexcept>
#include <string_view>

#include "platform/net/CurlFunctions.h"

namespace quillmoor {
namespace {

using Clock = std::chrono::steady_clock;
constexpr std::chrono::milliseconds kSlice = kPumpInterval / 2;

template <auto function>
struct Free {
  template <class T>
  void operator()(T* object) const {
    (Curl().*function)(object);
  }
};
using Easy = std::unique_ptr<CURL, Free<&CurlFunctions::easyCleanup>>;
using Multi = std::unique_ptr<CURLM, Free<&CurlFunctions::multiCleanup>>;
using Address = std::unique_ptr<CURLU, Free<&CurlFunctions::cleanUpUrl>>;

/// Adds the transfer to the multi handle for its own lifetime.
class Joined {
 public:
  Joined(CURLM* multi, CURL* easy) : multi_(multi), easy_(easy) { Curl().addHandle(multi_, easy_); }
  ~Joined() { Curl().removeHandle(multi_, easy_); }
  Joined(const Joined&) = delete;
  Joined& operator=(const Joined&) = delete;

 private:
  CURLM* multi_;
  CURL* easy_;
};

/// Counts the response, whose contents are discarded; rejects one that exceeds the limits.
struct Answer {
  std::int64_t headerBytes = 0;
  std::int64_t bodyBytes = 0;
  bool headerComplete = false;

  static std::size_t takeHeader(char* line, std::size_t size, std::size_t count, void* answer) {
    auto& self = *static_cast<Answer*>(answer);
    const std::string_view text(line, size * count);
    self.headerBytes += static_cast<std::int64_t>(text.size());
    // An informational response ends like the final one, which follows it.
    self.headerComplete =
        text == "\r\n" || text == "\n" || (self.headerComplete && !text.starts_with("HTTP/"));
    return self.headerBytes <= HttpRequest::kMaxHeaderBytes ? text.size() : 0;
  }

  static std::size_t takeBody(char*, std::size_t size, std::size_t count, void* answer) {
    auto& self = *static_cast<Answer*>(answer);
    self.bodyBytes += static_cast<std::int64_t>(size * count);
    return self.bodyBytes <= HttpRequest::kMaxBodyBytes ? size * count : 0;
  }
};

bool hasScheme(std::string_view address) {
  const auto separator = address.find("://");
  return separator != std::string_view::npos && address.find_first_of("/?#") == separator + 1;
}

/// Null when the text is not an address.
Address parsed(std::string_view text) {
  constexpr std::string_view kBlanks = " \t\r\n";
  const auto first = text.find_first_not_of(kBlanks);
  if (first == std::string_view::npos) return nullptr;
  text = text.substr(first, text.find_last_not_of(kBlanks) - first + 1);
  const std::string whole = (hasScheme(text) ? "" : "http://") + std::string(text);
  Address address(Curl().makeUrl());
  if (!address || whole.find('\0') != std::string::npos) return nullptr;
  const CURLUcode code = Curl().setUrl(address.get(), CURLUPART_URL, whole.c_str(), CURLU_URLENCODE);
  return code == CURLUE_OK ? std::move(address) : nullptr;
}

/// Marks the request as busy for its own lifetime.
class Busy {
 public:
  Busy(bool& busy, bool& aborted) : busy_(busy), aborted_(aborted) {
    if (busy_) throw std::logic_error("A web request is in progress.");
    busy_ = true;
    aborted_ = false;
  }
  ~Busy() { busy_ = false; }
  Busy(const Busy&) = delete;
  Busy& operator=(const Busy&) = delete;

 private:
  bool& busy_;
  bool& aborted_;
};

void applyOptions(CURL* easy, const WebRequest& request, CURLU* address, Answer& answer) {
  const std::int32_t timeoutMs = request.timeoutMs > 0 ? request.timeoutMs : WebRequest::kDefaultTimeoutMs;
  const auto set = Curl().setOption;
  set(easy, CURLOPT_CURLU, address);
  // Only web protocols: a local file is not a valid target.
  set(easy, CURLOPT_PROTOCOLS_STR, "http,https");
  set(easy, CURLOPT_FOLLOWLOCATION, 0L);
  set(easy, CURLOPT_TIMEOUT_MS, static_cast<long>(timeoutMs));
  set(easy, CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(timeoutMs));
  set(easy, CURLOPT_USERAGENT, "Quillmoor");
  if (!request.request.body.empty()) {
    set(easy, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(request.request.body.size()));
    set(easy, CURLOPT_COPYPOSTFIELDS, request.request.body.data());
  }
  set(easy, CURLOPT_HEADERFUNCTION, Answer::takeHeader);
  set(easy, CURLOPT_HEADERDATA, &answer);
  set(easy, CURLOPT_WRITEFUNCTION, Answer::takeBody);
  set(easy, CURLOPT_WRITEDATA, &answer);
  // A name server that does not answer must not delay the end of the request: the resolver's thread is
  // abandoned.
  set(easy, CURLOPT_QUICK_EXIT, 1L);
  // Windows would download certificate revocation lists during a step, for an unpredictable time.
  set(easy, CURLOPT_SSL_OPTIONS, static_cast<long>(CURLSSLOPT_NO_REVOKE));
}

}  // namespace

void HttpRequest::perform() {
  const Busy busy(busy_, aborted_);
  response = {};
  const Address address = parsed(request.address);
  if (!address) return;
  const Multi multi(Curl().multiInit());
  const Easy easy(Curl().easyInit());
  if (!multi || !easy) throw std::bad_alloc();
  Answer answer;
  applyOptions(easy.get(), *this, address.get(), answer);
  const Joined joined(multi.get(), easy.get());

  int running = 1;
  for (Clock::time_point lastPump; running != 0;) {
    if (Clock::now() - lastPump >= kSlice) {
      if (pump) pump();
      if (aborted_) return;
      lastPump = Clock::now();
    }
    if (Curl().perform(multi.get(), &running) != CURLM_OK) return;
    if (running != 0) Curl().poll(multi.get(), nullptr, 0, static_cast<int>(kSlice.count()), nullptr);
  }
  int waiting = 0;
  const CURLMsg* const message = Curl().readInfo(multi.get(), &waiting);
  // A response that times out does not count, whatever it began with.
  if (!message || message->data.result == CURLE_OPERATION_TIMEDOUT || !answer.headerComplete) return;
  long status = 0;
  Curl().getInfo(easy.get(), CURLINFO_RESPONSE_CODE, &status);
  if (status >= 200) response.statusCode = static_cast<std::int32_t>(status);
}

}  // namespace quillmoor
