// Waiting on sockets on one thread while the pump runs: the loop under every blocking network operation.
#pragma once

// Asio asks what the standard library offers, so a header of that has to stand before it, everywhere alike.
#include <array>
#include <asio.hpp>
#include <chrono>
#include <cstddef>
#include <new>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/Pump.h"

namespace quillmoor {

using Deadline = std::chrono::steady_clock::time_point;

/// Memory for the one handler that a channel has under way, so that waiting allocates nothing.
class HandlerSlot {
 public:
  void* allocate(std::size_t size) {
    if (inUse_ || size > sizeof bytes_) return ::operator new(size);
    inUse_ = true;
    return bytes_;
  }
  void deallocate(void* memory) {
    if (memory == bytes_) {
      inUse_ = false;
    } else {
      ::operator delete(memory);
    }
  }

 private:
  alignas(std::max_align_t) std::byte bytes_[256];
  bool inUse_ = false;
};

template <class T>
struct SlotAllocator {
  using value_type = T;
  HandlerSlot* slot;

  explicit SlotAllocator(HandlerSlot& s) : slot(&s) {}
  template <class U>
  SlotAllocator(const SlotAllocator<U>& other) : slot(other.slot) {}  // NOLINT: allocators convert

  T* allocate(std::size_t n) { return static_cast<T*>(slot->allocate(n * sizeof(T))); }
  void deallocate(T* memory, std::size_t) { slot->deallocate(memory); }
  template <class U>
  bool operator==(const SlotAllocator<U>& other) const {
    return slot == other.slot;
  }
};

/// Thrown out of a wait after `PumpedIo::requestAbort`.
struct Aborted {};

/// The loop. Owns the Asio context; a channel (below) must not outlive it.
class PumpedIo {
 public:
  using Executor = asio::io_context::executor_type;

  /// `pump` is looked at anew for every call, so it may be set later or changed.
  explicit PumpedIo(const Pump& pump) : pump_(pump) {}

  asio::io_context& context() { return context_; }

  /// Runs handlers until `done()`; false when the deadline came first. Pumps meanwhile. Raises Aborted.
  template <class Done>
  bool runUntil(Done done, Deadline deadline) {
    for (;;) {
      if (done()) return true;
      const auto now = std::chrono::steady_clock::now();
      pumpIfDue(now);
      if (done()) return true;
      if (now >= deadline) return false;
      context_.restart();
      context_.run_one_for(std::min<std::chrono::steady_clock::duration>(kSlice, deadline - now));
    }
  }

  /// Calls the pump if it has not been called for half the interval. Raises Aborted.
  void pumpIfDue(Deadline now = std::chrono::steady_clock::now()) {
    if (now - lastPump_ >= kSlice) {
      lastPump_ = now;
      if (pump_) pump_();
    }
    if (abortRequested_ && !shielded_) throw Aborted{};
  }

  void requestAbort() { abortRequested_ = true; }
  void clearAbort() { abortRequested_ = false; }

  /// While one of these lives an abort is remembered but not raised: for the farewell to an aborted transfer.
  class Shield {
   public:
    explicit Shield(PumpedIo& io) : io_(io), before_(std::exchange(io.shielded_, true)) {}
    ~Shield() { io_.shielded_ = before_; }
    Shield(const Shield&) = delete;
    Shield& operator=(const Shield&) = delete;

   private:
    PumpedIo& io_;
    bool before_;
  };

 private:
  static constexpr std::chrono::milliseconds kSlice = kPumpInterval / 2;

  const Pump& pump_;
  asio::io_context context_{ASIO_CONCURRENCY_HINT_UNSAFE};
  Deadline lastPump_{};
  bool abortRequested_ = false;
  bool shielded_ = false;
};

/// A socket or an acceptor whose readiness can be waited for beside others. `arm` starts watching, `ready`
/// tells that something has come since; reading is the owner's business.
template <class Socket>
class Channel {
 public:
  explicit Channel(PumpedIo& io) : socket(io.context().get_executor()), io_(io) {}
  ~Channel() { close(); }
  Channel(const Channel&) = delete;
  Channel& operator=(const Channel&) = delete;

