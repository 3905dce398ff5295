// The subcommands of the varnadp command, each run to the end: the exit
// status says how it went (kExit...).
#ifndef TOOLS_VARNADP_COMMANDS_H
#define TOOLS_VARNADP_COMMANDS_H

#include <string>

#include "converter.h"

namespace varnadp {

enum ExitStatus {
  kExitOk = 0,        // every record converted (or, for check, good)
  kExitRecords = 1,   // a record failed
  kExitSetup = 2,     // bad arguments, schema, type, input or output
};

struct CommandOptions {
  RunSetup setup;
  std::string input;   // "" or "-": standard input
  std::string output;  // "" or "-": standard output
  std::string bad;     // where failed records go; "" stops at the first
  int jobs = 1;
  bool progress = false;
};

int RunEncode(const CommandOptions& options);
int RunDecode(const CommandOptions& options);
int RunCheck(const CommandOptions& options);
int RunColdef(const CommandOptions& options);

}  // namespace varnadp

#endif  // TOOLS_VARNADP_COMMANDS_H
