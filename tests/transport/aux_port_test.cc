// Terminal auxiliary port: the test plays the terminal that a program's standard output is.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <string>
#include <string_view>

#include "quillonid/results.h"
#include "quillonid/transport.h"
#include "support/handles.h"
#include "tests/testing/held.h"
#include "tests/testing/hex_text.h"
#include "tests/testing/private_root.h"
#include "tests/testing/pty.h"
#include "tests/transport/terminal_child.h"

#define ESC "\x1B"

namespace {

int WriteAux(std::string_view text) {
  return COMM_Com_WriteLinuxAux(reinterpret_cast<const unsigned char*>(text.data()),
                                static_cast<int>(text.size()));
}

// What one call of COMM_Com_OpenAuxPort sends; COMM_Com_OpenLinux made the port raw before.
std::string Opening(std::uint32_t family, std::uint32_t aux_number, std::uint32_t baud,
                    std::uint32_t mode_flag = 0) {
  const Pty terminal;
  EXPECT_EQ(0, COMM_Com_OpenLinux(terminal.path().c_str(), 9600));
  EXPECT_EQ(0, COMM_Com_OpenAuxPort(family, aux_number, baud, mode_flag));
  COMM_Com_CloseLinux();
  return terminal.ReceiveRest();
}

// The parts of families 1, 4 and unknown ones that are always the same.
constexpr char kOpeningEnd[] = ESC "[/54l" ESC "[/53h" ESC "[/50h";

}  // namespace

namespace {

struct RateCase {
  std::uint32_t baud;
  const char* baud_code;
  const char* data_code;
};
void PrintTo(const RateCase& tested, std::ostream* out) { *out << tested.baud << " bit/s"; }
class AuxRate : public testing::TestWithParam<RateCase> {};

}  // namespace

TEST_P(AuxRate, SendsItsCodes) {
  const std::string letter_family =
      std::string(ESC "!") + GetParam().baud_code + ";0;0;0Y" + kOpeningEnd;

  EXPECT_EQ(HexText(letter_family), HexText(Opening(1, 1, GetParam().baud)));
  EXPECT_EQ(HexText(letter_family), HexText(Opening(4, 1, GetParam().baud)));
  EXPECT_EQ(HexText(std::string(ESC "[/1;1;") + GetParam().data_code + ";3;1;0M"),
            HexText(Opening(3, 1, GetParam().baud)));
  // The other families do not send the rate.
  EXPECT_EQ(HexText(std::string(ESC "[0>")), HexText(Opening(2, 1, GetParam().baud)));
  EXPECT_EQ(HexText(std::string(ESC "!45;1m" ESC "!b")), HexText(Opening(5, 1, GetParam().baud)));
}

INSTANTIATE_TEST_SUITE_P(Rates, AuxRate,
                         testing::Values(RateCase{9600, "0", "8"}, RateCase{4800, "1", "7"},
                                         RateCase{2400, "2", "6"}, RateCase{1200, "3", "5"},
                                         RateCase{600, "5", "4"}, RateCase{300, "6", "3"},
                                         RateCase{19200, "10", "9"}, RateCase{38400, "11", "8"},
                                         RateCase{115200, "12", "8"}, RateCase{230400, "8", "9600"},
                                         // Not listed.
                                         RateCase{57600, "0", "8"}, RateCase{14400, "0", "8"},
                                         RateCase{0, "0", "8"}, RateCase{0xFFFFFFFF, "0", "8"}));

namespace {

struct NumberCase {
  std::uint32_t number;
  const char* letter;      // families 1 and 4
  const char* zero_based;  // family 2
  const char* port;        // family 3
  const char* code;        // family 5
};
void PrintTo(const NumberCase& tested, std::ostream* out) { *out << "port " << tested.number; }
class AuxNumber : public testing::TestWithParam<NumberCase> {};

}  // namespace

