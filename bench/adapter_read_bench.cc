// Stream to object: adpProcessBuffer over the reference orders and notes
// (reference.sql and generate.py of the reference data directory), beside
// RapidJSON parsing the same records from their JSON Lines into a Document;
// and how the read scales with the number of objects in a buffer and with the
// number of items of a top-level collection.
//
// Setup, once per run and outside every timed loop (reference_setup.h):
//  - an object-mode environment logged on to an in-memory database of its own,
//    the reference types created from reference.sql, and NUMS_T, a table of
//    NUMBER(10);
//  - `generate.py ref_order_t 10500 -` and `generate.py ref_note_t 1000 -`;
//    their lines are kept as the peer's input. Orders whose TOKEN (a RAW) is
//    null are left out on both sides, as their streams do not read back (the
//    reader does not step over a null RAW's "|"); the first 10,000 others are
//    used;
//  - one Oracle instance per record, written with adpProcessObject; each
//    stream is compared with the one the format prescribes for its record,
//    and kept as that record's input;
//  - every record read back with adpProcessBuffer (the whole buffer consumed),
//    its root marked present, and written again with adpProcessObject on a
//    second context: the bytes must be the same. The order batches and the
//    collection streams are read back and written the same way. Any
//    difference aborts the program.
//
// Timed:
//  - BM_AdapterRead{Orders,Notes}: one adpProcessBuffer per iteration, cycling
//    over the first 1,000 records of the type; the Column_Def list is the same
//    each time (a fresh copy of its head pointer per call), so the context
//    keeps its element tree. No LOB pass (the types have no LOBs).
//  - BM_RapidJsonParse{Orders,Notes}/reuse:1: rapidjson::Document::Parse of
//    the same record's JSON line (default flags), into one Document whose pool
//    allocator is cleared before each record; /reuse:0: a new Document per
//    record.
//  - BM_AdapterReadOrderBatch/N: all N orders of one buffer (records back to
//    back) read with successive calls, one batch per iteration.
//  - BM_AdapterReadNums/N: one top-level NUMS_T of N items read per iteration.
//
// Counters: items_per_second (objects or items per second), bytes_per_second
// (input), allocs/object (or allocs/item): heap allocations made inside the
// measured calls; per_object / per_item: CPU time per object or item.
#include <benchmark/benchmark.h>
#include <host/kel_stream.h>
#include <oci.h>
#include <orid.h>
#include <rapidjson/allocators.h>
#include <rapidjson/document.h>
#include <varnadp.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "reference_setup.h"

namespace {

using namespace refbench;

constexpr int kObjects = 1000;           // records cycled over by the per-record benchmarks
constexpr int kBatchOrders = 10000;      // orders of the larger batch
constexpr int kGeneratedOrders = 10500;  // enough for kBatchOrders with a TOKEN
constexpr int kManyItems = 1000000;      // items of the larger collection

// The lines of a JSON Lines text, without their line ends.
std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> lines;
  size_t pos = 0;
  while (pos < text.size()) {
    size_t end = text.find('\n', pos);
    if (end == std::string::npos) end = text.size();
    if (end > pos) lines.push_back(text.substr(pos, end - pos));
    pos = end + 1;
  }
  return lines;
}

// The adapter's read of one buffer: a context that owns what it read, the
// type's list and descriptor, and the last instance.
struct Reader {
  VARNADP* pCtx = nullptr;
  Column_Def* pDefs = nullptr;
  OCIType* pTdo = nullptr;
  Oracle* pOracle = nullptr;
  void* pInstance = nullptr;
  short* pInd = nullptr;
  short nInd = 0;

  Reader(Oracle& oracle, Column_Def* pList, OCIType* pType)
      : pDefs(pList), pTdo(pType), pOracle(&oracle) {
    if (adpCreateContext(&pCtx, nullptr, nullptr) != 0) Die("adpCreateContext failed");
  }
  ~Reader() { adpDestroyContext(pCtx, nullptr); }
  Reader(const Reader&) = delete;
  Reader& operator=(const Reader&) = delete;

