// The table of rows. A row holds ways to do the same work, one of them the library's, and what the
// ratio between them has to be; Google Benchmark times them in turns, so that a busy machine falls
// on all alike.
#ifndef QUILLONID_BENCH_TABLE_H
#define QUILLONID_BENCH_TABLE_H

#include <benchmark/benchmark.h>

#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace bench {

enum class Role {
  kLibrary,
  kPeer,   // the ratio is taken against the fastest of these
  kShown,  // timed and printed, but no part of the ratio
};

struct Way {
  std::string name;
  Role role;
  // Does the work once and gives its result as bytes, which all ways of a row must agree on.
  std::function<std::string()> result;
};

// What the library's figure, divided by that of the fastest peer, must not exceed, and what we want
// it to be.
struct Limits {
  double must;
  double goal;
};

class Row {
 public:
  Row(std::string id, std::string title, Limits limits);

  // Called before each repetition, which otherwise finds no configuration file.
  Row& Before(std::function<void()> prepare);

  // `work` does the row's work and is called over and over; `result` gives what it made, as bytes.
  // The time is the processor time of the calling thread.
  template <typename Work, typename Result>
  Row& Add(Role role, const std::string& name, Work work, Result result) {
    ways_.push_back({name, role, [work, result]() mutable {
                       work();
                       return std::string(result());
                     }});
    benchmark::RegisterBenchmark(BenchmarkName(name).c_str(),
                                 [work, prepare = prepare_](benchmark::State& state) mutable {
                                   (*prepare)();
                                   for (auto _ : state) {
                                     work();
                                     benchmark::ClobberMemory();
                                   }
                                 });
    return *this;
  }

  // `seconds` does the work and says how long it took; `times` calls make one repetition.
  template <typename Work, typename Result>
  Row& AddTimed(Role role, const std::string& name, int times, Work seconds, Result result) {
    ways_.push_back({name, role, [seconds, result]() mutable {
                       seconds();
                       return std::string(result());
                     }});
    benchmark::RegisterBenchmark(BenchmarkName(name).c_str(),
                                 [seconds](benchmark::State& state) mutable {
                                   for (auto _ : state) state.SetIterationTime(seconds());
                                 })
        ->UseManualTime()
        ->Iterations(times);
    manual_time_ = true;
    return *this;
  }

  const std::string& id() const { return id_; }
  const std::string& title() const { return title_; }
  const Limits& limits() const { return limits_; }
  const std::vector<Way>& ways() const { return ways_; }
  void Prepare() const { (*prepare_)(); }
  bool manual_time() const { return manual_time_; }
  std::string BenchmarkName(const std::string& way) const { return id_ + "/" + way; }

 private:
  std::string id_;
  std::string title_;
  Limits limits_;
  std::vector<Way> ways_;
  bool manual_time_ = false;
  std::shared_ptr<std::function<void()>> prepare_;
};

struct Count {
  std::string title;
  std::string unit;
  double value;
  Limits limits;
};

class Table {
 public:
  // The row stays where it is until the table goes.
  Row& NewRow(const std::string& id, const std::string& title, Limits limits);
  // A figure that is counted, with what stands behind it, such as " kB".
  void AddCount(const std::string& title, const std::string& unit, double value, Limits limits) {
    counts_.push_back({title, unit, value, limits});
  }

  struct Options {
    std::string only;       // rows whose id contains this text; empty: all
    bool markdown = false;  // print the table as docs/performance.md holds it
    bool check = false;     // time a row that misses its must once more
    bool equal = false;     // only compare the results
    int repetitions = 21;
  };
  // Prints the table. Returns the program's exit status: 0; 1 when --check found a must missed
  // twice in a row by more than the spread; 2 when two ways of a row disagree.
  int Run(const Options& options);

 private:
  std::vector<std::unique_ptr<Row>> rows_;
  std::vector<Count> counts_;
};

// The rows, by subject.
void AddTextRows(Table& table);
void AddCardRows(Table& table);
void AddLogRows(Table& table);
void AddLoadRows(Table& table);
void AddReadRows(Table& table);

}  // namespace bench

#endif
