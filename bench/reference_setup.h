// Shared set-up of the adapter benchmarks over the reference data (reference.sql
// and generate.py of the reference data directory): heap allocation counting,
// the records parsed from generate.py's JSON Lines, the stream each record must
// give, the C layouts of the reference types, the host's Column_Def lists and an
// in-memory database holding the types with instances built from the records.
//
// Include it from exactly one translation unit of a program: it replaces
// operator new/delete and interposes malloc, calloc, realloc and free.
#ifndef VARNADP_BENCH_REFERENCE_SETUP_H
#define VARNADP_BENCH_REFERENCE_SETUP_H

#include <benchmark/benchmark.h>
#include <rapidjson/document.h>

#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <new>
#include <optional>
#include <string>
#include <vector>

#include <oci.h>
#include <orid.h>
#include <varnadp.h>

#ifndef VARNADP_BENCH_DATA_DIR
#define VARNADP_BENCH_DATA_DIR "/work/shared/bench"
#endif

// ---------------------------------------------------------------------------
// Allocation counting. operator new/delete are replaced, and malloc, calloc
// and realloc are interposed on glibc's own entry points; both count only while
// g_bCounting is set. Under AddressSanitizer the C allocators are left to the
// sanitizer and only operator new is counted.
// ---------------------------------------------------------------------------
namespace refbench {
inline bool g_bCounting = false;
inline unsigned long g_nAllocs = 0;
inline void CountAlloc() {
  if (g_bCounting) ++g_nAllocs;
}

// For a profiler: with VARNADP_BENCH_ITERATIONS=N in the environment, a
// benchmark given this (->Apply(FixedIterations)) runs exactly N iterations,
// so that two runs differ by whole cycles over the records.
inline void FixedIterations(benchmark::internal::Benchmark* b) {
  if (const char* psz = std::getenv("VARNADP_BENCH_ITERATIONS")) {
    const long n = std::atol(psz);
    if (n > 0) b->Iterations(n);
  }
}
}  // namespace refbench

#if defined(__SANITIZE_ADDRESS__)
#define ADP_BENCH_ASAN 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define ADP_BENCH_ASAN 1
#endif
#endif

#ifndef ADP_BENCH_ASAN
extern "C" {
void* __libc_malloc(size_t nSize);
void* __libc_calloc(size_t nCount, size_t nSize);
void* __libc_realloc(void* p, size_t nSize);
void __libc_free(void* p);

void* malloc(size_t nSize) noexcept {
  refbench::CountAlloc();
  return __libc_malloc(nSize);
}
void* calloc(size_t nCount, size_t nSize) noexcept {
  refbench::CountAlloc();
  return __libc_calloc(nCount, nSize);
}
void* realloc(void* p, size_t nSize) noexcept {
  refbench::CountAlloc();
  return __libc_realloc(p, nSize);
}
void free(void* p) noexcept { __libc_free(p); }
}
#define ADP_BENCH_RAW_MALLOC __libc_malloc
#define ADP_BENCH_RAW_FREE __libc_free
#else
#define ADP_BENCH_RAW_MALLOC std::malloc
#define ADP_BENCH_RAW_FREE std::free
#endif

namespace {
void* CountedNew(std::size_t nSize) {
  refbench::CountAlloc();
  void* p = ADP_BENCH_RAW_MALLOC(nSize != 0 ? nSize : 1);
  if (p == nullptr) throw std::bad_alloc();
  return p;
}
}  // namespace

void* operator new(std::size_t nSize) { return CountedNew(nSize); }
void* operator new[](std::size_t nSize) { return CountedNew(nSize); }
void* operator new(std::size_t nSize, const std::nothrow_t&) noexcept {
  refbench::CountAlloc();
  return ADP_BENCH_RAW_MALLOC(nSize != 0 ? nSize : 1);
}
void* operator new[](std::size_t nSize, const std::nothrow_t&) noexcept {
  refbench::CountAlloc();
  return ADP_BENCH_RAW_MALLOC(nSize != 0 ? nSize : 1);
}
void operator delete(void* p) noexcept { ADP_BENCH_RAW_FREE(p); }
void operator delete[](void* p) noexcept { ADP_BENCH_RAW_FREE(p); }
void operator delete(void* p, std::size_t) noexcept { ADP_BENCH_RAW_FREE(p); }
void operator delete[](void* p, std::size_t) noexcept { ADP_BENCH_RAW_FREE(p); }
void operator delete(void* p, const std::nothrow_t&) noexcept { ADP_BENCH_RAW_FREE(p); }
void operator delete[](void* p, const std::nothrow_t&) noexcept { ADP_BENCH_RAW_FREE(p); }