  // Reads one object from *ppBuffer (nSize bytes left) and advances it.
  int Read(const char** ppBuffer, size_t nSize) {
    Column_Def* pDef = pDefs;  // the call may advance it
    const void* pBuffer = *ppBuffer;
    int nLobs = 0;
    const int rc =
        adpProcessBuffer(pCtx, nullptr, &pBuffer, nSize, &pDef, pOracle->m_pEnv, pOracle->m_pErr,
                         pOracle->m_pSvc, &pInstance, &pInd, &nInd, pTdo, &nLobs);
    *ppBuffer = static_cast<const char*>(pBuffer);
    return rc;
  }
};

// Writes an instance with adpProcessObject; returns its stream.
std::string WriteStream(Oracle& oracle, VARNADP* pCtx, CKelStream& stream, Column_Def* pDefs,
                        void* pObject, short* pInd, OCIType* pTdo, const char* pszWhat) {
  stream.SetSize(0);
  Column_Def* pDef = pDefs;
  if (adpProcessObject(pCtx, nullptr, &stream, &pDef, oracle.m_pEnv, oracle.m_pErr, oracle.m_pSvc,
                       pObject, pInd, 0, pTdo) != 0) {
    Die(std::string("adpProcessObject failed on ") + pszWhat);
  }
  std::string out(stream.GetSize(), '\0');
  stream.Seek(0, 0);
  if (!out.empty() && stream.Read(&out[0], out.size()) != out.size()) Die("short read");
  return out;
}

[[noreturn]] void Differs(const std::string& what, const std::string& got,
                          const std::string& want) {
  size_t at = 0;
  while (at < got.size() && at < want.size() && got[at] == want[at]) ++at;
  Die(what + " differs at byte " + std::to_string(at) + "\n got: " + got.substr(0, 2000) +
      "\nwant: " + want.substr(0, 2000));
}

// Reads the objects of `buffer` (records back to back, sizes given) one call
// each, marks each root present unless it is a collection, writes it with a
// second context and compares with its record.
void CheckReadBack(Oracle& oracle, Reader& reader, VARNADP* pWriteCtx, const std::string& buffer,
                   const std::vector<size_t>& sizes, bool bCollection, const char* pszWhat) {
  CKelStream stream(0, nullptr, nullptr, 0);
  const char* p = buffer.data();
  const char* const pEnd = buffer.data() + buffer.size();
  for (size_t i = 0; i < sizes.size(); ++i) {
    const char* pStart = p;
    const std::string what = std::string(pszWhat) + " " + std::to_string(i);
    if (reader.Read(&p, static_cast<size_t>(pEnd - p)) != 0)
      Die("adpProcessBuffer failed on " + what);
    const std::string record(pStart, sizes[i]);
    if (static_cast<size_t>(p - pStart) != sizes[i]) {
      Die(what + ": read " + std::to_string(p - pStart) + " bytes of " + std::to_string(sizes[i]) +
          "\n" + record.substr(0, 2000));
    }
    if (reader.pInstance == nullptr || reader.pInd == nullptr) Die(what + ": no instance");
    if (!bCollection) {
      if (reader.pInd[0] != OCI_IND_NULL) Die(what + ": a new object's root is not null");
      reader.pInd[0] = OCI_IND_NOTNULL;
    }
    const std::string again =
        WriteStream(oracle, pWriteCtx, stream, reader.pDefs, reader.pInstance,
                    bCollection ? nullptr : reader.pInd, reader.pTdo, what.c_str());
    if (again != record) Differs(what + " read and written back", again, record);
  }
  if (p != pEnd) Die(std::string(pszWhat) + ": bytes left after the last record");
}

// C layout of NUMS_T's items.
OCINumber NumberOf(int64_t n, OCIError* pErr) {
  OCINumber number;
  if (OCINumberFromInt(pErr, &n, sizeof n, OCI_NUMBER_SIGNED, &number) != OCI_SUCCESS) {
    Die("OCINumberFromInt failed");
  }
  return number;
}

struct Prepared {
  std::string orderJson, noteJson;
  std::vector<Order> orders;
  std::vector<Note> notes;
  std::vector<std::string> orderLines, noteLines;
  Oracle oracle{"adapter_read_bench"};
  OCIType* pNumsTdo = nullptr;
  std::vector<Column_Def> orderDefs = OrderDefs();
  std::vector<Column_Def> noteDefs = NoteDefs();
  std::vector<Column_Def> numsDefs = Linked({InColl(Number(nullptr, 10, 0))});
  VARNADP* pWriteCtx = nullptr;  // writes the inputs
  VARNADP* pCheckCtx = nullptr;  // writes back what was read
  // Each record's stream; the order batches and collection streams.
  std::vector<std::string> orderStreams, noteStreams;
  std::string orderBatchSmall, orderBatchLarge, numsFew, numsMany;

