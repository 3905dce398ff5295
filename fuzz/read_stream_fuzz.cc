// Streams to objects through adpProcessBuffer, on one fixed schema that holds
// every supported scalar type, a nested object, collections of objects, of
// scalars and of RAWs, and both large object types. The first byte of an
// input chooses the root type (the record, its collection of lines, or its
// address), whether the context takes special strings from the next bytes,
// and whether objects with large objects are stored and given their bytes
// by adpWriteLobs. Up to eight records are read from the rest; each object
// read is written again with adpProcessObject, and the trace is captured at
// its most detailed level, so that every progress line is formatted. With
// the first byte's fifth bit, the Column_Def list is a damaged copy.
#include <coldef.h>
#include <host/kel_stream.h>
#include <host/kel_trace.h>
#include <oci.h>
#include <varnadp.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "fuzz_session.h"

namespace {

struct Schema {
  fuzz::Session session;
  OCIType* apTdo[3] = {};
  Column_Def* apDefs[3] = {};
};

const char* const kTypes[3] = {"FZ_REC_T", "FZ_LINES_T", "FZ_ADDR_T"};

Schema& TheSchema() {
  static Schema* pSchema = [] {
    Schema* p = new Schema;
    if (!p->session.Open("FUZZ_READ")) fuzz::Die("logon");
    static const char* const kDdl[] = {
        "CREATE TYPE fz_addr_t AS OBJECT (street VARCHAR2(40), city VARCHAR2(30), zip CHAR(5))",
        "CREATE TYPE fz_tags_t AS VARRAY(8) OF VARCHAR2(12)",
        "CREATE TYPE fz_raws_t AS TABLE OF RAW(6)",
        ("CREATE TYPE fz_line_t AS OBJECT (sku VARCHAR2(20), qty NUMBER(6), price NUMBER(10,2), "
         "tags fz_tags_t)"),
        "CREATE TYPE fz_lines_t AS TABLE OF fz_line_t",
        ("CREATE TYPE fz_rec_t AS OBJECT (vc VARCHAR2(40), ch CHAR(5), n NUMBER, n102 NUMBER(10,2), "
         "fl FLOAT(10), d DATE, ts TIMESTAMP(6), ts0 TIMESTAMP(0), "
         "tstz TIMESTAMP(3) WITH TIME ZONE, tsltz TIMESTAMP(6) WITH LOCAL TIME ZONE, "
         "iym INTERVAL YEAR(4) TO MONTH, ids INTERVAL DAY(3) TO SECOND(4), r RAW(20), "
         "addr fz_addr_t, lines fz_lines_t, raws fz_raws_t, c CLOB, b BLOB)"),
        ("CREATE TABLE fz_rows OF fz_rec_t NESTED TABLE lines STORE AS fz_lines_nt "
         "NESTED TABLE raws STORE AS fz_raws_nt"),
    };
    for (const char* pszSql : kDdl) p->session.MustExecute(pszSql);
    for (int i = 0; i < 3; ++i) {
      p->apTdo[i] = p->session.Type(kTypes[i]);
      if (coldefDescribe(p->session.env(), p->session.err(), p->session.svc(), kTypes[i],
                         &p->apDefs[i]) != COLDEF_OK) {
        fuzz::Die(std::string("coldefDescribe ") + kTypes[i]);
      }
    }
    return p;
  }();
  return *pSchema;
}

// Special strings from the input: lengths as they would be typed (a byte's
// value in decimal, or three raw bytes that need not be digits), then the
// strings themselves.
void TakeSpecialStrings(fuzz::Input& in, DB_SPECIAL_STRINGS& special) {
  std::memset(&special, 0, sizeof special);
  const uint8_t nHow = in.Byte();
  if (nHow & 1) {
    std::string raw = in.Bytes(3);
    std::memcpy(special.szDelimiterLen, raw.data(), raw.size());
    raw = in.Bytes(3);
    std::memcpy(special.szTerminatorLen, raw.data(), raw.size());
  } else {
    std::snprintf(special.szDelimiterLen, sizeof special.szDelimiterLen, "%u", in.Byte() % 40u);
    std::snprintf(special.szTerminatorLen, sizeof special.szTerminatorLen, "%u", in.Byte() % 40u);
  }
  std::string s = in.Bytes(in.Byte() % 34u);
  std::memcpy(special.szDelimiter, s.data(), s.size());
  s = in.Bytes(in.Byte() % 34u);
  std::memcpy(special.szTerminator, s.data(), s.size());
  s = in.Bytes(1);
  std::memcpy(special.szRelease, s.data(), s.size());
}

// A host's list gone wrong: a copy of the right one, with up to four
// records changed as the input says (another data type, group and end marks
// set or cleared, an item made an attribute or the reverse, the list cut
// short, another record's type name).
void MangleList(fuzz::Input& in, const Column_Def* pHead, std::vector<Column_Def>& list) {
  for (const Column_Def* p = pHead; p != nullptr; p = p->Next) list.push_back(*p);
  for (size_t i = 0; i + 1 < list.size(); ++i) list[i].Next = &list[i + 1];
  static const unsigned short kTypes[] = {SQLT_NUM, SQLT_CHR, SQLT_AFC, SQLT_LNG, SQLT_DAT,
                                          SQLT_BIN, SQLT_CLOB, SQLT_BLOB, SQLT_TIMESTAMP,
                                          SQLT_TIMESTAMP_TZ, SQLT_TIMESTAMP_LTZ,
                                          SQLT_INTERVAL_YM, SQLT_INTERVAL_DS, SQLT_REF,
                                          SQLT_NTY, SQLT_NCO, SQLT_BFILEE};
  const int nChanges = in.Byte() % 5;
  for (int i = 0; i < nChanges && !list.empty(); ++i) {
    Column_Def& def = list[in.Byte() % list.size()];
    const uint8_t nWhat = in.Byte();
    switch (nWhat % 6) {
      case 0:
        def.DataType = kTypes[(nWhat / 6) % (sizeof kTypes / sizeof kTypes[0])];
        break;
      case 1:
        def.Flags ^= COLDEF_COMPLEX;
        break;
      case 2:
        def.Flags ^= (nWhat & 64) ? COLDEF_END : COLDEF_DEFINED;
        break;
      case 3:
        def.InCollection = def.InCollection != 0 ? 0 : 1;
        break;
      case 4:
        def.Next = nullptr;
        break;
      default:
        def.TypeName = list[in.Byte() % list.size()].TypeName;
        break;
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* pData, size_t nSize) {
  Schema& schema = TheSchema();
  fuzz::Session& session = schema.session;
  fuzz::Input in(pData, nSize);
  const uint8_t nFlags = in.Byte();
  const int nRoot = (nFlags >> 1) % 3;
  const bool bLobPass = (nFlags & 8) != 0 && nRoot == 0;

  CKelTrace trace;
  trace.SetLevel(2);
  trace.CaptureToBuffer();
  VARNADP* pCtx = nullptr;
  DB_SPECIAL_STRINGS special;
  if (nFlags & 1) TakeSpecialStrings(in, special);
  if (adpCreateContext(&pCtx, &trace, (nFlags & 1) ? &special : nullptr) != 0) return 0;

  std::vector<Column_Def> mangled;
  if (nFlags & 16) MangleList(in, schema.apDefs[nRoot], mangled);
  Column_Def* const pList = mangled.empty() ? schema.apDefs[nRoot] : mangled.data();

  CKelStream out(0, nullptr, nullptr, 0);
  const void* pBuffer = in.Data();
  const char* const pEnd = reinterpret_cast<const char*>(in.Data()) + in.Size();
  for (int nRecord = 0; nRecord < 8; ++nRecord) {
    const unsigned long nLeft =
        static_cast<unsigned long>(pEnd - static_cast<const char*>(pBuffer));
    if (nLeft == 0) break;
    Column_Def* pDef = pList;
    void* pInstance = nullptr;
    short* pInd = nullptr;
    short nInd = 0;
    int nLobs = 0;
    const void* pBefore = pBuffer;
    if (adpProcessBuffer(pCtx, &trace, &pBuffer, nLeft, &pDef, session.env(), session.err(),
                         session.svc(), &pInstance, &pInd, &nInd, schema.apTdo[nRoot],
                         &nLobs) != 0) {
      break;
    }
    if (pInstance == nullptr) fuzz::Die("a read succeeded without an instance");
    if (nRoot != 1 && pInd != nullptr) pInd[0] = OCI_IND_NOTNULL;
    out.SetSize(0);
    pDef = pList;
    adpProcessObject(pCtx, &trace, &out, &pDef, session.env(), session.err(), session.svc(),
                     pInstance, nRoot == 1 ? nullptr : pInd, nInd, schema.apTdo[nRoot]);
    if (nLobs && bLobPass &&
        session.InsertObject("FZ_ROWS", schema.apTdo[0], pInstance, pInd) == OCI_SUCCESS) {
      adpWriteLobs(pCtx, &trace, "SELECT VALUE(r) FROM fz_rows r FOR UPDATE");
    }
    OCITransRollback(session.svc(), session.err(), OCI_DEFAULT);
    trace.ClearBuffer();
    if (pBuffer == pBefore) break;  // nothing consumed: the same bytes again would read alike
  }
  adpDestroyContext(pCtx, &trace);
  return 0;
}
