#include "sql/column_default.h"

#include <algorithm>

namespace ocimem {

Expr DefaultOf(const Table& table, size_t column) {
  if (column < table.defaults.size() && table.defaults[column].given) {
    return table.defaults[column].value;
  }
  return Expr();  // NULL
}

bool WithDefaults(const Table& table, bool has_columns, std::vector<size_t>* targets,
                  std::vector<Expr>* values) {
  for (size_t i = 0; i < values->size(); ++i) {
    if ((*values)[i].kind != Expr::Kind::kDefault) continue;
    if (i >= targets->size()) return false;
    (*values)[i] = DefaultOf(table, (*targets)[i]);
  }
  if (!has_columns || values->size() != targets->size()) return true;
  for (size_t c = 0; c < table.defaults.size(); ++c) {
    if (!table.defaults[c].given) continue;
    if (std::find(targets->begin(), targets->end(), c) != targets->end()) continue;
    targets->push_back(c);
    values->push_back(table.defaults[c].value);
  }
  return true;
}

}  // namespace ocimem
