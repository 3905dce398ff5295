// Layout of the OCIDateTime / OCIInterval descriptors handed to callers.
// A live descriptor is registered so that a stray pointer is recognised
// without reading through it.
#ifndef OCIMEM_VALUES_DESCRIPTOR_H
#define OCIMEM_VALUES_DESCRIPTOR_H

#include <cstdint>

#include "value_types.h"

namespace ocimem::values {

// Descriptor type codes, as OCIDescriptorAlloc receives them.
constexpr std::uint32_t kDescIntervalYm = 62;
constexpr std::uint32_t kDescIntervalDs = 63;
constexpr std::uint32_t kDescDate = 65;
constexpr std::uint32_t kDescTimestamp = 68;
constexpr std::uint32_t kDescTimestampTz = 69;
constexpr std::uint32_t kDescTimestampLtz = 70;

struct DescriptorHeader {
  std::uint32_t magic;
  std::uint32_t type;
};

struct DateTimeDescriptor {
  DescriptorHeader header;
  DateTimeKind kind;
  DateTimeValue value;
};

struct IntervalDescriptor {
  DescriptorHeader header;
  IntervalKind kind;
  IntervalValue value;
};

bool IsDateTimeType(std::uint32_t type);
bool IsIntervalType(std::uint32_t type);

// The live descriptor behind a caller's pointer, or nullptr when the pointer
// is not a live descriptor of that family.
DateTimeDescriptor* AsDateTime(const void* p);
IntervalDescriptor* AsInterval(const void* p);

}  // namespace ocimem::values

#endif  // OCIMEM_VALUES_DESCRIPTOR_H
