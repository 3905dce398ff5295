// Lays a described type out as the adapter's flat Column_Def list: one record per scalar
// member, and for every nested object or collection a group of an opening record, its
// members and a closing record. The walk keeps its open groups on a heap stack, so deep
// nesting costs memory, not call stack.
#ifndef TOOLS_COLDEF_LIST_BUILDER_H
#define TOOLS_COLDEF_LIST_BUILDER_H

#include <optional>
#include <string>
#include <vector>

#include "type_describer.h"

namespace coldef {

class ListBuilder {
 public:
  explicit ListBuilder(TypeDescriber* describer) : describer_(describer) {}

  // Adds the members of the top-level type: its attributes, or its collection's item.
  // Returns COLDEF_OK or the first error of a nested describe, or COLDEF_E_CYCLE.
  int Build(const TypeDescription& top);

  // Copies the records and their texts into one block of memory that coldefFree releases,
  // linked in order; *list is NULL when there are no records. COLDEF_E_NO_MEMORY when the
  // block cannot be had.
  int Finish(Column_Def** list) const;

 private:
  struct Entry {
    Column_Def def{};
    std::optional<std::string> column_name;
    std::optional<std::string> type_name;
  };
  struct Group {
    const TypeDescription* type;
    size_t next;            // the next attribute, or 1 once a collection's item was added
    bool closed_by_record;  // every group but the top-level one
  };

  int AddMember(const MemberDescription& member, bool item);
  bool IsOpen(const TypeDescription& type) const;

  TypeDescriber* describer_;
  std::vector<Group> open_;
  std::vector<Entry> entries_;
};

}  // namespace coldef

#endif  // TOOLS_COLDEF_LIST_BUILDER_H
