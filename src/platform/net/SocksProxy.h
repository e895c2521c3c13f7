// SOCKS: asks a proxy to connect to another machine, or to accept a connection from one. The messages as
// bytes, and the dialogue over a connected channel.
//
// SOCKS 4 and its extension 4a (the notes of their authors), RFC 1928 (SOCKS 5), RFC 1929 (its login).
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "platform/net/NetError.h"
#include "platform/net/PumpedIo.h"

namespace quillmoor {

enum class SocksVersion : std::uint8_t { v4 = 4, v5 = 5 };
enum class SocksCommand : std::uint8_t { connect = 1, bind = 2 };

struct SocksLogin {
  SocksVersion version = SocksVersion::v5;
  std::string userName;  // version 5: empty for no login
  std::string password;  // version 5 only
};

/// A host and its port. `host` is a name, which the proxy resolves, or an IP address.
struct SocksAddress {
  std::string host;
  std::uint16_t port = 0;
};

// --- messages. Invalid contents raise NetError badArgument: a user name, password or host of more than 255
// bytes, a NUL in a version 4 text, an IPv6 address in version 4.

/// Version 5: the login methods offered. No login, and also user name and password if there is a user name.
std::string socksGreeting(const SocksLogin& login);
/// RFC 1929 §2.
std::string socksPassword(const SocksLogin& login);
std::string socksRequest(SocksCommand command, const SocksLogin& login, const SocksAddress& address);

/// The length in bytes of a reply that begins with `begun`, as far as is known: the reply is complete when it
/// has that length, and reading up to it never reads beyond the reply. Raises badReply when no reply of this
/// version begins so.
std::size_t socksReplyLength(SocksVersion version, std::string_view begun);
/// The address in a complete reply. Raises `refused`, with the reply code in words, for a refusal.
SocksAddress socksReplyAddress(SocksVersion version, std::string_view reply);

// --- dialogue. The channel is connected to the proxy. Each function raises NetError (refused, badReply,
// timedOut, connectionLost, badArgument) and Aborted.

/// Afterwards the channel is connected to the target.
void socksConnect(PumpedIo& io, TcpChannel& channel, const SocksLogin& login, const SocksAddress& target,
                  Deadline deadline);

/// Makes the proxy listen for a connection from `peer`; returns the address it listens at, which is the
/// proxy's own when its reply has none.
SocksAddress socksBind(PumpedIo& io, TcpChannel& channel, const SocksLogin& login, const SocksAddress& peer,
                       Deadline deadline);

/// Reads the second reply to socksBind: the peer that has connected; from then on the channel leads there.
/// Does not wait: nullopt until the reply is complete. `begun` keeps what has arrived of this reply.
std::optional<SocksAddress> pollSocksPeer(TcpChannel& channel, SocksVersion version, std::string& begun);

}  // namespace quillmoor
