// Log calls against the system calls that they cannot do without.
#include <spdlog/pattern_formatter.h>
#include <spdlog/sinks/basic_file_sink.h>
#include <spdlog/spdlog.h>

#include <memory>

#include "bench/files.h"
#include "bench/floor.h"
#include "bench/table.h"
#include "quillonid/support.h"
#include "simulator/card.h"

namespace bench {
namespace {

void AddCallsWithLoggingOff(Table& table) {
  const auto work = [] { DPrintLogToFile("COMM_Zel_SendAndReciveData nRet = %d", 1295); };
  table.NewRow("log-absent", "log call, no configuration file", {1.10, 0.60})
      .Add(Role::kLibrary, "DPrintLogToFile", work, LogWithoutTimes)
      .Add(Role::kPeer, "failing open", FailingOpen, LogWithoutTimes);
  table.NewRow("log-off", "log call, flag 0", {1.40, 1.05})
      .Before([] { SetLogging(Logging::kOff); })
      .Add(Role::kLibrary, "DPrintLogToFile", work, LogWithoutTimes)
      .Add(Role::kPeer, "open, read, close", ReadConfiguration, LogWithoutTimes);
}

// The same line through a logger that keeps its file open and never looks at a configuration.
std::shared_ptr<spdlog::logger> NewSpdlog() {
  auto sink = std::make_shared<spdlog::sinks::basic_file_sink_st>("/home/quillon/spdlog.log");
  auto logger = std::make_shared<spdlog::logger>("bench", sink);
  logger->set_formatter(std::make_unique<spdlog::pattern_formatter>(
      " %m%d%H%M%S%e  %v", spdlog::pattern_time_type::local, "\r\n"));
  logger->flush_on(spdlog::level::info);
  return logger;
}

void AddLines(Table& table) {
  const std::string line = " 0000000000000  COMM_Zel_SendAndReciveData nRet = 1295\r\n";
  const auto logger = NewSpdlog();
  table.NewRow("log-line", "log line", {1.40, 1.05})
      .Before([] { SetLogging(Logging::kOn); })
      .Add(
          Role::kLibrary, "DPrintLogToFile",
          [] { DPrintLogToFile("COMM_Zel_SendAndReciveData nRet = %d", 1295); }, LogWithoutTimes)
      .Add(
          Role::kPeer, "system calls", [=] { LogPrepared(line); }, LogWithoutTimes)
      .Add(
          Role::kShown, "spdlog, file kept open",
          [=] { logger->info("COMM_Zel_SendAndReciveData nRet = {}", 1295); },
          [=] { return line; });

  const simulator::Bytes native = simulator::NativeData(simulator::MakeCard("resident"), false);
  std::string dump = " 0000000000000  szData  LEN=1295   HEX: ";
  for (const std::uint8_t byte : native) {
    dump += "0123456789ABCDEF"[byte >> 4];
    dump += "0123456789ABCDEF"[byte & 15];
  }
  dump += "\r\n";
  table.NewRow("log-dump", "log dump of 1,295 bytes", {1.50, 1.05})
      .Before([] { SetLogging(Logging::kOn); })
      .Add(
          Role::kLibrary, "DPrintDataHexToFile",
          [=] { DPrintDataHexToFile("szData", native.data(), static_cast<int>(native.size())); },
          LogWithoutTimes)
      .Add(
          Role::kPeer, "system calls", [=] { LogPrepared(dump); }, LogWithoutTimes);
}

}  // namespace

void AddLogRows(Table& table) {
  if (!HaveFolder()) return;
  AddCallsWithLoggingOff(table);
  AddLines(table);
}

}  // namespace bench