  Prepared()
      : orderJson(RunGenerator("ref_order_t", kGeneratedOrders)),
        noteJson(RunGenerator("ref_note_t", kObjects)),
        orders(LoadOrders(orderJson, kGeneratedOrders)),
        notes(LoadNotes(noteJson, kObjects)),
        orderLines(Lines(orderJson)),
        noteLines(Lines(noteJson)) {
    if (orderLines.size() != orders.size() || noteLines.size() != notes.size()) {
      Die("line count");
    }
    // A null RAW is written as "|" and that bar is not stepped over on input,
    // so an order whose TOKEN is null does not read back: such orders are left
    // out here, on both sides.
    std::vector<Order> kept;
    std::vector<std::string> keptLines;
    for (size_t i = 0; i < orders.size() && kept.size() < static_cast<size_t>(kBatchOrders); ++i) {
      if (!orders[i].token) continue;
      kept.push_back(std::move(orders[i]));
      keptLines.push_back(std::move(orderLines[i]));
    }
    if (kept.size() != static_cast<size_t>(kBatchOrders)) Die("too few orders with a TOKEN");
    orders = std::move(kept);
    orderLines = std::move(keptLines);
    oracle.Execute("CREATE TYPE nums_t AS TABLE OF NUMBER(10)");
    pNumsTdo = oracle.Type("NUMS_T");
    if (adpCreateContext(&pWriteCtx, nullptr, nullptr) != 0 ||
        adpCreateContext(&pCheckCtx, nullptr, nullptr) != 0) {
      Die("adpCreateContext failed");
    }
    CKelStream stream(0, nullptr, nullptr, 0);
    for (size_t i = 0; i < orders.size(); ++i) {
      ref_order_ind* ind = nullptr;
      ref_order_t* p = oracle.NewOrder(orders[i], &ind);
      if (i == 0) oracle.CheckLayout(p, ind);
      const std::string what = "order " + std::to_string(i);
      std::string s = WriteStream(oracle, pWriteCtx, stream, orderDefs.data(), p, &ind->_atomic,
                                  oracle.m_pOrderTdo, what.c_str());
      const std::string want = ExpectedOrder(orders[i]);
      if (s != want) Differs(what, s, want);
      orderStreams.push_back(std::move(s));
    }
    for (size_t i = 0; i < notes.size(); ++i) {
      ref_note_ind* ind = nullptr;
      ref_note_t* p = oracle.NewNote(notes[i], &ind);
      const std::string what = "note " + std::to_string(i);
      std::string s = WriteStream(oracle, pWriteCtx, stream, noteDefs.data(), p, &ind->_atomic,
                                  oracle.m_pNoteTdo, what.c_str());
      const std::string want = ExpectedNote(notes[i]);
      if (s != want) Differs(what, s, want);
      noteStreams.push_back(std::move(s));
    }
    std::fprintf(stderr, "first order: %s\n", orderStreams[0].c_str());
    for (int i = 0; i < kBatchOrders; ++i) {
      if (i < kObjects) orderBatchSmall += orderStreams[static_cast<size_t>(i)];
      orderBatchLarge += orderStreams[static_cast<size_t>(i)];
    }
    numsFew = Nums(10);
    numsMany = Nums(kManyItems);

    // Everything read back and written again. The large batch holds every
    // order; the small one and the per-record runs read the same streams.
    std::vector<size_t> orderSizes, noteSizes;
    for (const std::string& s : orderStreams) orderSizes.push_back(s.size());
    for (const std::string& s : noteStreams) noteSizes.push_back(s.size());
    std::string noteBatch;
    for (const std::string& s : noteStreams) noteBatch += s;
    {
      Reader orderReader(oracle, orderDefs.data(), oracle.m_pOrderTdo);
      CheckReadBack(oracle, orderReader, pCheckCtx, orderBatchLarge, orderSizes, false, "order");
      Reader noteReader(oracle, noteDefs.data(), oracle.m_pNoteTdo);
      CheckReadBack(oracle, noteReader, pCheckCtx, noteBatch, noteSizes, false, "note");
      Reader numsReader(oracle, numsDefs.data(), pNumsTdo);
      CheckReadBack(oracle, numsReader, pCheckCtx, numsFew, {numsFew.size()}, true, "nums(10)");
      CheckReadBack(oracle, numsReader, pCheckCtx, numsMany, {numsMany.size()}, true,
                    "nums(1000000)");
    }
  }
  ~Prepared() {
    adpDestroyContext(pWriteCtx, nullptr);
    adpDestroyContext(pCheckCtx, nullptr);
  }
  Prepared(const Prepared&) = delete;
  Prepared& operator=(const Prepared&) = delete;

