// Completion scripts for shells, printed from the tree of commands and options, so that they cannot
// fall behind it.
#ifndef QUILLONID_TOOLS_QLID_COMPLETION_H
#define QUILLONID_TOOLS_QLID_COMPLETION_H

#include <string>
#include <vector>

namespace qlid {

enum class ValueKind { kNone, kChoices, kFile, kDevice, kText };

struct OptionWords {
  std::vector<std::string> names;  // "--device", "-d"; none for a positional argument
  std::string about;
  ValueKind value = ValueKind::kNone;
  std::vector<std::string> choices;
};

struct CommandWords {
  std::string name;
  std::string about;
  std::vector<OptionWords> options;
  std::vector<CommandWords> commands;
};

// `shell` is "bash", "zsh" or "fish".
std::string CompletionScript(const CommandWords& program, const std::string& shell);

}  // namespace qlid

#endif
