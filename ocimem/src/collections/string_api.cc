// OCIString and OCIRaw calls of orl.h (layout: var_block.h).
#include "objects/instance.h"
#include "session/internal.h"
#include "collections/var_block.h"

namespace ocimem {
namespace {

sword NoMemory(OCIError* err) {
  return Fail(err, 21500, "internal error code, arguments: [out of memory]");
}

sword Resize(const char* function, OCIEnv* envh, OCIError* err, ub4 new_size, void** value) {
  sword rc;
  if (Enter(function, err, &rc)) return rc;
  Env* env = nullptr;
  if ((rc = CheckObjectEnv(envh, err, &env)) != OCI_SUCCESS) return rc;
  if (value == nullptr) return FailArgument(err, 4);
  if (new_size == 0) {
    // Decision D6: resizing to 0 frees the value and leaves NULL behind.
    if (*value != nullptr) {
      ForgetInstance(env, *value);
      FreeVarBlock(*value);
      *value = nullptr;
    }
    return OCI_SUCCESS;
  }
  return ResizeVarBlock(env, new_size, value) ? OCI_SUCCESS : NoMemory(err);
}

sword Assign(const char* function, OCIEnv* envh, OCIError* err, const void* bytes, ub4 length,
             int bytes_position, void** value) {
  sword rc;
  if (Enter(function, err, &rc)) return rc;
  Env* env = nullptr;
  if ((rc = CheckObjectEnv(envh, err, &env)) != OCI_SUCCESS) return rc;
  if (bytes == nullptr && length > 0) return FailArgument(err, bytes_position);
  if (value == nullptr) return FailArgument(err, bytes_position + 2);
  return AssignVarBlock(env, bytes, length, value) ? OCI_SUCCESS : NoMemory(err);
}

}  // namespace
}  // namespace ocimem

using namespace ocimem;

ub4 OCIStringSize(OCIEnv* env, const OCIString* vs) {
  (void)env;
  return vs == nullptr ? 0 : VarLength(vs);
}

oratext* OCIStringPtr(OCIEnv* env, const OCIString* vs) {
  (void)env;
  return vs == nullptr ? nullptr : VarBytes(vs);
}

sword OCIStringResize(OCIEnv* env, OCIError* err, ub4 new_size, OCIString** str) {
  return Resize("OCIStringResize", env, err, new_size, reinterpret_cast<void**>(str));
}

sword OCIStringAssignText(OCIEnv* env, OCIError* err, const oratext* rhs, ub4 rhs_len,
                          OCIString** lhs) {
  return Assign("OCIStringAssignText", env, err, rhs, rhs_len, 3, reinterpret_cast<void**>(lhs));
}

sword OCIStringAssign(OCIEnv* envh, OCIError* err, const OCIString* rhs, OCIString** lhs) {
  sword rc;
  if (Enter("OCIStringAssign", err, &rc)) return rc;
  Env* env = nullptr;
  if ((rc = CheckObjectEnv(envh, err, &env)) != OCI_SUCCESS) return rc;
  if (rhs == nullptr) return FailArgument(err, 3);
  if (lhs == nullptr) return FailArgument(err, 4);
  void** value = reinterpret_cast<void**>(lhs);
  return AssignVarBlock(env, VarBytes(rhs), VarLength(rhs), value) ? OCI_SUCCESS
                                                                  : NoMemory(err);
}

ub4 OCIRawSize(OCIEnv* env, const OCIRaw* raw) {
  (void)env;
  return raw == nullptr ? 0 : VarLength(raw);
}

ub1* OCIRawPtr(OCIEnv* env, const OCIRaw* raw) {
  (void)env;
  return raw == nullptr ? nullptr : VarBytes(raw);
}

sword OCIRawResize(OCIEnv* env, OCIError* err, ub4 new_size, OCIRaw** raw) {
  return Resize("OCIRawResize", env, err, new_size, reinterpret_cast<void**>(raw));
}

sword OCIRawAssignBytes(OCIEnv* env, OCIError* err, const ub1* rhs, ub4 rhs_len, OCIRaw** lhs) {
  return Assign("OCIRawAssignBytes", env, err, rhs, rhs_len, 3, reinterpret_cast<void**>(lhs));
}
