// Object to stream: adpProcessObject over the reference orders and notes
// (reference.sql and generate.py of the reference data directory), beside
// RapidJSON's Writer writing the same records from plain C++ structs.
//
// Setup, once per run and outside every timed loop:
//  - an object-mode environment logged on to an in-memory database of its own,
//    the reference types created from reference.sql with OCIStmtExecute;
//  - the data of `generate.py TYPE N -`, parsed with RapidJSON (numbers kept as
//    their exact decimal text) into plain structs;
//  - one Oracle instance per record, built with OCIObjectNew and the value calls
//    (OCINumberFromText, OCIDateFromText, OCIDateTimeFromText, OCIStringAssignText,
//    OCIRawAssignBytes, OCICollAppend), null indicators set in the null structure;
//  - the host's Column_Def list of each type;
//  - every instance written once and compared byte for byte with the stream the
//    format prescribes for its record, built here independently; any difference
//    aborts the program.
//
// Timed: one adpProcessObject per iteration, cycling over the instances into
// one CKelStream that is emptied (SetSize(0)) each time the cycle restarts. The
// peer writes each record with rapidjson::Writer<StringBuffer>, numbers from
// int64/double members, into one buffer emptied at the same points.
//
// Counters: items_per_second (objects/s), bytes_per_second (output), and
// allocs/object: heap allocations (malloc, calloc, realloc, operator new) made
// inside the measured call, counted by the interposers of reference_setup.h.
#include <benchmark/benchmark.h>

#include <rapidjson/document.h>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <memory>
#include <new>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include <oci.h>
#include <orid.h>
#include <varnadp.h>

#include <host/kel_stream.h>

#include "reference_setup.h"

namespace {

using namespace refbench;

constexpr int kObjects = 1000;

// ---------------------------------------------------------------------------
// The prepared run: data, instances, definition lists, the adapter context.
// ---------------------------------------------------------------------------
struct Prepared {
  std::vector<Order> orders;
  std::vector<Note> notes;
  Oracle oracle{"adapter_write_bench"};
  std::vector<void*> orderObjects, noteObjects;
  std::vector<short*> orderInds, noteInds;
  std::vector<Column_Def> orderDefs = OrderDefs();
  std::vector<Column_Def> noteDefs = NoteDefs();
  VARNADP* pOrderCtx = nullptr;
  VARNADP* pNoteCtx = nullptr;
  std::vector<size_t> orderBytes, noteBytes;

  Prepared() : orders(LoadOrders(kObjects)), notes(LoadNotes(kObjects)) {
    for (const Order& o : orders) {
      ref_order_ind* ind = nullptr;
      ref_order_t* p = oracle.NewOrder(o, &ind);
      if (orderObjects.empty()) oracle.CheckLayout(p, ind);
      orderObjects.push_back(p);
      orderInds.push_back(&ind->_atomic);
    }
    for (const Note& n : notes) {
      ref_note_ind* ind = nullptr;
      noteObjects.push_back(oracle.NewNote(n, &ind));
      noteInds.push_back(&ind->_atomic);
    }
    if (adpCreateContext(&pOrderCtx, nullptr, nullptr) != 0 ||
        adpCreateContext(&pNoteCtx, nullptr, nullptr) != 0) {
      Die("adpCreateContext failed");
    }
    orderBytes = Verify(pOrderCtx, orderDefs.data(), orderObjects, orderInds, oracle.m_pOrderTdo,
                        [&](size_t i) { return ExpectedOrder(orders[i]); }, "order");
    noteBytes = Verify(pNoteCtx, noteDefs.data(), noteObjects, noteInds, oracle.m_pNoteTdo,
                       [&](size_t i) { return ExpectedNote(notes[i]); }, "note");
  }
  ~Prepared() {
    adpDestroyContext(pOrderCtx, nullptr);
    adpDestroyContext(pNoteCtx, nullptr);
  }
  Prepared(const Prepared&) = delete;
  Prepared& operator=(const Prepared&) = delete;

  int Write(VARNADP* pCtx, CKelStream& stream, Column_Def* pDefs, void* pObject, short* pInd,
            OCIType* pTdo) {
    Column_Def* pDef = pDefs;  // advanced by the call
    return adpProcessObject(pCtx, nullptr, &stream, &pDef, oracle.m_pEnv, oracle.m_pErr,
                            oracle.m_pSvc, pObject, pInd, 0, pTdo);
  }

