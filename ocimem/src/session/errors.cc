// Diagnostics: the records of an error handle and OCIErrorGet.
#include <cstdio>
#include <cstring>
#include <string>

#include "session/fault.h"
#include "session/internal.h"

namespace ocimem {

namespace {

std::string Format(int ora_code, std::string_view message) {
  char prefix[32];
  std::snprintf(prefix, sizeof prefix, "ORA-%05d: ", ora_code);
  std::string text(prefix);
  text.append(message);
  return text;
}

}  // namespace

bool EnterArmed(const char* function, ErrorHandle* e, sword* rc) {
  FiredFault fault;
  if (!TakeFault(function, &fault)) return false;
  e->records = std::move(fault.records);
  *rc = fault.status;
  return true;
}

bool EnterNoErrArmed(const char* function, sword* rc) {
  FiredFault fault;
  if (!TakeFault(function, &fault)) return false;
  *rc = fault.status;
  return true;
}

void AddRecord(OCIError* err, int ora_code, std::string_view message) {
  ErrorHandle* e = AsError(err);
  if (e == nullptr) return;
  e->records.push_back({static_cast<sb4>(ora_code), Format(ora_code, message)});
}

sword Fail(OCIError* err, int ora_code, std::string_view message) {
  AddRecord(err, ora_code, message);
  return OCI_ERROR;
}

sword OutOfMemory(OCIError* err) noexcept {
  ErrorHandle* e = AsError(err);
  if (e == nullptr) return OCI_ERROR;
  e->records.clear();
  try {
    e->records.push_back({4030, kOutOfMemoryText});
  } catch (...) {
    // The handle keeps room for one record from its making; an empty text reads as
    // kOutOfMemoryText.
    if (e->records.capacity() > 0) e->records.push_back({4030, std::string()});
  }
  return OCI_ERROR;
}

sword FailArgument(OCIError* err, int position) {
  return Fail(err, 21560,
              "argument " + std::to_string(position) + " is null, invalid, or out of range");
}

sword FailNotObjectMode(OCIError* err) {
  return Fail(err, 21301, "not initialized in object mode");
}

}  // namespace ocimem

using ocimem::ErrorHandle;

sword OCIErrorGet(void* hndlp, ub4 recordno, OraText* sqlstate, sb4* errcodep, OraText* bufp,
                  ub4 bufsiz, ub4 type) try {
  (void)sqlstate;  // unsupported since Oracle 8: never written
  const std::vector<ocimem::ErrorRecord>* records = nullptr;
  if (type == OCI_HTYPE_ERROR) {
    if (ErrorHandle* e = ocimem::AsError(hndlp)) records = &e->records;
  } else if (type == OCI_HTYPE_ENV) {
    if (ocimem::Env* env = ocimem::AsEnv(hndlp)) records = &env->records;
  }
  // A NULL handle has no diagnostics: answering anything but OCI_NO_DATA would keep a
  // caller that loops until OCI_NO_DATA spinning forever (decision D17).
  if (records == nullptr) {
    return hndlp == nullptr ? OCI_NO_DATA : OCI_INVALID_HANDLE;
  }
  if (recordno == 0 || recordno > records->size()) return OCI_NO_DATA;
  const ocimem::ErrorRecord& record = (*records)[recordno - 1];
  if (errcodep != nullptr) *errcodep = record.code;
  if (bufp != nullptr && bufsiz > 0) {
    // Copied without allocating: diagnostics must be readable when memory has run out.
    const std::string_view text =
        record.text.empty() ? std::string_view(ocimem::kOutOfMemoryText) : record.text;
    size_t n = text.size() < bufsiz - 1 ? text.size() : bufsiz - 1;
    std::memcpy(bufp, text.data(), n);
    if (n < bufsiz - 1) bufp[n++] = '\n';
    bufp[n] = '\0';
  }
  return OCI_SUCCESS;
} catch (...) {
  return OCI_ERROR;
}
