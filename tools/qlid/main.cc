// qlid: takes the command line apart and runs the command.
#include <CLI/CLI.hpp>
#include <algorithm>
#include <clocale>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>

#include "simulator/card.h"
#include "simulator/faults.h"
#include "tools/qlid/command_line.h"
#include "tools/qlid/commands.h"
#include "tools/qlid/completion.h"
#include "tools/qlid/report.h"
#include "tools/qlid/results.h"
#include "tools/qlid/terminal.h"
#include "tools/qlid/versions.h"

namespace qlid {
namespace {

// The words between the braces that the argument library describes a choice with.
std::vector<std::string> ChoicesIn(const std::string& description) {
  const std::size_t open = description.find('{');
  const std::size_t close = description.find('}');
  if (open == std::string::npos || close == std::string::npos) return {};
  return CLI::detail::split(description.substr(open + 1, close - open - 1), ',');
}

std::vector<std::string> FaultNames() {
  std::vector<std::string> names = {"help"};
  for (const simulator::FaultRow& row : simulator::FaultTable()) names.emplace_back(row.name);
  return names;
}

std::vector<std::string> PersonNames() {
  std::vector<std::string> names = {"help"};
  for (const simulator::Specimen& person : simulator::Specimens()) names.push_back(person.id);
  return names;
}

std::vector<std::string> PublishedCodes() {
  std::vector<std::string> codes;
  for (const ResultText& row : Results()) codes.push_back(std::to_string(row.code));
  return codes;
}

OptionWords WordsOf(const CLI::Option& option) {
  OptionWords words;
  for (const std::string& name : option.get_lnames()) words.names.push_back("--" + name);
  for (const std::string& name : option.get_snames()) words.names.push_back("-" + name);
  words.about = option.get_description();
  if (option.get_items_expected_max() == 0) return words;
  const std::string type = option.get_type_name();
  const std::string& name = option.get_single_name();
  words.choices = name == "fault"    ? FaultNames()
                  : name == "person" ? PersonNames()
                  : name == "CODE"   ? PublishedCodes()
                                     : ChoicesIn(type);
  words.value = !words.choices.empty()                ? ValueKind::kChoices
                : type == "FILE" || name == "FILE"    ? ValueKind::kFile
                : name == "device" || name == "probe" ? ValueKind::kDevice
                                                      : ValueKind::kText;
  return words;
}

CommandWords WordsOf(const CLI::App& command) {
  CommandWords words = {command.get_name(), command.get_description(), {}, {}};
  for (const CLI::Option* option : command.get_options()) words.options.push_back(WordsOf(*option));
  for (const CLI::App* each : command.get_subcommands([](const CLI::App*) { return true; }))
    words.commands.push_back(WordsOf(*each));
  return words;
}

int CompletionCommand(const CLI::App& app, const std::string& shell) {
  std::printf("%s", CompletionScript(WordsOf(app), shell).c_str());
  return kExitDone;
}

std::string NearestCommand(const CLI::App& app, const std::string& word) {
  // Edit distance of at most two, the usual slip of the finger.
  std::string nearest;
  std::size_t least = 3;
  for (const CLI::App* command : app.get_subcommands([](const CLI::App*) { return true; })) {
    const std::string name = command->get_name();
    std::vector<std::size_t> row(name.size() + 1);
    for (std::size_t j = 0; j <= name.size(); ++j) row[j] = j;
    for (std::size_t i = 1; i <= word.size(); ++i) {
      std::size_t diagonal = row[0];
      row[0] = i;
      for (std::size_t j = 1; j <= name.size(); ++j) {
        const std::size_t changed = diagonal + (word[i - 1] == name[j - 1] ? 0 : 1);
        diagonal = row[j];
        row[j] = std::min({row[j] + 1, row[j - 1] + 1, changed});
      }
    }
    if (row[name.size()] < least) {
      least = row[name.size()];
      nearest = name;
    }
  }
  return nearest;
}

Report MisuseReport(const std::string& what, const std::string& help) {
  return UsageReport(what, Format(Tr("try \"%s\"", "请执行 \"%s\""), help.c_str()));
}

// Says so when the value that was refused stands in the environment, not on the command line.
void NameVariable(const CLI::App& command, const CLI::ParseError& error, int argc, char** argv,
                  Report* report) {
  for (const CLI::Option* option : command.get_options()) {
    const char* value = std::getenv(option->get_envname().c_str());
    const std::string name = option->get_name();
    if (!value || std::string(error.what()).find(name) == std::string::npos) continue;
    const std::string shorter = option->get_snames().empty() ? name : "-" + option->get_snames()[0];
    const bool given = std::any_of(argv + 1, argv + argc, [&](const std::string& word) {
      return word.rfind(name, 0) == 0 || word.rfind(shorter, 0) == 0;
    });
    if (given) continue;
    report->rows.insert(report->rows.begin(),
                        {Tr("Cause", "原因"), Format(Tr("the environment variable %s is \"%s\"",
                                                        "环境变量 %s 为 \"%s\""),
                                                     option->get_envname().c_str(), value)});
  }
}

// Says what is wrong with the command line, as a document where one was asked for.
int Refuse(const Report& report, const std::string& command, const CommandLine& line) {
  if (line.wants_json) {
    PrintRefusal(report, command);
  } else {
    PrintReport(report);
  }
  return kExitUsage;
}

int UnknownCommand(const CLI::App& app, const CommandLine& line, const std::string& word) {
  const std::string nearest = NearestCommand(app, word);
  std::string what = Format(Tr("unknown command \"%s\"", "未知命令 \"%s\""), word.c_str());
  if (!nearest.empty())
    what += Format(Tr("; did you mean \"%s\"?", "；是否想输入 \"%s\"？"), nearest.c_str());
  return Refuse(MisuseReport(what, "qlid --help"), "", line);
}

int UnknownArgument(const std::string& word, const std::string& command, const CommandLine& line) {
  const std::string what =
      Format(Tr("%s takes no \"%s\"", "%s 不接受 \"%s\""), command.c_str(), word.c_str());
  return Refuse(MisuseReport(what, "qlid " + command + " --help"), command, line);
}

// Whether --json stands on the command line, which may be too wrong to be taken apart.
bool WantsJson(int argc, char** argv) {
  for (int i = 1; i < argc && std::strcmp(argv[i], "--") != 0; ++i) {
    if (std::strcmp(argv[i], "--json") == 0) return true;
  }
  return false;
}

// The language is known before the command line is taken apart, since help and complaints are made
// then: --lang anywhere on it, or the environment.
void ChooseLanguage(int argc, char** argv) {
  SetLanguage(LanguageOfEnvironment());
  for (int i = 1; i < argc && std::strcmp(argv[i], "--") != 0; ++i) {
    std::string word = argv[i];
    if (word == "--lang" && i + 1 < argc) word += std::string("=") + argv[++i];
    if (word == "--lang=zh") SetLanguage(Language::kChinese);
    if (word == "--lang=en") SetLanguage(Language::kEnglish);
  }
}

int Run(const CLI::App& app, const CommandLine& line) {
  if (line.color == "always") SetColorMode(ColorMode::kAlways);
  if (line.color == "never") SetColorMode(ColorMode::kNever);
  WarnUnlessUtf8();
  const bool extras = !app.remaining().empty();
  if (extras && !app.get_subcommands().empty()) {
    return UnknownArgument(app.remaining().front(), app.get_subcommands().front()->get_name(),
                           line);
  }
  if (app.got_subcommand("demo")) return DemoCommand(line.demo);
  if (app.got_subcommand("devices")) return DevicesCommand(line.devices);
  if (app.got_subcommand("doctor")) return DoctorCommand(line.doctor);
  if (app.got_subcommand("read"))
    return line.read.watch ? WatchCommand(line.read) : ReadCommand(line.read);
  if (app.got_subcommand("decode")) return DecodeCommand(line.decode);
  if (app.got_subcommand("simulate")) return SimulateCommand(line.simulate);
  if (app.got_subcommand("explain")) return ExplainCommand(line.explain);
  if (app.got_subcommand("reset-baud")) return ResetBaudCommand(line.reset_baud);
  if (app.got_subcommand("log")) return LogCommand(line.log);
  if (app.got_subcommand("completion")) return CompletionCommand(app, line.shell);
  if (extras) return UnknownCommand(app, line, app.remaining().front());
  std::printf("%s", app.help().c_str());
  return kExitDone;
}

int Main(int argc, char** argv) {
  ChooseLanguage(argc, argv);
  CommandLine line;
  line.wants_json = WantsJson(argc, argv);
  CLI::App app(Tr("Read Chinese identity documents through a desktop reader.",
                  "通过台式读卡器读取中国身份证件。"),
               "qlid");
  AddOptions(app, &line);
  app.require_subcommand(0, 1);
  // After the commands are added, so that they do not inherit it: an unknown word is named as an
  // unknown command.
  app.allow_extras();
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() == 0) return app.exit(error);
    const auto commands = app.get_subcommands();
    const std::string command = commands.empty() ? "" : commands.back()->get_name();
    Report report = MisuseReport(UsageProblem(error),
                                 command.empty() ? "qlid --help" : "qlid " + command + " --help");
    if (!commands.empty()) NameVariable(*commands.back(), error, argc, argv, &report);
    return Refuse(report, command, line);
  }
  return Run(app, line);
}

// A command whose output was lost has not done what it is for.
int Ended(int status) {
  const std::optional<Report> lost = TellUnwritten();
  return lost && status == kExitDone ? lost->exit : status;
}

}  // namespace
}  // namespace qlid

int main(int argc, char** argv) {
  try {
    std::setlocale(LC_CTYPE, "");
    // A closed pipe ends the tool quietly.
    std::signal(SIGPIPE, SIG_DFL);
    return qlid::Ended(qlid::Main(argc, argv));
  } catch (const std::exception& problem) {  // no memory, no thread
    std::fprintf(stderr, "qlid: %s\n", problem.what());
    return qlid::kExitUnexpected;
  }
}
