// Describes object and collection types by name with OCIDescribeAny and copies what the
// list needs out of the parameters, which live only until the next describe. Each type is
// described once per describer; the descriptions stay valid while the describer lives.
#ifndef TOOLS_COLDEF_TYPE_DESCRIBER_H
#define TOOLS_COLDEF_TYPE_DESCRIBER_H

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "scalar_def.h"

namespace coldef {

struct TypeDescription {
  std::string schema;  // owner and name as describe reports them
  std::string name;
  bool collection = false;
  std::vector<MemberDescription> attributes;  // an object type's, in declaration order
  MemberDescription element;                  // a collection type's
};

// "SCHEMA.NAME", or the bare name when the schema is empty.
std::string QualifiedName(const std::string& schema, const std::string& name);

class TypeDescriber {
 public:
  TypeDescriber(OCIEnv* env, OCIError* err, OCISvcCtx* svc) : env_(env), err_(err), svc_(svc) {}
  ~TypeDescriber();
  TypeDescriber(const TypeDescriber&) = delete;
  TypeDescriber& operator=(const TypeDescriber&) = delete;

  // Describes the type named `name` (as OCIDescribeAny takes it) and points *type at its
  // description. Returns COLDEF_OK, COLDEF_E_ORACLE or COLDEF_E_NOT_OBJECT.
  int Describe(const std::string& name, const TypeDescription** type);

 private:
  int Read(void* top, TypeDescription* type);
  int ReadMember(void* param, bool element, MemberDescription* member);
  int ReadText(void* param, ub4 attribute, std::string* text);
  template <typename T>
  int ReadValue(void* param, ub4 attribute, T* value);

  OCIEnv* env_;
  OCIError* err_;
  OCISvcCtx* svc_;
  OCIDescribe* describe_ = nullptr;
  std::map<std::string, std::unique_ptr<TypeDescription>> described_;
};

}  // namespace coldef

#endif  // TOOLS_COLDEF_TYPE_DESCRIBER_H
