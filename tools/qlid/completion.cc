#include "tools/qlid/completion.h"

namespace qlid {
namespace {

constexpr char kPorts[] = "/dev/tty[ASU]*";  // what a device option offers beside "HID"

std::string Joined(const std::vector<std::string>& words, const char* between) {
  std::string text;
  for (const std::string& word : words) text += (text.empty() ? "" : between) + word;
  return text;
}

std::vector<std::string> NamesOf(const std::vector<CommandWords>& commands) {
  std::vector<std::string> names;
  names.reserve(commands.size());
  for (const CommandWords& command : commands) names.push_back(command.name);
  return names;
}

std::vector<std::string> NamesOf(const std::vector<OptionWords>& options) {
  std::vector<std::string> names;
  for (const OptionWords& option : options)
    names.insert(names.end(), option.names.begin(), option.names.end());
  return names;
}

// --- bash ---

std::string BashWords(const std::string& words) {
  return "mapfile -t COMPREPLY < <(compgen -W \"" + words + "\" -- \"$cur\")";
}

std::string BashValue(const OptionWords& option) {
  switch (option.value) {
    case ValueKind::kChoices:
      return BashWords(Joined(option.choices, " "));
    case ValueKind::kFile:
      return "compopt -o filenames; mapfile -t COMPREPLY < <(compgen -f -- \"$cur\")";
    case ValueKind::kDevice:
      return BashWords(std::string("HID $(compgen -G '") + kPorts + "')");
    case ValueKind::kNone:
    case ValueKind::kText:
      break;
  }
  return ":";
}

// The values of a command's options, and what it takes without one.
std::string BashCommand(const CommandWords& command) {
  std::string text;
  std::string bare;
  for (const OptionWords& option : command.options) {
    if (option.names.empty()) {
      bare = BashValue(option);
    } else if (option.value != ValueKind::kNone) {
      std::vector<std::string> patterns;
      patterns.reserve(option.names.size());
      for (const std::string& name : option.names) patterns.push_back(command.name + "," + name);
      text += "    " + Joined(patterns, "|") + ") " + BashValue(option) + "; return ;;\n";
    }
  }
  const std::string options = BashWords(Joined(NamesOf(command.options), " "));
  // An argument comes first, but not when its choices are numbers below zero.
  if (bare.empty() || bare == ":") {
    text += "    " + command.name + ",*) " + options + " ;;\n";
  } else if (bare.find("compgen -W") != std::string::npos) {
    text += "    " + command.name + ",*) " + bare + " ;;\n";
  } else {
    text += "    " + command.name + ",*) if [[ $cur == -* ]]; then " + options + "; else " + bare +
            "; fi ;;\n";
  }
  return text;
}

std::string Bash(const CommandWords& program) {
  std::string script =
      "# bash completion for qlid, printed by: qlid completion bash\n"
      "_qlid() {\n"
      "  local cur=${COMP_WORDS[COMP_CWORD]} prev=${COMP_WORDS[COMP_CWORD-1]} command='' i\n"
      "  for ((i = 1; i < COMP_CWORD; i++)); do\n"
      "    case ${COMP_WORDS[i]} in\n"
      "    " +
      Joined(NamesOf(program.commands), "|") +
      ") command=${COMP_WORDS[i]}; break ;;\n"
      "    esac\n"
      "  done\n"
      "  COMPREPLY=()\n"
      "  case $command,$prev in\n";
  for (const CommandWords& command : program.commands) script += BashCommand(command);
  for (const OptionWords& option : program.options) {
    if (option.value == ValueKind::kNone) continue;
    script += "    ," + Joined(option.names, "|,") + ") " + BashValue(option) + "; return ;;\n";
  }
  script += "    *) " +
            BashWords(Joined(NamesOf(program.commands), " ") + " " +
                      Joined(NamesOf(program.options), " ")) +
            " ;;\n"
            "  esac\n"
            "}\n"
            "complete -F _qlid qlid\n";
  return script;
}

// --- zsh ---

// Inside single quotes and the brackets or colons of _arguments.
std::string ZshText(const std::string& text) {
  std::string quoted;
  for (const char c : text) {
    if (c == '\'') {
      quoted += "'\\''";
      continue;
    }
    if (c == '[' || c == ']' || c == ':' || c == '\\') quoted += '\\';
    quoted += c;
  }
  return quoted;
}

std::string ZshValue(const OptionWords& option) {
  switch (option.value) {
    case ValueKind::kNone:
      return "";
    case ValueKind::kChoices:
      return ":value:(" + Joined(option.choices, " ") + ")";
    case ValueKind::kFile:
      return ":file:_files";
    case ValueKind::kDevice:
      return std::string(":device:(HID ") + kPorts + "(N))";
    case ValueKind::kText:
      break;
  }
  return ":value: ";
}

std::string ZshOption(const OptionWords& option) {
  // An argument that begins with a minus sign is taken by "*" alone.
  if (option.names.empty()) return " '*" + ZshValue(option) + "'";
  std::string text;
  for (const std::string& name : option.names)
    text += " '" + name + "[" + ZshText(option.about) + "]" + ZshValue(option) + "'";
  return text;
}

std::string Zsh(const CommandWords& program) {
  std::string script =
      "#compdef qlid\n"
      "# zsh completion for qlid, printed by: qlid completion zsh\n"
      "_qlid() {\n"
      "  local curcontext=$curcontext state line\n"
      "  typeset -A opt_args\n"
      "  local -a commands\n"
      "  commands=(\n";
  for (const CommandWords& command : program.commands)
    script += "    '" + command.name + ":" + ZshText(command.about) + "'\n";
  script += "  )\n  _arguments -C";
  for (const OptionWords& option : program.options) script += ZshOption(option);
  script +=
      " '1:command:->command' '*::argument:->argument' && return\n"
      "  case $state in\n"
      "  command) _describe command commands ;;\n"
      "  argument)\n"
      "    case $words[1] in\n";
  for (const CommandWords& command : program.commands) {
    script += "    " + command.name + ") _arguments";
    for (const OptionWords& option : command.options) script += ZshOption(option);
    script += " ;;\n";
  }
  script +=
      "    esac ;;\n"
      "  esac\n"
      "}\n"
      "if [[ $funcstack[1] == _qlid ]]; then _qlid \"$@\"; else compdef _qlid qlid; fi\n";
  return script;
}

// --- fish ---

std::string FishText(const std::string& text) {
  std::string quoted = "'";
  for (const char c : text) {
    if (c == '\'' || c == '\\') quoted += '\\';
    quoted += c;
  }
  return quoted + "'";
}

std::string FishValue(const OptionWords& option) {
  switch (option.value) {
    case ValueKind::kNone:
      return "";
    case ValueKind::kChoices:
      return " -x -a " + FishText(Joined(option.choices, " "));
    case ValueKind::kFile:
      return " -r -F";
    case ValueKind::kDevice:
      return " -r -F -a HID";
    case ValueKind::kText:
      break;
  }
  return " -x";
}

std::string FishOption(const OptionWords& option, const std::string& condition) {
  std::string text = "complete -c qlid -n " + FishText(condition);
  for (const std::string& name : option.names)
    text += name.rfind("--", 0) == 0 ? " -l " + name.substr(2) : " -s " + name.substr(1);
  text += FishValue(option);
  if (!option.about.empty()) text += " -d " + FishText(option.about);
  return text + "\n";
}

std::string Fish(const CommandWords& program) {
  const std::string none =
      "not __fish_seen_subcommand_from " + Joined(NamesOf(program.commands), " ");
  std::string script =
      "# fish completion for qlid, printed by: qlid completion fish\ncomplete -c qlid -f\n";
  for (const OptionWords& option : program.options) script += FishOption(option, none);
  for (const CommandWords& command : program.commands) {
    script += "complete -c qlid -n " + FishText(none) + " -a " + command.name + " -d " +
              FishText(command.about) + "\n";
    for (const OptionWords& option : command.options)
      script += FishOption(option, "__fish_seen_subcommand_from " + command.name);
  }
  return script;
}

}  // namespace

std::string CompletionScript(const CommandWords& program, const std::string& shell) {
  if (shell == "bash") return Bash(program);
  return shell == "zsh" ? Zsh(program) : Fish(program);
}

}  // namespace qlid
