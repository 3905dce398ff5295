// A map from the address handed out to what lives there, for the registry of standalone
// instances: every OCIObjectNew adds an entry and every OCIObjectFree looks one up and
// takes it out, so neither allocates.  Open addressing with linear probing, at most half
// full; an entry taken out moves the later entries of its run back, so that no removed
// marker ever lengthens a lookup.  The table holds pointers only: what they point to is
// the owner's to free.  Not thread-safe: the owner locks.
#ifndef OCIMEM_SRC_OBJECTS_ADDRESS_TABLE_H
#define OCIMEM_SRC_OBJECTS_ADDRESS_TABLE_H

#include <cstddef>
#include <memory>

#include "session/pointer_hash.h"

namespace ocimem {

template <class T>
class AddressTable {
 public:
  AddressTable() = default;
  AddressTable(const AddressTable&) = delete;
  AddressTable& operator=(const AddressTable&) = delete;

  // What lives at `key`, or nullptr.
  T* Find(const void* key) const noexcept {
    if (key == nullptr || count_ == 0) return nullptr;
    for (std::size_t i = Home(key);; i = (i + 1) & mask_) {
      const Slot& s = slots_[i];
      if (s.key == key) return s.value;
      if (s.key == nullptr) return nullptr;
    }
  }

  // Sets what lives at `key` (not null) to `value` and returns what lived there before, or
  // nullptr.  Throws std::bad_alloc when the table must grow and cannot; it is unchanged
  // then.
  T* Insert(const void* key, T* value) {
    if ((count_ + 1) * 2 > Capacity()) Grow();
    std::size_t i = Home(key);
    for (; slots_[i].key != nullptr; i = (i + 1) & mask_) {
      if (slots_[i].key == key) {
        T* const before = slots_[i].value;
        slots_[i].value = value;
        return before;
      }
    }
    slots_[i] = Slot{key, value};
    ++count_;
    return nullptr;
  }

  // Takes `key` out and returns what lived there, or nullptr when it is not in the table.
  T* Erase(const void* key) noexcept {
    if (key == nullptr || count_ == 0) return nullptr;
    std::size_t hole = Home(key);
    while (slots_[hole].key != key) {
      if (slots_[hole].key == nullptr) return nullptr;
      hole = (hole + 1) & mask_;
    }
    T* const value = slots_[hole].value;
    // Each later entry of the run whose home is not between the hole and itself (going
    // round) would no longer be found past the hole: it moves into it.
    for (std::size_t j = (hole + 1) & mask_; slots_[j].key != nullptr; j = (j + 1) & mask_) {
      const std::size_t home = Home(slots_[j].key);
      const bool stays = hole <= j ? (hole < home && home <= j) : (hole < home || home <= j);
      if (stays) continue;
      slots_[hole] = slots_[j];
      hole = j;
    }
    slots_[hole] = Slot{};
    --count_;
    return value;
  }

  std::size_t Size() const noexcept { return count_; }

  // Calls f(value) for every entry; f must not change the table.
  template <class F>
  void ForEach(F f) const {
    for (std::size_t i = 0; i < Capacity(); ++i) {
      if (slots_[i].key != nullptr) f(slots_[i].value);
    }
  }

  // Forgets every entry and gives the room back.
  void Clear() noexcept {
    slots_.reset();
    mask_ = 0;
    count_ = 0;
  }

 private:
  struct Slot {
    const void* key = nullptr;
    T* value = nullptr;
  };

  static constexpr std::size_t kFirstCapacity = 64;

  std::size_t Capacity() const noexcept { return slots_ == nullptr ? 0 : mask_ + 1; }

  std::size_t Home(const void* key) const noexcept { return MixPointer(key) & mask_; }

  // Puts an entry whose key is not in the table into the first free slot of its run.
  void Place(const void* key, T* value) noexcept {
    std::size_t i = Home(key);
    while (slots_[i].key != nullptr) i = (i + 1) & mask_;
    slots_[i] = Slot{key, value};
  }

  void Grow() {
    const std::size_t old_capacity = Capacity();
    const std::size_t capacity = old_capacity == 0 ? kFirstCapacity : 2 * old_capacity;
    std::unique_ptr<Slot[]> fresh(new Slot[capacity]);  // the only step that can throw
    std::unique_ptr<Slot[]> old = std::move(slots_);
    slots_ = std::move(fresh);
    mask_ = capacity - 1;
    for (std::size_t i = 0; i < old_capacity; ++i) {
      if (old[i].key != nullptr) Place(old[i].key, old[i].value);
    }
  }

  std::unique_ptr<Slot[]> slots_;
  std::size_t mask_ = 0;
  std::size_t count_ = 0;
};

}  // namespace ocimem

#endif  // OCIMEM_SRC_OBJECTS_ADDRESS_TABLE_H