namespace refbench {

// Ends the program, named by its own name, on anything unexpected in set-up.
[[noreturn]] inline void Die(const std::string& text) {
  std::fprintf(stderr, "%s: %s\n", program_invocation_short_name, text.c_str());
  std::abort();
}

// ---------------------------------------------------------------------------
// The records, as parsed from the JSON Lines. Text values and the NUMBER texts
// are kept exactly; the peer's numbers are derived from the texts.
// ---------------------------------------------------------------------------
typedef std::optional<std::string> Opt;

struct Addr {
  Opt street, city, zip, country;
};
struct Line {
  Opt sku, qty, price, note;
};
struct Order {
  std::string id;
  Opt customer, email, created, shipped, amount, discount, status, priority, token;
  Addr shipTo;
  std::vector<Line> lines;
};
struct Note {
  std::string id;
  Opt title;
  std::string body;
  std::vector<Opt> tags;
};

inline std::string RunGenerator(const char* pszType, int nCount) {
  const std::string command = "python3 " VARNADP_BENCH_DATA_DIR "/generate.py " +
                              std::string(pszType) + " " + std::to_string(nCount) + " -";
  FILE* pPipe = popen(command.c_str(), "r");
  if (pPipe == nullptr) Die("cannot run " + command);
  std::string out;
  char buf[65536];
  size_t n;
  while ((n = std::fread(buf, 1, sizeof buf, pPipe)) > 0) out.append(buf, n);
  if (pclose(pPipe) != 0) Die("failed: " + command);
  return out;
}

template <typename F>
inline void ForEachLine(const std::string& text, F f) {
  size_t pos = 0;
  while (pos < text.size()) {
    size_t end = text.find('\n', pos);
    if (end == std::string::npos) end = text.size();
    if (end > pos) {
      rapidjson::Document doc;
      doc.Parse<rapidjson::kParseNumbersAsStringsFlag>(text.data() + pos, end - pos);
      if (doc.HasParseError() || !doc.IsObject()) Die("bad JSON line");
      f(static_cast<const rapidjson::Value&>(doc));
    }
    pos = end + 1;
  }
}

inline Opt Get(const rapidjson::Value& obj, const char* pszKey) {
  const auto it = obj.FindMember(pszKey);
  if (it == obj.MemberEnd()) Die(std::string("missing ") + pszKey);
  if (it->value.IsNull()) return std::nullopt;
  if (!it->value.IsString()) Die(std::string("not text: ") + pszKey);
  return std::string(it->value.GetString(), it->value.GetStringLength());
}

// The records of `generate.py ref_order_t N -`, from its output.
inline std::vector<Order> LoadOrders(const std::string& jsonLines, int nCount) {
  std::vector<Order> orders;
  ForEachLine(jsonLines, [&](const rapidjson::Value& v) {
    Order o;
    o.id = *Get(v, "ID");
    o.customer = Get(v, "CUSTOMER");
    o.email = Get(v, "EMAIL");
    o.created = Get(v, "CREATED");
    o.shipped = Get(v, "SHIPPED");
    o.amount = Get(v, "AMOUNT");
    o.discount = Get(v, "DISCOUNT");
    o.status = Get(v, "STATUS");
    o.priority = Get(v, "PRIORITY");
    o.token = Get(v, "TOKEN");
    const rapidjson::Value& a = v["SHIP_TO"];
    o.shipTo = {Get(a, "STREET"), Get(a, "CITY"), Get(a, "ZIP"), Get(a, "COUNTRY")};
    for (const rapidjson::Value& l : v["LINES"].GetArray()) {
      o.lines.push_back({Get(l, "SKU"), Get(l, "QTY"), Get(l, "PRICE"), Get(l, "NOTE")});
    }
    orders.push_back(std::move(o));
  });
  if (orders.size() != static_cast<size_t>(nCount)) Die("wrong order count");
  return orders;
}
inline std::vector<Order> LoadOrders(int nCount) {
  return LoadOrders(RunGenerator("ref_order_t", nCount), nCount);
}

// The records of `generate.py ref_note_t N -`, from its output.
inline std::vector<Note> LoadNotes(const std::string& jsonLines, int nCount) {
  std::vector<Note> notes;
  ForEachLine(jsonLines, [&](const rapidjson::Value& v) {
    Note n;
    n.id = *Get(v, "ID");
    n.title = Get(v, "TITLE");
    n.body = *Get(v, "BODY");
    for (const rapidjson::Value& t : v["TAGS"].GetArray()) {
      n.tags.push_back(t.IsNull() ? Opt() : Opt(std::string(t.GetString(), t.GetStringLength())));
    }
    notes.push_back(std::move(n));
  });
  if (notes.size() != static_cast<size_t>(nCount)) Die("wrong note count");
  return notes;
}
inline std::vector<Note> LoadNotes(int nCount) {
  return LoadNotes(RunGenerator("ref_note_t", nCount), nCount);
}

// ---------------------------------------------------------------------------
// The stream each record must give, built from the record alone.
// ---------------------------------------------------------------------------

// Text: a release before each "[", "]", "|", "!" and "\r\n".
inline void ExpectText(std::string& out, const Opt& v) {
  if (!v) return;
  const std::string& s = *v;
  for (size_t i = 0; i < s.size(); ++i) {
    const char c = s[i];
    if (c == '[' || c == ']' || c == '|' || c == '!' ||
        (c == '\r' && i + 1 < s.size() && s[i + 1] == '\n')) {
      out += '!';
    }
    out += c;
  }
}

// NUMBER through an "FM9...9[.9...9]" mask: no leading zeros, trailing zeros of
// the fraction dropped, the point kept whenever the mask has one (5 -> "5.",
// 0.5 -> ".5", 0 -> "0.").
inline void ExpectNumber(std::string& out, const Opt& v, bool bMaskPoint) {
  if (!v) return;
  std::string s = *v;
  bool bNegative = false;
  if (!s.empty() && s[0] == '-') {
    bNegative = true;
    s.erase(0, 1);
  }
  std::string intPart = s, frac;
  const size_t dot = s.find('.');
  if (dot != std::string::npos) {
    intPart = s.substr(0, dot);
    frac = s.substr(dot + 1);
  }
  while (intPart.size() > 1 && intPart[0] == '0') intPart.erase(0, 1);
  while (!frac.empty() && frac.back() == '0') frac.pop_back();
  if (intPart == "0" && !frac.empty()) intPart.clear();
  if (bNegative) out += '-';
  out += intPart;
  if (bMaskPoint) out += '.' + frac;
}

inline void ExpectRaw(std::string& out, const Opt& hex) {
  if (!hex) {
    out += '|';
    return;
  }
  out += std::to_string(hex->size() / 2) + "|";
  for (size_t i = 0; i + 1 < hex->size(); i += 2) {
    out += static_cast<char>(std::stoi(hex->substr(i, 2), nullptr, 16));
  }
}

inline std::string ExpectedOrder(const Order& o) {
  std::string s;
  ExpectNumber(s, o.id, false);
  s += '|';
  ExpectText(s, o.customer);
  s += '|';
  ExpectText(s, o.email);
  s += '|';
  if (o.created) s += *o.created;
  s += '|';
  if (o.shipped) s += *o.shipped;
  s += '|';
  ExpectNumber(s, o.amount, true);
  s += '|';
  ExpectNumber(s, o.discount, true);
  s += '|';
  ExpectText(s, o.status);
  s += '|';
  ExpectNumber(s, o.priority, false);
  s += '|';
  ExpectRaw(s, o.token);
  s += "|[";
  ExpectText(s, o.shipTo.street);
  s += '|';
  ExpectText(s, o.shipTo.city);
  s += '|';
  ExpectText(s, o.shipTo.zip);
  s += '|';
  ExpectText(s, o.shipTo.country);
  s += "]|[";
  for (size_t i = 0; i < o.lines.size(); ++i) {
    const Line& l = o.lines[i];
    if (i != 0) s += '|';
    s += '[';
    ExpectText(s, l.sku);
    s += '|';
    ExpectNumber(s, l.qty, false);
    s += '|';
    ExpectNumber(s, l.price, true);
    s += '|';
    ExpectText(s, l.note);
    s += ']';
  }
  s += ']';
  return s;
}

inline std::string ExpectedNote(const Note& n) {
  std::string s;
  ExpectNumber(s, n.id, false);
  s += '|';
  ExpectText(s, n.title);
  s += '|';
  ExpectText(s, n.body);
  s += "|[";
  for (size_t i = 0; i < n.tags.size(); ++i) {
    if (i != 0) s += '|';
    ExpectText(s, n.tags[i]);
  }
  s += ']';
  return s;
}

// ---------------------------------------------------------------------------
// Oracle side: the C layouts of the reference types and their null structures.
// ---------------------------------------------------------------------------
struct ref_addr_t {
  OCIString* street;
  OCIString* city;
  OCIString* zip;
  OCIString* country;
};
struct ref_addr_ind {
  OCIInd _atomic, street, city, zip, country;
};
struct ref_line_t {
  OCIString* sku;
  OCINumber qty;
  OCINumber price;
  OCIString* note;
};
struct ref_line_ind {
  OCIInd _atomic, sku, qty, price, note;
};
struct ref_order_t {
  OCINumber id;
  OCIString* customer;
  OCIString* email;
  OCIDate created;
  OCIDateTime* shipped;
  OCINumber amount;
  OCINumber discount;
  OCIString* status;
  OCINumber priority;
  OCIRaw* token;
  ref_addr_t ship_to;
  OCITable* lines;
};
struct ref_order_ind {
  OCIInd _atomic, id, customer, email, created, shipped, amount, discount, status, priority,
      token;
  ref_addr_ind ship_to;
  OCIInd lines;
};
struct ref_note_t {
  OCINumber id;
  OCIString* title;
  OCIString* body;
  OCITable* tags;
};
struct ref_note_ind {
  OCIInd _atomic, id, title, body, tags;
};

inline const OraText* T(const char* s) { return reinterpret_cast<const OraText*>(s); }
inline const OraText* T(const std::string& s) { return T(s.c_str()); }

// One host definition record; lists are arrays linked in order.
inline Column_Def Def(const char* pszName, unsigned short nType, short nExt, unsigned long nSize,
               unsigned long nPrecision = 0, short nScale = 0, unsigned nDisplay = 0) {
  Column_Def d;
  std::memset(&d, 0, sizeof d);
  d.ColumnName = const_cast<char*>(pszName);
  d.DataType = nType;
  d.ExtType = nExt;
  d.DataSize = nSize;
  d.Precision = nPrecision;
  d.Scale = nScale;
  d.DisplaySize = nDisplay;
  d.Flags = COLDEF_DEFINED;
  return d;
}
inline Column_Def Open(const char* pszName, unsigned short nType, const char* pszTypeName,
                int bInColl = 0) {
  Column_Def d = Def(pszName, nType, 0, 0);
  d.Flags = COLDEF_COMPLEX | COLDEF_DEFINED;
  d.TypeName = const_cast<char*>(pszTypeName);
  d.InCollection = bInColl;
  return d;
}
inline Column_Def Close() {
  Column_Def d = Def(nullptr, 0, 0, 0);
  d.Flags = COLDEF_END | COLDEF_DEFINED;
  return d;
}
inline Column_Def Number(const char* pszName, unsigned long nPrecision, short nScale) {
  return Def(pszName, SQLT_NUM, 5, 22, nPrecision, nScale);
}
inline Column_Def Varchar(const char* pszName, unsigned long nSize) {
  return Def(pszName, SQLT_CHR, 1, nSize);
}
inline Column_Def Char(const char* pszName, unsigned long nSize) {
  return Def(pszName, SQLT_AFC, 96, nSize);
}
inline Column_Def InColl(Column_Def d) {
  d.InCollection = 1;
  return d;
}

inline std::vector<Column_Def> Linked(std::vector<Column_Def> list) {
  for (size_t i = 0; i + 1 < list.size(); ++i) list[i].Next = &list[i + 1];
  return list;
}

inline std::vector<Column_Def> OrderDefs() {
  return Linked({
      Number("ID", 12, 0),
      Varchar("CUSTOMER", 80),
      Varchar("EMAIL", 100),
      Def("CREATED", SQLT_DAT, 12, 7, 0, 0, 19),
      Def("SHIPPED", SQLT_TIMESTAMP, SQLT_TIMESTAMP, 11, 0, 6, 26),
      Number("AMOUNT", 14, 2),
      Number("DISCOUNT", 0, -127),
      Char("STATUS", 1),
      Number("PRIORITY", 3, 0),
      Def("TOKEN", SQLT_BIN, SQLT_BIN, 16),
      Open("SHIP_TO", SQLT_NTY, "SCOTT.REF_ADDR_T"),
      Varchar("STREET", 60),
      Varchar("CITY", 40),
      Char("ZIP", 5),
      Varchar("COUNTRY", 2),
      Close(),
      Open("LINES", SQLT_NCO, "SCOTT.REF_LINE_TAB"),
      Open(nullptr, SQLT_NTY, "SCOTT.REF_LINE_T", 1),
      Varchar("SKU", 20),
      Number("QTY", 9, 0),
      Number("PRICE", 12, 2),
      Varchar("NOTE", 100),
      Close(),
      Close(),
  });
}

inline std::vector<Column_Def> NoteDefs() {
  return Linked({
      Number("ID", 12, 0),
      Varchar("TITLE", 200),
      Varchar("BODY", 4000),
      Open("TAGS", SQLT_NCO, "SCOTT.REF_TAG_TAB"),
      InColl(Varchar(nullptr, 30)),
      Close(),
  });
}

class Oracle {
 public:
  // Logs on to the in-memory database pszDb, of this process alone.
  explicit Oracle(const char* pszDb) {
    setenv("ORA_SDTZ", "+00:00", 1);
    Check(OCIEnvCreate(&m_pEnv, OCI_OBJECT, nullptr, nullptr, nullptr, nullptr, 0, nullptr),
          "OCIEnvCreate");
    Check(OCIHandleAlloc(m_pEnv, reinterpret_cast<void**>(&m_pErr), OCI_HTYPE_ERROR, 0, nullptr),
          "OCIHandleAlloc");
    Check(OCILogon(m_pEnv, m_pErr, &m_pSvc, T("scott"), 5, T("tiger"), 5, T(pszDb),
                   static_cast<ub4>(std::strlen(pszDb))),
          "OCILogon");
    CreateTypes();
    m_pOrderTdo = Type("REF_ORDER_T");
    m_pLineTdo = Type("REF_LINE_T");
    m_pNoteTdo = Type("REF_NOTE_T");
  }
  ~Oracle() {
    for (void* p : m_apInstances) OCIObjectFree(m_pEnv, m_pErr, p, OCI_OBJECTFREE_FORCE);
    OCILogoff(m_pSvc, m_pErr);
    OCIHandleFree(m_pErr, OCI_HTYPE_ERROR);
    OCIHandleFree(m_pEnv, OCI_HTYPE_ENV);
  }
  Oracle(const Oracle&) = delete;
  Oracle& operator=(const Oracle&) = delete;

