// The element tree against the type it is used with. The walks take each
// value in the shape its definition names (an OCINumber for a NUMBER, a
// handle slot for a string, an instance for an object, ...); a definition
// that names another shape than the type gives its attribute would have them
// read or write a value as one of another kind. So before a tree is first
// used with a type, every definition whose attribute exists is compared with
// what Oracle describes for it. An attribute the type lacks is left to the
// navigation, which reports it as Oracle does.
#include <cstring>

#include "adapter/adp.h"
#include "adapter/type_name.h"
#include "interface/err_lookup.h"
#include "interface/trace_func.h"

namespace {

// The shape of a value, from either side.
enum EValueKind {
  kOther,
  kNumber,
  kText,
  kDate,
  kRaw,
  kClob,
  kBlob,
  kTimestamp,
  kTimestampTz,
  kTimestampLtz,
  kIntervalYm,
  kIntervalDs,
  kObject,
  kCollection
};

// What a definition's data type makes of a value; kOther for the types the
// conversions refuse before they look at a value.
EValueKind DefinitionKind(unsigned short nDataType) {
  switch (nDataType) {
    case SQLT_NUM:
      return kNumber;
    case SQLT_CHR:
    case SQLT_LNG:
    case SQLT_LVC:
    case SQLT_AFC:
      return kText;
    case SQLT_DAT:
      return kDate;
    case SQLT_BIN:
    case SQLT_LBI:
      return kRaw;
    case SQLT_CLOB:
      return kClob;
    case SQLT_BLOB:
      return kBlob;
    case SQLT_TIMESTAMP:
      return kTimestamp;
    case SQLT_TIMESTAMP_TZ:
      return kTimestampTz;
    case SQLT_TIMESTAMP_LTZ:
      return kTimestampLtz;
    case SQLT_INTERVAL_YM:
      return kIntervalYm;
    case SQLT_INTERVAL_DS:
      return kIntervalDs;
    default:
      return kOther;
  }
}

// How Oracle holds an attribute or element of the given type code.
EValueKind TypeKind(OCITypeCode nCode) {
  switch (nCode) {
    case OCI_TYPECODE_NUMBER:
    case OCI_TYPECODE_INTEGER:
    case OCI_TYPECODE_FLOAT:
    case OCI_TYPECODE_DECIMAL:
    case OCI_TYPECODE_REAL:
    case OCI_TYPECODE_DOUBLE:
    case OCI_TYPECODE_SMALLINT:
    case OCI_TYPECODE_OCTET:
    case OCI_TYPECODE_SIGNED8:
    case OCI_TYPECODE_SIGNED16:
    case OCI_TYPECODE_SIGNED32:
    case OCI_TYPECODE_UNSIGNED8:
    case OCI_TYPECODE_UNSIGNED16:
    case OCI_TYPECODE_UNSIGNED32:
      return kNumber;
    case OCI_TYPECODE_VARCHAR:
    case OCI_TYPECODE_VARCHAR2:
    case OCI_TYPECODE_CHAR:
      return kText;
    case OCI_TYPECODE_DATE:
      return kDate;
    case OCI_TYPECODE_RAW:
      return kRaw;
    case OCI_TYPECODE_CLOB:
      return kClob;
    case OCI_TYPECODE_BLOB:
      return kBlob;
    case OCI_TYPECODE_TIMESTAMP:
      return kTimestamp;
    case OCI_TYPECODE_TIMESTAMP_TZ:
      return kTimestampTz;
    case OCI_TYPECODE_TIMESTAMP_LTZ:
      return kTimestampLtz;
    case OCI_TYPECODE_INTERVAL_YM:
      return kIntervalYm;
    case OCI_TYPECODE_INTERVAL_DS:
      return kIntervalDs;
    case OCI_TYPECODE_OBJECT:
      return kObject;
    case OCI_TYPECODE_NAMEDCOLLECTION:
      return kCollection;
    default:
      return kOther;
  }
}

// The name of an element for the trace: its attribute name, or for a
// collection item the name of what holds it.
const char* ElementName(const Column_Def& def, const Column_Def& owner) {
  if (def.ColumnName != nullptr) return def.ColumnName;
  if (owner.ColumnName != nullptr) return owner.ColumnName;
  if (owner.TypeName != nullptr) return owner.TypeName;
  return def.TypeName != nullptr ? def.TypeName : "";
}

}  // namespace

// The describe handles of one check, one per group level being compared,
// all freed when the check ends however it ends.
class CAdpTypeCheck {
 public:
  explicit CAdpTypeCheck(OCIEnv* pEnv) : m_pEnv(pEnv), m_Handles(0, 8, 0) {}
  ~CAdpTypeCheck() {
    for (unsigned long i = 0; i < m_nHandles; ++i) {
      OCIHandleFree(m_Handles.GetPtr()[i], OCI_HTYPE_DESCRIBE);
    }
  }
  CAdpTypeCheck(const CAdpTypeCheck&) = delete;
  CAdpTypeCheck& operator=(const CAdpTypeCheck&) = delete;

