#include "objects/type.h"

#include <cstdint>
#include <cstring>
#include <memory>
#include <mutex>
#include <new>
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

namespace {
// a += b, false when it overflows.
bool AddTo(size_t* a, size_t b) { return !__builtin_add_overflow(*a, b, a); }
}  // namespace

void OCIType::NoteContents(const ocimem::ValueType& v) {
  switch (v.kind) {
    case ocimem::ValueKind::kLob:
      (v.typecode == OCI_TYPECODE_BFILE ? has_file : has_lob) = true;
      return;
    case ocimem::ValueKind::kObject:
    case ocimem::ValueKind::kCollection:
      has_nested_table = has_nested_table || v.named->has_nested_table;
      has_lob = has_lob || v.named->has_lob;
      has_file = has_file || v.named->has_file;
      return;
    default:
      return;
  }
}

bool OCIType::Layout() {
  if (IsCollection()) {
    has_nested_table = collection_typecode == OCI_TYPECODE_TABLE;
    NoteContents(element);
    return true;
  }
  size_t offset = 0;
  size_t max_align = 1;
  size_t ind = sizeof(OCIInd);  // _atomic
  size_t heaviest_ind = 0;
  for (size_t i = 0; i < attributes.size(); ++i) {
    ocimem::Attribute& a = attributes[i];
    size_t attr_align = a.type.Align();
    if (!AddTo(&offset, attr_align - 1)) return false;
    offset = offset / attr_align * attr_align;
    a.offset = offset;
    if (!AddTo(&offset, a.type.Size())) return false;
    if (attr_align > max_align) max_align = attr_align;
    a.ind_offset = ind;
    const size_t attr_ind = a.type.IndSize();
    if (!AddTo(&ind, attr_ind)) return false;
    if (a.type.kind == ocimem::ValueKind::kObject && attr_ind > heaviest_ind) {
      heaviest_ind = attr_ind;
      heaviest_object = i;
    }
    NoteContents(a.type);
  }
  // Room for the rounding below and for the instance block's own rounding and header.
  constexpr size_t kSlack = 1024;
  if (offset > SIZE_MAX / 2 - kSlack || ind > SIZE_MAX / 2 - kSlack) return false;
  align = max_align;
  size = RoundUp(offset, max_align);
  ind_size = ind;
  flat = Flatten();
  return true;
}

bool OCIType::Flatten() {
  flat_attributes.clear();
  flat_object_inds.clear();
  try {
    bool whole = true;
    for (const ocimem::Attribute& a : attributes) {
      if (a.type.kind != ocimem::ValueKind::kObject) {
        flat_attributes.push_back(FlatAttribute{&a.type, a.offset, a.ind_offset});
      } else {
        const OCIType& inner = *a.type.named;
        if (!inner.flat) {
          whole = false;
          break;
        }
        flat_object_inds.push_back(a.ind_offset);
        for (size_t at : inner.flat_object_inds) flat_object_inds.push_back(a.ind_offset + at);
        for (const FlatAttribute& f : inner.flat_attributes) {
          flat_attributes.push_back(
              FlatAttribute{f.type, a.offset + f.offset, a.ind_offset + f.ind_offset});
        }
      }
      if (flat_attributes.size() + flat_object_inds.size() > kMaxFlatAttributes) {
        whole = false;
        break;
      }
    }
    if (whole) return true;
  } catch (const std::bad_alloc&) {
  }
  flat_attributes.clear();
  flat_attributes.shrink_to_fit();
  flat_object_inds.clear();
  flat_object_inds.shrink_to_fit();
  return false;
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
