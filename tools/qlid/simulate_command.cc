// qlid simulate: a simulated reader until it is told to stop.
#include <unistd.h>

#include <cstdio>
#include <ctime>
#include <system_error>

#include "quillonid/results.h"
#include "tools/qlid/commands.h"
#include "tools/qlid/report.h"
#include "tools/qlid/results.h"
#include "tools/qlid/specimen_reader.h"
#include "tools/qlid/terminal.h"

namespace qlid {
namespace {

constexpr std::size_t kBytesShown = 24;

int PrintSpecimens() {
  for (const simulator::Specimen& person : simulator::Specimens()) {
    std::printf("%-22s %s\n", person.id.c_str(), person.about.c_str());
  }
  return kExitDone;
}

int PrintFaults() {
  std::printf("%s", simulator::FaultHelp().c_str());
  return kExitDone;
}

void PrintTrace(const simulator::TraceEvent& event) {
  const auto since = event.time.time_since_epoch();
  const time_t seconds = std::chrono::system_clock::to_time_t(event.time);
  const long milliseconds =
      std::chrono::duration_cast<std::chrono::milliseconds>(since).count() % 1000;
  tm local = {};
  localtime_r(&seconds, &local);
  const bool from_host = event.direction == simulator::TraceEvent::Direction::kFromHost;
  std::string line =
      Format("%02d:%02d:%02d.%03ld  %s  %s", local.tm_hour, local.tm_min, local.tm_sec,
             milliseconds, from_host ? "<" : ">", PaddedTo(event.meaning, 16).c_str());
  for (std::size_t i = 0; i < event.bytes.size() && i < kBytesShown; ++i)
    line += Format(" %02X", event.bytes[i]);
  if (event.bytes.size() > kBytesShown)
    line += Format(Tr(" ... %zu bytes", " ... 共 %zu 字节"), event.bytes.size());
  std::fprintf(stderr, "%s\n", line.c_str());
}

// A symbolic link to the reader's tty for as long as it lives.
class Link {
 public:
  Link(const std::string& target, const std::string& name) : name_(name) {
    made_ = !name.empty() && symlink(target.c_str(), name.c_str()) == 0;
  }
  Link(const Link&) = delete;
  Link& operator=(const Link&) = delete;
  ~Link() {
    if (made_) unlink(name_.c_str());
  }
  bool Wanted() const { return !name_.empty(); }
  bool Made() const { return made_; }

 private:
  std::string name_;
  bool made_;
};

void Announce(const SimulateOptions& options, const simulator::TtyReader& reader,
              const simulator::Card& card) {
  std::fprintf(stderr,
               Tr("Reader on %s, any speed. Card: %s%s. Nobody real.\n",
                  "读卡器位于 %s，任意波特率。卡片：%s%s。均为样本。\n"),
               reader.path().c_str(), card.person.about.c_str(),
               card.fingerprints ? Tr(", with two fingerprint templates", "，含两个指纹模板") : "");
  if (!options.fault.empty())
    std::fprintf(stderr, Tr("Fault: %s\n", "故障：%s\n"), options.fault.c_str());
  std::fprintf(stderr,
               Tr("Read it:  qlid read --device %s%s     (or your own program)\nCtrl-C ends it.\n",
                  "读取：qlid read --device %s%s     （或您自己的程序）\n按 Ctrl-C 结束。\n"),
               reader.path().c_str(), card.fingerprints ? " --fingerprints" : "");
  // For programs that start this one: the path alone on standard output.
  std::printf("%s\n", reader.path().c_str());
  std::fflush(stdout);
}

int Serve(const SimulateOptions& options, const simulator::Card& card,
          const std::optional<simulator::Fault>& fault) {
  simulator::TtyReader reader;
  reader.PutCard(card);
  if (fault) reader.SetFault(*fault);
  if (options.trace) reader.SetTrace(PrintTrace);
  const Link link(reader.path(), options.link);
  if (link.Wanted() && !link.Made()) {
    std::perror(options.link.c_str());
    return kExitUnexpected;
  }
  Announce(options, reader, card);
  while (WaitForSignal(1000) == 0) {
  }
  return kExitDone;
}

}  // namespace

int SimulateCommand(const SimulateOptions& options) {
  if (options.person == "help") return PrintSpecimens();
  if (options.fault == "help") return PrintFaults();
  simulator::Card card;
  std::string problem;
  const std::string& name = options.person.empty() ? options.card : options.person;
  if (!FindCard(name, options.fingerprints, &card, &problem)) {
    PrintReport(UsageReport(problem, "qlid simulate --person help"));
    return kExitUsage;
  }
  std::optional<simulator::Fault> fault;
  if (!options.fault.empty()) {
    fault = simulator::ParseFault(options.fault, &problem);
    if (!fault) {
      PrintReport(UsageReport(problem, "qlid simulate --fault help"));
      return kExitUsage;
    }
  }
  try {
    return Serve(options, card, fault);
  } catch (const std::system_error& error) {
    PrintReport({QL_DEVICE_ERROR,
                 kExitUnexpected,
                 Tr("there is no pseudo-terminal to be had", "无法创建伪终端"),
                 {{Tr("Cause", "原因"), error.what()}}});
    return kExitUnexpected;
  }
}

}  // namespace qlid
