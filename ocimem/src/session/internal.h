// Shared plumbing of every OCI entry point: handle validation, diagnostics and injected
// faults.  Each public call that takes an error handle starts with
//   sword rc; if (ocimem::Enter("OCINumberToText", err, &rc)) return rc;
#ifndef OCIMEM_SRC_SESSION_INTERNAL_H
#define OCIMEM_SRC_SESSION_INTERNAL_H

#include <atomic>
#include <string_view>

#include "session/handles.h"
#include "oci.h"
#include "objects/value_descriptors.h"

namespace ocimem {

// Number of faults armed with ocimemFaultArm (fault.cc): while it is 0 no call needs to
// look for one, and the entry checks below stay inline.
extern std::atomic<int> g_armed_faults;

// The armed path of Enter and EnterNoErr: consults the fault registry.
bool EnterArmed(const char* function, ErrorHandle* e, sword* rc);
bool EnterNoErrArmed(const char* function, sword* rc);

// Validates err (rc = OCI_INVALID_HANDLE for NULL or anything but a live error handle),
// clears its records, then applies a fault armed for `function` (rc = the injected status,
// records set as injected).  True when the caller must return rc.
inline bool Enter(const char* function, OCIError* err, sword* rc) {
  ErrorHandle* e = AsError(err);
  if (e == nullptr) {
    *rc = OCI_INVALID_HANDLE;
    return true;
  }
  if (!e->records.empty()) e->records.clear();
  if (g_armed_faults.load(std::memory_order_acquire) == 0) return false;
  return EnterArmed(function, e, rc);
}

// The same for calls without an error handle (faults only).
inline bool EnterNoErr(const char* function, sword* rc) {
  if (g_armed_faults.load(std::memory_order_acquire) == 0) return false;
  return EnterNoErrArmed(function, rc);
}

// Records "ORA-%05d: <message>" on err and returns OCI_ERROR.
sword Fail(OCIError* err, int ora_code, std::string_view message);

// Appends a further record, for failures Oracle reports with several.
void AddRecord(OCIError* err, int ora_code, std::string_view message);

// The environment behind an environment, service-context, session or server handle (the
// `void* hndl` of the datetime and interval calls), or nullptr.
Env* EnvFromHandle(const void* hndl);

// The full text of Oracle's record for memory that could not be had.
inline constexpr char kOutOfMemoryText[] = "ORA-04030: out of process memory";

// The answer of an entry point that an exception ended (memory that could not be had, a
// length beyond what a container holds): ORA-04030 on err when it is a live error
// handle, and OCI_ERROR.  Every entry point catches with it (or, without an error handle,
// returns the status Oracle gives for that call), so no exception leaves the library.
sword OutOfMemory(OCIError* err) noexcept;

// ORA-21301 "not initialized in object mode".
sword FailNotObjectMode(OCIError* err);

// Environment of a call of the object interface: OCI_INVALID_HANDLE for anything but a
// live environment, OCI_ERROR with ORA-21301 when it was not made in object mode.
// OCI_SUCCESS otherwise.
inline sword CheckObjectEnv(OCIEnv* envh, OCIError* err, Env** env) {
  Env* e = AsEnv(envh);
  if (e == nullptr) return OCI_INVALID_HANDLE;
  if (!e->object_mode) return FailNotObjectMode(err);
  *env = e;
  return OCI_SUCCESS;
}

// ORA-21560 "argument N is null, invalid, or out of range".
sword FailArgument(OCIError* err, int position);

}  // namespace ocimem

#endif  // OCIMEM_SRC_SESSION_INTERNAL_H
