// A conversation with another machine that failed, in terms of the network and of no client's protocol.
#pragma once

#include <stdexcept>
#include <string>

namespace quillmoor {

enum class NetFailure {
  badArgument,  // a request cannot be made of what was given; nothing was sent
  badReply,     // the peer does not speak the protocol
  connectFailed,
  connectionLost,
  refused,  // by the peer, which says why
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
