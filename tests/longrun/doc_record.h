// The values of one long-run record: a document with nested objects, a
// table of objects, a varray of text, a CLOB and a BLOB, drawn from a seed
// and an iteration number alone, and the stream each must give, built from
// the values without the adapter.
#ifndef TESTS_LONGRUN_DOC_RECORD_H_
#define TESTS_LONGRUN_DOC_RECORD_H_

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace longrun {

typedef std::optional<std::string> Opt;

struct LineValues {
  Opt sku;
  Opt qty;    // NUMBER(9) as decimal text
  Opt price;  // NUMBER(12,2) as decimal text with two decimals
  Opt note;
};

struct DocValues {
  long id = 0;
  Opt title;
  Opt amount;   // NUMBER(12,2)
  Opt created;  // DATE as YYYY-MM-DD HH24:MI:SS
  std::string token;  // RAW(16), never null: a null RAW does not read back
  bool bAddr = false;  // ADDR present
  Opt street;
  Opt city;
  bool bLines = false;  // LINES present (then it holds at least one item)
  std::vector<LineValues> lines;
  bool bTags = false;  // TAGS present (then it holds at least one item)
  std::vector<Opt> tags;
  Opt body;  // CLOB; never empty when present
  Opt img;   // BLOB; never empty when present
};

// The types, in creation order, and the object table the LOB pass stores in.
extern const char* const kTypeDdl[];
extern const char* const kTableDdl;

// The values of iteration nIteration of a run seeded with nSeed. Sizes vary
// from record to record; every 64th record has the largest LOBs and
// collections, the first one among them, so that the largest buffers are
// met early.
DocValues MakeDoc(uint64_t nSeed, long nIteration);
inline bool IsLarge(long nIteration) { return nIteration % 64 == 1; }

// The stream adpProcessObject must write for the values; with bLobs false,
// as if BODY and IMG were null. *pnBodyAt, when not NULL, receives the
// offset at which BODY's field starts.
std::string ExpectedStream(const DocValues& doc, bool bLobs, size_t* pnBodyAt = nullptr);

}  // namespace longrun

#endif  // TESTS_LONGRUN_DOC_RECORD_H_
