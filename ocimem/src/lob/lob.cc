#include "lob/lob.h"

#include <new>

namespace ocimem {

ub1 CharsetFormOf(OCITypeCode lob_type, ub1 csfrm) {
  if (lob_type != OCI_TYPECODE_CLOB) return 0;
  return csfrm == SQLCS_NCHAR ? ub1{SQLCS_NCHAR} : ub1{SQLCS_IMPLICIT};
}

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

OCILobLocator* NewInstanceLocator(OCITypeCode lob_type, ub1 csfrm) {
  auto* l = new (std::nothrow) OCILobLocator;
  if (l != nullptr) {
    l->lob_type = lob_type;
    l->csfrm = CharsetFormOf(lob_type, csfrm);
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
  if (&src == dst) return;
  dst->descriptor_type = src.descriptor_type;
  dst->lob_type = src.lob_type;
  dst->csfrm = src.csfrm;
  dst->state = src.state;
  dst->cell = src.cell;
  dst->select_txn = src.select_txn;
  dst->write = LobPiecewise();
  dst->read = LobStreamRead();
}

namespace {

// Length of the UTF-8 sequence led by `c` (1 for stray continuation bytes).
size_t SequenceLength(unsigned char c) {
  if (c >= 0xf0 && c < 0xf8) return 4;
  if (c >= 0xe0) return 3;
  if (c >= 0xc0) return 2;
  return 1;
}

}  // namespace

size_t ClobChars(const std::string& utf8) {
  size_t units = 0;
  for (size_t i = 0; i < utf8.size();) {
    size_t n = SequenceLength(static_cast<unsigned char>(utf8[i]));
    units += n == 4 ? 2 : 1;  // characters beyond the BMP take a surrogate pair
    i += n;
  }
  return units;
}

size_t ClobBytePosition(const std::string& utf8, size_t chars) {
  size_t units = 0;
  size_t i = 0;
  while (i < utf8.size() && units < chars) {
    size_t n = SequenceLength(static_cast<unsigned char>(utf8[i]));
    units += n == 4 ? 2 : 1;
    i += n;
  }
  return i < utf8.size() ? i : utf8.size();
}

}  // namespace ocimem
