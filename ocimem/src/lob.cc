#include "lob.h"

#include <new>

namespace ocimem {

OCILobLocator* AsLocator(const void* p) {
  if (p == nullptr) return nullptr;
  auto* l = static_cast<OCILobLocator*>(const_cast<void*>(p));
  return l->live == kLiveLob ? l : nullptr;
}

OCILobLocator* NewLocatorDescriptor(ub4 descriptor_type) {
  auto* l = new (std::nothrow) OCILobLocator;
  if (l != nullptr) {
    l->descriptor_type = descriptor_type;
    if (descriptor_type == OCI_DTYPE_FILE) l->lob_type = OCI_TYPECODE_BFILE;
  }
  return l;
}

OCILobLocator* NewInstanceLocator(OCITypeCode lob_type) {
  auto* l = new (std::nothrow) OCILobLocator;
  if (l != nullptr) {
    l->lob_type = lob_type;
    l->descriptor_type = lob_type == OCI_TYPECODE_BFILE ? OCI_DTYPE_FILE : OCI_DTYPE_LOB;
    l->state = LobState::kNewInstance;
  }
  return l;
}

void FreeLocator(OCILobLocator* locator) {
  if (locator == nullptr) return;
  locator->live = 0;
  delete locator;
}

void CopyLocator(const OCILobLocator& src, OCILobLocator* dst) {
  dst->descriptor_type = src.descriptor_type;
  dst->lob_type = src.lob_type;
  dst->state = src.state;
}

}  // namespace ocimem
