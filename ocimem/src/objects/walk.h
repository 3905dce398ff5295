// Walks every attribute of an object value and of the objects embedded in it, however deep
// the embedding, without recursion and without allocating.  A type chain can be nested as
// deep as memory allows, so a walk cannot keep one stack frame per level: it keeps one per
// level at which it has put aside the heaviest embedded object (the one with the largest
// null struct) to walk last, in place of its parent.  Every other embedded object has at
// most half its parent's null-struct entries, so the frames in use never outnumber the bits
// of a null struct's size: kMaxWalkFrames covers any value that fits in memory.  Collection
// elements are not walked here: callers queue the collections they meet.
#ifndef OCIMEM_SRC_OBJECTS_WALK_H
#define OCIMEM_SRC_OBJECTS_WALK_H

#include <cstddef>

#include "objects/type.h"

namespace ocimem {

// One place of a walk: the value's slot, the same slot in a second value of the same type
// walked beside it (the source of a copy), and the null information (an OCIInd, or an
// embedded object's null struct).  Any of the three may be nullptr when not walked.
// `null_around` tells whether an object around the place is null by its null struct.
struct WalkPlace {
  unsigned char* slot = nullptr;
  const unsigned char* other = nullptr;
  OCIInd* ind = nullptr;
  bool null_around = false;
};

// What the walk does with an embedded object: walk its attributes, pass over them, or stop.
enum class WalkStep { kInto, kOver, kStop };

constexpr size_t kMaxWalkFrames = 8 * sizeof(size_t);

// The place of attribute `a` of the object at `at`.
inline WalkPlace AttributePlace(const Attribute& a, const WalkPlace& at) {
  WalkPlace p;
  if (at.slot != nullptr) p.slot = at.slot + a.offset;
  if (at.other != nullptr) p.other = at.other + a.offset;
  if (at.ind != nullptr) {
    p.ind = reinterpret_cast<OCIInd*>(reinterpret_cast<unsigned char*>(at.ind) + a.ind_offset);
  }
  p.null_around = at.null_around;
  return p;
}

// Walks the object of type `type` at `at`: `leaf(attribute, place)` for every attribute that
// is not an embedded object (false stops the walk), `enter(attribute, place)` for every
// embedded object before its attributes (it may set place.null_around for them).  The
// attributes of an object come in their order, except its heaviest embedded object, which
// comes after the others.  False when a callback stopped the walk.
template <typename Enter, typename Leaf>
bool WalkObject(const OCIType& type, const WalkPlace& at, Enter&& enter, Leaf&& leaf) {
  struct Frame {
    const OCIType* type;
    WalkPlace place;
    size_t next;
  };
  Frame frames[kMaxWalkFrames];
  size_t depth = 1;
  frames[0] = Frame{&type, at, 0};
  while (depth > 0) {
    Frame& f = frames[depth - 1];
    const OCIType& t = *f.type;
    if (f.next == t.attributes.size()) {
      if (t.heaviest_object == OCIType::kNoAttribute) {
        --depth;
        continue;
      }
      const Attribute& a = t.attributes[t.heaviest_object];
      WalkPlace p = AttributePlace(a, f.place);
      const WalkStep step = enter(a, p);
      if (step == WalkStep::kStop) return false;
      if (step == WalkStep::kOver) {
        --depth;
      } else {
        f = Frame{a.type.named.get(), p, 0};
      }
      continue;
    }
    const size_t i = f.next++;
    const Attribute& a = t.attributes[i];
    if (a.type.kind != ValueKind::kObject) {
      if (!leaf(a, AttributePlace(a, f.place))) return false;
      continue;
    }
    if (i == t.heaviest_object) continue;
    WalkPlace p = AttributePlace(a, f.place);
    const WalkStep step = enter(a, p);
    if (step == WalkStep::kStop) return false;
    if (step == WalkStep::kInto) frames[depth++] = Frame{a.type.named.get(), p, 0};
  }
  return true;
}

}  // namespace ocimem

#endif  // OCIMEM_SRC_OBJECTS_WALK_H
