// Chinese for the argument library's own words: the frame of the help, and its complaints.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <cstring>

#include "tools/qlid/command_line.h"
#include "tools/qlid/phrases.h"
#include "tools/qlid/terminal.h"

namespace qlid {
namespace {

struct Word {
  const char* english;
  const char* chinese;
};

// Headings, types of values and the names of positional arguments.
constexpr Word kWords[] = {
    {"Positionals", "参数"},
    {"Options",     "选项"},
    {"OPTIONS",     "选项"},
    {"Subcommands", "命令"},
    {"SUBCOMMAND",  "命令"},
    {"TEXT",        "文本"},
    {"INT",         "整数"},
    {"FILE",        "文件"},
    {"DEVICE",      "设备"},
    {"COMMAND",     "命令"},
    {"CODE",        "代码"},
    {"SHELL",       "SHELL" },
};

constexpr char kMissing[] = "缺少参数：";

// Complaints.
constexpr Phrase kProblems[] = {
    {"(.+) is required",                                   "缺少参数：$1"                     },
    {"(.+) excludes (.+)",                                 "$1 不能与 $2 同时使用"          },
    {"(.+) requires (.+)",                                 "$1 须与 $2 同时使用"             },
    {"Could not convert: (.+) = (.*)",                     "$1 的值无效：$2"                  },
    {"(.+): [0-9]+ required .* missing",                   "$1 缺少值"                          },
    {"(.+): At Most ([0-9]+) required but received (.+)",  "$1 最多 $2 个值，给出了 $3 个"},
    {"(.+): At least ([0-9]+) required but received (.+)", "$1 至少 $2 个值，给出了 $3 个"},
    {"([^:]+): (.*)",                                      "$1：$2"                               },
};

std::string Chinese(const std::string& word) {
  for (const Word& each : kWords) {
    if (word == each.english) return each.chinese;
  }
  return word;
}

// "TEXT:{a,b}", "INT:INT in [1 - 120]": the type, and the values that an option takes.
struct Type {
  std::string name;
  std::string values;
};

Type TypeOf(const CLI::Option& option) {
  const std::string type = option.get_type_name();
  const std::size_t colon = type.find(':');
  if (colon == std::string::npos) return {Chinese(type), ""};
  const std::string check = type.substr(colon + 1);
  int least = 0;
  int most = 0;
  if (std::sscanf(check.c_str(), "INT in [%d - %d]", &least, &most) == 2)
    return {Chinese("INT"), Format("%d 至 %d", least, most)};
  if (check.front() == '{' && check.back() == '}')
    return {Chinese(type.substr(0, colon)), check.substr(1, check.size() - 2)};
  return {type, ""};  // an example, such as that of a USB id
}

// In the order of the alphabet: the argument library keeps them in that of their addresses.
std::string Names(const std::set<CLI::Option*>& options) {
  std::set<std::string> names;
  for (const CLI::Option* option : options) names.insert(option->get_name());
  return CLI::detail::join(names, " ");
}

class ChineseFormatter : public CLI::Formatter {
 public:
  ChineseFormatter() {
    for (const Word& word : kWords) label(word.english, word.chinese);
  }

  std::string make_usage(const CLI::App* app, std::string name) const override {
    const std::string usage = CLI::Formatter::make_usage(app, name);
    return "用法：" + usage.substr(usage.find(": ") + 2);
  }

  std::string make_group(std::string group, bool is_positional,
                         std::vector<const CLI::Option*> options) const override {
    std::string text = "\n" + Chinese(group) + "：\n";
    for (const CLI::Option* option : options) text += make_option(option, is_positional);
    return text;
  }

  std::string make_subcommands(const CLI::App* app, CLI::AppFormatMode) const override {
    std::string text;
    for (const CLI::App* command : app->get_subcommands([](const CLI::App*) { return true; }))
      text += Entry(command->get_name(), command->get_description());
    return text.empty() ? text : "\n" + Chinese("Subcommands") + "：\n" + text;
  }

  std::string make_option(const CLI::Option* option, bool is_positional) const override {
    return Entry(make_option_name(option, is_positional) + make_option_opts(option),
                 option->get_description());
  }

  std::string make_option_name(const CLI::Option* option, bool is_positional) const override {
    const std::string name = CLI::Formatter::make_option_name(option, is_positional);
    return is_positional ? Chinese(name) : name;
  }

  std::string make_option_opts(const CLI::Option* option) const override {
    std::string text;
    std::vector<std::string> notes;
    if (option->get_type_size() != 0) {
      const Type type = TypeOf(*option);
      if (!option->get_positional() && !type.name.empty()) text = " " + type.name;
      if (!type.values.empty()) notes.push_back(type.values);
      if (option->get_required()) notes.emplace_back("必需");
      if (!option->get_default_str().empty()) notes.push_back("默认 " + option->get_default_str());
    }
    if (!option->get_envname().empty()) notes.push_back("环境变量 " + option->get_envname());
    if (!option->get_needs().empty())
      notes.push_back("须与 " + Names(option->get_needs()) + " 同用");
    if (!option->get_excludes().empty())
      notes.push_back("不与 " + Names(option->get_excludes()) + " 同用");
    return notes.empty() ? text : text + "（" + CLI::detail::join(notes, "；") + "）";
  }

 private:
  // Name and description in their columns; a name that leaves no room takes a line of its own.
  std::string Entry(const std::string& name, const std::string& about) const {
    const int columns = static_cast<int>(get_column_width());
    const std::string left = "  " + name;
    if (DisplayWidth(left) < columns) return PaddedTo(left, columns) + about + "\n";
    return left + "\n" + PaddedTo("", columns) + about + "\n";
  }
};

}  // namespace

std::shared_ptr<CLI::FormatterBase> ChineseHelp() { return std::make_shared<ChineseFormatter>(); }

std::string UsageProblem(const CLI::ParseError& error) {
  std::string problem = Rephrased(error.what(), kProblems);
  // A positional argument stands in it under its name in the help.
  if (problem.rfind(kMissing, 0) == 0)
    problem = kMissing + Chinese(problem.substr(std::strlen(kMissing)));
  return problem;
}

}  // namespace qlid