  void Check(sword nStatus, const char* pszCall) {
    if (nStatus == OCI_SUCCESS) return;
    sb4 nCode = 0;
    OraText szText[512] = {0};
    if (m_pErr != nullptr) {
      OCIErrorGet(m_pErr, 1, nullptr, &nCode, szText, sizeof szText, OCI_HTYPE_ERROR);
    }
    Die(std::string(pszCall) + " failed: " + reinterpret_cast<char*>(szText));
  }

  ref_order_t* NewOrder(const Order& o, ref_order_ind** ppInd) {
    auto* p = static_cast<ref_order_t*>(New(m_pOrderTdo));
    auto* ind = static_cast<ref_order_ind*>(Ind(p));
    ind->_atomic = OCI_IND_NOTNULL;
    SetNumber(o.id, &p->id, &ind->id);
    SetText(o.customer, &p->customer, &ind->customer);
    SetText(o.email, &p->email, &ind->email);
    ind->created = OCI_IND_NULL;
    if (o.created) {
      const char* pszMask = "YYYY-MM-DD HH24:MI:SS";
      Check(OCIDateFromText(m_pErr, T(*o.created), static_cast<ub4>(o.created->size()),
                            T(pszMask), static_cast<ub1>(std::strlen(pszMask)), nullptr, 0,
                            &p->created),
            "OCIDateFromText");
      ind->created = OCI_IND_NOTNULL;
    }
    ind->shipped = OCI_IND_NULL;
    if (o.shipped) {
      const char* pszMask = "YYYY-MM-DD HH24:MI:SS.FF";
      Check(OCIDateTimeFromText(m_pEnv, m_pErr, T(*o.shipped), o.shipped->size(), T(pszMask),
                                static_cast<ub1>(std::strlen(pszMask)), nullptr, 0, p->shipped),
            "OCIDateTimeFromText");
      ind->shipped = OCI_IND_NOTNULL;
    }
    SetNumber(o.amount, &p->amount, &ind->amount);
    SetNumber(o.discount, &p->discount, &ind->discount);
    SetText(o.status, &p->status, &ind->status);
    SetNumber(o.priority, &p->priority, &ind->priority);
    ind->token = OCI_IND_NULL;
    if (o.token) {
      std::vector<ub1> bytes;
      for (size_t i = 0; i + 1 < o.token->size(); i += 2) {
        bytes.push_back(static_cast<ub1>(std::stoi(o.token->substr(i, 2), nullptr, 16)));
      }
      Check(OCIRawAssignBytes(m_pEnv, m_pErr, bytes.data(), static_cast<ub4>(bytes.size()),
                              &p->token),
            "OCIRawAssignBytes");
      ind->token = OCI_IND_NOTNULL;
    }
    ind->ship_to._atomic = OCI_IND_NOTNULL;
    SetText(o.shipTo.street, &p->ship_to.street, &ind->ship_to.street);
    SetText(o.shipTo.city, &p->ship_to.city, &ind->ship_to.city);
    SetText(o.shipTo.zip, &p->ship_to.zip, &ind->ship_to.zip);
    SetText(o.shipTo.country, &p->ship_to.country, &ind->ship_to.country);
    for (const Line& l : o.lines) {
      auto* pLine = static_cast<ref_line_t*>(New(m_pLineTdo, false));
      auto* lind = static_cast<ref_line_ind*>(Ind(pLine));
      lind->_atomic = OCI_IND_NOTNULL;
      SetText(l.sku, &pLine->sku, &lind->sku);
      SetNumber(l.qty, &pLine->qty, &lind->qty);
      SetNumber(l.price, &pLine->price, &lind->price);
      SetText(l.note, &pLine->note, &lind->note);
      Check(OCICollAppend(m_pEnv, m_pErr, pLine, lind, p->lines), "OCICollAppend");
      Check(OCIObjectFree(m_pEnv, m_pErr, pLine, OCI_OBJECTFREE_FORCE), "OCIObjectFree");
    }
    ind->lines = OCI_IND_NOTNULL;
    *ppInd = ind;
    return p;
  }

