// Type descriptors (TDOs): what CREATE TYPE makes and OCITypeByName hands out.  A TDO
// carries the C layout of its instances and of their null structures, computed once by
// the rules of the object type translator (natural alignment on LP64).
#ifndef OCIMEM_SRC_OBJECTS_TYPE_H
#define OCIMEM_SRC_OBJECTS_TYPE_H

#include <atomic>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "oci.h"
#include "session/same_bytes.h"

namespace ocimem {

constexpr ub4 kLiveType = 0x4f544450U;

// How a value is held in an instance slot.
enum class ValueKind : ub1 {
  kNumber,      // OCINumber inline
  kDate,        // OCIDate inline
  kString,      // OCIString*
  kRaw,         // OCIRaw*
  kRef,         // OCIRef*
  kLob,         // OCILobLocator*
  kDateTime,    // OCIDateTime*
  kInterval,    // OCIInterval*
  kObject,      // the embedded struct inline
  kCollection,  // OCIColl*
};

struct ValueType {
  ValueKind kind = ValueKind::kNumber;
  OCITypeCode typecode = OCI_TYPECODE_NUMBER;
  ub4 length = 0;               // characters or bytes of VARCHAR2/CHAR/RAW
  bool char_semantics = false;  // VARCHAR2(n CHAR)
  ub1 charset_form = 0;         // SQLCS_IMPLICIT / SQLCS_NCHAR for character types
  sb2 precision = 0;
  sb1 scale = 0;
  ub1 leading_precision = 0;     // INTERVAL leading field
  ub1 fraction_precision = 0;    // TIMESTAMP / INTERVAL DAY TO SECOND fraction
  ub4 descriptor_type = 0;       // OCI_DTYPE_ of datetime, interval and LOB slots
  std::shared_ptr<OCIType> named;  // object and collection types
  std::string ref_schema;          // target of a REF
  std::string ref_name;

  bool IsHandleSlot() const {
    return kind != ValueKind::kNumber && kind != ValueKind::kDate && kind != ValueKind::kObject;
  }
  size_t Size() const;
  size_t Align() const;
  // Bytes of null information: one OCIInd, or the whole null struct of an object.
  size_t IndSize() const;
};

struct Attribute {
  std::string name;
  ValueType type;
  size_t offset = 0;      // in the instance struct
  size_t ind_offset = 0;  // in the null struct, bytes
};

}  // namespace ocimem

struct OCIType : std::enable_shared_from_this<OCIType> {
  OCIType();
  ~OCIType();
  OCIType(const OCIType&) = delete;
  OCIType& operator=(const OCIType&) = delete;

  ub4 live = ocimem::kLiveType;
  std::string schema;
  std::string name;
  OCITypeCode typecode = OCI_TYPECODE_OBJECT;  // or OCI_TYPECODE_NAMEDCOLLECTION
  bool final = true;

  // Object types.
  std::vector<ocimem::Attribute> attributes;
  size_t size = 0;
  size_t align = 1;
  size_t ind_size = sizeof(OCIInd);  // _atomic first
  // The embedded object attribute with the largest null struct, which walks take last
  // (objects/walk.h).
  static constexpr size_t kNoAttribute = static_cast<size_t>(-1);
  size_t heaviest_object = kNoAttribute;
  // Every attribute that is not an embedded object, at any depth of embedding, with its
  // place in the instance and in the null struct, and the null-struct place of every
  // embedded object: what making, copying and freeing a whole value go through without a
  // walk.  Built by Layout from the flat lists of the embedded types; `flat` is false (and
  // those callers walk) when a type embeds one without them or has more than
  // kMaxFlatAttributes of them.
  struct FlatAttribute {
    const ocimem::ValueType* type;
    size_t offset;
    size_t ind_offset;
  };
  static constexpr size_t kMaxFlatAttributes = 256;
  std::vector<FlatAttribute> flat_attributes;
  std::vector<size_t> flat_object_inds;
  bool flat = false;

  // Collection types.
  OCITypeCode collection_typecode = 0;  // OCI_TYPECODE_VARRAY or OCI_TYPECODE_TABLE
  sb4 max_elements = 0;                 // VARRAY bound
  ocimem::ValueType element;

  // What a value holds at any depth (embedded objects and elements; not REF targets).
  bool has_nested_table = false;
  bool has_lob = false;
  bool has_file = false;

  std::atomic<int> pins{0};
  // Where FindAttribute looks first: after the attribute it found last, as
  // callers walking an instance ask for the attributes in order (after the
  // last attribute, the first: the next instance of the type is walked).
  mutable std::atomic<size_t> attribute_hint{0};

  bool IsObject() const { return typecode == OCI_TYPECODE_OBJECT; }
  bool IsCollection() const { return typecode == OCI_TYPECODE_NAMEDCOLLECTION; }
  // Computes offsets, size and null-struct size of an object type, and what a value of
  // the type holds, from the types it uses (each laid out before it).  False when an
  // instance would not fit in the address space.
  bool Layout();
  [[gnu::always_inline]] const ocimem::Attribute* FindAttribute(const char* name,
                                                                size_t length) const {
    // In line: the attribute after the one found last, then that one (attribute names
    // are unique, so this finds the same attribute as the scan).
    const size_t hint = attribute_hint.load(std::memory_order_relaxed);
    const size_t count = attributes.size();
    if (hint < count) {
      const ocimem::Attribute& a = attributes[hint];
      if (a.name.size() == length && ocimem::SameBytes(a.name.data(), name, length)) {
        attribute_hint.store(hint + 1 == count ? 0 : hint + 1, std::memory_order_relaxed);
        return &a;
      }
      // Then the attribute found last: hosts that get an attribute and then
      // set it ask for it twice in a row.
      const ocimem::Attribute& last = attributes[hint == 0 ? count - 1 : hint - 1];
      if (last.name.size() == length && ocimem::SameBytes(last.name.data(), name, length)) {
        return &last;
      }
    }
    return FindAttributeScan(name, length);
  }
  // FindAttribute by a scan of every attribute.
  const ocimem::Attribute* FindAttributeScan(const char* name, size_t length) const;
  // True when this type uses `other` as an attribute, element or REF target.
  bool DependsOn(const OCIType& other) const;

 private:
  // Adds what a value of type `v` holds to the has_ flags.
  void NoteContents(const ocimem::ValueType& v);
  // Fills flat_attributes and flat_object_inds; false when the type gets none.
  bool Flatten();
};

namespace ocimem {
// The TDO behind `p` when it is one, else nullptr.  Reads the TDO's tag, so `p` must point
// to at least a TDO's worth of memory.
inline OCIType* AsType(const void* p) {
  if (p == nullptr) return nullptr;
  auto* t = static_cast<OCIType*>(const_cast<void*>(p));
  return t->live == kLiveType ? t : nullptr;
}
// The same for any pointer at all (a caller's variable, say): looked up among the TDOs that
// exist, never read.
OCIType* FindType(const void* p);
}  // namespace ocimem

#endif  // OCIMEM_SRC_OBJECTS_TYPE_H
