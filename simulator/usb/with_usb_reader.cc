// with-usb-reader [--card ID] [--fault NAME[=VALUE]] [--driver NAME] PROGRAM [ARGUMENT...]
// Runs an unmodified program that sees one simulated USB reader, and ends with its exit status. The
// emulated bus lives in this process; the program reaches it through the preload library.

#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <stdexcept>
#include <string>

#include "simulator/environment.h"
#include "simulator/usb/card_reader.h"
#include "simulator/usb/emulated_reader.h"

namespace {

struct Options {
  std::string card = "resident";
  std::string fault;
  simulator::UsbTraits traits;
};

// Takes the options from the front of the arguments; where the program begins.
char** ParseOptions(char** arguments, Options* options) {
  for (; *arguments && arguments[1]; arguments += 2) {
    const std::string name = *arguments;
    if (name == "--card") {
      options->card = arguments[1];
    } else if (name == "--fault") {
      options->fault = arguments[1];
    } else if (name == "--driver") {
      options->traits.driver = arguments[1];
    } else {
      break;
    }
  }
  return arguments;
}

[[noreturn]] void RunProgram(char** arguments) {
  simulator::Extend("LD_PRELOAD", "libumockdev-preload.so.0");
  // AddressSanitizer asks to be the first library; behind a preloaded one it works as well.
  simulator::Extend("ASAN_OPTIONS", "verify_asan_link_order=0");
  execvp(arguments[0], arguments);
  std::perror(arguments[0]);
  _exit(127);
}

int Fail(const std::string& why) {
  std::fprintf(stderr, "with-usb-reader: %s\n", why.c_str());
  return 2;
}

}  // namespace

int main(int, char** argv) {
  Options options;
  char** program = ParseOptions(argv + 1, &options);
  if (!*program) return Fail("no program to run");

  simulator::CardModule module;
  try {
    module.PutCard(simulator::MakeCard(options.card));
  } catch (const std::invalid_argument&) {
    return Fail("there is no card \"" + options.card + "\"");
  }
  if (!options.fault.empty()) {
    std::string why;
    const auto fault = simulator::ParseFault(options.fault, &why);
    if (!fault) return Fail(why);
    module.SetFault(*fault);
  }
  simulator::EmulatedUsbReader reader(options.traits);
  simulator::ServeCards(reader, module);

  const pid_t child = fork();
  if (child == 0) RunProgram(program);
  signal(SIGINT, SIG_IGN);  // Ctrl-C is the program's.
  int status = 0;
  if (child < 0 || waitpid(child, &status, 0) != child) return Fail("the program was not run");
  return WIFEXITED(status) ? WEXITSTATUS(status) : 1;
}
