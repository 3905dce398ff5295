// The element tree: built from the host's flat definition list, one node per
// attribute or collection item, and cut back to the items present.
#include "adapter/adp.h"
#include "interface/trace_func.h"

namespace {

constexpr unsigned short kGroupStart = COLDEF_COMPLEX | COLDEF_DEFINED;
constexpr unsigned short kGroupEnd = COLDEF_END | COLDEF_DEFINED;

}  // namespace

void CAdp::_BuildElementTree(CAdpTree& parent, Column_Def*& pDef) {
  CKelTraceFunc trace(m_pTrace, "CAdp::_BuildElementTree", -2);
  while (pDef != nullptr) {
    const unsigned short nFlags = pDef->Flags;
    if ((nFlags & kGroupStart) == kGroupStart) {
      CAdpTree& child = parent.NewAsLastChild();
      child.m_Data.m_pColumnDef = pDef;
      pDef = pDef->Next;
      _BuildElementTree(child, pDef);
      // The list is required to close every group it opens; a list that
      // ends inside a group ends the building here instead of being followed
      // past its end.
      if (pDef == nullptr) break;
      pDef = pDef->Next;
      continue;
    }
    if ((nFlags & kGroupEnd) == kGroupEnd) break;
    if ((nFlags & COLDEF_DEFINED) == 0) break;
    CAdpTree& child = parent.NewAsLastChild();
    child.m_Data.m_pColumnDef = pDef;
    pDef = pDef->Next;
  }
  trace.SetRC(0);
}

void CAdp::_DeleteElementAndAfter(CAdpTree* pNode) {
  while (pNode != nullptr) {
    CAdpTree* pNext = pNode->GetNextSibling();
    // Values that the nodes made go with them.
    _OraDestroySubtree(*pNode);
    pNode->Detach();
    delete pNode;
    pNode = pNext;
  }
}

int CAdp::_IsNestedColl(CAdpTree& node) {
  if (!_IsComplex(node) || !_InColl(node)) return 0;
  for (CAdpTree* pChild = node.GetFirstChild(); pChild != nullptr;
       pChild = pChild->GetNextSibling()) {
    if (_IsColl(*pChild)) return 1;
  }
  return 0;
}