  Socket socket;

  void arm() {
    if (armed_ || ready_ || !socket.is_open()) return;
    armed_ = true;
    socket.async_wait(asio::socket_base::wait_read, Handler{this});
  }
  bool ready() const { return ready_; }
  void consumeReadiness() { ready_ = false; }

  void close() {
    asio::error_code ignored;
    socket.close(ignored);
    // The cancelled handler points here, so it must run before this object can go or be used again.
    while (armed_) {
      io_.context().restart();
      io_.context().poll();
    }
    ready_ = false;
  }

  /// Memory for a handler other than the readiness one (a connect).
  HandlerSlot slot;

 private:
  struct Handler {
    Channel* channel;
    using allocator_type = SlotAllocator<void>;
    allocator_type get_allocator() const { return allocator_type(channel->slot); }
    void operator()(const asio::error_code&) const {
      channel->armed_ = false;
      channel->ready_ = true;
    }
  };

  PumpedIo& io_;
  bool armed_ = false;
  bool ready_ = false;
};

using TcpSocket = asio::basic_stream_socket<asio::ip::tcp, PumpedIo::Executor>;
using TcpAcceptor = asio::basic_socket_acceptor<asio::ip::tcp, PumpedIo::Executor>;
using TcpChannel = Channel<TcpSocket>;
using ListenChannel = Channel<TcpAcceptor>;

/// Runs one asynchronous operation of a channel's socket to its end. `initiate` starts it with the handler it
/// is given. Returns the operation's error; asio::error::timed_out at the deadline, when it is cancelled.
template <class Socket, class Initiate>
asio::error_code runToEnd(PumpedIo& io, Channel<Socket>& channel, Deadline deadline, Initiate initiate) {
  struct Outcome {
    bool done = false;
    asio::error_code error;
  } outcome;
  struct Handler {
    HandlerSlot* slot;
    Outcome* outcome;
    using allocator_type = SlotAllocator<void>;
    allocator_type get_allocator() const { return allocator_type(*slot); }
    void operator()(const asio::error_code& error) const { *outcome = {true, error}; }
  };
  // The handler writes into this frame, so it has to have run before the frame is left in whatever way.
  struct Settle {
    PumpedIo& io;
    Channel<Socket>& channel;
    const Outcome& outcome;
    ~Settle() {
      asio::error_code ignored;
      if (!outcome.done) channel.socket.cancel(ignored);
      while (!outcome.done) {
        io.context().restart();
        io.context().poll();
      }
    }
  };
  const Settle settle{io, channel, outcome};
  initiate(Handler{&channel.slot, &outcome});
  if (!io.runUntil([&] { return outcome.done; }, deadline)) return asio::error::timed_out;
  return outcome.error;
}

/// Addresses of a host, in the system's order of preference. Runs the system's resolver aside, so that an
/// answer that never comes costs no more than the deadline; the thread left behind ends by itself.
/// Raises std::system_error; asio::error::timed_out at the deadline.
std::vector<asio::ip::tcp::endpoint> resolveHost(PumpedIo& io, const std::string& host, std::uint16_t port,
                                                 Deadline deadline);

/// Connects, non-blocking afterwards. The error tells why not; asio::error::timed_out at the deadline.
asio::error_code connectTo(PumpedIo& io, TcpChannel& channel, const asio::ip::tcp::endpoint& endpoint,
                           Deadline deadline);

/// Sends all of the bytes. The error tells why not; asio::error::timed_out at the deadline.
asio::error_code writeAll(PumpedIo& io, TcpChannel& channel, std::string_view bytes, Deadline deadline);

/// Waits until something has come and reads at most `most` bytes of it into `bytes`; `size` tells how many.
/// The error tells why none came: asio::error::eof at the end, asio::error::timed_out at the deadline.
asio::error_code readSome(PumpedIo& io, TcpChannel& channel, char* bytes, std::size_t most, std::size_t& size,
                          Deadline deadline);

}  // namespace quillmoor
