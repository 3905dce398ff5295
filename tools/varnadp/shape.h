// The tree a Column_Def list describes: an object's attributes in order, a
// collection's one item, down to the scalars. The JSON conversions walk it;
// it points into the list, which must outlive it.
#ifndef TOOLS_VARNADP_SHAPE_H
#define TOOLS_VARNADP_SHAPE_H

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <oci.h>

#include <varnadp.h>

namespace varnadp {

class OciSession;

struct Shape {
  enum class Kind { kScalar, kObject, kCollection };
  Kind kind = Kind::kScalar;
  const Column_Def* def = nullptr;  // the record; nullptr for the root
  std::string name;                 // attribute name; empty for items and the root
  std::string json_key;             // the name as a JSON key with its colon: "NAME":
  std::string type_name;            // of objects and collections
  OCIType* tdo = nullptr;           // of objects and collections
  std::vector<Shape> members;       // attributes, or a collection's one item
  // Oracle's null structure of an object (its _atomic, then an OCIInd for
  // every attribute, an embedded object's whole null structure in place):
  // where an attribute's indicator stands in its parent's, and how many
  // OCIInds an object's takes.
  size_t ind_index = 0;
  size_t ind_count = 1;
  // Oracle's C layout of an object's instance (each attribute at its natural
  // alignment, an embedded object's struct in place, the struct aligned as
  // its strictest member): where an attribute's value stands in its parent's
  // instance, and an object's size and alignment.
  size_t value_offset = 0;
  size_t value_size = 0;
  size_t value_align = 1;
  // True when the attribute's value and indicator were found where the
  // layouts place them on an instance of its parent's type: they are then
  // reached from the offsets instead of by name.
  bool direct = false;

  bool IsComplex() const { return kind != Kind::kScalar; }
  // The attribute named `key`: the exact name first, then without regard to case.
  const Shape* FindMember(std::string_view key) const;
  // The same, looking first at member *next (the one after the member found
  // last, as JSON objects mostly list the attributes in order); *next moves
  // past the member found.
  const Shape* FindMember(std::string_view key, size_t* next) const {
    if (*next < members.size() && members[*next].name == key) return &members[(*next)++];
    const Shape* found = FindMember(key);
    if (found != nullptr) *next = static_cast<size_t>(found - members.data()) + 1;
    return found;
  }
};

// Builds the tree of the type `type_name` from its list and looks up the
// type of every object and collection in it. Null with session's error set
// when a type cannot be found.
// Sets ind_index and ind_count over the tree (BuildShape does).
void LayOutNullStructures(Shape* shape);

// Sets value_offset, value_size and value_align over the tree (BuildShape
// does).
void LayOutInstances(Shape* shape);

// Sets `direct` on the attributes of every object type in the tree (the root,
// and items that are objects) whose places, asked of Oracle on a new
// instance of the type, are those of the layouts; the others keep it false.
// BuildShape does this once the types are known.
void CheckLayouts(Shape* shape, OciSession& session);

std::unique_ptr<Shape> BuildShape(const Column_Def* list, const std::string& type_name,
                                  OciSession& session);

// "NUMBER", "VARCHAR2", ...: the data type of a scalar for messages.
const char* DataTypeName(const Column_Def& def);

}  // namespace varnadp

#endif  // TOOLS_VARNADP_SHAPE_H