  // The stream of a NUMS_T of n items of 1 to 10 digits, some negative.
  std::string Nums(int n) {
    OCITable* pNums = nullptr;
    oracle.Check(
        OCIObjectNew(oracle.m_pEnv, oracle.m_pErr, oracle.m_pSvc, OCI_TYPECODE_TABLE, pNumsTdo,
                     nullptr, OCI_DURATION_DEFAULT, TRUE, reinterpret_cast<void**>(&pNums)),
        "OCIObjectNew");
    uint64_t x = 88172645463325252ull;
    for (int i = 0; i < n; ++i) {
      x ^= x << 13;
      x ^= x >> 7;
      x ^= x << 17;
      const int64_t nDigits = static_cast<int64_t>(x % 10) + 1;
      int64_t nLimit = 1;
      for (int64_t d = 0; d < nDigits; ++d) nLimit *= 10;
      int64_t v = static_cast<int64_t>((x >> 8) % static_cast<uint64_t>(nLimit));
      if ((x >> 60) & 1) v = -v;
      const OCINumber number = NumberOf(v, oracle.m_pErr);
      OCIInd nInd = OCI_IND_NOTNULL;
      oracle.Check(OCICollAppend(oracle.m_pEnv, oracle.m_pErr, &number, &nInd, pNums),
                   "OCICollAppend");
    }
    CKelStream stream(0, nullptr, nullptr, 0);
    std::string s =
        WriteStream(oracle, pWriteCtx, stream, numsDefs.data(), pNums, nullptr, pNumsTdo, "nums");
    OCIObjectFree(oracle.m_pEnv, oracle.m_pErr, pNums, OCI_OBJECTFREE_FORCE);
    return s;
  }
};

Prepared& P() {
  static Prepared prepared;
  return prepared;
}

