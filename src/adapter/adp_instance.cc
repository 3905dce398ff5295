// Binding the element tree to Oracle instances: developing a tree over an
// instance (one node per attribute and per collection item present) and
// giving back what the tree made or pinned.
#include "adapter/adp.h"
#include "adapter/type_name.h"
#include "interface/trace_func.h"

namespace {

// The type code OCIObjectNew is given for an element. Oracle takes its own
// type codes only: the external codes of RAW and LONG RAW (23 is
// OCI_TYPECODE_UNSIGNED8, a number; 24 is none) become OCI_TYPECODE_RAW,
// and those of LONG and LONG VARCHAR (8 and 94, no type codes at all)
// become text, so that each item is made as the value it holds.
OCITypeCode NewTypeCode(unsigned short nDataType) {
  switch (nDataType) {
    case SQLT_BIN:
    case SQLT_LBI:
      return OCI_TYPECODE_RAW;
    case SQLT_LNG:
    case SQLT_LVC:
      return OCI_TYPECODE_VARCHAR2;
    default:
      return nDataType;
  }
}

}  // namespace

void CAdp::_OraCreateObject(CAdpTree& node) {
  CKelTraceFunc trace(m_pTrace, "CAdp::_OraCreateObject", -2);
  const char* const kFunc = "CAdp::_OraCreateObject";
  CAdpElementData& data = node.m_Data;
  const Column_Def& def = *data.m_pColumnDef;
  if (def.TypeName != nullptr && data.m_pTdo == nullptr) {
    const CAdpTypeName name(def.TypeName);
    _OraCheck(OCITypeByName(m_pEnv, m_pErr, m_pSvc, name.pSchema, name.nSchemaLen, name.pType,
                            name.nTypeLen, nullptr, 0, OCI_DURATION_DEFAULT, OCI_TYPEGET_HEADER,
                            &data.m_pTdo),
              "OCITypeByName", kFunc);
    data.m_bTdoPinned = 1;
  }
  const OCITypeCode nCode = NewTypeCode(def.DataType);
  if (_IsColl(node)) {
    // Only a collection made here is reused; one that a host handed over
    // for writing is the host's.
    if (data.m_pStruct == nullptr || !data.m_bCreated) {
      data.m_pStruct = nullptr;
      _OraCheck(OCIObjectNew(m_pEnv, m_pErr, m_pSvc, nCode, data.m_pTdo, nullptr,
                             OCI_DURATION_DEFAULT, TRUE, &data.m_pStruct),
                "OCIObjectNew", kFunc);
    }
    data.m_pField = &data.m_pStruct;
    if (data.m_pInd == nullptr) {
      _OraCheck(OCIObjectGetInd(m_pEnv, m_pErr, data.m_pStruct, reinterpret_cast<void**>(&data.m_pInd)),
                "OCIObjectGetInd", kFunc);
    }
  } else if (_IsComplex(node)) {
    _OraCheck(OCIObjectNew(m_pEnv, m_pErr, m_pSvc, nCode, data.m_pTdo, nullptr,
                           OCI_DURATION_DEFAULT, TRUE, &data.m_pField),
              "OCIObjectNew", kFunc);
    _OraCheck(OCIObjectGetInd(m_pEnv, m_pErr, data.m_pField, reinterpret_cast<void**>(&data.m_pInd)),
              "OCIObjectGetInd", kFunc);
  } else {
    _OraCheck(OCIObjectNew(m_pEnv, m_pErr, m_pSvc, nCode, data.m_pTdo, nullptr,
                           OCI_DURATION_DEFAULT, TRUE, &data.m_pStruct),
              "OCIObjectNew", kFunc);
    data.m_pField = _FieldToStruct(node);
    data.m_pInd = &data.m_nInd;
  }
  data.m_bCreated = 1;
  data.m_bMadeInStruct = !_IsComplex(node) || (_IsTopLevel(node) && _IsColl(node)) ? 1 : 0;
  trace.SetRC(0);
}

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
      // An item node that still holds a value read from a stream gives it
      // back before it is bound to an item of this collection.
      if (pChild->m_Data.m_bCreated || pChild->m_Data.m_bTdoPinned) _OraDestroySubtree(*pChild);
      if (!_OraGetNextCollItem(*pChild, node)) {
        // The surplus node is kept aside for the next collection of this
        // kind that needs one more node, instead of being freed and cloned
        // again on every call.
        if (pChild->GetNextSibling() == nullptr && pChild != node.GetFirstChild()) {
          pChild->Detach();
          _KeepSpare(pChild);
        } else if (pChild == node.GetFirstChild()) {
          // A collection that holds no item loses its item node; the node
          // is kept aside for the build that gives it back (the reader's,
          // for the next record).
          _DeleteElementAndAfter(pChild->GetNextSibling());
          _OraDestroySubtree(*pChild);
          pChild->Detach();
          _KeepSpare(pChild);
        } else {
          _DeleteElementAndAfter(pChild);
        }
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
      CAdpTree* pClone = _TakeSpareCopyOf(*pChild);
      if (pClone == nullptr) pClone = pChild->Clone();
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
    _DeleteIteratorsIn(node);
    if (data.m_bMadeInStruct) {
      OCIObjectFree(m_pEnv, m_pErr, data.m_pStruct, OCI_OBJECTFREE_FORCE);
      data.m_pStruct = nullptr;
    } else {
      OCIObjectFree(m_pEnv, m_pErr, data.m_pField, OCI_OBJECTFREE_FORCE);
      data.m_pField = nullptr;
    }
  }
  data.ClearOraObjects();
}

