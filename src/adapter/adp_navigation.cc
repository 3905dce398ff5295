// One step between a tree node and the Oracle value it stands for: an
// attribute by name, the next item of a collection, emptying a collection,
// and writing an attribute's nullness back into its parent.
#include <cstring>

#include <orid.h>

#include "adapter/adp.h"
#include "adapter/type_name.h"
#include "interface/trace_func.h"


void CAdp::_OraGetChild(CAdpTree& child, CAdpTree& parent) {
  CKelTraceFunc trace(m_pTrace, "CAdp::_OraGetChild", -2);
  CAdpElementData& data = child.m_Data;
  const char* pszName = data.m_pColumnDef->ColumnName;
  const oratext* apszNames[1] = {reinterpret_cast<const oratext*>(pszName != nullptr ? pszName : "")};
  const ub4 anLengths[1] = {data.NameLength(m_nCall)};
  data.ClearOraObjects();
  const CAdpElementData& owner = parent.m_Data;
  _OraCheck(OCIObjectGetAttr(m_pEnv, m_pErr, owner.m_pField, owner.m_pInd, owner.m_pTdo,
                             apszNames, anLengths, 1, nullptr, 0, &data.m_nInd,
                             reinterpret_cast<void**>(&data.m_pInd), &data.m_pField,
                             &data.m_pTdo),
            "OCIObjectGetAttr", "CAdp::_OraGetChild");
  // A scalar or collection attribute comes without a null structure: its
  // indicator is the node's own, so that every developed node reads its
  // nullness through m_pInd.
  if (data.m_pInd == nullptr) data.m_pInd = &data.m_nInd;
  trace.SetRC(0);
}

int CAdp::_OraGetNextCollItem(CAdpTree& item, CAdpTree& coll) {
  CKelTraceFunc trace(m_pTrace, "CAdp::_OraGetNextCollItem", -2);
  CAdpElementData& data = item.m_Data;
  CAdpElementData& owner = coll.m_Data;
  if (data.m_pColumnDef->TypeName != nullptr) {
    // Looked up once per item and never unpinned.
    const CAdpTypeName name(data.m_pColumnDef->TypeName);
    _OraCheck(OCITypeByName(m_pEnv, m_pErr, m_pSvc, name.pSchema, name.nSchemaLen, name.pType,
                            name.nTypeLen, nullptr, 0, OCI_DURATION_DEFAULT, OCI_TYPEGET_HEADER,
                            &data.m_pTdo),
              "OCITypeByName", "CAdp::_OraGetNextCollItem");
  }
  // A collection without a value (the root of the LOB pass over a
  // collection type, which selection leaves without one) has no items.
  if (owner.m_pField == nullptr) {
    trace.SetRC(0);
    return 0;
  }
  if (owner.m_pIter == nullptr) {
    // Room to note the iterator first, so that none is made unnoted.
    if (m_nIterators == m_Iterators.GetSize()) m_Iterators.SetSize(m_nIterators + 1, nullptr);
    _OraCheck(OCIIterCreate(m_pEnv, m_pErr, *static_cast<OCIColl**>(owner.m_pField), &owner.m_pIter),
              "OCIIterCreate", "CAdp::_OraGetNextCollItem");
    m_Iterators.GetPtr()[m_nIterators++] = owner.m_pIter;
  }
  // An item that is itself a collection is walked with an iterator of its
  // own, not with the one of the item it was before.
  data.m_pIter = nullptr;
  boolean bEnd = FALSE;
  _OraCheck(OCIIterNext(m_pEnv, m_pErr, owner.m_pIter, &data.m_pField,
                        reinterpret_cast<void**>(&data.m_pInd), &bEnd),
            "OCIIterNext", "CAdp::_OraGetNextCollItem");
  trace.SetRC(0);
  return bEnd ? 0 : 1;
}

void CAdp::_OraEmptyColl(CAdpTree& coll) {
  CKelTraceFunc trace(m_pTrace, "CAdp::_OraEmptyColl", -2);
  OCIColl* pColl = *static_cast<OCIColl**>(coll.m_Data.m_pField);
  sb4 nSize = 0;
  _OraCheck(OCICollSize(m_pEnv, m_pErr, pColl, &nSize), "OCICollSize", "CAdp::_OraEmptyColl");
  _OraCheck(OCICollTrim(m_pEnv, m_pErr, nSize, pColl), "OCICollTrim", "CAdp::_OraEmptyColl");
  trace.SetRC(0);
}

