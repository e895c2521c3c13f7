#include "platform/net/PumpedIo.h"

#include <condition_variable>
#include <memory>
#include <mutex>
#include <system_error>
#include <thread>

namespace quillmoor {
namespace {

/// Shared with the resolver's thread, which may outlive the caller.
struct Lookup {
  std::mutex mutex;
  std::condition_variable changed;
  bool done = false;
  asio::error_code error;
  std::vector<asio::ip::tcp::endpoint> found;
};

}  // namespace

std::vector<asio::ip::tcp::endpoint> resolveHost(PumpedIo& io, const std::string& host, std::uint16_t port,
                                                 Deadline deadline) {
  asio::error_code notLiteral;
  const auto address = asio::ip::make_address(host, notLiteral);
  if (!notLiteral) return {{address, port}};

  auto lookup = std::make_shared<Lookup>();
  std::thread([lookup, host, port] {
    asio::io_context own;
    asio::ip::tcp::resolver resolver(own);
    asio::error_code error;
    std::vector<asio::ip::tcp::endpoint> found;
    for (const auto& entry : resolver.resolve(host, std::to_string(port), error)) found.push_back(entry);
    const std::lock_guard lock(lookup->mutex);
    lookup->error = error;
    lookup->found = std::move(found);
    lookup->done = true;
    lookup->changed.notify_one();
  }).detach();

  for (;;) {
    io.pumpIfDue();
    std::unique_lock lock(lookup->mutex);
    lookup->changed.wait_for(lock, kPumpInterval / 2, [&] { return lookup->done; });
    if (lookup->done) break;
    if (std::chrono::steady_clock::now() >= deadline) throw std::system_error(asio::error::timed_out);
  }
  if (lookup->error) throw std::system_error(lookup->error);
  return std::move(lookup->found);
}

asio::error_code connectTo(PumpedIo& io, TcpChannel& channel, const asio::ip::tcp::endpoint& endpoint,
                           Deadline deadline) {
  channel.close();
  asio::error_code error;
  channel.socket.open(endpoint.protocol(), error);
  if (!error) channel.socket.non_blocking(true, error);
  if (error) return error;

  error = runToEnd(io, channel, deadline,
                   [&](auto handler) { channel.socket.async_connect(endpoint, std::move(handler)); });
  if (error) channel.close();
  return error;
}

asio::error_code writeAll(PumpedIo& io, TcpChannel& channel, std::string_view bytes, Deadline deadline) {
  while (!bytes.empty()) {
    asio::error_code error;
    bytes.remove_prefix(channel.socket.write_some(asio::buffer(bytes), error));
    if (error == asio::error::would_block) {
      error = runToEnd(io, channel, deadline, [&](auto handler) {
        channel.socket.async_wait(asio::socket_base::wait_write, std::move(handler));
      });
    }
    if (error) return error;
  }
  return {};
}

asio::error_code readSome(PumpedIo& io, TcpChannel& channel, char* bytes, std::size_t most, std::size_t& size,
                          Deadline deadline) {
  for (;;) {
    // Data that trickles in must not bypass the pump or the deadline.
    const auto now =
        std::chrono::steady_clock::now();  // before the pump, which may take longer than the time left
    io.pumpIfDue(now);
    if (now >= deadline) return asio::error::timed_out;
    asio::error_code error;
    size = channel.socket.read_some(asio::buffer(bytes, most), error);
    if (error == asio::error::would_block || error == asio::error::interrupted) {
      error = runToEnd(io, channel, deadline, [&](auto handler) {
        channel.socket.async_wait(asio::socket_base::wait_read, std::move(handler));
      });
      if (error) return error;
      continue;
    }
    return error;
  }
}

}  // namespace quillmoor
