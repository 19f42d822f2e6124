#include "bench/table.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <map>
#include <memory>

#include "bench/files.h"
#include "bench/machine.h"
#include "bench/stand_ins.h"

namespace bench {
namespace {

using Samples = std::vector<double>;  // nanoseconds, one for each repetition

double Quantile(Samples samples, double part) {
  std::sort(samples.begin(), samples.end());
  const double at = part * static_cast<double>(samples.size() - 1);
  const auto below = static_cast<std::size_t>(at);
  const auto above = std::min(below + 1, samples.size() - 1);
  return samples[below] + (at - std::floor(at)) * (samples[above] - samples[below]);
}

double Median(const Samples& samples) { return Quantile(samples, 0.5); }

// Keeps the time of each repetition of each way.
class Collector : public benchmark::BenchmarkReporter {
 public:
  explicit Collector(bool manual_time) : manual_time_(manual_time) {}
  bool ReportContext(const Context&) override { return true; }
  void ReportRuns(const std::vector<Run>& runs) override {
    for (const Run& run : runs) {
      if (run.run_type != Run::RT_Iteration || run.error_occurred) continue;
      const double time = manual_time_ ? run.GetAdjustedRealTime() : run.GetAdjustedCPUTime();
      samples_[run.run_name.function_name].push_back(time);
    }
  }
  const Samples& Of(const std::string& name) { return samples_[name]; }

