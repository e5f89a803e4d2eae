#pragma once

#include <cstddef>
#include <memory>
#include <mutex>
#include <new>
#include <utility>
#include <vector>

namespace lumo {

/// Memory for small objects that come and go with every frame: what was given back is used again, so that a
/// steady flow allocates nothing. Any thread.
class Recycler {
 public:
  /// What an object may need, with its reference counts.
  static constexpr std::size_t kBlockSize = 96;

  Recycler() = default;
  ~Recycler() {
    for (void* const block : free_) ::operator delete(block);
  }
  Recycler(const Recycler&) = delete;
  Recycler& operator=(const Recycler&) = delete;

  void* take() {
    {
      const std::lock_guard lock(mutex_);
      if (!free_.empty()) {
        void* const block = free_.back();
        free_.pop_back();
        return block;
      }
    }
    return ::operator new(kBlockSize);
  }

  void giveBack(void* block) {
    const std::lock_guard lock(mutex_);
    free_.push_back(block);
  }

 private:
  std::mutex mutex_;
  std::vector<void*> free_;  ///< guarded by mutex_
};

/// The allocator behind `makeRecycled`; it keeps the recycler alive for as long as the object lives.
template <class T>
struct RecyclingAllocator {
  using value_type = T;

  explicit RecyclingAllocator(std::shared_ptr<Recycler> owner) : recycler(std::move(owner)) {}
  template <class U>
  RecyclingAllocator(const RecyclingAllocator<U>& other) : recycler(other.recycler) {}

  T* allocate(std::size_t) {
    static_assert(sizeof(T) <= Recycler::kBlockSize && alignof(T) <= alignof(std::max_align_t));
    return static_cast<T*>(recycler->take());
  }
  void deallocate(T* block, std::size_t) { recycler->giveBack(block); }

  template <class U>
  bool operator==(const RecyclingAllocator<U>& other) const {
    return recycler == other.recycler;
  }

  std::shared_ptr<Recycler> recycler;
};

/// As std::make_shared, in memory of `recycler`.
template <class T, class... Arguments>
std::shared_ptr<T> makeRecycled(const std::shared_ptr<Recycler>& recycler, Arguments&&... arguments) {
  return std::allocate_shared<T>(RecyclingAllocator<T>(recycler), std::forward<Arguments>(arguments)...);
}

}  // namespace lumo
