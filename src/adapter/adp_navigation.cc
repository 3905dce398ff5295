// One step between a tree node and the Oracle value it stands for: an
// attribute by name, the next item of a collection, emptying a collection,
// and writing an attribute's nullness back into its parent.
#include <cstring>

#include <orid.h>

#include "adapter/adp.h"
#include "interface/trace_func.h"

namespace {

// "SCHEMA.TYPE" splits at its first point; a name without one has no
// schema. The lengths delimit both parts, so the host's text is never
// written to.
struct TypeName {
  explicit TypeName(const char* pszName) {
    const char* pDot = std::strchr(pszName, '.');
    if (pDot != nullptr) {
      pSchema = reinterpret_cast<const oratext*>(pszName);
      nSchemaLen = static_cast<ub4>(pDot - pszName);
      pszName = pDot + 1;
    }
    pType = reinterpret_cast<const oratext*>(pszName);
    nTypeLen = static_cast<ub4>(std::strlen(pszName));
  }
  const oratext* pSchema = nullptr;
  ub4 nSchemaLen = 0;
  const oratext* pType = nullptr;
  ub4 nTypeLen = 0;
};

}  // namespace

void CAdp::_OraGetChild(CAdpTree& child, CAdpTree& parent) {
  CKelTraceFunc trace(m_pTrace, "CAdp::_OraGetChild", -2);
  CAdpElementData& data = child.m_Data;
  const char* pszName = data.m_pColumnDef->ColumnName;
  const oratext* apszNames[1] = {reinterpret_cast<const oratext*>(pszName != nullptr ? pszName : "")};
  const ub4 anLengths[1] = {static_cast<ub4>(pszName != nullptr ? std::strlen(pszName) : 0)};
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
    const TypeName name(data.m_pColumnDef->TypeName);
    _OraCheck(OCITypeByName(m_pEnv, m_pErr, m_pSvc, name.pSchema, name.nSchemaLen, name.pType,
                            name.nTypeLen, nullptr, 0, OCI_DURATION_DEFAULT, OCI_TYPEGET_HEADER,
                            &data.m_pTdo),
              "OCITypeByName", "CAdp::_OraGetNextCollItem");
  }
  if (owner.m_pIter == nullptr) {
    _OraCheck(OCIIterCreate(m_pEnv, m_pErr, *static_cast<OCIColl**>(owner.m_pField), &owner.m_pIter),
              "OCIIterCreate", "CAdp::_OraGetNextCollItem");
  }
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
  const ub4 anLengths[1] = {static_cast<ub4>(pszName != nullptr ? std::strlen(pszName) : 0)};
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
