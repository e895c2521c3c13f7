// The error of a failed network exchange, independent of the client's protocol.
#pragma once

#include <stdexcept>
#include <string>

namespace quillmoor {

enum class NetFailure {
  badArgument,  // no request can be built from the arguments; nothing was sent
  badReply,     // the peer does not speak the protocol
  connectFailed,
  connectionLost,
  refused,  // by the peer, with its reason
  timedOut
};

/// `what()` ends a sentence ("the proxy says that ...") without a full stop, and never holds a password.
class NetError : public std::runtime_error {
 public:
  NetError(NetFailure failure, const std::string& description)
      : std::runtime_error(description), failure_(failure) {}
  NetFailure failure() const { return failure_; }

 private:
  NetFailure failure_;
};

}  // namespace quillmoor
