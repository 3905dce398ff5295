// Statement handles: the prepared text, its bind and define handles, and the cursor an
// executed query leaves open.  Bind and define handles belong to their statement and go
// with it.
#ifndef OCIMEM_SRC_STATEMENTS_STATEMENT_H
#define OCIMEM_SRC_STATEMENTS_STATEMENT_H

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "session/handles.h"
#include "database/table.h"

namespace ocimem {

struct StmtHandle;
struct PendingExecute;
struct PendingFetch;

struct BindHandle : Handle {
  explicit BindHandle(Env* owner) : Handle(OCI_HTYPE_BIND, owner) {}
  StmtHandle* stmt = nullptr;
  ub4 position = 0;  // by position (1-based), or 0
  std::string name;  // by name, upper case without the colon
  void* valuep = nullptr;
  sb4 value_sz = 0;
  ub2 dty = 0;
  void* indp = nullptr;
  ub2* alenp = nullptr;
  ub2* rcodep = nullptr;
  // SQLT_NTY: completed by OCIBindObject.
  const OCIType* tdo = nullptr;
  void** pgvpp = nullptr;
  void** indpp = nullptr;
  // OCIBindArrayOfStruct: bytes from one element to the next (0: the natural size).
  ub4 pvskip = 0;
  ub4 indskip = 0;
  ub4 alskip = 0;
  ub4 rcskip = 0;
  ub4 mode = OCI_DEFAULT;  // OCI_DATA_AT_EXEC: the value comes at execute
  // OCIBindDynamic.
  void* ictxp = nullptr;
  OCICallbackInBind icbfp = nullptr;
  void* octxp = nullptr;
  OCICallbackOutBind ocbfp = nullptr;
  bool dynamic = false;
  // The value of the running iteration, gathered from callbacks or pieces.
  std::string staged;
  bool staged_null = true;
  ub4 rows_returned = 0;  // OCI_ATTR_ROWS_RETURNED of a RETURNING bind
};

struct DefineHandle : Handle {
  explicit DefineHandle(Env* owner) : Handle(OCI_HTYPE_DEFINE, owner) {}
  StmtHandle* stmt = nullptr;
  ub4 position = 0;
  void* valuep = nullptr;
  sb4 value_sz = 0;
  ub2 dty = 0;
  void* indp = nullptr;
  ub2* rlenp = nullptr;
  ub2* rcodep = nullptr;
  // SQLT_NTY: completed by OCIDefineObject.
  const OCIType* tdo = nullptr;
  void** pgvpp = nullptr;
  void** indpp = nullptr;
  // OCIDefineArrayOfStruct.
  ub4 pvskip = 0;
  ub4 indskip = 0;
  ub4 rlskip = 0;
  ub4 rcskip = 0;
  ub4 mode = OCI_DEFAULT;  // OCI_DYNAMIC_FETCH: the value is handed out in pieces
  // OCIDefineDynamic.
  void* octxp = nullptr;
  OCICallbackDefine ocbfp = nullptr;
};

// One select-list item: where its value lies in a row, or a literal's own value.
struct Projection {
  ValueType type;
  size_t offset = 0;      // of the value in the row
  size_t ind_offset = 0;  // of its null information in the row's null struct
  bool literal = false;
  std::shared_ptr<RowData> literal_row;  // holds a literal as the one column of a row
  // A sequence value (NEXTVAL, CURRVAL): one literal row for each row of the query.
  std::vector<std::shared_ptr<RowData>> per_row;
};

struct Cursor {
  std::vector<std::shared_ptr<RowData>> rows;
  std::vector<Projection> items;
  size_t next = 0;
  bool for_update = false;
  std::uint64_t txn = 0;  // transaction that locked the rows of a FOR UPDATE query
  bool exhausted = false;
};

struct StmtHandle : Handle {
  explicit StmtHandle(Env* owner) : Handle(OCI_HTYPE_STMT, owner) {}
  bool prepared = false;
  std::string text;
  ub2 statement_type = OCI_STMT_UNKNOWN;
  ub4 row_count = 0;
  ub4 rows_fetched = 0;  // by the last execute or fetch call
  ub4 param_count = 0;   // select-list items of the query last executed
  std::vector<std::string> placeholders;  // one per bind occurrence
  std::vector<std::unique_ptr<BindHandle>> binds;
  std::vector<std::unique_ptr<DefineHandle>> defines;
  std::unique_ptr<Cursor> cursor;
  Session* session = nullptr;  // of the last execute
  Env* session_env = nullptr;  // the environment of that session
  std::shared_ptr<const SessionNls> nls;  // that session's settings when it executed
  ub4 prefetch_rows = 1;    // OCI_ATTR_PREFETCH_ROWS: kept, no effect
  ub4 prefetch_memory = 0;  // OCI_ATTR_PREFETCH_MEMORY: kept, no effect
  // An execute or fetch that answered OCI_NEED_DATA and waits for a piece.
  std::shared_ptr<PendingExecute> pending_execute;
  std::shared_ptr<PendingFetch> pending_fetch;
};

inline StmtHandle* AsStmt(const void* p) { return AsHandle<StmtHandle>(p, OCI_HTYPE_STMT); }
inline BindHandle* AsBind(const void* p) { return AsHandle<BindHandle>(p, OCI_HTYPE_BIND); }
inline DefineHandle* AsDefine(const void* p) { return AsHandle<DefineHandle>(p, OCI_HTYPE_DEFINE); }

}  // namespace ocimem

#endif  // OCIMEM_SRC_STATEMENTS_STATEMENT_H
