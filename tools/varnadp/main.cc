// varnadp: objects of Oracle types between JSON and the delimited stream, on
// the embedded in-memory OCI.
#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <thread>

#include <CLI/CLI.hpp>
#include <varnadp.h>

#include "commands.h"

namespace {

struct Arguments {
  std::string schema;
  std::string type;
  std::string input;
  std::string output;
  std::string bad;
  std::string delimiter = "|";
  std::string terminator = "\\r\\n";
  std::string release = "!";
  int trace_level = -1;
  int jobs = 0;
};

// The options every converting subcommand takes.
void AddCommon(CLI::App* command, Arguments* args, bool stream_options, bool output = true) {
  command->add_option("--schema", args->schema, "SQL script that creates the types (SQL*Plus style)")
      ->required()
      ->check(CLI::ExistingFile);
  command->add_option("--type", args->type, "the object or collection type, [SCHEMA.]NAME")->required();
  if (output) command->add_option("-o,--output", args->output, "write here instead of standard output");
  if (!stream_options) return;
  command->add_option("input", args->input, "input file; '-' or none: standard input");
  command->add_option("--delimiter", args->delimiter, "field delimiter, escapes allowed (default |)");
  command->add_option("--terminator", args->terminator, "record terminator, escapes allowed (default \\r\\n)");
  command->add_option("--release", args->release, "release (escape) character (default !)");
  command->add_option("--trace-level", args->trace_level, "print the adapter's trace at this level on standard error")
      ->check(CLI::Range(0, 9));
  command->add_option("--bad", args->bad, "write records that fail here, as received, and go on");
  command->add_option("--jobs", args->jobs, "worker threads (default: all cores)")->check(CLI::Range(1, 256));
}

bool ReadFile(const std::string& path, std::string* text) {
  std::ifstream file(path, std::ios::binary);
  if (!file) return false;
  std::ostringstream content;
  content << file.rdbuf();
  *text = content.str();
  return true;
}

int Run(const std::string& command, const Arguments& args) {
  varnadp::CommandOptions options;
  options.setup.schema_name = args.schema;
  if (!ReadFile(args.schema, &options.setup.schema_text)) {
    std::fprintf(stderr, "varnadp: cannot read %s\n", args.schema.c_str());
    return varnadp::kExitSetup;
  }
  options.setup.type_name = args.type;
  options.setup.trace_level = args.trace_level;
  std::string error;
  if (!varnadp::Unescape(args.delimiter, &options.setup.special.delimiter, &error) ||
      !varnadp::Unescape(args.terminator, &options.setup.special.terminator, &error) ||
      !varnadp::Unescape(args.release, &options.setup.special.release, &error)) {
    std::fprintf(stderr, "varnadp: %s\n", error.c_str());
    return varnadp::kExitSetup;
  }
  options.input = args.input;
  options.output = args.output;
  options.bad = args.bad;
  const unsigned cores = std::thread::hardware_concurrency();
  options.jobs = args.jobs > 0 ? args.jobs : (cores > 0 ? static_cast<int>(cores) : 1);
  if (command == "encode") return varnadp::RunEncode(options);
  if (command == "decode") return varnadp::RunDecode(options);
  if (command == "check") return varnadp::RunCheck(options);
  return varnadp::RunColdef(options);
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app{"varnadp: objects of Oracle types between JSON and the delimited stream,\n"
               "on the embedded in-memory OCI (no Oracle database needed)."};
  app.set_version_flag("--version", std::string("varnadp ") + szVersion + " (" + szFullZRWVersion + ")\n" +
                                        szMainProductName + "\n" + szCopyright);
  app.require_subcommand(1);
  Arguments args;

  CLI::App* encode = app.add_subcommand("encode", "JSON objects (JSON Lines or one array) to the stream");
  AddCommon(encode, &args, true);
  encode->footer(
      "Examples:\n"
      "  varnadp encode --schema types.sql --type PERSON_T people.jsonl > people.txt\n"
      "  varnadp encode --schema types.sql --type PERSON_T --delimiter ';' --terminator '\\n' -o out.txt in.json\n"
      "  cat people.jsonl | varnadp encode --schema types.sql --type PERSON_T --bad rejected.jsonl");

  CLI::App* decode = app.add_subcommand("decode", "the stream to JSON Lines (LOBs through the second pass)");
  AddCommon(decode, &args, true);
  decode->footer(
      "Examples:\n"
      "  varnadp decode --schema types.sql --type PERSON_T people.txt > people.jsonl\n"
      "  varnadp decode --schema types.sql --type PERSON_T --bad rejected.txt --jobs 2 -o out.jsonl big.txt");

  CLI::App* check = app.add_subcommand("check", "read every record and report each bad one");
  AddCommon(check, &args, true, false);
  check->footer(
      "Reports every bad record with its number, byte offset, code and text; the exit\n"
      "status is 0 when all records are good, 1 when one is not.\n"
      "Example:\n"
      "  varnadp check --schema types.sql --type PERSON_T partner.txt");

  CLI::App* coldef = app.add_subcommand("coldef", "print the Column_Def list of a type");
  AddCommon(coldef, &args, false);
  coldef->footer("Example:\n  varnadp coldef --schema types.sql --type PERSON_T");

  app.footer(
      "Exit status: 0 every record converted; 1 a record failed (the first one stops the\n"
      "run unless --bad is given); 2 bad arguments, schema, type or files.\n"
      "Run 'varnadp SUBCOMMAND --help' for the options of each.");
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& e) {
    const int status = app.exit(e);
    return status == 0 ? 0 : varnadp::kExitSetup;
  }
  return Run(app.get_subcommands().front()->get_name(), args);
}
