// OCIString and OCIRaw calls of orl.h (layout: var_block.h).
#include "objects/instance.h"
#include "session/internal.h"
#include "collections/var_block.h"

namespace ocimem {
namespace {

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
  return ResizeVarBlock(env, new_size, value) ? OCI_SUCCESS : OutOfMemory(err);
}

sword Assign(const char* function, OCIEnv* envh, OCIError* err, const void* bytes, ub4 length,
             int bytes_position, void** value) {
  sword rc;
  if (Enter(function, err, &rc)) return rc;
  Env* env = nullptr;
  if ((rc = CheckObjectEnv(envh, err, &env)) != OCI_SUCCESS) return rc;
  if (bytes == nullptr && length > 0) return FailArgument(err, bytes_position);
  if (value == nullptr) return FailArgument(err, bytes_position + 2);
  return AssignVarBlock(env, bytes, length, value) ? OCI_SUCCESS : OutOfMemory(err);
}

}  // namespace
}  // namespace ocimem

using namespace ocimem;

ub4 OCIStringSize(OCIEnv* env, const OCIString* vs) try {
  (void)env;
  return vs == nullptr ? 0 : VarLength(vs);
} catch (...) {
  return 0;
}

oratext* OCIStringPtr(OCIEnv* env, const OCIString* vs) try {
  (void)env;
  return vs == nullptr ? nullptr : VarBytes(vs);
} catch (...) {
  return nullptr;
}

sword OCIStringResize(OCIEnv* env, OCIError* err, ub4 new_size, OCIString** str) try {
  return Resize("OCIStringResize", env, err, new_size, reinterpret_cast<void**>(str));
} catch (...) {
  return ocimem::OutOfMemory(err);
}

sword OCIStringAssignText(OCIEnv* env, OCIError* err, const oratext* rhs, ub4 rhs_len,
                          OCIString** lhs) try {
  return Assign("OCIStringAssignText", env, err, rhs, rhs_len, 3, reinterpret_cast<void**>(lhs));
} catch (...) {
  return ocimem::OutOfMemory(err);
}

sword OCIStringAssign(OCIEnv* envh, OCIError* err, const OCIString* rhs, OCIString** lhs) try {
  sword rc;
  if (Enter("OCIStringAssign", err, &rc)) return rc;
  Env* env = nullptr;
  if ((rc = CheckObjectEnv(envh, err, &env)) != OCI_SUCCESS) return rc;
  if (rhs == nullptr) return FailArgument(err, 3);
  if (lhs == nullptr) return FailArgument(err, 4);
  void** value = reinterpret_cast<void**>(lhs);
  return AssignVarBlock(env, VarBytes(rhs), VarLength(rhs), value) ? OCI_SUCCESS
                                                                  : OutOfMemory(err);
} catch (...) {
  return ocimem::OutOfMemory(err);
}

ub4 OCIRawSize(OCIEnv* env, const OCIRaw* raw) try {
  (void)env;
  return raw == nullptr ? 0 : VarLength(raw);
} catch (...) {
  return 0;
}

ub1* OCIRawPtr(OCIEnv* env, const OCIRaw* raw) try {
  (void)env;
  return raw == nullptr ? nullptr : VarBytes(raw);
} catch (...) {
  return nullptr;
}

sword OCIRawResize(OCIEnv* env, OCIError* err, ub4 new_size, OCIRaw** raw) try {
  return Resize("OCIRawResize", env, err, new_size, reinterpret_cast<void**>(raw));
} catch (...) {
  return ocimem::OutOfMemory(err);
}

sword OCIRawAssignBytes(OCIEnv* env, OCIError* err, const ub1* rhs, ub4 rhs_len, OCIRaw** lhs) try {
  return Assign("OCIRawAssignBytes", env, err, rhs, rhs_len, 3, reinterpret_cast<void**>(lhs));
} catch (...) {
  return ocimem::OutOfMemory(err);
}
