// Allocation and bookkeeping of datetime and interval descriptors. The core
// calls these from OCIDescriptorAlloc/Free and when object instances hold
// TIMESTAMP or INTERVAL attributes.
#include <mutex>
#include <new>
#include <unordered_map>

#include "../value_descriptors.h"
#include "calendar.h"
#include "descriptor.h"

namespace ocimem {
namespace {

constexpr std::uint32_t kMagic = 0x4F56414CU;

// Pointer -> descriptor type for every live descriptor. Every value call
// looks its descriptor up here, so that a stray pointer is never read
// through. A plain mutex: a reader-writer lock measured slower for the one
// thread per connection that the callers use.
struct Registry {
  std::mutex mutex;
  std::unordered_map<const void*, std::uint32_t> live;
};

Registry& TheRegistry() {
  static Registry* registry = new Registry;  // never destroyed: used from atexit paths
  return *registry;
}

bool Lookup(const void* p, std::uint32_t* type) {
  if (p == nullptr) return false;
  Registry& r = TheRegistry();
  std::lock_guard<std::mutex> lock(r.mutex);
  auto it = r.live.find(p);
  if (it == r.live.end()) return false;
  *type = it->second;
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
  {
    Registry& r = TheRegistry();
    std::lock_guard<std::mutex> lock(r.mutex);
    r.live.emplace(made, type);
  }
  *out = made;
  return OCI_SUCCESS;
}

void FreeValueDescriptor(void* desc) {
  if (desc == nullptr) return;
  std::uint32_t type = 0;
  {
    // Found and removed under one lock: two threads freeing the same
    // descriptor cannot both go on to delete it.
    Registry& r = TheRegistry();
    std::lock_guard<std::mutex> lock(r.mutex);
    auto it = r.live.find(desc);
    if (it == r.live.end()) return;
    type = it->second;
    r.live.erase(it);
  }
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
