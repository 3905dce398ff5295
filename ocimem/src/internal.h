// Shared plumbing of every OCI entry point: handle validation, diagnostics and injected
// faults.  Each public call that takes an error handle starts with
//   sword rc; if (ocimem::Enter("OCINumberToText", err, &rc)) return rc;
#ifndef OCIMEM_SRC_INTERNAL_H
#define OCIMEM_SRC_INTERNAL_H

#include <string_view>

#include "handles.h"
#include "oci.h"
#include "value_descriptors.h"

namespace ocimem {

// Validates err (rc = OCI_INVALID_HANDLE for NULL or anything but a live error handle),
// clears its records, then applies a fault armed for `function` (rc = the injected status,
// records set as injected).  True when the caller must return rc.
bool Enter(const char* function, OCIError* err, sword* rc);

// The same for calls without an error handle (faults only).
bool EnterNoErr(const char* function, sword* rc);

// Records "ORA-%05d: <message>" on err and returns OCI_ERROR.
sword Fail(OCIError* err, int ora_code, std::string_view message);

// Appends a further record, for failures Oracle reports with several.
void AddRecord(OCIError* err, int ora_code, std::string_view message);

// The environment behind an environment, service-context, session or server handle (the
// `void* hndl` of the datetime and interval calls), or nullptr.
Env* EnvFromHandle(const void* hndl);

// Environment of a call of the object interface: OCI_INVALID_HANDLE for anything but a
// live environment, OCI_ERROR with ORA-21301 when it was not made in object mode.
// OCI_SUCCESS otherwise.
sword CheckObjectEnv(OCIEnv* envh, OCIError* err, Env** env);

// ORA-21560 "argument N is null, invalid, or out of range".
sword FailArgument(OCIError* err, int position);

}  // namespace ocimem

#endif  // OCIMEM_SRC_INTERNAL_H
