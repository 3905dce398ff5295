// CAdp: the adapter object behind a VARNADP handle. It owns the element tree
// that mirrors the host's column definitions, the context's special strings,
// a work buffer, a default trace and a stream of its own, and it remembers
// the stream, trace and OCI handles of the current call for every routine
// below. Its members are defined in several files, one per concern:
//   adapter/adp.cc             construction, per-call set-up, the drivers
//   adapter/adp_tree.cc        element tree building and predicates
//   adapter/adp_instance.cc    creating, developing and releasing instances
//   adapter/adp_navigation.cc  attributes, collection items, indicators
//   adapter/adp_select.cc      fetching a stored object for the LOB pass
//   stream/writer.cc           object to stream structure
//   stream/reader.cc           stream to object structure
//   stream/release.cc          release-character handling
//   stream/field_to_text.cc    one value to its text
//   stream/text_to_field.cc    one text to its value
//   stream/lob_pass.cc         the second pass for large objects
#ifndef SRC_ADAPTER_ADP_H_
#define SRC_ADAPTER_ADP_H_

#include <varnadp.h>

#include <host/kel.h>

#include "adapter/element_data.h"
#include "containers/kel_array.h"
#include "containers/kel_tree.h"
#include "stream/out_buffer.h"
#include "stream/stream_format.h"

struct VARNADP {};

// A progress line at level 2, in a member of CAdp; formatted only when the
// trace shows that level.
#define ADP_PROGRESS(...)                                        \
  do {                                                           \
    if (m_pTrace->IsShown(2)) m_pTrace->Printf(2, __VA_ARGS__);  \
  } while (0)

typedef CKelTree<CAdpElementData> CAdpTree;

// Calls f on top and on every node below it, parents before children,
// without recursion; f must not change the tree's shape.
template <class F>
void AdpForEachNode(CAdpTree& top, F f) {
  CAdpTree* pNode = &top;
  for (;;) {
    f(*pNode);
    if (CAdpTree* pChild = pNode->GetFirstChild()) {
      pNode = pChild;
      continue;
    }
    while (pNode != &top && pNode->GetNextSibling() == nullptr) pNode = pNode->GetParent();
    if (pNode == &top) return;
    pNode = pNode->GetNextSibling();
  }
}

class CAdpTypeCheck;

class CAdp : public VARNADP {
 public:
  explicit CAdp(DB_SPECIAL_STRINGS* pSpecialStrings);
  ~CAdp();
  CAdp(const CAdp&) = delete;
  CAdp& operator=(const CAdp&) = delete;

  void ProcessObject(CKelTrace* pTrace, CKelStream& stream, Column_Def*& pColumnDef,
                     OCIEnv* pEnv, OCIError* pErr, OCISvcCtx* pSvc, void* pInstance,
                     short* pIndicator, short nIndicator, OCIType* pType);
  int ProcessStream(CKelTrace* pTrace, CKelStream& stream, Column_Def*& pColumnDef,
                    OCIEnv* pEnv, OCIError* pErr, OCISvcCtx* pSvc, void*& pInstance,
                    short*& pIndicator, short& nIndicator, OCIType* pType);
  void ProcessStreamWriteLobs(CKelTrace* pTrace, const char* pszSelect);
  CKelStream& StreamFromBuffer(const void* pBuffer, unsigned long nSize);

  // Release-character handling on memory buffers (stream/release.cc).
  int _CheckIfStringAtPos(const char* pPos, const char* pEnd, const char* pszString,
                          int nLength) const;
  int _IsSpecialString(const char* pPos, const char* pEnd) const;
  long _WriteStringAddRelease(void* pData, unsigned long nSize, int bEscape);
  unsigned long _RemoveReleaseChars(void* pData, unsigned long nSize);

  const char* _GetRelease() const { return m_szRelease; }
  long _GetReleaseLen() const { return m_nReleaseLen; }
  const char* _GetDelimiter() const { return m_szDelimiter; }
  long _GetDelimiterLen() const { return m_nDelimiterLen; }
  const char* _GetTerminator() const { return m_szTerminator; }
  long _GetTerminatorLen() const { return m_nTerminatorLen; }
  const char* const* _GetValueEndStrings() const { return m_apszValueEnd; }
  const int* _GetValueEndLengths() const { return m_anValueEndLen; }
  const char* const* _GetSpecialStrings() const { return m_apszSpecial; }
  const int* _GetSpecialLengths() const { return m_anSpecialLen; }
  CAdpTree& _GetTree() { return m_Tree; }
  CKelTrace* _GetTrace() const { return m_pTrace; }