TEST_P(AuxNumber, IsNamedAsTheFamilyDoes) {
  const NumberCase& tested = GetParam();
  const auto letters = std::string(ESC "!10;0;0;0") + tested.letter + kOpeningEnd;

  for (const std::uint32_t family : {0u, 1u, 4u, 6u, 0xFFFFFFFFu}) {
    EXPECT_EQ(HexText(letters), HexText(Opening(family, tested.number, 19200))) << family;
  }
  EXPECT_EQ(HexText(std::string(ESC "[") + tested.zero_based + ">"),
            HexText(Opening(2, tested.number, 19200)));
  EXPECT_EQ(HexText(std::string(ESC "[/") + tested.port + ";1;9;3;1;0M"),
            HexText(Opening(3, tested.number, 19200)));
  EXPECT_EQ(HexText(std::string(ESC "!") + tested.code + ";1m" ESC "!b"),
            HexText(Opening(5, tested.number, 19200)));
}

INSTANTIATE_TEST_SUITE_P(
    Numbers, AuxNumber,
    testing::Values(NumberCase{1, "Y", "0", "1", "45"}, NumberCase{2, "Z", "1", "2", "54"},
                    NumberCase{3, "X", "2", "3", "60"}, NumberCase{4, "V", "3", "4", "45"},
                    NumberCase{5, "Y", "0", "1", "45"}, NumberCase{6, "Y", "0", "1", "45"},
                    NumberCase{0xFFFFFFFF, "Y", "0", "1", "45"}));

TEST(GetOpenAuxCmd, WritesTheSequenceWithItsZero) {
  char out[64];
  std::fill(std::begin(out), std::end(out), '#');
  const std::string expected = ESC "!12;0;0;0Z" ESC "[/54l" ESC "[/53h" ESC "[/50h";

  EXPECT_EQ(0, Star_GetOpenAuxCmd(2, 115200, out));

  EXPECT_EQ(HexText(expected), HexText(out, expected.size()));
  EXPECT_EQ('\0', out[expected.size()]);
  EXPECT_EQ('#', out[expected.size() + 1]);
}

TEST(GetOpenAuxCmd, RefusesANullBuffer) {
  EXPECT_EQ(RET_PUB_INVAL_PARAM, Star_GetOpenAuxCmd(1, 9600, nullptr));
}

TEST(OpenAuxPort, SendsTheModeFirst) {
  EXPECT_EQ(HexText(std::string(ESC "[2h" ESC "[1>")), HexText(Opening(2, 2, 9600, 1)));
  EXPECT_EQ(HexText(std::string(ESC "[2h" ESC "[1>")), HexText(Opening(2, 2, 9600, 0x80000000)));
}

TEST(OpenAuxPort, RefusesNumberZeroAndSendsNothing) {
  const Pty terminal;
  ASSERT_EQ(0, COMM_Com_OpenLinux(terminal.path().c_str(), 9600));

  EXPECT_EQ(RET_PUB_INVAL_PARAM, COMM_Com_OpenAuxPort(1, 0, 9600, 1));

  COMM_Com_CloseLinux();
  EXPECT_EQ("", HexText(terminal.ReceiveRest()));
}

// Nothing is checked: without a port the sequences simply go nowhere.
TEST(OpenAuxPort, SucceedsWithoutAPort) {
  EXPECT_EQ(0, COMM_Com_OpenAuxPort(1, 1, 9600, 1));
  EXPECT_EQ(0, COMM_Com_CloseAuxPort(1));
}

TEST(OpenAuxPort, LogsItsSteps) {
  NEEDS_PRIVATE_ROOT();
  const Pty terminal;
  ASSERT_EQ(0, COMM_Com_OpenLinux(terminal.path().c_str(), 9600));
  const std::string fd = std::to_string(DescriptorsOn(terminal.path()).at(0));
  SwitchLogging(true);

  EXPECT_EQ(0, COMM_Com_OpenAuxPort(1, 1, 9600, 0));
  EXPECT_EQ(RET_PUB_INVAL_PARAM, COMM_Com_OpenAuxPort(1, 0, 9600, 0));
  EXPECT_EQ(0, COMM_Com_CloseAuxPort(0));

  const std::vector<std::string> expected = {
      "  TIME  INFO:    CommDev:  [COMM_Com_OpenAuxPort ] Start ",
      "  TIME  INFO:    CommDev:   g_AuxFd = " + fd + " ",
      "  TIME  INFO:    CommDev:  [COMM_Com_OpenAuxPort ] Start ",
      "  TIME  INFO:    CommDev:  [COMM_Com_CloseAuxPort ] Start ",
      "  TIME  INFO:    CommDev:   g_AuxFd = " + fd + " ",
  };
  EXPECT_EQ(expected, LogLines());
}