  // The describe handle of a level, made on first use.
  sword Handle(int nLevel, OCIDescribe** ppDescribe) {
    const unsigned long nIndex = static_cast<unsigned long>(nLevel);
    if (nIndex >= m_Handles.GetSize()) m_Handles.SetSize(nIndex + 1, nullptr);
    OCIDescribe** apHandles = m_Handles.GetPtr();
    while (m_nHandles <= nIndex) {
      void* pHandle = nullptr;
      const sword nStatus = OCIHandleAlloc(m_pEnv, &pHandle, OCI_HTYPE_DESCRIBE, 0, nullptr);
      if (nStatus != OCI_SUCCESS) return nStatus;
      apHandles[m_nHandles++] = static_cast<OCIDescribe*>(pHandle);
    }
    *ppDescribe = apHandles[nIndex];
    return OCI_SUCCESS;
  }

 private:
  OCIEnv* m_pEnv;
  CKelArray<OCIDescribe*> m_Handles;
  unsigned long m_nHandles = 0;
};

namespace {

const char kCheckFunc[] = "CAdp::_CheckElementTree";

}  // namespace

void CAdp::_CheckElementTree(OCIType* pTdo) {
  CKelTraceFunc trace(m_pTrace, kCheckFunc, -2);
  CAdpTypeCheck check(m_pEnv);
  OCIDescribe* pDescribe = nullptr;
  _OraCheck(check.Handle(0, &pDescribe), "OCIHandleAlloc(OCI_HTYPE_DESCRIBE)", kCheckFunc);
  _OraCheck(OCIDescribeAny(m_pSvc, m_pErr, pTdo, 0, OCI_OTYPE_PTR, OCI_DEFAULT, OCI_PTYPE_TYPE,
                           pDescribe),
            "OCIDescribeAny", kCheckFunc);
  OCIParam* pType = nullptr;
  _OraCheck(OCIAttrGet(pDescribe, OCI_HTYPE_DESCRIBE, &pType, nullptr, OCI_ATTR_PARAM, m_pErr),
            "OCIAttrGet", kCheckFunc);
  _CheckGroup(check, m_Tree, pType, 0);
  m_pCheckedTdo = pTdo;
  trace.SetRC(0);
}

void CAdp::_CheckGroup(CAdpTypeCheck& check, CAdpTree& group, OCIParam* pType, int nLevel) {
  OCITypeCode nCode = 0;
  _OraCheck(OCIAttrGet(pType, OCI_DTYPE_PARAM, &nCode, nullptr, OCI_ATTR_TYPECODE, m_pErr),
            "OCIAttrGet", kCheckFunc);
  const Column_Def& def = *group.m_Data.m_pColumnDef;
  const EValueKind eKind = TypeKind(nCode);
  if (eKind != (_IsColl(group) ? kCollection : kObject)) {
    _Misfit(def, def);
  }
  if (eKind == kCollection) {
    CAdpTree* pItem = group.GetFirstChild();
    if (pItem == nullptr) return;
    OCIParam* pElement = nullptr;
    _OraCheck(OCIAttrGet(pType, OCI_DTYPE_PARAM, &pElement, nullptr, OCI_ATTR_COLLECTION_ELEMENT,
                         m_pErr),
              "OCIAttrGet", kCheckFunc);
    _CheckMember(check, *pItem, def, pElement, nLevel);
    return;
  }
  ub2 nCount = 0;
  OCIParam* pList = nullptr;
  _OraCheck(OCIAttrGet(pType, OCI_DTYPE_PARAM, &nCount, nullptr, OCI_ATTR_NUM_TYPE_ATTRS, m_pErr),
            "OCIAttrGet", kCheckFunc);
  _OraCheck(OCIAttrGet(pType, OCI_DTYPE_PARAM, &pList, nullptr, OCI_ATTR_LIST_TYPE_ATTRS, m_pErr),
            "OCIAttrGet", kCheckFunc);
  // Lists mostly name the attributes in the type's order: each search
  // starts after the attribute found last.
  ub4 nNext = 1;
  for (CAdpTree* pChild = group.GetFirstChild(); pChild != nullptr;
       pChild = pChild->GetNextSibling()) {
    const char* pszName = pChild->m_Data.m_pColumnDef->ColumnName;
    if (pszName == nullptr || nCount == 0) continue;
    const size_t nNameLen = std::strlen(pszName);
    for (ub4 nTried = 0; nTried < nCount; ++nTried) {
      const ub4 nPos = (nNext + nTried - 1) % nCount + 1;  // positions start at 1
      void* pAttr = nullptr;
      _OraCheck(OCIParamGet(pList, OCI_DTYPE_PARAM, m_pErr, &pAttr, nPos), "OCIParamGet",
                kCheckFunc);
      oratext* pAttrName = nullptr;
      ub4 nAttrNameLen = 0;
      _OraCheck(OCIAttrGet(pAttr, OCI_DTYPE_PARAM, &pAttrName, &nAttrNameLen, OCI_ATTR_NAME, m_pErr),
                "OCIAttrGet", kCheckFunc);
      if (nAttrNameLen != nNameLen || std::memcmp(pAttrName, pszName, nNameLen) != 0) continue;
      _CheckMember(check, *pChild, def, static_cast<OCIParam*>(pAttr), nLevel);
      nNext = nPos % nCount + 1;
      break;
    }
  }
}

