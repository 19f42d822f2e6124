// What is done while calls fail: whole reads and other uses of the library, each in steps whose
// results are known.
#ifndef QUILLONID_TESTS_FAILURES_SCENARIOS_H
#define QUILLONID_TESTS_FAILURES_SCENARIOS_H

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace failures {

struct StepResult {
  int result;
  std::string bytes;  // the output, zero-filled before
};

// What a failed step leaves in its output: nothing; all that a good one does when only the photo
// is missing; or the beginning of it.
enum class Leaves { kNothing, kTextWithoutPhoto, kBeginning };

struct Step {
  const char* name;
  StepResult (*run)();
  int good;
  std::vector<int> failures;  // other results that it may have
  Leaves leaves = Leaves::kNothing;
  // Instead of `failures`, by the name of the function that fails.
  std::vector<int> (*failures_of_call)(std::string_view name) = nullptr;
};

struct Scenario {
  const char* name;
  void (*prepare)();  // outside a run, once
  std::vector<Step> steps;
  std::vector<std::string> files;  // in the test's folder, that the steps may create
  bool logging = false;            // the log is on
  bool once = false;               // each call is made once, whatever it brings
};

const std::vector<Scenario>& Scenarios();

// Takes back what the scenarios of the same process have set before.
void StartAfresh();

// Of a file that a scenario names.
std::string PathOf(const std::string& file);

}  // namespace failures

#endif
