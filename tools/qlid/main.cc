// qlid: the command line. This file alone knows the argument library.
#include <CLI/CLI.hpp>
#include <clocale>
#include <csignal>
#include <cstdio>

#include "simulator/faults.h"
#include "tools/qlid/commands.h"
#include "tools/qlid/completion.h"
#include "tools/qlid/devices.h"
#include "tools/qlid/report.h"
#include "tools/qlid/results.h"
#include "tools/qlid/terminal.h"
#include "tools/qlid/versions.h"

namespace qlid {
namespace {

struct CommandLine {
  ReadOptions read;
  DevicesOptions devices;
  DecodeOptions decode;
  SimulateOptions simulate;
  DemoOptions demo;
  DoctorOptions doctor;
  ExplainOptions explain;
  LogOptions log;
  std::string shell;
  std::string language;
  std::string color = "auto";
};

const std::vector<std::string> kKinds = {"any", "resident", "foreigner", "permit", "gat"};
const std::vector<std::string> kCards = {"resident", "foreigner", "permit", "gat"};

void AddOutput(CLI::App* command, OutputOptions* output) {
  command->add_flag("--json", output->json,
                    "One JSON document on standard output, on success and on failure");
  command->add_flag("--redact", output->redact, "Mask what identifies the holder");
  command->add_option("--photo", output->photo, "Write the photo to this file (.bmp or .png)")
      ->type_name("FILE");
}

void AddDemo(CLI::App& app, CommandLine* line) {
  CLI::App* demo = app.add_subcommand("demo", "See a specimen card read, no hardware needed");
  demo->add_option("--card", line->demo.card, "Specimen card")
      ->check(CLI::IsMember(kCards))
      ->capture_default_str();
  demo->add_option("--fault", line->demo.fault,
                   "Let the reader misbehave and see what is reported; \"help\" lists the names");
  demo->add_option("--photo", line->demo.photo, "Write the photo to this BMP file")
      ->type_name("FILE")
      ->capture_default_str();
}

void AddUsbIds(CLI::App* command, std::vector<std::string>* ids) {
  command->add_option("--usb-id", *ids, "USB id of a reader beside the known ones, vendor:product")
      ->type_name("1234:5678")
      ->expected(1, 10)
      ->check([](const std::string& text) {
        UsbIdText id = {};
        return ParseUsbId(text, &id) ? std::string()
                                     : "\"" + text + "\" is no USB id such as 1234:5678";
      });
}

void AddRead(CLI::App& app, CommandLine* line) {
  CLI::App* read = app.add_subcommand("read", "Read a card");
  ReadRequest& request = line->read.request;
  read->add_option("--device,-d", request.device,
                   "\"HID\" for a USB reader, or a serial port such as /dev/ttyUSB0")
      ->envname("QLID_DEVICE")
      ->capture_default_str();
  read->add_option("--baud,-b", request.baud, "Serial speed in bit/s")
      ->envname("QLID_BAUD")
      ->capture_default_str();
  read->add_option("--timeout,-t", request.timeout, "Limit of the read in seconds")
      ->envname("QLID_TIMEOUT")
      ->check(CLI::Range(1, 120))
      ->capture_default_str();
  read->add_option("--kind", line->read.kind, "Kind of card to accept")
      ->check(CLI::IsMember(kKinds))
      ->capture_default_str();
  read->add_flag("--fingerprints", request.fingerprints, "Read the fingerprint templates too");
  read->add_flag("--raise-baud", request.raise_baud,
                 "Reach a serial reader at 9600 bit/s, then raise its speed");
  read->add_flag("--search-direct", request.search_direct,
                 "Read at once, without search and select");
  read->add_flag("--one-command", request.one_command, "Read with the one-command read");
  AddUsbIds(read, &request.usb_ids);
  read->add_flag("--watch", line->read.watch,
                 "Card after card until stopped; waits for a reader that was pulled");
  read->add_option("--pause", line->read.pause, "With --watch: milliseconds between two reads")
      ->check(CLI::Range(0, 60000))
      ->capture_default_str();
  read->add_option("--exec", line->read.exec,
                   "Run this shell command once per card, the card's JSON on its standard input")
      ->type_name("COMMAND");
  read->add_option("--exec-timeout", line->read.exec_seconds, "Seconds that the command may take")
      ->check(CLI::Range(1, 86400))
      ->capture_default_str();
  read->add_flag("--timing", line->read.timing, "Show where the time of a serial read went");
  read->add_flag("--trace", line->read.trace, "Show what travels on a serial line");
  CLI::Option* record =
      read->add_option("--record", line->read.record,
                       "Write what travels on a serial line to this file, for simulate --replay")
          ->type_name("FILE");
  for (const char* other : {"--watch", "--raise-baud"}) {
    for (const char* tap : {"--timing", "--trace", "--record"})
      read->get_option(tap)->excludes(read->get_option(other));
  }
  read->add_option("--native", line->read.output.native,
                   "Write the card's native data to this file")
      ->type_name("FILE");
  AddOutput(read, &line->read.output);
  record->excludes(read->get_option("--redact"));
}

void AddDevices(CLI::App& app, CommandLine* line) {
  CLI::App* devices = app.add_subcommand("devices", "Readers and ports on this machine");
  devices->add_flag("--json", line->devices.json, "One JSON document on standard output");
  devices->add_flag("--known", line->devices.known, "List the USB ids that are looked for");
  devices->add_option("--probe", line->devices.probe, "Ask this device whether it is a reader")
      ->type_name("DEVICE");
  devices->add_option("--baud,-b", line->devices.baud, "Serial speed for --probe, in bit/s")
      ->capture_default_str();
  AddUsbIds(devices, &line->devices.usb_ids);
}

void AddDecode(CLI::App& app, CommandLine* line) {
  CLI::App* decode = app.add_subcommand("decode", "Show a saved card answer");
  decode
      ->add_option("FILE", line->decode.file,
                   "Native data, as qlid read --native saves it; - for standard input")
      ->required();
  decode->add_flag("--explain", line->decode.explain, "Every byte's meaning");
  AddOutput(decode, &line->decode.output);
}

void AddSimulate(CLI::App& app, CommandLine* line) {
  CLI::App* simulate = app.add_subcommand(
      "simulate", "A simulated reader on a pseudo-terminal, with specimen cards");
  simulate->add_option("--card", line->simulate.card, "Specimen card")
      ->check(CLI::IsMember(kCards))
      ->capture_default_str();
  simulate->add_option("--person", line->simulate.person, "Specimen person; \"help\" lists them");
  simulate->add_flag("--fingerprints", line->simulate.fingerprints,
                     "The card carries two fingerprint templates");
  simulate->add_option("--fault", line->simulate.fault,
                       "Misbehave by name; \"help\" lists the names");
  simulate
      ->add_option("--link", line->simulate.link, "Symbolic link to the tty, removed at the end")
      ->type_name("FILE");
  simulate
      ->add_option("--replay", line->simulate.replay,
                   "Answer as the reader did in this file of read --record")
      ->type_name("FILE")
      ->excludes(simulate->get_option("--fault"));
  simulate->add_flag("--trace", line->simulate.trace, "Show what travels");
}

void AddDoctor(CLI::App& app, CommandLine* line) {
  CLI::App* doctor = app.add_subcommand("doctor", "Find out why reading does not work");
  ReadRequest& request = line->doctor.request;
  request.device.clear();
  doctor
      ->add_option("--device,-d", request.device,
                   "Ask this reader: \"HID\", or a serial port such as /dev/ttyUSB0")
      ->envname("QLID_DEVICE");
  doctor->add_option("--baud,-b", request.baud, "Serial speed in bit/s")
      ->envname("QLID_BAUD")
      ->capture_default_str();
  AddUsbIds(doctor, &request.usb_ids);
  doctor->add_flag("--json", line->doctor.json, "One JSON document on standard output");
  doctor->add_flag("--print-udev-rules", line->doctor.print_udev_rules,
                   "Print the udev rules for the known USB readers");
}

void AddExplain(CLI::App& app, CommandLine* line) {
  CLI::App* explain = app.add_subcommand("explain", "What a result code means and what to do");
  explain->add_option("CODE", line->explain.code,
                      "Published result code, such as -5; without one, all of them");
  explain->add_flag("--scdoc", line->explain.manual)->group("");  // for the manual page
  explain->prefix_command();
}

void AddLog(CLI::App& app, CommandLine* line) {
  CLI::App* log = app.add_subcommand("log", "Show the library's log");
  log->add_option("FILE", line->log.file, "Another log; - for standard input");
  log->add_flag("--redact", line->log.redact, "Mask personal data");
}

void AddCompletion(CLI::App& app, CommandLine* line) {
  CLI::App* completion = app.add_subcommand("completion", "Print a completion script for a shell");
  completion->add_option("SHELL", line->shell, "Shell")
      ->required()
      ->check(CLI::IsMember({"bash", "zsh", "fish"}));
}

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
  const std::string name = option.get_single_name();
  words.choices = name == "fault"  ? FaultNames()
                  : name == "CODE" ? PublishedCodes()
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

int UnknownCommand(const CLI::App& app, const std::string& word) {
  const std::string nearest = NearestCommand(app, word);
  std::string what = Format(Tr("unknown command \"%s\"", "未知命令 \"%s\""), word.c_str());
  if (!nearest.empty())
    what += Format(Tr("; did you mean \"%s\"?", "；是否想输入 \"%s\"？"), nearest.c_str());
  PrintReport(UsageReport(what, "qlid --help"));
  return kExitUsage;
}

int UnknownArgument(const std::string& word, const std::string& command) {
  PrintReport(UsageReport(
      Format(Tr("%s takes no \"%s\"", "%s 不接受 \"%s\""), command.c_str(), word.c_str()),
      "qlid " + command + " --help"));
  return kExitUsage;
}

void Settle(const CommandLine& line) {
  if (line.language == "zh") SetLanguage(Language::kChinese);
  if (line.language == "en") SetLanguage(Language::kEnglish);
  if (line.color == "always") SetColorMode(ColorMode::kAlways);
  if (line.color == "never") SetColorMode(ColorMode::kNever);
}

int Run(const CLI::App& app, const CommandLine& line) {
  Settle(line);
  WarnUnlessUtf8();
  const bool extras = !app.remaining().empty();
  if (extras && !app.get_subcommands().empty()) {
    return UnknownArgument(app.remaining().front(), app.get_subcommands().front()->get_name());
  }
  if (app.got_subcommand("demo")) return DemoCommand(line.demo);
  if (app.got_subcommand("devices")) return DevicesCommand(line.devices);
  if (app.got_subcommand("doctor")) return DoctorCommand(line.doctor);
  if (app.got_subcommand("read"))
    return line.read.watch ? WatchCommand(line.read) : ReadCommand(line.read);
  if (app.got_subcommand("decode")) return DecodeCommand(line.decode);
  if (app.got_subcommand("simulate")) return SimulateCommand(line.simulate);
  if (app.got_subcommand("explain")) return ExplainCommand(line.explain);
  if (app.got_subcommand("log")) return LogCommand(line.log);
  if (app.got_subcommand("completion")) return CompletionCommand(app, line.shell);
  if (extras) return UnknownCommand(app, app.remaining().front());
  std::printf("%s", app.help().c_str());
  return kExitDone;
}

int Main(int argc, char** argv) {
  SetLanguage(LanguageOfEnvironment());
  CommandLine line;
  CLI::App app("Read Chinese identity documents through a desktop reader.", "qlid");
  app.set_version_flag("--version", VersionText);
  app.add_option("--lang", line.language, "Language of messages")
      ->check(CLI::IsMember({"en", "zh"}));
  app.add_option("--color", line.color, "Colour on the terminal")
      ->check(CLI::IsMember({"auto", "always", "never"}))
      ->capture_default_str();
  // Inherited: a common option is taken behind the command as well.
  app.fallthrough();
  AddDemo(app, &line);
  AddDevices(app, &line);
  AddDoctor(app, &line);
  AddRead(app, &line);
  AddDecode(app, &line);
  AddSimulate(app, &line);
  AddExplain(app, &line);
  AddLog(app, &line);
  AddCompletion(app, &line);
  app.require_subcommand(0, 1);
  // After the commands are added, so that they do not inherit it: an unknown word is named as an
  // unknown command.
  app.allow_extras();
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() == 0) return app.exit(error);
    std::string next = "qlid --help";
    for (const CLI::App* command : app.get_subcommands())
      next = "qlid " + command->get_name() + " --help";
    PrintReport(UsageReport(error.what(), next));
    return kExitUsage;
  }
  return Run(app, line);
}

}  // namespace
}  // namespace qlid

int main(int argc, char** argv) {
  std::setlocale(LC_CTYPE, "");
  // A closed pipe ends the tool quietly.
  std::signal(SIGPIPE, SIG_DFL);
  qlid::HoldSignals();
  return qlid::Main(argc, argv);
}
