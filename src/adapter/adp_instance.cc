// Binding the element tree to Oracle instances: developing a tree over an
// instance (one node per attribute and per collection item present) and
// giving back what the tree made or pinned.
#include "adapter/adp.h"
#include "interface/trace_func.h"

void CAdp::_DevelopOraObjects(CAdpTree& node, int bEmpty) {
  CKelTraceFunc trace(m_pTrace, "CAdp::_DevelopOraObjects", -2);
  // A collection that was empty when this tree last met it lost its item
  // node; it gets it back from its definition, as the reader does, or no
  // item of a later, fuller collection would ever be reached.
  if (!bEmpty && node.GetFirstChild() == nullptr && _IsColl(node)) {
    Column_Def* pItemDef = node.m_Data.m_pColumnDef->Next;
    _BuildElementTree(node, pItemDef);
  }
  CAdpTree* pChild = node.GetFirstChild();
  while (pChild != nullptr) {
    if (_InColl(*pChild)) {
      if (bEmpty) {
        _OraEmptyColl(node);
        _DeleteElementAndAfter(pChild);
        break;
      }
      if (!_OraGetNextCollItem(*pChild, node)) {
        _DeleteElementAndAfter(pChild);
        break;
      }
    } else {
      _OraGetChild(*pChild, node);
    }
    if (_IsComplex(*pChild)) _DevelopOraObjects(*pChild, 0);
    CAdpTree* pNext = pChild->GetNextSibling();
    // The item list runs one node ahead while items remain; the surplus node
    // is cut when the collection ends.
    if (pNext == nullptr && _InColl(*pChild)) {
      CAdpTree* pClone = pChild->Clone();
      try {
        pChild->AddAfter(*pClone);
      } catch (...) {
        delete pClone;
        throw;
      }
      pNext = pClone;
    }
    pChild = pNext;
  }
  trace.SetRC(0);
}

// The results of OCIObjectUnpin and OCIObjectFree are not looked at. A
// collection made below the top level is freed through its holder's
// address, which Oracle refuses (ORA-21710) without harm.
void CAdp::_OraDestroyObject(CAdpTree& node) {
  CAdpElementData& data = node.m_Data;
  if (data.m_bTdoPinned && data.m_pTdo != nullptr) {
    OCIObjectUnpin(m_pEnv, m_pErr, data.m_pTdo);
    data.m_pTdo = nullptr;
  }
  if (data.m_bCreated) {
    if (!_IsComplex(node) || (_IsTopLevel(node) && _IsColl(node))) {
      OCIObjectFree(m_pEnv, m_pErr, data.m_pStruct, OCI_OBJECTFREE_FORCE);
      data.m_pStruct = nullptr;
    } else {
      OCIObjectFree(m_pEnv, m_pErr, data.m_pField, OCI_OBJECTFREE_FORCE);
      data.m_pField = nullptr;
    }
  }
  data.ClearOraObjects();
}