 private:
  bool manual_time_;
  std::map<std::string, Samples> samples_;
};

struct Figure {
  std::string name;
  Role role;
  double median;
};

struct Result {
  std::vector<Figure> figures;
  double ratio;
  double spread;  // half of the range that the middle half of the repetitions' ratios take
};

Result Time(const Row& row) {
  Collector collector(row.manual_time());
  benchmark::RunSpecifiedBenchmarks(&collector, "^" + row.id() + "/");

  Result result = {};
  Samples library, peer;
  for (const Way& way : row.ways()) {
    const Samples& samples = collector.Of(row.BenchmarkName(way.name));
    result.figures.push_back({way.name, way.role, Median(samples)});
    if (way.role == Role::kLibrary) library = samples;
    if (way.role == Role::kPeer && (peer.empty() || Median(samples) < Median(peer))) {
      peer = samples;
    }
  }
  Samples ratios;
  for (std::size_t i = 0; i < library.size(); ++i) ratios.push_back(library[i] / peer[i]);
  result.ratio = Median(library) / Median(peer);
  result.spread = (Quantile(ratios, 0.75) - Quantile(ratios, 0.25)) / 2;
  return result;
}

bool IsMissed(const Row& row, const Result& result) {
  return result.ratio - result.spread > row.limits().must;
}

// False, with a word on the error output, when a way gives other bytes than the first.
bool WaysAgree(const Row& row) {
  row.Prepare();
  const std::string expected = row.ways().front().result();
  bool agree = true;
  for (const Way& way : row.ways()) {
    row.Prepare();
    const std::string got = way.result();
    if (got == expected) continue;
    const auto differs = std::mismatch(got.begin(), got.end(), expected.begin(), expected.end());
    std::fprintf(stderr, "%s: %s gives other bytes than %s: %zu for %zu, from byte %td on\n",
                 row.title().c_str(), way.name.c_str(), row.ways().front().name.c_str(), got.size(),
                 expected.size(), differs.first - got.begin());
    agree = false;
  }
  return agree;
}

std::string Decimal(double value, int places) {
  char text[64];
  std::snprintf(text, sizeof text, "%.*f", places, value);
  return text;
}

std::string Duration(double nanoseconds) {
  constexpr const char* kUnits[] = {" ns", " µs", " ms"};
  int unit = 0;
  for (; nanoseconds >= 999.5 && unit < 2; ++unit) nanoseconds /= 1000;
  return Decimal(nanoseconds, nanoseconds < 9.995 ? 2 : nanoseconds < 99.95 ? 1 : 0) + kUnits[unit];
}

// `slack` is what noise may add to a figure.
const char* Verdict(double value, const Limits& limits, double slack) {
  if (value <= limits.goal) return "goal";
  if (value <= limits.must) return "must";
  return value - slack <= limits.must ? "within spread" : "MISSED";
}

using Cells = std::vector<std::string>;

const Cells kHeadings = {"Row",    "Quillon ID", "Peers", "Ratio",
                         "Spread", "Must",       "Goal",  "Verdict"};

Cells CellsOf(const Row& row, const Result& result) {
  std::string library, peers, shown;
  for (const Figure& figure : result.figures) {
    const std::string time = Duration(figure.median);
    if (figure.role == Role::kLibrary) {
      library = time;
      continue;
    }
    std::string& list = figure.role == Role::kPeer ? peers : shown;
    if (!list.empty()) list += ", ";
    list += figure.name + " " + time;
  }
  if (!shown.empty()) peers += " (" + shown + ")";
  const double ratio = std::round(result.ratio * 100) / 100;
  return {row.title(),
          library,
          peers,
          Decimal(ratio, 2),
          "±" + Decimal(result.spread, 2),
          Decimal(row.limits().must, 2),
          Decimal(row.limits().goal, 2),
          Verdict(ratio, row.limits(), result.spread)};
}

Cells CellsOf(const Count& row) {
  return {row.title,
          Decimal(row.value, 0) + row.unit,
          "",
          "",
          "",
          Decimal(row.limits.must, 0),
          Decimal(row.limits.goal, 0),
          Verdict(row.value, row.limits, 0)};
}

// Columns of a UTF-8 text without wide characters.
int Width(const std::string& text) {
  return static_cast<int>(std::count_if(text.begin(), text.end(), [](char c) {
    return (static_cast<unsigned char>(c) & 0xC0) != 0x80;
  }));
}

void PrintMarkdown(const Cells& cells) {
  for (const std::string& cell : cells) std::printf("| %s ", cell.c_str());
  std::puts("|");
  std::fflush(stdout);
}

void PrintPlain(const Cells& cells) {
  static const int kWidths[] = {49, 10, 0, 6, 6, 5, 5, 0};
  const auto print = [&](std::size_t i, const char* behind) {
    std::printf("%s%*s%s", cells[i].c_str(), std::max(0, kWidths[i] - Width(cells[i])), "", behind);
  };
  for (const std::size_t i : {0u, 1u, 3u, 4u, 5u, 6u}) print(i, "  ");
  std::printf("%-7s  %s\n", cells[7].c_str(), cells[2].c_str());
  std::fflush(stdout);
}

void StartAnew() {
  SetLogging(Logging::kNoFile);
  TakeOutLogChecks(false);
}

}  // namespace

Row::Row(std::string id, std::string title, Limits limits)
    : id_(std::move(id)),
      title_(std::move(title)),
      limits_(limits),
      prepare_(std::make_shared<std::function<void()>>(StartAnew)) {}

Row& Row::Before(std::function<void()> prepare) {
  *prepare_ = [prepare] {
    StartAnew();
    prepare();
  };
  return *this;
}

Row& Table::NewRow(const std::string& id, const std::string& title, Limits limits) {
  rows_.push_back(std::make_unique<Row>(id, title, limits));
  return *rows_.back();
}

int Table::Run(const Options& options) {
  std::string repetitions = "--benchmark_repetitions=" + std::to_string(options.repetitions);
  char program[] = "bench", interleaving[] = "--benchmark_enable_random_interleaving=true";
  char seconds[] = "--benchmark_min_time=0.005";
  char* arguments[] = {program, repetitions.data(), interleaving, seconds, nullptr};
  int count = 4;
  benchmark::Initialize(&count, arguments);

  const auto print = options.markdown ? PrintMarkdown : PrintPlain;
  if (!options.equal) {
    std::printf("%s\n\n", Machine().c_str());
    print(kHeadings);
    if (options.markdown) print({"---", "---:", "---", "---:", "---:", "---:", "---:", "---"});
  }
  bool missed = false;
  for (const auto& row : rows_) {
    if (row->id().find(options.only) == std::string::npos) continue;
    if (!WaysAgree(*row)) return 2;
    if (options.equal) {
      std::printf("%s: %zu ways agree\n", row->title().c_str(), row->ways().size());
      continue;
    }
    Result result = Time(*row);
    if (options.check && IsMissed(*row, result)) result = Time(*row);
    missed = missed || IsMissed(*row, result);
    print(CellsOf(*row, result));
  }
  for (const Count& row : counts_) {
    if (options.equal || !options.only.empty()) break;
    missed = missed || row.value > row.limits.must;
    print(CellsOf(row));
  }
  return options.check && missed ? 1 : 0;
}

}  // namespace bench