// The iterators this call made over collections inside a value go before
// the value does: a freed collection takes its iterators with it, and the
// end of the call must not delete them again (by then another iterator may
// have their address).
void CAdp::_DeleteIteratorsIn(CAdpTree& top) {
  if (m_nIterators == 0) return;
  AdpForEachNode(top, [this](CAdpTree& node) {
    OCIIter* pIter = node.m_Data.m_pIter;
    if (pIter == nullptr) return;
    node.m_Data.m_pIter = nullptr;
    OCIIter** apIter = m_Iterators.GetPtr();
    for (unsigned long i = 0; i < m_nIterators; ++i) {
      if (apIter[i] != pIter) continue;
      OCIIterDelete(m_pEnv, m_pErr, &apIter[i]);
      apIter[i] = apIter[--m_nIterators];
      break;
    }
  });
}

void CAdp::_OraDestroySubtree(CAdpTree& top) {
  AdpForEachNode(top, [this](CAdpTree& node) {
    if (node.m_Data.m_bCreated || node.m_Data.m_bTdoPinned) _OraDestroyObject(node);
  });
}

CAdpTree* CAdp::_TakeSpareCopyOf(const CAdpTree& item) {
  int i = 0;
  while (i < m_nSpare && m_apSpare[i]->m_Data.m_pColumnDef != item.m_Data.m_pColumnDef) ++i;
  if (i == m_nSpare) return nullptr;
  CAdpTree* pSpare = m_apSpare[i];
  m_apSpare[i] = m_apSpare[--m_nSpare];
  // The same copy Clone() makes, into nodes that are already there; a spare
  // of another shape (its nested collections held other counts) is dropped.
  const CAdpTree* pFrom = &item;
  CAdpTree* pTo = pSpare;
  for (;;) {
    pTo->m_Data = pFrom->m_Data;
    const CAdpTree* pFromChild = pFrom->GetFirstChild();
    CAdpTree* pToChild = pTo->GetFirstChild();
    if ((pFromChild == nullptr) != (pToChild == nullptr)) break;
    if (pFromChild != nullptr) {
      pFrom = pFromChild;
      pTo = pToChild;
      continue;
    }
    for (;;) {
      if (pFrom == &item) return pSpare;
      const CAdpTree* pFromNext = pFrom->GetNextSibling();
      CAdpTree* pToNext = pTo->GetNextSibling();
      if ((pFromNext == nullptr) != (pToNext == nullptr)) {
        pFrom = nullptr;
        break;
      }
      if (pFromNext != nullptr) {
        pFrom = pFromNext;
        pTo = pToNext;
        break;
      }
      pFrom = pFrom->GetParent();
      pTo = pTo->GetParent();
    }
    if (pFrom == nullptr) break;
  }
  delete pSpare;
  return nullptr;
}

CAdpTree* CAdp::_TakeSpareFor(const Column_Def* pDef) {
  for (int i = 0; i < m_nSpare; ++i) {
    if (m_apSpare[i]->m_Data.m_pColumnDef != pDef) continue;
    CAdpTree* pSpare = m_apSpare[i];
    m_apSpare[i] = m_apSpare[--m_nSpare];
    return pSpare;
  }
  return nullptr;
}

void CAdp::_KeepSpare(CAdpTree* pNode) {
  for (int i = 0; i < m_nSpare; ++i) {
    if (m_apSpare[i]->m_Data.m_pColumnDef == pNode->m_Data.m_pColumnDef) {
      delete m_apSpare[i];
      m_apSpare[i] = pNode;
      return;
    }
  }
  if (m_nSpare == ADP_SPARE_MAX) {
    delete pNode;
    return;
  }
  m_apSpare[m_nSpare++] = pNode;
}

void CAdp::_DropSpares() {
  while (m_nSpare > 0) delete m_apSpare[--m_nSpare];
}
