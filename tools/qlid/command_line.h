// What stands on the command line: commands, options, and the words of the argument library about
// them. The three files that know that library are main.cc, command_line.cc and help.cc.
#ifndef QUILLONID_TOOLS_QLID_COMMAND_LINE_H
#define QUILLONID_TOOLS_QLID_COMMAND_LINE_H

#include <memory>
#include <string>

#include "tools/qlid/commands.h"

namespace CLI {
class App;
class FormatterBase;
class ParseError;
}  // namespace CLI

namespace qlid {

struct CommandLine {
  bool wants_json = false;  // --json stands somewhere on it
  ReadOptions read;
  DevicesOptions devices;
  DecodeOptions decode;
  SimulateOptions simulate;
  DemoOptions demo;
  DoctorOptions doctor;
  ReadRequest reset_baud;
  ExplainOptions explain;
  LogOptions log;
  std::string shell;
  std::string language;
  std::string color = "auto";
};

// Adds every command and option, described in the chosen language.
void AddOptions(CLI::App& app, CommandLine* line);

// Lays help out in Chinese: the argument library's own words, and columns of wide characters.
std::shared_ptr<CLI::FormatterBase> ChineseHelp();

// What is wrong with the command line, in the chosen language.
std::string UsageProblem(const CLI::ParseError& error);

}  // namespace qlid

#endif