  // Element tree (adapter/adp_tree.cc).
  void _BuildElementTree(CAdpTree& parent, Column_Def*& pDef);
  // What _BuildElementTree makes under a collection that lost its item
  // node, taken from a spare of the same shape instead (adapter/adp_tree.cc).
  // False, with nothing changed, when no spare fits.
  bool _BuildFromSpare(CAdpTree& parent, Column_Def*& pDef);
  void _DeleteElementAndAfter(CAdpTree* pNode);
  int _IsComplex(CAdpTree& node) { return node.m_Data.IsComplex(); }
  int _InColl(CAdpTree& node) { return node.m_Data.InColl(); }
  int _HasColumnName(CAdpTree& node) { return node.m_Data.HasColumnName(); }
  int _IsColl(CAdpTree& node) { return node.m_Data.IsColl(); }
  int _IsAdt(CAdpTree& node) { return node.m_Data.IsAdt(); }
  int _IsLob(CAdpTree& node) { return node.m_Data.IsLob(); }
  int _IsClob(CAdpTree& node) { return node.m_Data.IsClob(); }
  int _IsTopLevel(CAdpTree& node) { return node.m_Data.IsTopLevel(); }
  int _IsNull(CAdpTree& node) { return node.m_Data.IsNull(); }
  void* _FieldToStruct(CAdpTree& node) { return node.m_Data.FieldToStruct(); }
  void* _StructToField(CAdpTree& node) { return node.m_Data.StructToField(); }

  // Oracle instances (adapter/adp_instance.cc).
  void _OraCreateObject(CAdpTree& node);
  void _DevelopOraObjects(CAdpTree& node, int bEmpty);
  void _OraDestroyObject(CAdpTree& node);
  // _OraDestroyObject on every node of a subtree that made or pinned
  // something, the top included.
  void _OraDestroySubtree(CAdpTree& top);
  // Surplus collection item nodes kept for reuse (adapter/adp_instance.cc):
  // a spare filled as a copy of item, or NULL; keeping takes a detached node.
  CAdpTree* _TakeSpareCopyOf(const CAdpTree& item);
  void _KeepSpare(CAdpTree* pNode);
  // The spare whose top stands for pDef, taken out of the spares; or NULL.
  CAdpTree* _TakeSpareFor(const Column_Def* pDef);
  void _DropSpares();

  // Navigation (adapter/adp_navigation.cc).
  void _OraGetChild(CAdpTree& child, CAdpTree& parent);
  int _OraGetNextCollItem(CAdpTree& item, CAdpTree& coll);
  int _IsNestedColl(CAdpTree& node);
  void _OraEmptyColl(CAdpTree& coll);
  void _OraAddCollItem(CAdpTree& item, CAdpTree& coll);
  void _OraSetIndicator(CAdpTree& child, CAdpTree& parent, int bNotNull);

  // Selection of the stored object for the LOB pass (adapter/adp_select.cc).
  void _OraSelectObject(const char* pszSelect);

  // Writer (stream/writer.cc) and one value to text (stream/field_to_text.cc).
  void _WriteStream(CAdpTree& element, int bNull);
  void _WriteGroupStart();
  void _WriteGroupEnd();
  void _WriteDelimiter();
  void _OraFieldToStream(CAdpTree& element);
  // The mask of a NUMBER written as text, and its length; NULL when it is
  // longer than a cached mask can be.
  const char* _NumberMask(const Column_Def& def, size_t& nLength);
  // Hands what the writer collected to the stream.
  void _FlushOut() { m_Out.Flush(); }

  // Reader (stream/reader.cc), one text to its value (stream/text_to_field.cc)
  // and the LOB pass (stream/lob_pass.cc).
  void _ReadStream(CAdpTree& element);
  int _ReadGroupStart();
  int _ReadGroupEnd();
  int _ReadDelimiter();
  unsigned long _ReadElementSize();
  void _OraStreamToField(CAdpTree& element, unsigned long nSize);
  void _ClearForNextItem(CAdpTree& node);
  void _ReadStreamLobs(CAdpTree& element);
  void _OraStreamToLobField(CAdpTree& element);
  long _OraWriteLobElementFromPage(OCILobLocator* pLocator, const void* pData, unsigned long nSize,
                                   unsigned char nPiece, int bClob);

  // Per-call set-up (adapter/adp.cc).
  int _Init(CKelStream& stream, CKelTrace* pTrace, OCIEnv* pEnv, OCIError* pErr,
            OCISvcCtx* pSvc, Column_Def* pColumnDef);
  void _Init(CKelTrace* pTrace);

  // Size of the value work buffer.
  enum { ADP_VALUE_BUF_SIZE = 1024 };
  // Groups nested deeper than this are refused when the tree is built.
  enum { ADP_MAX_DEPTH = 1000 };

  // The tree against the type it is used with (adapter/adp_check.cc): every
  // element whose attribute exists must hold the kind of value the type
  // gives it, so that no value is taken for one of another shape.
  void _CheckElementTree(OCIType* pTdo);
  void _CheckGroup(CAdpTypeCheck& check, CAdpTree& group, OCIParam* pType, int nLevel);
  void _CheckMember(CAdpTypeCheck& check, CAdpTree& member, const Column_Def& owner,
                    OCIParam* pMember, int nLevel);
  [[noreturn]] void _Misfit(const Column_Def& def, const Column_Def& owner);

