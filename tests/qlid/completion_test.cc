// qlid completion: the scripts in the shells that they are for.
#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <sstream>

#include "tests/qlid/bench.h"
#include "tests/testing/private_root.h"

namespace {

struct Typed {
  const char* line;
  const char* word;  // that the last one becomes
};
constexpr Typed kTyped[] = {
    {"qlid rea",                        "read"              },
    {"qlid read --ki",                  "--kind"            },
    {"qlid read --kind perm",           "permit"            },
    {"qlid --lang z",                   "zh"                },
    {"qlid simulate --fault photo-r",   "photo-refused"     },
    {"qlid explain -13",                "-13"               },
    {"qlid simulate --person permit-f", "permit-full"       },
    {"qlid completion fi",              "fish"              },
    {"qlid res",                        "reset-baud"        },
    {"qlid reset-baud --ba",            "--baud"            },
    {"qlid doctor --print",             "--print-udev-rules"},
};

bool HaveShell(const std::string& shell) {
  return std::filesystem::exists("/usr/bin/" + shell) || std::filesystem::exists("/bin/" + shell);
}

#define NEEDS_SHELL(name) \
  if (!HaveShell(name)) GTEST_SKIP() << "this machine has no " << name

std::string RunScript(const std::string& shell, const std::string& script) {
  const std::string file = TemporaryFolder() + "/script";
  WriteWholeFile(file, script);
  return OutputOf(shell + " " + file + " 2>&1 </dev/null");
}

// The printed script, in a file of its own.
std::string ScriptFile(const std::string& shell) {
  const Output printed = RunQlid({"completion", shell});
  EXPECT_EQ(0, printed.exit) << printed.err;
  std::string file = TemporaryFolder() + "/completion." + shell;
  WriteWholeFile(file, printed.out);
  return file;
}

bool HasLine(const std::string& text, const std::string& line) {
  std::istringstream lines(text);
  for (std::string each; std::getline(lines, each);) {
    if (each == line) return true;
  }
  return false;
}

// What bash offers for the last word of the line.
std::string BashOffers(const std::string& source, const std::string& line) {
  return RunScript("bash --norc", source + "\nCOMP_WORDS=(" + line +
                                      ")\nCOMP_CWORD=$((${#COMP_WORDS[@]} - 1))\n_qlid\n"
                                      "printf '%s\\n' \"${COMPREPLY[@]}\"\n");
}

// A folder with a program "qlid" that prints the completion scripts, for the search path.
std::string FolderWithQlid() {
  std::string folder = TemporaryFolder();
  WriteWholeFile(folder + "/qlid", "#!/bin/sh\ncat " + folder + "/completion.$2\n");
  std::filesystem::permissions(folder + "/qlid", std::filesystem::perms::owner_all);
  return folder;
}

}  // namespace

TEST(QlidCompletion, CompletesInBash) {
  NEEDS_SHELL("bash");
  const std::string file = ScriptFile("bash");

  for (const Typed& typed : kTyped) {
    const std::string offers = BashOffers("source " + file, typed.line);
    EXPECT_TRUE(HasLine(offers, typed.word)) << typed.line << "\n" << offers;
  }
}

TEST(QlidCompletion, OffersFilesInBash) {
  NEEDS_SHELL("bash");
  const std::string file = ScriptFile("bash");
  const std::string card = TemporaryFolder() + "/card.bin";
  WriteWholeFile(card, "x");

  // compopt works in a completion alone.
  const std::string offers = BashOffers("compopt() { :; }\nsource " + file,
                                        "qlid decode " + card.substr(0, card.size() - 2));

  EXPECT_EQ(card + "\n", offers);
}

TEST(QlidCompletion, CompletesInFish) {
  NEEDS_SHELL("fish");
  const std::string file = ScriptFile("fish");
  setenv("HOME", TemporaryFolder().c_str(), 1);

  for (const Typed& typed : kTyped) {
    const std::string offers =
        RunScript("fish --no-config", "source " + file + "\ncomplete -C '" + typed.line + "'\n");
    EXPECT_TRUE(HasLine(offers.substr(0, offers.find('\t')), typed.word)) << typed.line << "\n"
                                                                          << offers;
  }
}

TEST(QlidCompletion, CompletesInZsh) {
  NEEDS_SHELL("zsh");
  const std::string file = ScriptFile("zsh");
  // A shell on a terminal of its own: Tab completes, and a second key tells what stands there.
  std::string script =
      "zmodload zsh/zpty\n"
      "zpty inner 'TERM=dumb zsh -f -i'\n"
      "say() { zpty -w inner \"$1\"; }\n"
      "wait_for() { zpty -r -m inner found \"*$1*\"; print -r -- \"${found//$'\\r'/}\"; }\n"
      "say 'PS1=; unsetopt zle_bracketed_paste; autoload -Uz compinit; compinit -u -D; source " +
      file +
      "; tell() { print; print -r -- \"<$BUFFER>\"; BUFFER= }; zle -N tell; bindkey \"^X\" tell; "
      "print rea''dy'\n"
      "wait_for ready\n";
  for (const Typed& typed : kTyped)
    script += std::string("zpty -w -n inner $'") + typed.line + "\\t\\x18'\nwait_for '<*>'\n";
  script += "zpty -d inner\n";

  const std::string screen = RunScript("timeout 60 zsh -f", script);

  for (const Typed& typed : kTyped) {
    const std::string line = typed.line;
    const std::string completed = line.substr(0, line.rfind(' ') + 1) + typed.word;
    EXPECT_TRUE(Contains(screen, "<" + completed + ">") || Contains(screen, "<" + completed + " >"))
        << line << "\n"
        << screen;
  }
}

TEST(QlidCompletion, InstalledScriptsAskTheProgram) {
  NEEDS_SHELL("bash");
  ScriptFile("bash");
  ScriptFile("fish");
  const std::string path = "PATH=" + FolderWithQlid() + ":$PATH\n";

  const std::string bash = BashOffers(path + "source " SHELL_SCRIPTS "/qlid.bash", "qlid rea");

  EXPECT_TRUE(HasLine(bash, "read")) << bash;
  NEEDS_SHELL("fish");
  setenv("HOME", TemporaryFolder().c_str(), 1);
  const std::string fish =
      RunScript("fish --no-config", "set PATH " + FolderWithQlid() +
                                        " $PATH\nsource " SHELL_SCRIPTS
                                        "/qlid.fish\ncomplete -C 'qlid rea'\n");
  EXPECT_TRUE(Contains(fish, "read\t")) << fish;
}

TEST(QlidCompletion, PrintsABashScriptWithoutPitfalls) {
  NEEDS_SHELL("shellcheck");

  const std::string remarks =
      OutputOf("shellcheck -s bash " + ScriptFile("bash") + " " SHELL_SCRIPTS "/qlid.bash 2>&1");

  EXPECT_EQ("", remarks);
}

TEST(QlidCompletion, RefusesAnUnknownShell) { EXPECT_EQ(2, RunQlid({"completion", "sh"}).exit); }
