#include "tools/qlid/sixel.h"

#include <unistd.h>

#include <cstdio>

#include "tools/qlid/terminal.h"

#ifdef QLID_SIXEL

#include <fcntl.h>
#include <poll.h>
#include <sixel.h>
#include <termios.h>

#include <chrono>
#include <memory>
#include <sstream>
#include <string_view>

#include "tools/qlid/signals.h"

namespace qlid {
namespace {

constexpr std::string_view kQuestion = "\x1b[c";
constexpr std::string_view kAnswerStart = "\x1b[?";
constexpr std::string_view kSixelAttribute = "4";
constexpr auto kAnswerTime = std::chrono::milliseconds(500);
constexpr int kColors = 256;

// The terminal's answer so far ends in one of the form ESC [ ? numbers c.
bool IsAnswered(const std::string& heard) {
  const std::size_t start = heard.find(kAnswerStart);
  return start != std::string::npos && heard.find('c', start) != std::string::npos;
}

// Sends the question and takes what comes back, with the terminal neither echoing nor waiting for
// the end of a line.
std::string Ask(int terminal) {
  const SignalsPutOff until_settings_are_back;
  termios before = {};
  if (tcgetattr(terminal, &before) != 0) return "";
  termios silent = before;
  silent.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);
  silent.c_cc[VMIN] = 0;
  silent.c_cc[VTIME] = 0;
  if (tcsetattr(terminal, TCSANOW, &silent) != 0) return "";
  std::string heard;
  if (write(terminal, kQuestion.data(), kQuestion.size()) ==
      static_cast<ssize_t>(kQuestion.size())) {
    const auto end = std::chrono::steady_clock::now() + kAnswerTime;
    while (!IsAnswered(heard) && std::chrono::steady_clock::now() < end) {
      pollfd waiting = {terminal, POLLIN, 0};
      char piece[64];
      if (poll(&waiting, 1, 50) <= 0) continue;
      const ssize_t got = read(terminal, piece, sizeof piece);
      if (got <= 0) break;
      heard.append(piece, static_cast<std::size_t>(got));
    }
  }
  tcsetattr(terminal, TCSANOW, &before);
  return heard;
}

bool HasAttribute(const std::string& answer, std::string_view wanted) {
  const std::size_t start = answer.find(kAnswerStart) + kAnswerStart.size();
  std::istringstream attributes(answer.substr(start, answer.find('c', start) - start));
  for (std::string attribute; std::getline(attributes, attribute, ';');) {
    if (attribute == wanted) return true;
  }
  return false;
}

int Append(char* data, int size, void* text) {
  static_cast<std::string*>(text)->append(data, static_cast<std::size_t>(size));
  return size;
}

template <auto kUnref>
struct Unref {
  template <typename Object>
  void operator()(Object* object) const {
    kUnref(object);
  }
};

}  // namespace

bool TerminalDrawsSixel() {
  if (!IsTerminal(STDOUT_FILENO)) return false;
  const int terminal = open("/dev/tty", O_RDWR | O_NOCTTY | O_CLOEXEC);
  if (terminal < 0) return false;
  // A program in the background would be stopped at the first change of the settings.
  const std::string answer = tcgetpgrp(terminal) == getpgrp() ? Ask(terminal) : "";
  close(terminal);
  return IsAnswered(answer) && HasAttribute(answer, kSixelAttribute);
}

std::string SixelText(const Picture& picture) {
  std::string text;
  sixel_output_t* output = nullptr;
  if (SIXEL_FAILED(sixel_output_new(&output, Append, &text, nullptr))) return "";
  const std::unique_ptr<sixel_output_t, Unref<sixel_output_unref>> output_guard(output);
  sixel_dither_t* dither = nullptr;
  if (SIXEL_FAILED(sixel_dither_new(&dither, kColors, nullptr))) return "";
  const std::unique_ptr<sixel_dither_t, Unref<sixel_dither_unref>> dither_guard(dither);
  std::vector<std::uint8_t> pixels = picture.rgb;  // The library takes them as its own to change.
  if (SIXEL_FAILED(sixel_dither_initialize(dither, pixels.data(), picture.width, picture.height,
                                           SIXEL_PIXELFORMAT_RGB888, SIXEL_LARGE_AUTO,
                                           SIXEL_REP_AUTO, SIXEL_QUALITY_AUTO)) ||
      SIXEL_FAILED(sixel_encode(pixels.data(), picture.width, picture.height, 3, dither, output))) {
    return "";
  }
  return text + "\n";
}

}  // namespace qlid

#else

namespace qlid {

bool TerminalDrawsSixel() { return false; }
std::string SixelText(const Picture&) { return ""; }

}  // namespace qlid

#endif

namespace qlid {

bool PictureCanBeShown() {
  return IsTerminal(STDOUT_FILENO) && ColorWanted(STDOUT_FILENO) &&
         (EncodingIsUtf8() || TerminalDrawsSixel());
}

void ShowPicture(const Picture& picture) {
  constexpr int kPictureColumns = 40;
  std::string text = TerminalDrawsSixel() ? SixelText(picture) : "";
  if (text.empty()) text = HalfBlocks(picture, kPictureColumns);
  std::printf("%s", text.c_str());
}

}  // namespace qlid