 private:
  // Raises the adapter's -24 for a failed OCI call after its diagnostics
  // went to the trace; returns when the call succeeded.
  void _OraCheck(sword nStatus, const char* pszOciFunc, const char* pszFunc) {
    if (nStatus != OCI_SUCCESS) _OraFail(nStatus, pszOciFunc, pszFunc);
  }
  void _OraFail(sword nStatus, const char* pszOciFunc, const char* pszFunc);
  void _RebuildTree(Column_Def*& pColumnDef);
  // Every iterator a call made goes when the call ends (adapter/adp_navigation.cc).
  void _DeleteIterators();
  void _DeleteIteratorsIn(CAdpTree& top);
  void _KeepHandedOut();
  void _ReleaseLater(void* pValue);
  void _ReleaseHandedOut();
  // Room for a value text of up to nSize bytes, filled by an OCI call and
  // then committed with the bytes used; a text larger than the output
  // buffer goes into a page of the stream itself.
  char* _BeginValue(unsigned long nSize);
  void _EndValue(unsigned long nUsed);

  CKelTrace* m_pTrace;
  CKelStream* m_pStream;
  OCIEnv* m_pEnv;
  OCIError* m_pErr;
  OCISvcCtx* m_pSvc;
  Column_Def* m_pLastColumnDef;
  // The type the tree was last found to fit (NULL: not checked since it was
  // built), and the depth of the group being built.
  OCIType* m_pCheckedTdo;
  int m_nBuildDepth;
  Column_Def m_RootDef;
  CAdpTree m_Tree;
  int m_bLobsPending;
  CKelStream m_Stream;
  CKelTrace m_Trace;
  char m_szDelimiter[ADP_SPECIAL_MAX];
  char m_szTerminator[ADP_SPECIAL_MAX];
  char m_szRelease[1];
  char m_szValueBuf[ADP_VALUE_BUF_SIZE + 1];
  long m_nDelimiterLen;
  long m_nTerminatorLen;
  long m_nReleaseLen;
  const char* m_apszValueEnd[4];
  int m_anValueEndLen[4];
  const char* m_apszSpecial[6];
  int m_anSpecialLen[6];
  // The two lists above, prepared once for the stream's scan.
  CKelDelimiters m_ValueEndSet;
  CKelDelimiters m_SpecialSet;
  // Whether the field _ReadElementSize measured last holds a release.
  int m_bReleaseInField;
  // The writer's output on its way to m_pStream, and the stream page of a
  // value too large for it.
  CAdpOutBuffer m_Out;
  CKelStreamPage* m_pValuePage;
  enum { ADP_RELEASE_LATER_MAX = 4, ADP_SPARE_MAX = 8 };
  // Detached surplus item nodes, one per item definition at most; they hold
  // no values of their own.
  CAdpTree* m_apSpare[ADP_SPARE_MAX];
  int m_nSpare;
  // Calls made so far, this one included: what a node measured in an earlier
  // call is measured again (CAdpElementData::NameLength).
  unsigned long m_nCall;
  // The iterators made during the current call, and how many.
  CKelArray<OCIIter*> m_Iterators;
  unsigned long m_nIterators;
  // Instances the adapter made or fetched whose node has moved on to another
  // value (the last one read from a stream and handed to the host, the
  // stored object fetched for the LOB pass): freed at the next
  // stream-to-object call, the oldest sooner when there are too many.
  void* m_apReleaseLater[ADP_RELEASE_LATER_MAX];
  int m_nReleaseLater;
  // Bytes that can begin a special string, so that escaping looks closer
  // only where one may start.
  unsigned char m_abSpecialLead[256];
  // The same bytes as a list, each sixteen times, for scanning sixteen
  // bytes at a time.
  alignas(16) unsigned char m_aabLeadBlocks[5][16];
  int m_nLeadBytes;
  // Set when some special string is empty: such a string stands everywhere.
  int m_bEmptySpecial;
  // NUMBER text masks by precision and scale, so that a column's mask is
  // built once and not for every value written.
  enum { ADP_NUMBER_MASKS = 16, ADP_NUMBER_MASK_ROOM = 132 };
  struct SNumberMask {
    unsigned long nPrecision;
    short nScale;
    unsigned short nLength;  // 0: not made yet
    char szMask[ADP_NUMBER_MASK_ROOM];
  };
  SNumberMask m_aNumberMasks[ADP_NUMBER_MASKS];
  // _NumberMask for a mask not cached yet: built into its slot.
  [[gnu::noinline]] const char* _NewNumberMask(const Column_Def& def, SNumberMask& cached,
                                               size_t& nLength);
};

#endif  // SRC_ADAPTER_ADP_H_