  // Writes every instance alone and compares it with its record's stream;
  // prints the first one. Returns the stream size of each.
  template <typename F>
  std::vector<size_t> Verify(VARNADP* pCtx, Column_Def* pDefs, const std::vector<void*>& objects,
                             const std::vector<short*>& inds, OCIType* pTdo, F expected,
                             const char* pszWhat) {
    std::vector<size_t> sizes;
    CKelStream stream(0, nullptr, nullptr, 0);
    for (size_t i = 0; i < objects.size(); ++i) {
      stream.SetSize(0);
      if (Write(pCtx, stream, pDefs, objects[i], inds[i], pTdo) != 0) {
        Die(std::string("adpProcessObject failed on ") + pszWhat + " " + std::to_string(i));
      }
      std::string got(stream.GetSize(), '\0');
      stream.Seek(0, 0);
      if (stream.Read(&got[0], got.size()) != got.size()) Die("short read");
      const std::string want = expected(i);
      if (i == 0) std::fprintf(stderr, "first %s: %s\n", pszWhat, got.c_str());
      if (got.empty() || got != want) {
        size_t at = 0;
        while (at < got.size() && at < want.size() && got[at] == want[at]) ++at;
        Die(std::string(pszWhat) + " " + std::to_string(i) + " differs at byte " +
            std::to_string(at) + "\n got: " + got + "\nwant: " + want);
      }
      sizes.push_back(got.size());
    }
    return sizes;
  }
};

Prepared& P() {
  static Prepared prepared;
  return prepared;
}

void AdapterWrite(benchmark::State& state, bool bOrders) {
  Prepared& p = P();
  VARNADP* pCtx = bOrders ? p.pOrderCtx : p.pNoteCtx;
  Column_Def* pDefs = bOrders ? p.orderDefs.data() : p.noteDefs.data();
  const std::vector<void*>& objects = bOrders ? p.orderObjects : p.noteObjects;
  const std::vector<short*>& inds = bOrders ? p.orderInds : p.noteInds;
  const std::vector<size_t>& sizes = bOrders ? p.orderBytes : p.noteBytes;
  OCIType* pTdo = bOrders ? p.oracle.m_pOrderTdo : p.oracle.m_pNoteTdo;
  CKelStream stream(0, nullptr, nullptr, 0);
  size_t i = 0;
  int64_t nBytes = 0;
  unsigned long nAllocs = 0;
  for (auto _ : state) {
    if (i == objects.size()) {
      i = 0;
      stream.SetSize(0);
    }
    g_nAllocs = 0;
    g_bCounting = true;
    const int rc = p.Write(pCtx, stream, pDefs, objects[i], inds[i], pTdo);
    g_bCounting = false;
    nAllocs += g_nAllocs;
    if (rc != 0) {
      state.SkipWithError("adpProcessObject failed");
      break;
    }
    nBytes += static_cast<int64_t>(sizes[i]);
    ++i;
  }
  state.SetItemsProcessed(state.iterations());
  state.SetBytesProcessed(nBytes);
  state.counters["allocs/object"] = benchmark::Counter(
      static_cast<double>(nAllocs), benchmark::Counter::kAvgIterations);
}

// The peer: the same record as a JSON object; numbers from int64/double.
double AsDouble(const std::string& s) { return std::strtod(s.c_str(), nullptr); }
int64_t AsInt(const std::string& s) { return std::strtoll(s.c_str(), nullptr, 10); }

struct PlainLine {
  Opt sku, note;
  std::optional<int64_t> qty;
  std::optional<double> price;
};
struct PlainOrder {
  int64_t id = 0;
  Opt customer, email, created, shipped, status, token;
  std::optional<double> amount, discount;
  std::optional<int64_t> priority;
  Addr shipTo;
  std::vector<PlainLine> lines;
};
struct PlainNote {
  int64_t id = 0;
  Opt title;
  std::string body;
  std::vector<Opt> tags;
};

std::optional<double> D(const Opt& v) {
  return v ? std::optional<double>(AsDouble(*v)) : std::nullopt;
}
std::optional<int64_t> I(const Opt& v) {
  return v ? std::optional<int64_t>(AsInt(*v)) : std::nullopt;
}

typedef rapidjson::Writer<rapidjson::StringBuffer> JsonWriter;

void Put(JsonWriter& w, const char* pszKey, const Opt& v) {
  w.Key(pszKey);
  if (v) {
    w.String(v->data(), static_cast<rapidjson::SizeType>(v->size()));
  } else {
    w.Null();
  }
}
void Put(JsonWriter& w, const char* pszKey, const std::optional<double>& v) {
  w.Key(pszKey);
  if (v) {
    w.Double(*v);
  } else {
    w.Null();
  }
}
void Put(JsonWriter& w, const char* pszKey, const std::optional<int64_t>& v) {
  w.Key(pszKey);
  if (v) {
    w.Int64(*v);
  } else {
    w.Null();
  }
}

void WriteJson(JsonWriter& w, const PlainOrder& o) {
  w.StartObject();
  w.Key("ID");
  w.Int64(o.id);
  Put(w, "CUSTOMER", o.customer);
  Put(w, "EMAIL", o.email);
  Put(w, "CREATED", o.created);
  Put(w, "SHIPPED", o.shipped);
  Put(w, "AMOUNT", o.amount);
  Put(w, "DISCOUNT", o.discount);
  Put(w, "STATUS", o.status);
  Put(w, "PRIORITY", o.priority);
  Put(w, "TOKEN", o.token);
  w.Key("SHIP_TO");
  w.StartObject();
  Put(w, "STREET", o.shipTo.street);
  Put(w, "CITY", o.shipTo.city);
  Put(w, "ZIP", o.shipTo.zip);
  Put(w, "COUNTRY", o.shipTo.country);
  w.EndObject();
  w.Key("LINES");
  w.StartArray();
  for (const PlainLine& l : o.lines) {
    w.StartObject();
    Put(w, "SKU", l.sku);
    Put(w, "QTY", l.qty);
    Put(w, "PRICE", l.price);
    Put(w, "NOTE", l.note);
    w.EndObject();
  }
  w.EndArray();
  w.EndObject();
}

void WriteJson(JsonWriter& w, const PlainNote& n) {
  w.StartObject();
  w.Key("ID");
  w.Int64(n.id);
  Put(w, "TITLE", n.title);
  w.Key("BODY");
  w.String(n.body.data(), static_cast<rapidjson::SizeType>(n.body.size()));
  w.Key("TAGS");
  w.StartArray();
  for (const Opt& t : n.tags) {
    if (t) {
      w.String(t->data(), static_cast<rapidjson::SizeType>(t->size()));
    } else {
      w.Null();
    }
  }
  w.EndArray();
  w.EndObject();
}

template <typename Record>
void JsonWrite(benchmark::State& state, const std::vector<Record>& records) {
  rapidjson::StringBuffer buffer;
  JsonWriter writer(buffer);
  size_t i = 0;
  int64_t nBytes = 0;
  unsigned long nAllocs = 0;
  for (auto _ : state) {
    if (i == records.size()) {
      i = 0;
      buffer.Clear();
    }
    const size_t nBefore = buffer.GetSize();
    g_nAllocs = 0;
    g_bCounting = true;
    writer.Reset(buffer);
    WriteJson(writer, records[i]);
    g_bCounting = false;
    nAllocs += g_nAllocs;
    nBytes += static_cast<int64_t>(buffer.GetSize() - nBefore);
    ++i;
  }
  benchmark::DoNotOptimize(buffer.GetString());
  state.SetItemsProcessed(state.iterations());
  state.SetBytesProcessed(nBytes);
  state.counters["allocs/object"] = benchmark::Counter(
      static_cast<double>(nAllocs), benchmark::Counter::kAvgIterations);
}

const std::vector<PlainOrder>& PlainOrders() {
  static const std::vector<PlainOrder> orders = [] {
    std::vector<PlainOrder> out;
    for (const Order& o : P().orders) {
      PlainOrder po;
      po.id = AsInt(o.id);
      po.customer = o.customer;
      po.email = o.email;
      po.created = o.created;
      po.shipped = o.shipped;
      po.amount = D(o.amount);
      po.discount = D(o.discount);
      po.status = o.status;
      po.priority = I(o.priority);
      po.token = o.token;
      po.shipTo = o.shipTo;
      for (const Line& l : o.lines) po.lines.push_back({l.sku, l.note, I(l.qty), D(l.price)});
      out.push_back(std::move(po));
    }
    return out;
  }();
  return orders;
}

const std::vector<PlainNote>& PlainNotes() {
  static const std::vector<PlainNote> notes = [] {
    std::vector<PlainNote> out;
    for (const Note& n : P().notes) out.push_back({AsInt(n.id), n.title, n.body, n.tags});
    return out;
  }();
  return notes;
}

void BM_AdapterOrders(benchmark::State& state) { AdapterWrite(state, true); }
void BM_AdapterNotes(benchmark::State& state) { AdapterWrite(state, false); }
void BM_RapidJsonOrders(benchmark::State& state) { JsonWrite(state, PlainOrders()); }
void BM_RapidJsonNotes(benchmark::State& state) { JsonWrite(state, PlainNotes()); }

BENCHMARK(BM_AdapterOrders)->Apply(FixedIterations);
BENCHMARK(BM_RapidJsonOrders)->Apply(FixedIterations);
BENCHMARK(BM_AdapterNotes)->Apply(FixedIterations);
BENCHMARK(BM_RapidJsonNotes)->Apply(FixedIterations);

}  // namespace

BENCHMARK_MAIN();
