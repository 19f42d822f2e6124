// One scenario, run again and again with another of its calls failing, and what is wrong after
// each: the result, the output, the files, what is held, the tty's settings, the next run.
#ifndef QUILLONID_TESTS_FAILURES_TRIAL_H
#define QUILLONID_TESTS_FAILURES_TRIAL_H

#include <cstddef>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "tests/failures/scenarios.h"
#include "tests/failures/world.h"

namespace failures {

using Problems = std::vector<std::string>;

class Trial {
 public:
  // Prepares the scenario and runs it untouched.
  explicit Trial(const Scenario& scenario);

  // What is wrong with the untouched run.
  const Problems& problems() const { return problems_; }

  // The calls of the untouched run.
  const std::vector<Call>& calls() const { return calls_; }

  // Fails one call, looks at what is left and runs once more with nothing failing.
  Problems Try(const Plan& plan);

 private:
  struct Outcome {
    std::vector<StepResult> steps;
    std::vector<std::optional<std::string>> files;  // null: there is none
  };

  Outcome Run(const Plan& plan);
  Problems ProblemsOf(const Outcome& outcome, bool must_be_good) const;
  void CompareFiles(const Outcome& outcome, bool all_good, Problems* problems) const;
  bool RestoredSettings() const;
  void LookAround(Problems* problems) const;
  void Forget();

  const Scenario& scenario_;
  World& world_ = TheWorld();
  std::set<std::string> kept_;  // files of the preparation
  std::ptrdiff_t descriptors_ = 0;
  std::ptrdiff_t threads_ = 0;
  Outcome good_;
  std::vector<Call> calls_;
  Problems problems_;
};

}  // namespace failures

#endif
