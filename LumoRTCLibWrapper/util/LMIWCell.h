#pragma once

#include <memory>
#include <mutex>
#include <utility>

namespace lumo {

/// A value that threads share by copying it in and out. The lock is held only for the copy or the move: no
/// code of the host or the SDK runs under it, and a replaced value is destroyed after it is released.
template <class T>
class Cell {
 public:
  Cell() = default;
  explicit Cell(T value) : value_(std::move(value)) {}

  T get() const {
    const std::lock_guard lock(mutex_);
    return value_;
  }

  void set(T value) { exchange(std::move(value)); }

  /// Stores `value` and returns what it replaces.
  T exchange(T value) {
    const std::lock_guard lock(mutex_);
    std::swap(value_, value);
    return value;
  }

 private:
  mutable std::mutex mutex_;
  T value_{};
};

/// An object held weakly that threads share. It reads as null once the object is gone, but never because
/// another thread puts a living object in the place of one that it drops then.
template <class T>
class WeakCell {
 public:
  std::shared_ptr<T> get() const {
    const std::lock_guard lock(mutex_);
    return value_.lock();
  }

  void set(std::weak_ptr<T> value) {
    const std::lock_guard lock(mutex_);
    value_.swap(value);
  }

 private:
  mutable std::mutex mutex_;
  std::weak_ptr<T> value_;
};

}  // namespace lumo
