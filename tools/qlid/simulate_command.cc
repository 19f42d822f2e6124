// qlid simulate: a simulated reader until it is told to stop.
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <functional>
#include <span>
#include <system_error>

#include "quillonid/results.h"
#include "simulator/recording.h"
#include "tools/qlid/commands.h"
#include "tools/qlid/files.h"
#include "tools/qlid/report.h"
#include "tools/qlid/results.h"
#include "tools/qlid/signals.h"
#include "tools/qlid/simulator_text.h"
#include "tools/qlid/specimen_reader.h"
#include "tools/qlid/terminal.h"
#include "tools/qlid/terminal_keys.h"
#include "tools/qlid/trace.h"

namespace qlid {
namespace {

constexpr std::size_t kRecordingLimit = 64 << 20;

int PrintSpecimens() {
  for (const simulator::Specimen& person : simulator::Specimens()) {
    std::printf("%-22s %s\n", person.id.c_str(), About(person).c_str());
  }
  return kExitDone;
}

int PrintFaults() {
  std::printf("%s", FaultHelp().c_str());
  return kExitDone;
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

void Say(const std::string& text) { std::fprintf(stderr, "%s\n", text.c_str()); }

// What lies on the reader and how it misbehaves, as the keys change it.
class Stage {
 public:
  Stage(simulator::TtyReader* reader, const simulator::Card& card) : reader_(reader), card_(card) {
    Put();
  }

  // False when the key ends it.
  bool Press(char key) {
    switch (key) {
      case 'p':
        Put();
        Say(Format(Tr("Card: %s", "卡片：%s"), About(card_.person).c_str()));
        break;
      case 'r':
        reader_->RemoveCard();
        Say(Tr("Card taken away", "卡片已拿走"));
        break;
      case '1':
      case '2':
      case '3':
        card_ = simulator::MakeCard(kKeyCards[key - '1'], card_.fingerprints);
        return Press('p');
      case 'f':
        NextFault();
        break;
      default:
        break;
    }
    return key != 'q';
  }

 private:
  static constexpr const char* kKeyCards[] = {"resident", "foreigner", "permit"};

  void Put() { reader_->PutCard(card_); }

  void NextFault() {
    const auto faults = simulator::FaultTable();
    do {
      fault_ = (fault_ + 1) % (faults.size() + 1);
      // A line that was hung up stays dead, which would be the last of the faults.
    } while (fault_ > 0 && faults[fault_ - 1].id == simulator::FaultId::kHangUp);
    if (fault_ == 0) {
      reader_->module().ClearFaults();
      Say(Tr("Fault: none", "故障：无"));
      return;
    }
    const simulator::FaultRow& row = faults[fault_ - 1];
    reader_->SetFault({row.id, row.value});
    Say(Format(Tr("Fault: %s, %s", "故障：%s，%s"),
               simulator::FaultText({row.id, row.value}).c_str(), About(row).c_str()));
  }

  simulator::TtyReader* reader_;
  simulator::Card card_;
  std::size_t fault_ = 0;  // row of the fault table, from 1; 0: none
};

void Announce(const simulator::TtyReader& reader, const std::string& what, const char* options,
              bool keys) {
  Say(Format(Tr("Reader on %s, any speed. %s", "读卡器位于 %s，任意波特率。%s"),
             reader.path().c_str(), what.c_str()));
  Say(Format(Tr("Read it:  qlid read --device %s%s     (or your own program)",
                "读取：qlid read --device %s%s     （或您自己的程序）"),
             reader.path().c_str(), options));
  Say(keys ? Tr("Keys: p put card, r remove card, 1 2 3 other card, f next fault, q quit",
                "按键：p 放卡，r 取卡，1 2 3 换卡，f 下一个故障，q 退出")
           : Tr("Ctrl-C ends it.", "按 Ctrl-C 结束。"));
  // For programs that start this one: the path alone on standard output.
  std::printf("%s\n", reader.path().c_str());
  FlushOutput();
}

// Until a signal comes, or `press` is given a key that ends it.
void WaitForTheEnd(TerminalKeys* keys, const std::function<bool(char)>& press) {
  while (WaitForSignal(1000, keys->descriptor()) == 0) {
    for (char key = keys->Take(); key != 0; key = keys->Take()) {
      if (!press(key)) return;
    }
  }
}

bool LinkStands(const Link& link, const std::string& name) {
  if (!link.Wanted() || link.Made()) return true;
  const Row cause = {Tr("Cause", "原因"), SystemProblem(errno)};
  const Row next = {Tr("Next", "建议"),
                    Tr("name one that does not exist yet, in a folder that you may write to",
                       "请指定尚不存在的名称，并位于可写的目录中")};
  Report report = {
      QL_OTHER_ERROR,
      kExitUnexpected,
      Format(Tr("the link %s was not made", "未能建立链接 %s"), name.c_str()),
      {cause, next}
  };
  report.tell_code = false;  // No call of the library gave it.
  PrintReport(report);
  return false;
}

int Serve(const SimulateOptions& options, const simulator::Card& card,
          const std::optional<simulator::Fault>& fault) {
  HoldSignals();
  simulator::TtyReader reader;
  Stage stage(&reader, card);
  if (fault) reader.SetFault(*fault);
  if (options.trace) reader.SetTrace([](const auto& event) { PrintTrace(event); });
  const Link link(reader.path(), options.link);
  if (!LinkStands(link, options.link)) return kExitUnexpected;
  TerminalKeys keys;
  std::string what =
      Format(Tr("Card: %s%s. Nobody real.", "卡片：%s%s。均为样本。"), About(card.person).c_str(),
             card.fingerprints ? Tr(", with two fingerprint templates", "，含两个指纹模板") : "");
  if (fault) what += Format(Tr(" Fault: %s.", " 故障：%s。"), simulator::FaultText(*fault).c_str());
  Announce(reader, what, card.fingerprints ? " --fingerprints" : "", keys.Active());
  WaitForTheEnd(&keys, [&](char key) { return stage.Press(key); });
  return kExitDone;
}

int ServeRecording(const SimulateOptions& options,
                   const std::vector<simulator::RecordedPiece>& pieces) {
  HoldSignals();
  simulator::Replay replay(pieces);
  simulator::TtyReader reader([&](std::span<const std::uint8_t> bytes, int line_speed) {
    return replay.Receive(bytes, line_speed);
  });
  if (options.trace) reader.SetTrace([](const auto& event) { PrintTrace(event); });
  const Link link(reader.path(), options.link);
  if (!LinkStands(link, options.link)) return kExitUnexpected;
  TerminalKeys keys;
  Announce(reader, Format(Tr("As recorded in %s.", "按 %s 的记录应答。"), options.replay.c_str()),
           "", false);
  WaitForTheEnd(&keys, [](char key) { return key != 'q'; });
  return kExitDone;
}

int ReplayCommand(const SimulateOptions& options) {
  std::vector<std::uint8_t> text;
  std::string problem;
  if (ReadFile(options.replay, kRecordingLimit, &text, &problem)) {
    const auto pieces = simulator::ParseRecording(std::string(text.begin(), text.end()), &problem);
    if (pieces) return ServeRecording(options, *pieces);
    problem = RecordingProblem(problem);
  }
  Report report = UsageReport(Format(Tr("%s is no recording: %s", "%s 不是记录文件：%s"),
                                     options.replay.c_str(), problem.c_str()),
                              Tr("make one: qlid read --device PORT --record FILE",
                                 "生成一份：qlid read --device 串口 --record 文件"));
  PrintReport(report);
  return kExitUsage;
}

int SpecimenCommand(const SimulateOptions& options) {
  simulator::Card card;
  std::string problem;
  const std::string& name = options.person.empty() ? options.card : options.person;
  if (!FindCard(name, options.fingerprints, &card, &problem)) {
    PrintReport(UsageReport(problem, "qlid simulate --person help"));
    return kExitUsage;
  }
  std::optional<simulator::Fault> fault;
  if (!options.fault.empty()) {
    fault = FindFault(options.fault, &problem);
    if (!fault) {
      PrintReport(UsageReport(problem, "qlid simulate --fault help"));
      return kExitUsage;
    }
  }
  return Serve(options, card, fault);
}

}  // namespace

int SimulateCommand(const SimulateOptions& options) {
  if (options.person == "help") return PrintSpecimens();
  if (options.fault == "help") return PrintFaults();
  try {
    return options.replay.empty() ? SpecimenCommand(options) : ReplayCommand(options);
  } catch (const std::system_error& error) {
    PrintReport(NoTerminalReport(error.code().value()));
    return kExitUnexpected;
  }
}

}  // namespace qlid
