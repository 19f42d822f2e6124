// A C99 program that knows the public headers and the library alone.
#include <gtest/gtest.h>

#include "simulator/tty_reader.h"
#include "tests/testing/program.h"

namespace {

using simulator::MakeCard;
using simulator::TtyReader;

TEST(CProgram, ReadsACard) {
  TtyReader reader;
  reader.PutCard(MakeCard("resident-rare"));
  int status = -1;

  const std::string output = OutputOf(QL_READ_CARD " " + reader.path(), &status);

  // The character outside the basic plane comes as its two units, each in UTF-8 of its own.
  const std::string blanks(8, ' ');
  EXPECT_EQ("0|样本㐂䶮龦\xED\xA1\x82\xED\xBE\xB7" + blanks + "|男|基诺|99999919610707003X\n",
            output);
  EXPECT_EQ(0, status);
}

TEST(CProgram, NamesTheFailureInItsOwnWords) {
  TtyReader reader;
  reader.PutCard(MakeCard("resident"));
  reader.SetFault(*simulator::ParseFault("select-no-card"));
  int status = -1;

  const std::string output = OutputOf(QL_READ_CARD " " + reader.path(), &status);

  // 未找到卡片, GBK
  EXPECT_EQ("-10||||\n\xCE\xB4\xD5\xD2\xB5\xBD\xBF\xA8\xC6\xAC\n", output);
  EXPECT_NE(0, status);
}

}  // namespace
