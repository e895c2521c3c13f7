// SOCKS: asking a proxy for a connection to another machine, or for one from it. The messages as bytes, and
// the conversation over a connected channel.
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

/// A machine and its port. `host` is a name, which the proxy looks up, or an IP address.
struct SocksAddress {
  std::string host;
  std::uint16_t port = 0;
};

// --- messages. What cannot be put into one raises NetError badArgument: a user name, password or host of
// more than 255 bytes, a NUL in a text of version 4, an IPv6 address in version 4.

/// Version 5: the ways to log in that are offered. No login, and a user name and password where there is one.
std::string socksGreeting(const SocksLogin& login);
/// RFC 1929 §2.
std::string socksPassword(const SocksLogin& login);
std::string socksRequest(SocksCommand command, const SocksLogin& login, const SocksAddress& address);

/// How many bytes a reply that begins with these has, as far as they tell: it is whole when it has so many,
/// and reading that many never reads what is behind it. Raises badReply when no reply of the version begins
/// so.
std::size_t socksReplyLength(SocksVersion version, std::string_view begun);
/// The address in a whole reply. Raises `refused`, with the reply code in plain words, when it is a
/// refusal.
SocksAddress socksReplyAddress(SocksVersion version, std::string_view reply);

// --- conversation. The channel is connected to the proxy. Each raises NetError (refused, badReply,
// timedOut, connectionLost, badArgument) and Aborted.

/// Afterwards the channel leads to the target.
void socksConnect(PumpedIo& io, TcpChannel& channel, const SocksLogin& login, const SocksAddress& target,
                  Deadline deadline);

/// Has the proxy wait for a connection from `peer`, and returns where it waits. Where it names no address of
/// its own, that is the proxy's.
SocksAddress socksBind(PumpedIo& io, TcpChannel& channel, const SocksLogin& login, const SocksAddress& peer,
                       Deadline deadline);

/// The second answer to socksBind: who has connected; from then on the channel leads there. Does not wait:
/// nothing until all of it has come. `begun` holds what has and belongs to this one answer.
std::optional<SocksAddress> pollSocksPeer(TcpChannel& channel, SocksVersion version, std::string& begun);

}  // namespace quillmoor