  ref_note_t* NewNote(const Note& n, ref_note_ind** ppInd) {
    auto* p = static_cast<ref_note_t*>(New(m_pNoteTdo));
    auto* ind = static_cast<ref_note_ind*>(Ind(p));
    ind->_atomic = OCI_IND_NOTNULL;
    SetNumber(n.id, &p->id, &ind->id);
    SetText(n.title, &p->title, &ind->title);
    SetText(n.body, &p->body, &ind->body);
    OCIString* pTag = nullptr;
    for (const Opt& t : n.tags) {
      OCIInd nInd = OCI_IND_NULL;
      SetText(t ? t : Opt(std::string()), &pTag, &nInd);
      if (!t) nInd = OCI_IND_NULL;
      Check(OCICollAppend(m_pEnv, m_pErr, pTag, &nInd, p->tags), "OCICollAppend");
    }
    if (pTag != nullptr) OCIStringResize(m_pEnv, m_pErr, 0, &pTag);
    ind->tags = OCI_IND_NOTNULL;
    *ppInd = ind;
    return p;
  }

  // Checks that the C layout above is the one OCI hands out, through the
  // attribute addresses OCIObjectGetAttr gives for a few attributes.
  void CheckLayout(ref_order_t* p, ref_order_ind* ind) {
    auto attr = [&](const char* pszName) {
      const OraText* names[1] = {T(pszName)};
      const ub4 lengths[1] = {static_cast<ub4>(std::strlen(pszName))};
      OCIInd nStatus = 0;
      void* pNull = nullptr;
      void* pValue = nullptr;
      OCIType* pTdo = nullptr;
      Check(OCIObjectGetAttr(m_pEnv, m_pErr, p, ind, m_pOrderTdo, names, lengths, 1, nullptr, 0,
                             &nStatus, &pNull, &pValue, &pTdo),
            "OCIObjectGetAttr");
      return pValue;
    };
    if (attr("TOKEN") != &p->token || attr("SHIP_TO") != &p->ship_to ||
        attr("LINES") != &p->lines || attr("SHIPPED") != &p->shipped) {
      Die("the C layout of REF_ORDER_T is not the one OCI uses");
    }
  }