void CAdp::_OraAddCollItem(CAdpTree& item, CAdpTree& coll) {
  const char* const kFunc = "CAdp::_OraAddCollItem";
  CKelTraceFunc trace(m_pTrace, kFunc, -2);
  CAdpElementData& data = item.m_Data;
  OCIColl* pColl = *static_cast<OCIColl**>(coll.m_Data.m_pField);
  const void* pElement = *static_cast<void**>(_StructToField(item));
  if (pElement != nullptr) {
    _OraCheck(OCICollAppend(m_pEnv, m_pErr, pElement, data.m_pInd, pColl), "OCICollAppend", kFunc);
    trace.SetRC(0);
    return;
  }
  // Oracle takes no NULL element: an item without a value (an object item
  // given back because its field was empty) goes in as a new value of its
  // type marked null.
  OCIType* pTdo = nullptr;
  if (data.m_pColumnDef->TypeName != nullptr) {
    const CAdpTypeName name(data.m_pColumnDef->TypeName);
    _OraCheck(OCITypeByName(m_pEnv, m_pErr, m_pSvc, name.pSchema, name.nSchemaLen, name.pType,
                            name.nTypeLen, nullptr, 0, OCI_DURATION_DEFAULT, OCI_TYPEGET_HEADER,
                            &pTdo),
              "OCITypeByName", kFunc);
  }
  void* pNull = nullptr;
  _OraCheck(OCIObjectNew(m_pEnv, m_pErr, m_pSvc,
                         _IsComplex(item) ? OCI_TYPECODE_OBJECT : data.m_pColumnDef->DataType, pTdo,
                         nullptr, OCI_DURATION_DEFAULT, TRUE, &pNull),
            "OCIObjectNew", kFunc);
  OCIInd nNull = OCI_IND_NULL;
  void* pNullInd = &nNull;
  sword nStatus = OCI_SUCCESS;
  if (_IsComplex(item)) {
    nStatus = OCIObjectGetInd(m_pEnv, m_pErr, pNull, &pNullInd);
    if (nStatus == OCI_SUCCESS) *static_cast<OCIInd*>(pNullInd) = OCI_IND_NULL;
  }
  if (nStatus == OCI_SUCCESS) nStatus = OCICollAppend(m_pEnv, m_pErr, pNull, pNullInd, pColl);
  OCIObjectFree(m_pEnv, m_pErr, pNull, OCI_OBJECTFREE_FORCE);
  if (pTdo != nullptr) OCIObjectUnpin(m_pEnv, m_pErr, pTdo);
  _OraCheck(nStatus, "OCICollAppend", kFunc);
  trace.SetRC(0);
}

void CAdp::_OraSetIndicator(CAdpTree& child, CAdpTree& parent, int bNotNull) {
  CKelTraceFunc trace(m_pTrace, "CAdp::_OraSetIndicator", -2);
  CAdpElementData& data = child.m_Data;
  if (bNotNull) data.m_nInd = OCI_IND_NOTNULL;
  if (!_HasColumnName(child)) {
    trace.SetRC(0);
    return;
  }
  const char* pszName = data.m_pColumnDef->ColumnName;
  const oratext* apszNames[1] = {reinterpret_cast<const oratext*>(pszName != nullptr ? pszName : "")};
  const ub4 anLengths[1] = {data.NameLength(m_nCall)};
  const CAdpElementData& owner = parent.m_Data;
  OCIInd nStatus;
  const void* pAttrNullStruct;
  if (_IsAdt(child)) {
    nStatus = data.m_nInd;
    pAttrNullStruct = data.m_pInd;
  } else {
    nStatus = data.m_pInd != nullptr ? *data.m_pInd : data.m_nInd;
    pAttrNullStruct = nullptr;
  }
  _OraCheck(OCIObjectSetAttr(m_pEnv, m_pErr, owner.m_pField, owner.m_pInd, owner.m_pTdo,
                             apszNames, anLengths, 1, nullptr, 0, nStatus, pAttrNullStruct,
                             nullptr),
            "OCIObjectSetAttr", "CAdp::_OraSetIndicator");
  trace.SetRC(0);
}

// An iterator is made once per collection node and call, and nodes forget
// theirs (copies of nodes share them): the call that made them deletes them
// all when it ends. No node uses one of an earlier call: an attribute's is
// forgotten when the attribute is fetched, the root's when a write begins,
// an item's when the item is.
void CAdp::_DeleteIterators() {
  if (m_nIterators == 0) return;
  for (unsigned long i = 0; i < m_nIterators; ++i) OCIIterDelete(m_pEnv, m_pErr, &m_Iterators.GetPtr()[i]);
  m_nIterators = 0;
}