void CAdp::_CheckMember(CAdpTypeCheck& check, CAdpTree& member, const Column_Def& owner,
                        OCIParam* pMember, int nLevel) {
  const Column_Def& def = *member.m_Data.m_pColumnDef;
  OCITypeCode nCode = 0;
  _OraCheck(OCIAttrGet(pMember, OCI_DTYPE_PARAM, &nCode, nullptr, OCI_ATTR_TYPECODE, m_pErr),
            "OCIAttrGet", kCheckFunc);
  const EValueKind eKind = TypeKind(nCode);
  if (!_IsComplex(member)) {
    const EValueKind eDefined = DefinitionKind(def.DataType);
    if (eDefined != kOther && eDefined != eKind) _Misfit(def, owner);
    return;
  }
  if (eKind != (_IsColl(member) ? kCollection : kObject)) _Misfit(def, owner);
  // The type of the member by its full name, which a definition's own type
  // name must be.
  oratext* pSchema = nullptr;
  ub4 nSchemaLen = 0;
  oratext* pName = nullptr;
  ub4 nNameLen = 0;
  _OraCheck(OCIAttrGet(pMember, OCI_DTYPE_PARAM, &pSchema, &nSchemaLen, OCI_ATTR_SCHEMA_NAME, m_pErr),
            "OCIAttrGet", kCheckFunc);
  _OraCheck(OCIAttrGet(pMember, OCI_DTYPE_PARAM, &pName, &nNameLen, OCI_ATTR_TYPE_NAME, m_pErr),
            "OCIAttrGet", kCheckFunc);
  if (def.TypeName != nullptr) {
    const CAdpTypeName name(def.TypeName);
    const bool bSchemaFits = name.pSchema == nullptr ||
                             (name.nSchemaLen == nSchemaLen &&
                              std::memcmp(name.pSchema, pSchema, nSchemaLen) == 0);
    if (!bSchemaFits || name.nTypeLen != nNameLen || std::memcmp(name.pType, pName, nNameLen) != 0) {
      // A name of no type at all is left to the lookup that uses it, which
      // reports it as Oracle does; only another type that exists would be
      // taken for this one.
      OCIType* pOther = nullptr;
      if (OCITypeByName(m_pEnv, m_pErr, m_pSvc, name.pSchema, name.nSchemaLen, name.pType,
                        name.nTypeLen, nullptr, 0, OCI_DURATION_DEFAULT, OCI_TYPEGET_HEADER,
                        &pOther) == OCI_SUCCESS) {
        OCIObjectUnpin(m_pEnv, m_pErr, pOther);
        _Misfit(def, owner);
      }
    }
  }
  char szFull[2 * 128 + 2];
  if (nSchemaLen + nNameLen + 1 >= sizeof szFull) _Misfit(def, owner);
  std::memcpy(szFull, pSchema, nSchemaLen);
  szFull[nSchemaLen] = '.';
  std::memcpy(szFull + nSchemaLen + 1, pName, nNameLen);
  const ub4 nFullLen = nSchemaLen + 1 + nNameLen;
  OCIDescribe* pDescribe = nullptr;
  _OraCheck(check.Handle(nLevel + 1, &pDescribe), "OCIHandleAlloc(OCI_HTYPE_DESCRIBE)", kCheckFunc);
  _OraCheck(OCIDescribeAny(m_pSvc, m_pErr, szFull, nFullLen, OCI_OTYPE_NAME, OCI_DEFAULT,
                           OCI_PTYPE_TYPE, pDescribe),
            "OCIDescribeAny", kCheckFunc);
  OCIParam* pType = nullptr;
  _OraCheck(OCIAttrGet(pDescribe, OCI_HTYPE_DESCRIBE, &pType, nullptr, OCI_ATTR_PARAM, m_pErr),
            "OCIAttrGet", kCheckFunc);
  _CheckGroup(check, member, pType, nLevel + 1);
}

void CAdp::_Misfit(const Column_Def& def, const Column_Def& owner) {
  const char* pszName = ElementName(def, owner);
  if (*pszName == '\0') {
    m_pTrace->Printf("*ERR: the definitions do not fit the type");
  } else {
    m_pTrace->Printf("*ERR: the definition of '%s' does not fit its type", pszName);
  }
  throw CKelException(KEL_ERR_ARGUMENT, kCheckFunc, gAdpErrLookup, ADP_ERR_LOOKUP_COUNT);
}