TEST(OpenAuxPort, LogsALineForTheMode) {
  NEEDS_PRIVATE_ROOT();
  SwitchLogging(true);
  ASSERT_EQ(0, COMM_Com_OpenAuxPort(1, 1, 9600, 1));
  EXPECT_EQ(3u, LogLines().size());

  SwitchLogging(true);
  ASSERT_EQ(0, COMM_Com_CloseAuxPort(1));
  EXPECT_EQ(3u, LogLines().size());
}

TEST(WriteLinuxAux, SendsDataAloneBeforeAnyOpening) {
  const Pty terminal;
  ASSERT_EQ(0, COMM_Com_OpenLinux(terminal.path().c_str(), 9600));

  EXPECT_EQ(3, WriteAux("abc"));

  COMM_Com_CloseLinux();
  EXPECT_EQ("abc", terminal.ReceiveRest());
}

TEST(WriteLinuxAux, RefusesMissingDataAndSendsNothing) {
  const Pty terminal;
  const unsigned char byte = 'x';
  ASSERT_EQ(0, COMM_Com_OpenLinux(terminal.path().c_str(), 9600));
  ASSERT_EQ(0, COMM_Com_OpenAuxPort(3, 1, 9600, 0));
  const std::string opening = ESC "[/1;1;8;3;1;0M";
  ASSERT_EQ(opening, terminal.Receive(opening.size()));

  EXPECT_EQ(RET_PUB_INVAL_PARAM, COMM_Com_WriteLinuxAux(nullptr, 1));
  EXPECT_EQ(RET_PUB_INVAL_PARAM, COMM_Com_WriteLinuxAux(&byte, 0));
  EXPECT_EQ(RET_PUB_INVAL_PARAM, COMM_Com_WriteLinuxAux(&byte, -1));

  COMM_Com_CloseLinux();
  EXPECT_EQ("", HexText(terminal.ReceiveRest()));
}

TEST(WriteLinuxAux, RefusesWithoutAPort) { EXPECT_EQ(RET_PUB_INVAL_PARAM, WriteAux("abc")); }

// An opening replaces what the one before left.
TEST(WriteLinuxAux, WrapsAsTheLastOpeningSays) {
  const Pty terminal;
  ASSERT_EQ(0, COMM_Com_OpenLinux(terminal.path().c_str(), 9600));
  ASSERT_EQ(0, COMM_Com_OpenAuxPort(3, 1, 9600, 0));
  ASSERT_EQ(0, COMM_Com_OpenAuxPort(2, 1, 9600, 0));

  EXPECT_EQ(3, WriteAux("abc"));

  COMM_Com_CloseLinux();
  EXPECT_EQ(HexText(std::string(ESC "[/1;1;8;3;1;0M" ESC "[0>abc")),
            HexText(terminal.ReceiveRest()));
}

TEST(CloseLinuxAux, SendsNothingWithoutAPort) {
  NEEDS_PRIVATE_ROOT();
  SwitchLogging(true);

  EXPECT_EQ(0, COMM_Com_CloseLinuxAux(1));

  EXPECT_TRUE(LogLines().empty());
}

TEST(CloseAuxPort, ClosesAsFamilyOneBeforeAnyOpening) {
  const Pty terminal;
  ASSERT_EQ(0, COMM_Com_OpenLinux(terminal.path().c_str(), 9600));

  EXPECT_EQ(0, COMM_Com_CloseAuxPort(0));

  COMM_Com_CloseLinux();
  EXPECT_EQ(HexText(std::string(ESC "[/51l" ESC "[/50l")), HexText(terminal.ReceiveRest()));
}

