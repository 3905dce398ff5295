#include "objects/type.h"

#include <cstring>
#include <memory>
#include <mutex>
#include <unordered_set>
#include <vector>

namespace ocimem {

size_t ValueType::Size() const {
  switch (kind) {
    case ValueKind::kNumber:
      return sizeof(OCINumber);
    case ValueKind::kDate:
      return sizeof(OCIDate);
    case ValueKind::kObject:
      return named->size;
    default:
      return sizeof(void*);
  }
}

size_t ValueType::Align() const {
  switch (kind) {
    case ValueKind::kNumber:
      return alignof(OCINumber);
    case ValueKind::kDate:
      return alignof(OCIDate);
    case ValueKind::kObject:
      return named->align;
    default:
      return alignof(void*);
  }
}

size_t ValueType::IndSize() const {
  return kind == ValueKind::kObject ? named->ind_size : sizeof(OCIInd);
}

namespace {

struct TypeRegistry {
  std::mutex mutex;
  std::unordered_set<const OCIType*> types;
};

// Never destroyed: TDOs may still go while static destructors run.
TypeRegistry& Registry() {
  static TypeRegistry* registry = new TypeRegistry;
  return *registry;
}

}  // namespace

OCIType* FindType(const void* p) {
  TypeRegistry& r = Registry();
  std::lock_guard<std::mutex> lock(r.mutex);
  auto it = r.types.find(static_cast<const OCIType*>(p));
  return it == r.types.end() ? nullptr : const_cast<OCIType*>(*it);
}

}  // namespace ocimem

namespace {
size_t RoundUp(size_t n, size_t align) { return (n + align - 1) / align * align; }
}  // namespace

OCIType::OCIType() {
  ocimem::TypeRegistry& r = ocimem::Registry();
  std::lock_guard<std::mutex> lock(r.mutex);
  r.types.insert(this);
}

OCIType::~OCIType() {
  live = 0;
  {
    ocimem::TypeRegistry& r = ocimem::Registry();
    std::lock_guard<std::mutex> lock(r.mutex);
    r.types.erase(this);
  }
  // The types this one holds may be the last holders of a chain thousands of types deep;
  // releasing them here one inside the other would recurse once per level.  The outermost
  // destructor releases them in a loop instead.
  static thread_local std::vector<std::shared_ptr<OCIType>>* draining = nullptr;
  std::vector<std::shared_ptr<OCIType>> held;
  for (ocimem::Attribute& a : attributes) {
    if (a.type.named) held.push_back(std::move(a.type.named));
  }
  if (element.named) held.push_back(std::move(element.named));
  if (draining != nullptr) {
    for (auto& t : held) draining->push_back(std::move(t));
    return;
  }
  draining = &held;
  while (!held.empty()) {
    std::shared_ptr<OCIType> last = std::move(held.back());
    held.pop_back();
    last.reset();
  }
  draining = nullptr;
}

void OCIType::Layout() {
  size_t offset = 0;
  size_t max_align = 1;
  size_t ind = sizeof(OCIInd);  // _atomic
  for (ocimem::Attribute& a : attributes) {
    size_t attr_align = a.type.Align();
    offset = RoundUp(offset, attr_align);
    a.offset = offset;
    offset += a.type.Size();
    if (attr_align > max_align) max_align = attr_align;
    a.ind_offset = ind;
    ind += a.type.IndSize();
  }
  align = max_align;
  size = RoundUp(offset, max_align);
  ind_size = ind;
}

const ocimem::Attribute* OCIType::FindAttributeScan(const char* attr_name,
                                                   size_t length) const {
  const size_t count = attributes.size();
  for (size_t i = 0; i < count; ++i) {
    const ocimem::Attribute& a = attributes[i];
    if (a.name.size() == length && ocimem::SameBytes(a.name.data(), attr_name, length)) {
      attribute_hint.store(i + 1 == count ? 0 : i + 1, std::memory_order_relaxed);
      return &a;
    }
  }
  return nullptr;
}

namespace {
bool ValueDependsOn(const ocimem::ValueType& v, const OCIType& other) {
  if (v.named.get() == &other) return true;
  return v.kind == ocimem::ValueKind::kRef && v.ref_schema == other.schema &&
         v.ref_name == other.name;
}
}  // namespace

bool OCIType::DependsOn(const OCIType& other) const {
  if (this == &other) return false;
  if (IsCollection()) return ValueDependsOn(element, other);
  for (const ocimem::Attribute& a : attributes) {
    if (ValueDependsOn(a.type, other)) return true;
  }
  return false;
}
