// The names of the SQL functions expressions may call (sql_functions.cc).
#ifndef OCIMEM_SRC_SQL_SQL_FUNCTIONS_H
#define OCIMEM_SRC_SQL_SQL_FUNCTIONS_H

#include <string>

namespace ocimem {

// True when `name` (upper case) is a function written name(args).
bool IsSqlFunction(const std::string& name);

}  // namespace ocimem

#endif  // OCIMEM_SRC_SQL_SQL_FUNCTIONS_H
