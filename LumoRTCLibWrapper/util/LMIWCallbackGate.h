#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <utility>

namespace lumo {

/// The way to the host's code: whoever calls a callback or a surface passes it and is inside until the call
/// has returned. Closing it ends the calls for good, or until it is opened again. Open at first. Any thread.
class CallbackGate {
 public:
  /// Whether, and as long as, a thread is inside. It stays on its thread.
  class Pass {
   public:
    Pass() = default;
    Pass(Pass&& other) noexcept : gate_(std::exchange(other.gate_, nullptr)) {}
    Pass& operator=(Pass&&) = delete;
    ~Pass() {
      if (gate_) gate_->leave();
    }
    explicit operator bool() const { return gate_ != nullptr; }

   private:
    friend class CallbackGate;
    explicit Pass(const CallbackGate* gate) : gate_(gate) {}
    const CallbackGate* gate_ = nullptr;
  };

  /// @return an empty pass once the gate is closed
  Pass enter() const {
    inside_.fetch_add(1);
    ++passesOfThread_;
    Pass pass(this);
    return isClosed() ? Pass() : std::move(pass);
  }

  bool isClosed() const { return closed_.load(); }

  void open() { closed_.store(false); }

  /// Lets nobody in any more and waits until all are out. A thread that is itself inside a gate does not
  /// wait: it would wait for itself, or for one that waits for it.
  void close() {
    closed_.store(true);
    if (passesOfThread_ > 0) return;
    for (auto count = inside_.load(); count != 0; count = inside_.load()) inside_.wait(count);
  }

 private:
  void leave() const {
    --passesOfThread_;
    inside_.fetch_sub(1);
    if (isClosed()) inside_.notify_all();
  }

  inline static thread_local int passesOfThread_ = 0;  ///< of all gates

  std::atomic<bool> closed_ = false;
  mutable std::atomic<std::int32_t> inside_ = 0;
};

/// A callback of the host, or nothing. While it is held the gate is passed and its owner lives.
template <class Callback>
class HostCallback {
 public:
  HostCallback() = default;
  HostCallback(CallbackGate::Pass pass, std::shared_ptr<const Callback> callback)
      : pass_(std::move(pass)), callback_(std::move(callback)) {}

  explicit operator bool() const { return callback_ != nullptr; }
  const Callback& operator*() const { return *callback_; }
  const Callback* operator->() const { return callback_.get(); }

 private:
  CallbackGate::Pass pass_;  // first: goes last
  std::shared_ptr<const Callback> callback_;
};

}  // namespace lumo
