#pragma once

#include <cstddef>
#include <utility>
#include <vector>

namespace lumo {

/// A first-in first-out queue in one block of memory that grows when it is full and is never given back, so
/// that a queue that is filled and drained steadily does not allocate. Not synchronised.
template <class T>
class Ring {
 public:
  explicit Ring(std::size_t capacity = 0) : slots_(capacity) {}

  bool empty() const { return size_ == 0; }
  std::size_t size() const { return size_; }

  void pushBack(T value) {
    if (size_ == slots_.size()) grow();
    slots_[(first_ + size_) % slots_.size()] = std::move(value);
    ++size_;
  }

  /// Removes and returns the oldest value; there must be one.
  T popFront() {
    T value = std::exchange(slots_[first_], T());
    first_ = (first_ + 1) % slots_.size();
    --size_;
    return value;
  }

 private:
  void grow() {
    std::vector<T> larger(slots_.empty() ? 8 : 2 * slots_.size());
    for (std::size_t i = 0; i < size_; ++i) larger[i] = std::move(slots_[(first_ + i) % slots_.size()]);
    slots_ = std::move(larger);
    first_ = 0;
  }

  std::vector<T> slots_;
  std::size_t first_ = 0;
  std::size_t size_ = 0;
};

}  // namespace lumo
