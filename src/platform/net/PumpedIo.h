// Single-threaded waiting on sockets while the pump runs: the loop under every blocking network operation.
#pragma once

// Asio tests for features of the standard library, so a standard header must precede it, everywhere alike.
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

/// Memory for a channel's pending handler, so that waiting allocates nothing.
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

/// Thrown by waits after `PumpedIo::requestAbort`.
struct Aborted {};

/// The event loop. Owns the Asio context; a channel (below) must not outlive it.
class PumpedIo {
 public:
  using Executor = asio::io_context::executor_type;

  /// `pump` is read at every call, so it may be set or changed later.
  explicit PumpedIo(const Pump& pump) : pump_(pump) {}

  asio::io_context& context() { return context_; }

  /// Runs handlers until `done()`, pumping meanwhile; false when the deadline passed first. Raises Aborted.
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

  /// Calls the pump if the last call was at least half the interval ago. Raises Aborted.
  void pumpIfDue(Deadline now = std::chrono::steady_clock::now()) {
    if (now - lastPump_ >= kSlice) {
      lastPump_ = now;
      if (pump_) pump_();
    }
    if (abortRequested_ && !abortGuarded_) throw Aborted{};
  }

  void requestAbort() { abortRequested_ = true; }
  void clearAbort() { abortRequested_ = false; }

  /// While one exists, an abort is recorded but not raised: for ending an aborted transfer cleanly.
  class AbortGuard {
   public:
    explicit AbortGuard(PumpedIo& io) : io_(io), before_(std::exchange(io.abortGuarded_, true)) {}
    ~AbortGuard() { io_.abortGuarded_ = before_; }
    AbortGuard(const AbortGuard&) = delete;
    AbortGuard& operator=(const AbortGuard&) = delete;

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
  bool abortGuarded_ = false;
};

/// A socket or an acceptor whose readiness can be awaited together with others. `arm` starts watching,
/// `ready` reports that something has arrived since; the owner reads it.
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
    // The cancelled handler refers to this object, so it must run before the object is destroyed or reused.
    while (armed_) {
      io_.context().restart();
      io_.context().poll();
    }
    ready_ = false;
  }

  /// Memory for the pending handler: the readiness one, or a connect.
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

/// Runs one asynchronous operation of a channel's socket to completion. `initiate` starts it with the handler
/// passed. Returns the operation's error; asio::error::timed_out when the deadline cancelled it.
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
  // The handler writes into this stack frame, so it must have run before the frame is left in any way.
  struct Drain {
    PumpedIo& io;
    Channel<Socket>& channel;
    const Outcome& outcome;
    ~Drain() {
      asio::error_code ignored;
      if (!outcome.done) channel.socket.cancel(ignored);
      while (!outcome.done) {
        io.context().restart();
        io.context().poll();
      }
    }
  };
  const Drain drain{io, channel, outcome};
  initiate(Handler{&channel.slot, &outcome});
  if (!io.runUntil([&] { return outcome.done; }, deadline)) return asio::error::timed_out;
  return outcome.error;
}

/// Addresses of a host, in the system's order of preference. Runs the system's resolver on a thread of its
/// own, so that a missing answer costs no more than the deadline; a thread still waiting then ends by itself.
/// Raises std::system_error; asio::error::timed_out at the deadline.
std::vector<asio::ip::tcp::endpoint> resolveHost(PumpedIo& io, const std::string& host, std::uint16_t port,
                                                 Deadline deadline);

/// Connects; the socket is non-blocking afterwards. Returns the error; asio::error::timed_out at the
/// deadline.
asio::error_code connectTo(PumpedIo& io, TcpChannel& channel, const asio::ip::tcp::endpoint& endpoint,
                           Deadline deadline);

/// Sends all bytes. Returns the error; asio::error::timed_out at the deadline.
asio::error_code writeAll(PumpedIo& io, TcpChannel& channel, std::string_view bytes, Deadline deadline);

/// Waits for data and reads at most `most` bytes of it into `bytes`; `size` returns how many. Returns the
/// error: asio::error::eof at the end, asio::error::timed_out at the deadline.
asio::error_code readSome(PumpedIo& io, TcpChannel& channel, char* bytes, std::size_t most, std::size_t& size,
                          Deadline deadline);

}  // namespace quillmoor
