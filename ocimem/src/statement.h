// Statement handles: the prepared text and what an execute left behind.
#ifndef OCIMEM_SRC_STATEMENT_H
#define OCIMEM_SRC_STATEMENT_H

#include <string>

#include "handles.h"

namespace ocimem {

struct StmtHandle : Handle {
  explicit StmtHandle(Env* owner) : Handle(OCI_HTYPE_STMT, owner) {}
  bool prepared = false;
  std::string text;
  ub2 statement_type = OCI_STMT_UNKNOWN;
  ub4 row_count = 0;
};

inline StmtHandle* AsStmt(const void* p) { return AsHandle<StmtHandle>(p, OCI_HTYPE_STMT); }

}  // namespace ocimem

#endif  // OCIMEM_SRC_STATEMENT_H
