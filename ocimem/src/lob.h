// LOB locators.  A locator is a descriptor (OCIDescriptorAlloc with OCI_DTYPE_LOB or
// OCI_DTYPE_FILE) or a slot of an instance.  A slot's locator starts in the "new instance"
// state: not null, an empty LOB that can be read but not written until the instance is
// stored and fetched again.  Stored LOB contents are added with tables.
#ifndef OCIMEM_SRC_LOB_H
#define OCIMEM_SRC_LOB_H

#include "oci.h"

namespace ocimem {

constexpr ub4 kLiveLob = 0x4c4f424cU;

enum class LobState : ub1 {
  kUnset,        // a fresh descriptor that points to no LOB
  kNewInstance,  // the empty LOB of a new instance (decision D11)
};

}  // namespace ocimem

struct OCILobLocator {
  ub4 live = ocimem::kLiveLob;
  ub4 descriptor_type = OCI_DTYPE_LOB;  // or OCI_DTYPE_FILE
  OCITypeCode lob_type = 0;             // OCI_TYPECODE_CLOB, _BLOB, _BFILE; 0 when unset
  ocimem::LobState state = ocimem::LobState::kUnset;
};

namespace ocimem {

// The locator behind `p` when it is a live one, else nullptr.
OCILobLocator* AsLocator(const void* p);
// A descriptor of OCIDescriptorAlloc.
OCILobLocator* NewLocatorDescriptor(ub4 descriptor_type);
// The locator held by an instance slot of a CLOB, BLOB or BFILE attribute or element.
OCILobLocator* NewInstanceLocator(OCITypeCode lob_type);
void FreeLocator(OCILobLocator* locator);
void CopyLocator(const OCILobLocator& src, OCILobLocator* dst);

}  // namespace ocimem

#endif  // OCIMEM_SRC_LOB_H