namespace {

struct SessionCase {
  std::uint32_t family, number, baud, mode;
  const char* opening;
  const char* prefix;
  const char* suffix;
  const char* closing;
};
void PrintTo(const SessionCase& tested, std::ostream* out) {
  *out << "family " << tested.family << " port " << tested.number;
}
class AuxSession : public testing::TestWithParam<SessionCase> {};

}  // namespace

TEST_P(AuxSession, OpensWrapsReadsAndCloses) {
  const SessionCase& tested = GetParam();
  const Pty terminal;
  const termios found = terminal.Settings();
  const std::string mode_on = tested.mode ? ESC "[2h" : "", mode_off = tested.mode ? ESC "[2l" : "";

  Child program = ChildOn(terminal, [&] {
    std::string results;
    unsigned char reply[6] = {};
    const auto note = [&](int result) { results += std::to_string(result) + " "; };
    note(COMM_Com_OpenLinuxAux(tested.family, tested.number, tested.baud, tested.mode));
    note(WriteAux(std::string_view("\x02\x00\xFF", 3)));
    note(COMM_Com_ReadLinuxAux(reply, sizeof reply, 60, nullptr));
    note(WriteAux("second"));
    note(COMM_Com_CloseLinuxAux(tested.mode));
    note(COMM_Com_CloseLinuxAux(tested.mode));
    return results + HexText(reply);
  });

  // The session up to the read, then the reader's bytes, then the rest.
  const std::string before =
      mode_on + tested.opening + tested.prefix + std::string("\x02\x00\xFF", 3) + tested.suffix;
  EXPECT_EQ(HexText(before), HexText(terminal.Receive(before.size())));
  terminal.Send(std::string_view("\x00\x0D\x11\x1B\x7F\xFF", 6));
  EXPECT_EQ(
      HexText(std::string(tested.prefix) + "second" + tested.suffix + tested.closing + mode_off),
      HexText(terminal.ReceiveRest()));
  EXPECT_EQ("0 3 6 6 0 0 00 0D 11 1B 7F FF", program.Output());

  const termios left = terminal.Settings();
  EXPECT_EQ(HexText(&found, sizeof found), HexText(&left, sizeof left));
}

INSTANTIATE_TEST_SUITE_P(
    Families, AuxSession,
    testing::Values(
        SessionCase{1, 2, 115200, 0, ESC "!12;0;0;0Z" ESC "[/54l" ESC "[/53h" ESC "[/50h",
                    ESC "[/51h", ESC "[/51l", ESC "[/51l" ESC "[/50l"},
        SessionCase{1, 1, 9600, 1, ESC "!0;0;0;0Y" ESC "[/54l" ESC "[/53h" ESC "[/50h", ESC "[/51h",
                    ESC "[/51l", ESC "[/51l" ESC "[/50l"},
        SessionCase{2, 6, 9600, 0, ESC "[0>", "", "", ESC "[<"},
        SessionCase{2, 3, 9600, 1, ESC "[2>", "", "", ESC "[<"},
        SessionCase{3, 2, 19200, 0, ESC "[/2;1;9;3;1;0M", ESC "[/|", "|", ESC "[/M"},
        SessionCase{3, 4, 230400, 1, ESC "[/4;1;9600;3;1;0M", ESC "[/|", "|", ESC "[/M"},
        SessionCase{4, 4, 300, 0, ESC "!6;0;0;0V" ESC "[/54l" ESC "[/53h" ESC "[/50h", ESC "[/51h",
                    ESC "[/51l", ESC "[/51l" ESC "[/50l"},
        SessionCase{5, 2, 9600, 0, ESC "!54;1m" ESC "!b", "", "", ESC "!P"},
        SessionCase{5, 3, 9600, 1, ESC "!60;1m" ESC "!b", "", "", ESC "!P"},
        SessionCase{0, 3, 600, 0, ESC "!5;0;0;0X" ESC "[/54l" ESC "[/53h" ESC "[/50h", ESC "[/51h",
                    ESC "[/51l", ESC "[/51l" ESC "[/50l"},
        SessionCase{99, 1, 4800, 1, ESC "!1;0;0;0Y" ESC "[/54l" ESC "[/53h" ESC "[/50h",
                    ESC "[/51h", ESC "[/51l", ESC "[/51l" ESC "[/50l"}));

