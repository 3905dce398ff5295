// CAdpElementData: the payload of one element-tree node. It names the
// element's definition and the Oracle value the element stands for during
// the current call (value address, null indicator, instance made here, type
// descriptor, iterator), plus where a large object lies in the stream for
// the second pass. It owns nothing; copies share the handles.
#ifndef SRC_ADAPTER_ELEMENT_DATA_H_
#define SRC_ADAPTER_ELEMENT_DATA_H_

#include <varnadp.h>

#include <cstring>

class CAdpElementData {
 public:
  CAdpElementData()
      : m_pColumnDef(nullptr),
        m_pField(nullptr),
        m_pInd(nullptr),
        m_pStruct(nullptr),
        m_nInd(OCI_IND_NULL),
        m_pTdo(nullptr),
        m_bTopLevel(0),
        m_bCreated(0),
        m_bTdoPinned(0),
        m_bMadeInStruct(0),
        m_pIter(nullptr),
        m_nReserved(0),
        m_nLobPos(0),
        m_nLobSize(0),
        m_nNameCall(0),
        m_nNameLength(0) {}

  int IsComplex() const { return m_pColumnDef->Flags & COLDEF_COMPLEX; }
  int InColl() const { return m_pColumnDef->InCollection != 0; }
  int HasColumnName() const { return InColl() == 0; }
  // A group whose first member is a collection item is a collection.
  int IsColl() const {
    return IsComplex() && m_pColumnDef->Next != nullptr && m_pColumnDef->Next->InCollection != 0;
  }
  int IsAdt() const {
    return IsComplex() && (m_pColumnDef->Next == nullptr || m_pColumnDef->Next->InCollection == 0);
  }
  int IsLob() const { return m_pColumnDef->DataType == SQLT_CLOB || m_pColumnDef->DataType == SQLT_BLOB; }
  int IsClob() const { return m_pColumnDef->DataType == SQLT_CLOB; }
  int IsTopLevel() const { return m_bTopLevel; }
  // Only -1 is null; OCI_IND_BADNULL and every other value count as present.
  int IsNull() const {
    const OCIInd nInd = m_pInd != nullptr ? *m_pInd : m_nInd;
    return static_cast<unsigned short>(nInd) == 0xFFFF;
  }
  // The m_pField form of a value object made by OCIObjectNew.
  void* FieldToStruct() { return IsHandleType() ? static_cast<void*>(&m_pStruct) : m_pStruct; }
  // The slot that holds the value's struct pointer, as the collection calls
  // want it.
  void* StructToField() { return IsHandleType() ? m_pField : static_cast<void*>(&m_pField); }

  // The length of the definition's column name, as the attribute calls take
  // it, measured once in call nCall (the adapter counts its calls from 1): a
  // host may change a name in place between two calls with the same list.
  ub4 NameLength(unsigned long nCall) const {
    if (m_nNameCall != nCall) {
      const char* pszName = m_pColumnDef->ColumnName;
      m_nNameLength = pszName != nullptr ? static_cast<ub4>(std::strlen(pszName)) : 0;
      m_nNameCall = nCall;
    }
    return m_nNameLength;
  }

  void ClearOraObjects() {
    m_pField = nullptr;
    m_pInd = nullptr;
    m_pStruct = nullptr;
    m_nInd = OCI_IND_NULL;
    m_pTdo = nullptr;
    m_bCreated = 0;
    m_bTdoPinned = 0;
    m_bMadeInStruct = 0;
    m_pIter = nullptr;
    m_nReserved = 0;
  }

  // Types whose values OCI keeps behind a pointer (OCIString*, OCIRaw*,
  // OCILobLocator*, OCIDateTime*, OCIInterval*); the others (NUMBER, DATE,
  // objects, collections) are held in place.
  int IsHandleType() const;

  Column_Def* m_pColumnDef;
  void* m_pField;
  OCIInd* m_pInd;
  void* m_pStruct;
  OCIInd m_nInd;
  OCIType* m_pTdo;
  signed int m_bTopLevel : 1;
  unsigned int m_bCreated : 1;
  unsigned int m_bTdoPinned : 1;
  // Where the value made here is freed from: m_pStruct when set, else
  // m_pField. Noted when the value is made, so that giving it back reads
  // nothing of the definition list, which the host may have freed by then.
  unsigned int m_bMadeInStruct : 1;
  OCIIter* m_pIter;
  long long m_nReserved;
  long m_nLobPos;
  unsigned long m_nLobSize;

 private:
  mutable unsigned long m_nNameCall;
  mutable ub4 m_nNameLength;
};

#endif  // SRC_ADAPTER_ELEMENT_DATA_H_
