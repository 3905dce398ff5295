// Allocation and bookkeeping of datetime and interval descriptors. The core
// calls these from OCIDescriptorAlloc/Free and when object instances hold
// TIMESTAMP or INTERVAL attributes.
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <new>
#include <vector>

#include "objects/value_descriptors.h"
#include "session/pointer_hash.h"
#include "calendar.h"
#include "descriptor.h"

namespace ocimem {
namespace {

constexpr std::uint32_t kMagic = 0x4F56414CU;

// Pointer -> descriptor type for every live descriptor. Every value call
// looks its descriptor up here, so that a stray pointer is never read
// through; allocation and freeing are rare next to that. Lookups therefore
// take no lock: an open-addressing table of atomic slots that only
// allocation and freeing change, under the mutex. A slot's key, once set, is
// never changed; freeing sets its type to 0, and the same address allocated
// again takes its old slot back. A table that fills up is copied into one
// twice its size; the old one is kept, because a lookup may still be reading
// it (the tables double, so all of them together are at most twice the last).
struct Table {
  explicit Table(std::size_t n) : size(n), slots(new Slot[n]) {}
  struct Slot {
    std::atomic<const void*> key{nullptr};
    std::atomic<std::uint32_t> type{0};
  };
  std::size_t size;  // a power of two
  std::unique_ptr<Slot[]> slots;
  std::size_t used = 0;  // slots with a key, live or freed (writers only)
};

std::size_t Hash(const void* p, std::size_t size) { return MixPointer(p) & (size - 1); }

struct Registry {
  std::mutex mutex;  // writers
  std::atomic<Table*> table{nullptr};
  std::vector<std::unique_ptr<Table>> tables;  // every table made, the current last
};

Registry& TheRegistry() {
  static Registry* registry = [] {
    auto* r = new Registry;  // never destroyed: used from atexit paths
    r->tables.push_back(std::make_unique<Table>(256));
    r->table.store(r->tables.back().get(), std::memory_order_release);
    return r;
  }();
  return *registry;
}

// The slot holding `p`, or nullptr.
Table::Slot* Find(const Table& t, const void* p) {
  for (std::size_t i = Hash(p, t.size), probes = 0; probes < t.size;
       i = (i + 1) & (t.size - 1), ++probes) {
    const void* key = t.slots[i].key.load(std::memory_order_acquire);
    if (key == p) return &t.slots[i];
    if (key == nullptr) return nullptr;
  }
  return nullptr;
}

// Writers only: sets `p`'s slot, reusing the one it had.
void Put(Table* t, const void* p, std::uint32_t type) {
  if (Table::Slot* slot = Find(*t, p)) {
    slot->type.store(type, std::memory_order_release);
    return;
  }
  for (std::size_t i = Hash(p, t->size);; i = (i + 1) & (t->size - 1)) {
    if (t->slots[i].key.load(std::memory_order_relaxed) == nullptr) {
      t->slots[i].type.store(type, std::memory_order_relaxed);
      t->slots[i].key.store(p, std::memory_order_release);
      ++t->used;
      return;
    }
  }
}

bool Lookup(const void* p, std::uint32_t* type) {
  if (p == nullptr) return false;
  const Table* t = TheRegistry().table.load(std::memory_order_acquire);
  const Table::Slot* slot = Find(*t, p);
  if (slot == nullptr) return false;
  const std::uint32_t found = slot->type.load(std::memory_order_acquire);
  if (found == 0) return false;
  *type = found;
  return true;
}

void Register(const void* p, std::uint32_t type) {
  Registry& r = TheRegistry();
  std::lock_guard<std::mutex> lock(r.mutex);
  Table* t = r.table.load(std::memory_order_relaxed);
  if (Find(*t, p) == nullptr && (t->used + 1) * 2 > t->size) {
    // Live entries only: freed slots are dropped on the way.
    std::size_t live = 0;
    for (std::size_t i = 0; i < t->size; ++i) {
      if (t->slots[i].type.load(std::memory_order_relaxed) != 0) ++live;
    }
    std::size_t size = t->size;
    while ((live + 1) * 4 > size) size *= 2;
    auto grown = std::make_unique<Table>(size);
    for (std::size_t i = 0; i < t->size; ++i) {
      const std::uint32_t ty = t->slots[i].type.load(std::memory_order_relaxed);
      if (ty != 0) Put(grown.get(), t->slots[i].key.load(std::memory_order_relaxed), ty);
    }
    t = grown.get();
    r.tables.push_back(std::move(grown));
    r.table.store(t, std::memory_order_release);
  }
  Put(t, p, type);
}

// Clears `p`'s entry and gives its type; false when it was not live.
bool Unregister(const void* p, std::uint32_t* type) {
  Registry& r = TheRegistry();
  std::lock_guard<std::mutex> lock(r.mutex);
  Table::Slot* slot = Find(*r.table.load(std::memory_order_relaxed), p);
  if (slot == nullptr) return false;
  *type = slot->type.load(std::memory_order_relaxed);
  if (*type == 0) return false;
  slot->type.store(0, std::memory_order_release);
  return true;
}

values::DateTimeKind KindOf(std::uint32_t type) {
  switch (type) {
    case values::kDescDate: return values::DateTimeKind::Date;
    case values::kDescTimestampTz: return values::DateTimeKind::TimestampTz;
    case values::kDescTimestampLtz: return values::DateTimeKind::TimestampLtz;
    default: return values::DateTimeKind::Timestamp;
  }
}

}  // namespace

namespace values {

bool IsDateTimeType(std::uint32_t type) {
  return type == kDescDate || type == kDescTimestamp || type == kDescTimestampTz ||
         type == kDescTimestampLtz;
}

bool IsIntervalType(std::uint32_t type) {
  return type == kDescIntervalYm || type == kDescIntervalDs;
}

DateTimeDescriptor* AsDateTime(const void* p) {
  std::uint32_t type = 0;
  if (!Lookup(p, &type) || !IsDateTimeType(type)) return nullptr;
  return static_cast<DateTimeDescriptor*>(const_cast<void*>(p));
}

IntervalDescriptor* AsInterval(const void* p) {
  std::uint32_t type = 0;
  if (!Lookup(p, &type) || !IsIntervalType(type)) return nullptr;
  return static_cast<IntervalDescriptor*>(const_cast<void*>(p));
}

}  // namespace values

sword AllocValueDescriptor(Env* /*env*/, ub4 type, void** out) {
  if (out == nullptr) return OCI_ERROR;
  void* made = nullptr;
  if (values::IsDateTimeType(type)) {
    auto* d = new (std::nothrow) values::DateTimeDescriptor{{kMagic, type}, KindOf(type), {}};
    // A fresh datetime holds the earliest date, 01-JAN-4712 BCE 00:00:00 (UTC for
    // the zoned kinds): the value a new object's TIMESTAMP attribute has when
    // the environment makes new objects not null.
    if (d != nullptr) d->value.year = values::kMinYear;
    made = d;
  } else if (values::IsIntervalType(type)) {
    auto kind = type == values::kDescIntervalYm ? values::IntervalKind::YearMonth
                                                : values::IntervalKind::DaySecond;
    auto* d = new (std::nothrow) values::IntervalDescriptor{{kMagic, type}, kind, {}};
    made = d;
  } else {
    return OCI_INVALID_HANDLE;
  }
  if (made == nullptr) return OCI_ERROR;
  try {
    Register(made, type);
  } catch (const std::bad_alloc&) {
    // No room to grow the registry: the descriptor could never be found again.
    if (values::IsDateTimeType(type)) {
      delete static_cast<values::DateTimeDescriptor*>(made);
    } else {
      delete static_cast<values::IntervalDescriptor*>(made);
    }
    return OCI_ERROR;
  }
  *out = made;
  return OCI_SUCCESS;
}

void FreeValueDescriptor(void* desc) {
  if (desc == nullptr) return;
  // Found and cleared under one lock: two threads freeing the same
  // descriptor cannot both go on to delete it.
  std::uint32_t type = 0;
  if (!Unregister(desc, &type)) return;
  if (values::IsDateTimeType(type)) {
    auto* d = static_cast<values::DateTimeDescriptor*>(desc);
    d->header.magic = 0;
    delete d;
  } else {
    auto* d = static_cast<values::IntervalDescriptor*>(desc);
    d->header.magic = 0;
    delete d;
  }
}

bool IsValueDescriptor(const void* desc, ub4 type) {
  std::uint32_t live_type = 0;
  return Lookup(desc, &live_type) && live_type == type;
}

void CopyValueDescriptor(const void* src, void* dst) {
  if (src == dst) return;
  if (const values::DateTimeDescriptor* s = values::AsDateTime(src)) {
    if (values::DateTimeDescriptor* d = values::AsDateTime(dst)) d->value = s->value;
    return;
  }
  if (const values::IntervalDescriptor* s = values::AsInterval(src)) {
    if (values::IntervalDescriptor* d = values::AsInterval(dst)) d->value = s->value;
  }
}

}  // namespace ocimem