TEST(OpenLinuxAux, SetsTheLineToTheRate) {
  const Pty terminal;
  Child program = ChildOn(terminal, [&] {
    unsigned char any = 0;
    const int opened = COMM_Com_OpenLinuxAux(2, 1, 38400, 0);
    COMM_Com_ReadLinuxAux(&any, 1, 60, nullptr);
    return std::to_string(opened);
  });
  ASSERT_EQ(HexText(std::string(ESC "[0>")), HexText(terminal.Receive(4)));

  const termios during = terminal.Settings();

  terminal.Send("x");
  EXPECT_EQ("0", program.Output());
  EXPECT_EQ(speed_t{B38400}, cfgetospeed(&during));
  EXPECT_EQ(0u, during.c_lflag & (ICANON | ECHO | ISIG));
  EXPECT_EQ(0u, during.c_oflag);
}

TEST(OpenLinuxAux, RefusesNumberZeroAndClosesAgain) {
  const Pty terminal;
  const termios found = terminal.Settings();

  Child program = ChildOn(terminal, [&] {
    const std::ptrdiff_t descriptors = OpenDescriptors();
    const int opened = COMM_Com_OpenLinuxAux(1, 0, 9600, 1);
    const bool leaked = OpenDescriptors() != descriptors;
    return std::to_string(opened) + " " + std::to_string(WriteAux("x")) + (leaked ? " leak" : "");
  });

  EXPECT_EQ("", HexText(terminal.ReceiveRest()));
  EXPECT_EQ("-1 -2", program.Output());
  const termios left = terminal.Settings();
  EXPECT_EQ(HexText(&found, sizeof found), HexText(&left, sizeof left));
}

TEST(OpenLinuxAux, RefusesAStandardOutputThatIsNoTerminal) {
  const Descriptor null_device(open("/dev/null", O_RDWR));
  const auto open_aux = [] { return std::to_string(COMM_Com_OpenLinuxAux(1, 1, 9600, 0)); };

  EXPECT_EQ("-3", Child(null_device.get(), open_aux).Output());
  EXPECT_EQ("-3", Child(-1, open_aux).Output());
}

TEST(OpenLinuxAux, ClosesAnOpenPortWhenThereIsNoTerminal) {
  const Pty line;
  const Descriptor null_device(open("/dev/null", O_RDWR));
  const auto open_both = [&] {
    COMM_Com_OpenLinux(line.path().c_str(), 9600);
    const int opened = COMM_Com_OpenLinuxAux(1, 1, 9600, 0);
    return std::to_string(opened) + " " + std::to_string(WriteAux("x"));
  };

  EXPECT_EQ("-3 -2", Child(null_device.get(), open_both).Output());
}

TEST(OpenLinuxAux, LogsItsSteps) {
  NEEDS_PRIVATE_ROOT();
  const Pty terminal;
  SwitchLogging(true);

  ChildOn(terminal, [] { return std::to_string(COMM_Com_OpenLinuxAux(2, 0, 300, 0)); }).Output();

  const std::string start = "  TIME  INFO:    CommDev:  ";
  const std::vector<std::string> expected = {
      start + "[COMM_Com_OpenLinuxAux ] Start ",
      start + "LinuxOpenPort szTtyName =" + terminal.path(),
      "",
      start + "[COMM_Com_OpenLinux ] Start ",
      start + " szTtyName = " + terminal.path() + " nBaud = 300  ",
      start + "open linux com success!",
      "",
      start + "[COMM_Com_OpenAuxPort ] Start ",
  };
  EXPECT_EQ(expected, LogLines());
}