  // Runs one SQL statement (CREATE TYPE ...).
  void Execute(const std::string& sql) {
    OCIStmt* pStmt = nullptr;
    Check(OCIHandleAlloc(m_pEnv, reinterpret_cast<void**>(&pStmt), OCI_HTYPE_STMT, 0, nullptr),
          "OCIHandleAlloc");
    Check(OCIStmtPrepare(pStmt, m_pErr, T(sql), static_cast<ub4>(sql.size()), OCI_NTV_SYNTAX,
                         OCI_DEFAULT),
          "OCIStmtPrepare");
    Check(OCIStmtExecute(m_pSvc, pStmt, m_pErr, 1, 0, nullptr, nullptr, OCI_DEFAULT),
          ("OCIStmtExecute " + sql).c_str());
    OCIHandleFree(pStmt, OCI_HTYPE_STMT);
  }
  // The type descriptor of a type of the logged-on schema.
  OCIType* Type(const char* pszName) {
    OCIType* pTdo = nullptr;
    Check(OCITypeByName(m_pEnv, m_pErr, m_pSvc, nullptr, 0, T(pszName),
                        static_cast<ub4>(std::strlen(pszName)), nullptr, 0, OCI_DURATION_DEFAULT,
                        OCI_TYPEGET_HEADER, &pTdo),
          "OCITypeByName");
    return pTdo;
  }

