// The element tree: built from the host's flat definition list, one node per
// attribute or collection item, and cut back to the items present.
#include "adapter/adp.h"
#include "interface/err_lookup.h"
#include "interface/trace_func.h"

namespace {

constexpr unsigned short kGroupStart = COLDEF_COMPLEX | COLDEF_DEFINED;
constexpr unsigned short kGroupEnd = COLDEF_END | COLDEF_DEFINED;

// Whether the nodes from pNode on (siblings in order, with their subtrees)
// are what _BuildElementTree would make from pDef at depth nDepth: one node
// per record, standing for it, nested as the groups are, every group closed,
// no group deeper than nMaxDepth. A collection may have lost its item node
// (the reader and _DevelopOraObjects build it again when they need it); with
// bNodes false, the records are only followed. pDef moves as the build's
// would.
bool SpareFits(const CAdpTree* pNode, Column_Def*& pDef, int nDepth, int nMaxDepth,
               bool bNodes) {
  while (pDef != nullptr) {
    const unsigned short nFlags = pDef->Flags;
    if ((nFlags & kGroupStart) == kGroupStart) {
      if (nDepth == nMaxDepth) return false;
      if (bNodes && (pNode == nullptr || pNode->m_Data.m_pColumnDef != pDef)) return false;
      const CAdpTree* pFirst = bNodes ? pNode->GetFirstChild() : nullptr;
      pDef = pDef->Next;
      // A collection without its item node: its records are passed over.
      const bool bItemless = bNodes && pFirst == nullptr && pDef != nullptr &&
                             pDef->InCollection != 0;
      if (!SpareFits(pFirst, pDef, nDepth + 1, nMaxDepth, bNodes && !bItemless)) return false;
      if (pDef == nullptr || (pDef->Flags & kGroupEnd) != kGroupEnd) return false;
      pDef = pDef->Next;
      if (bNodes) pNode = pNode->GetNextSibling();
      continue;
    }
    if ((nFlags & kGroupEnd) == kGroupEnd) break;
    if ((nFlags & COLDEF_DEFINED) == 0) break;
    if (bNodes) {
      if (pNode == nullptr || pNode->m_Data.m_pColumnDef != pDef) return false;
      if (pNode->GetFirstChild() != nullptr) return false;
      pNode = pNode->GetNextSibling();
    }
    pDef = pDef->Next;
  }
  return pNode == nullptr;
}

}  // namespace

bool CAdp::_BuildFromSpare(CAdpTree& parent, Column_Def*& pDef) {
  if (m_nSpare == 0 || pDef == nullptr || parent.GetFirstChild() != nullptr) return false;
  CAdpTree* pSpare = _TakeSpareFor(pDef);
  if (pSpare == nullptr) return false;
  Column_Def* pEnd = pDef;
  if (!SpareFits(pSpare, pEnd, m_nBuildDepth, ADP_MAX_DEPTH, true)) {
    delete pSpare;
    return false;
  }
  // Every node as a build makes it: empty but for its definition.
  AdpForEachNode(*pSpare, [](CAdpTree& node) {
    Column_Def* pNodeDef = node.m_Data.m_pColumnDef;
    node.m_Data = CAdpElementData();
    node.m_Data.m_pColumnDef = pNodeDef;
  });
  try {
    parent.AddAsFirstChild(*pSpare);
  } catch (...) {
    delete pSpare;
    throw;
  }
  pDef = pEnd;
  return true;
}

void CAdp::_BuildElementTree(CAdpTree& parent, Column_Def*& pDef) {
  CKelTraceFunc trace(m_pTrace, "CAdp::_BuildElementTree", -2);
  if (_BuildFromSpare(parent, pDef)) {
    trace.SetRC(0);
    return;
  }
  while (pDef != nullptr) {
    const unsigned short nFlags = pDef->Flags;
    if ((nFlags & kGroupStart) == kGroupStart) {
      // Every walk of the tree goes down one stack frame per level: the
      // depth is bounded here, once, for all of them.
      if (m_nBuildDepth == ADP_MAX_DEPTH) {
        m_pTrace->Printf("*ERR: groups nested deeper than %d levels", ADP_MAX_DEPTH);
        throw CKelException(KEL_ERR_ARGUMENT, "CAdp::_BuildElementTree", gAdpErrLookup,
                            ADP_ERR_LOOKUP_COUNT);
      }
      const Column_Def* pGroup = pDef;
      CAdpTree& child = parent.NewAsLastChild();
      child.m_Data.m_pColumnDef = pDef;
      pDef = pDef->Next;
      ++m_nBuildDepth;
      _BuildElementTree(child, pDef);
      --m_nBuildDepth;
      // The list is required to close every group it opens. One that ends
      // inside a group (at its last record or at one without a definition)
      // is refused rather than followed past its end.
      if (pDef == nullptr || (pDef->Flags & kGroupEnd) != kGroupEnd) {
        m_pTrace->Printf("*ERR: definition list ends inside the group of '%s'",
                         pGroup->ColumnName != nullptr   ? pGroup->ColumnName
                         : pGroup->TypeName != nullptr ? pGroup->TypeName
                                                       : "");
        throw CKelException(KEL_ERR_ARGUMENT, "CAdp::_BuildElementTree", gAdpErrLookup,
                            ADP_ERR_LOOKUP_COUNT);
      }
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
