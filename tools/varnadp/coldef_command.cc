// varnadp coldef: the Column_Def list of a type, one line a record.
#include <cstdio>
#include <string>

#include "commands.h"
#include "run_support.h"

namespace varnadp {
namespace {

std::string Flags(unsigned flags) {
  std::string text;
  if (flags & COLDEF_COMPLEX) text += "complex,";
  if (flags & COLDEF_END) text += "end,";
  if (flags & COLDEF_DEFINED) text += "defined,";
  if (text.empty()) return "-";
  text.pop_back();
  return text;
}

}  // namespace

int RunColdef(const CommandOptions& options) {
  Converter converter;
  if (!converter.Open(options.setup, "VARNADP_COLDEF")) return SetupFailure(converter.setup_error());
  OutputFile out;
  std::string error;
  if (!out.Open(options.output, &error)) return SetupFailure(error);
  std::string text =
      "FLAGS            NAME                           DATATYPE EXTTYPE DATASIZE DISPLAYSIZE "
      "PRECISION SCALE ITEM TYPENAME\n";
  int depth = 0;
  char line[512];
  for (const Column_Def* def = converter.list(); def != nullptr; def = def->Next) {
    if (def->Flags & COLDEF_END) --depth;
    std::string name(static_cast<size_t>(2 * (depth > 0 ? depth : 0)), ' ');
    if (def->Flags & COLDEF_END) {
      name += "(end)";
    } else if (def->InCollection != 0) {
      name += "(item)";
    } else {
      name += def->ColumnName != nullptr ? def->ColumnName : "";
    }
    std::snprintf(line, sizeof line, "%-16s %-30s %8u %7d %8lu %11u %9lu %5d %4s %s\n",
                  Flags(def->Flags).c_str(), name.c_str(), static_cast<unsigned>(def->DataType),
                  static_cast<int>(def->ExtType), def->DataSize, def->DisplaySize, def->Precision,
                  static_cast<int>(def->Scale), def->InCollection != 0 ? "yes" : "no",
                  def->TypeName != nullptr ? def->TypeName : "-");
    text += line;
    if (def->Flags & COLDEF_COMPLEX) ++depth;
  }
  if (!out.Write(text, &error) || !out.Close(&error)) return SetupFailure(error);
  return kExitOk;
}

}  // namespace varnadp
