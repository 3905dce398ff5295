// One scalar value between its JSON form and a value slot of an instance
// (or of a collection item), for every data type the stream carries. A slot
// is what OCIObjectGetAttr points at: an OCINumber or OCIDate in place, a
// pointer to an OCIString, OCIRaw, OCILobLocator, OCIDateTime or OCIInterval.
#ifndef TOOLS_VARNADP_SCALAR_VALUES_H
#define TOOLS_VARNADP_SCALAR_VALUES_H

#include <string>
#include <string_view>

#include <oci.h>

#include <varnadp.h>

namespace varnadp {

class OciSession;

// What a JSON value looks like to the conversion: its kind and its text
// (the raw token of a number, the unescaped text of a string).
enum class JsonKind { kNull, kNumber, kString, kBool, kObject, kArray };

const char* JsonKindName(JsonKind kind);

// Stores the value into the slot. False with *error set (a message without
// the attribute's name) when the kind is wrong, the text does not convert or
// an OCI call fails.
bool StoreScalar(OciSession& session, const Column_Def& def, JsonKind kind, std::string_view text,
                 void* slot, std::string* error);

// Appends the JSON form of the value in the slot. False with *error set when
// an OCI call fails or the type is not one the stream carries.
bool AppendScalar(OciSession& session, const Column_Def& def, const void* slot, std::string* out,
                  std::string* error);

// Whether the stream carries values of this data type at all.
bool IsCarriedType(const Column_Def& def);

}  // namespace varnadp

#endif  // TOOLS_VARNADP_SCALAR_VALUES_H