// Sets the per-object (per-item) counters of a run that read nPerIteration
// objects (items) per iteration.
void Report(benchmark::State& state, int64_t nPerIteration, int64_t nBytes, unsigned long nAllocs,
            const char* pszUnit) {
  state.SetItemsProcessed(state.iterations() * nPerIteration);
  state.SetBytesProcessed(nBytes);
  state.counters[std::string("allocs/") + pszUnit] =
      benchmark::Counter(static_cast<double>(nAllocs) / static_cast<double>(nPerIteration),
                         benchmark::Counter::kAvgIterations);
  state.counters[std::string("per_") + pszUnit] = benchmark::Counter(
      static_cast<double>(nPerIteration),
      benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void AdapterRead(benchmark::State& state, bool bOrders) {
  Prepared& p = P();
  Reader reader(p.oracle, bOrders ? p.orderDefs.data() : p.noteDefs.data(),
                bOrders ? p.oracle.m_pOrderTdo : p.oracle.m_pNoteTdo);
  const std::vector<std::string>& streams = bOrders ? p.orderStreams : p.noteStreams;
  size_t i = 0;
  int64_t nBytes = 0;
  unsigned long nAllocs = 0;
  for (auto _ : state) {
    if (i == static_cast<size_t>(kObjects)) i = 0;
    const std::string& s = streams[i];
    const char* pBuffer = s.data();
    g_nAllocs = 0;
    g_bCounting = true;
    const int rc = reader.Read(&pBuffer, s.size());
    g_bCounting = false;
    nAllocs += g_nAllocs;
    if (rc != 0) {
      state.SkipWithError("adpProcessBuffer failed");
      break;
    }
    nBytes += static_cast<int64_t>(s.size());
    ++i;
  }
  Report(state, 1, nBytes, nAllocs, "object");
}

// The peer. reuse: one Document over a pool allocator cleared before each
// record (RapidJSON's fastest way of parsing many records); fresh: a new
// Document per record.
void JsonParse(benchmark::State& state, const std::vector<std::string>& lines) {
  const bool bReuse = state.range(0) != 0;
  rapidjson::MemoryPoolAllocator<> pool;
  rapidjson::Document reused(&pool);
  size_t i = 0;
  int64_t nBytes = 0;
  unsigned long nAllocs = 0;
  for (auto _ : state) {
    if (i == static_cast<size_t>(kObjects)) i = 0;
    const std::string& line = lines[i];
    g_nAllocs = 0;
    g_bCounting = true;
    bool bError = false;
    if (bReuse) {
      pool.Clear();
      reused.Parse(line.data(), line.size());
      bError = reused.HasParseError() || !reused.IsObject();
      benchmark::DoNotOptimize(&reused);
    } else {
      rapidjson::Document doc;
      doc.Parse(line.data(), line.size());
      bError = doc.HasParseError() || !doc.IsObject();
      benchmark::DoNotOptimize(&doc);
    }
    g_bCounting = false;
    nAllocs += g_nAllocs;
    if (bError) {
      state.SkipWithError("parse error");
      break;
    }
    nBytes += static_cast<int64_t>(line.size());
    ++i;
  }
  Report(state, 1, nBytes, nAllocs, "object");
}

// All orders of one buffer, one call each, one batch per iteration.
void BM_AdapterReadOrderBatch(benchmark::State& state) {
  Prepared& p = P();
  const std::string& batch = state.range(0) == kBatchOrders ? p.orderBatchLarge : p.orderBatchSmall;
  const int64_t nOrders = state.range(0);
  Reader reader(p.oracle, p.orderDefs.data(), p.oracle.m_pOrderTdo);
  unsigned long nAllocs = 0;
  for (auto _ : state) {
    const char* pBuffer = batch.data();
    const char* const pEnd = batch.data() + batch.size();
    g_nAllocs = 0;
    g_bCounting = true;
    int rc = 0;
    for (int64_t n = 0; n < nOrders && rc == 0; ++n) {
      rc = reader.Read(&pBuffer, static_cast<size_t>(pEnd - pBuffer));
    }
    g_bCounting = false;
    nAllocs += g_nAllocs;
    if (rc != 0 || pBuffer != pEnd) {
      state.SkipWithError("adpProcessBuffer failed");
      break;
    }
  }
  Report(state, nOrders,
         static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(batch.size()), nAllocs,
         "object");
}

// One top-level collection of N items per iteration.
void BM_AdapterReadNums(benchmark::State& state) {
  Prepared& p = P();
  const std::string& s = state.range(0) == kManyItems ? p.numsMany : p.numsFew;
  Reader reader(p.oracle, p.numsDefs.data(), p.pNumsTdo);
  unsigned long nAllocs = 0;
  for (auto _ : state) {
    const char* pBuffer = s.data();
    g_nAllocs = 0;
    g_bCounting = true;
    const int rc = reader.Read(&pBuffer, s.size());
    g_bCounting = false;
    nAllocs += g_nAllocs;
    if (rc != 0 || pBuffer != s.data() + s.size()) {
      state.SkipWithError("adpProcessBuffer failed");
      break;
    }
  }
  Report(state, state.range(0),
         static_cast<int64_t>(state.iterations()) * static_cast<int64_t>(s.size()), nAllocs,
         "item");
}

void BM_AdapterReadOrders(benchmark::State& state) { AdapterRead(state, true); }
void BM_AdapterReadNotes(benchmark::State& state) { AdapterRead(state, false); }
void BM_RapidJsonParseOrders(benchmark::State& state) { JsonParse(state, P().orderLines); }
void BM_RapidJsonParseNotes(benchmark::State& state) { JsonParse(state, P().noteLines); }

BENCHMARK(BM_AdapterReadOrders)->Apply(FixedIterations);
BENCHMARK(BM_RapidJsonParseOrders)->ArgName("reuse")->Arg(1)->Arg(0)->Apply(FixedIterations);
BENCHMARK(BM_AdapterReadNotes)->Apply(FixedIterations);
BENCHMARK(BM_RapidJsonParseNotes)->ArgName("reuse")->Arg(1)->Arg(0)->Apply(FixedIterations);
BENCHMARK(BM_AdapterReadOrderBatch)
    ->Arg(kObjects)
    ->Arg(kBatchOrders)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_AdapterReadNums)->Arg(10)->Arg(kManyItems)->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