  OCIEnv* m_pEnv = nullptr;
  OCIError* m_pErr = nullptr;
  OCISvcCtx* m_pSvc = nullptr;
  OCIType* m_pOrderTdo = nullptr;
  OCIType* m_pLineTdo = nullptr;
  OCIType* m_pNoteTdo = nullptr;

 private:
  // reference.sql in SQL*Plus form: comment lines, statements ended by ';'
  // and run by a '/' line.
  void CreateTypes() {
    std::ifstream file(VARNADP_BENCH_DATA_DIR "/reference.sql");
    if (!file) Die("cannot read " VARNADP_BENCH_DATA_DIR "/reference.sql");
    std::string line, statement;
    int nTypes = 0;
    while (std::getline(file, line)) {
      if (line.rfind("--", 0) == 0) continue;
      if (line == "/") {
        while (!statement.empty() && (statement.back() == ';' || statement.back() == '\n' ||
                                      statement.back() == ' ')) {
          statement.pop_back();
        }
        Execute(statement);
        statement.clear();
        ++nTypes;
        continue;
      }
      statement += line + "\n";
    }
    if (nTypes != 6) Die("reference.sql: expected six types");
  }
  void* New(OCIType* pTdo, bool bKeep = true) {
    void* p = nullptr;
    Check(OCIObjectNew(m_pEnv, m_pErr, m_pSvc, OCI_TYPECODE_OBJECT, pTdo, nullptr,
                       OCI_DURATION_DEFAULT, TRUE, &p),
          "OCIObjectNew");
    if (bKeep) m_apInstances.push_back(p);
    return p;
  }
  void* Ind(void* p) {
    void* pInd = nullptr;
    Check(OCIObjectGetInd(m_pEnv, m_pErr, p, &pInd), "OCIObjectGetInd");
    return pInd;
  }
  void SetText(const Opt& v, OCIString** ppString, OCIInd* pInd) {
    *pInd = OCI_IND_NULL;
    if (!v) return;
    Check(OCIStringAssignText(m_pEnv, m_pErr, T(*v), static_cast<ub4>(v->size()), ppString),
          "OCIStringAssignText");
    *pInd = OCI_IND_NOTNULL;
  }
  void SetNumber(const Opt& v, OCINumber* pNumber, OCIInd* pInd) {
    *pInd = OCI_IND_NULL;
    if (!v) return;
    std::string mask;
    for (char c : *v) mask += (c >= '0' && c <= '9') ? '9' : (c == '-' ? 'S' : c);
    Check(OCINumberFromText(m_pErr, T(*v), static_cast<ub4>(v->size()), T(mask),
                            static_cast<ub4>(mask.size()), nullptr, 0, pNumber),
          "OCINumberFromText");
    *pInd = OCI_IND_NOTNULL;
  }

  std::vector<void*> m_apInstances;
};

}  // namespace refbench

#endif  // VARNADP_BENCH_REFERENCE_SETUP_H
