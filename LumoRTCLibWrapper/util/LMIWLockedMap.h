#pragma once

#include <map>
#include <mutex>
#include <optional>
#include <utility>

namespace lumo {

/// A map that threads share. Values are copied out; the lock is held only while the map itself is touched,
/// and replaced or erased values are destroyed after it is released.
template <class Key, class Value>
class LockedMap {
 public:
  using Map = std::map<Key, Value>;

  std::optional<Value> find(const Key& key) const {
    const std::lock_guard lock(mutex_);
    const auto place = map_.find(key);
    if (place == map_.end()) return std::nullopt;
    return place->second;
  }

  void insertOrAssign(const Key& key, Value value) {
    const std::lock_guard lock(mutex_);
    const auto [place, inserted] = map_.try_emplace(key);
    std::swap(place->second, value);
  }

  /// Inserts `value` unless the key is there already. @return whether it was inserted
  bool insert(const Key& key, Value value) {
    const std::lock_guard lock(mutex_);
    return map_.try_emplace(key, std::move(value)).second;
  }

  /// @return whether there was such a key
  bool erase(const Key& key) {
    typename Map::node_type node;
    const std::lock_guard lock(mutex_);
    node = map_.extract(key);
    return !node.empty();
  }

  /// A copy of the whole map.
  Map get() const {
    const std::lock_guard lock(mutex_);
    return map_;
  }

  void set(Map map) { exchange(std::move(map)); }

  /// Stores `map` and returns what it replaces.
  Map exchange(Map map) {
    const std::lock_guard lock(mutex_);
    map_.swap(map);
    return map;
  }

 private:
  mutable std::mutex mutex_;
  Map map_;
};

}  // namespace lumo
