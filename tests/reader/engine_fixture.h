// An opened scripted reader, for tests of single commands.
#ifndef QUILLONID_TESTS_READER_ENGINE_FIXTURE_H
#define QUILLONID_TESTS_READER_ENGINE_FIXTURE_H

#include <gtest/gtest.h>

#include "quillonid/link.h"
#include "quillonid/reader.h"
#include "quillonid/results.h"
#include "tests/reader/log_area.h"
#include "tests/reader/scripted_reader.h"
#include "tests/testing/hex_text.h"
#include "tests/testing/private_root.h"
#include "tests/testing/stand_in_clock.h"

using Lines = std::vector<std::string>;

class Engine : public testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(0, tFuncOpenDevice(reader.Path().c_str(), "", 9600, 0, 10)); }
  void TearDown() override { tFuncCloseDevice(); }

  // Calls GetIDCardInfo with the fixture's buffers.
  int Get(int seconds, int finger = 0) { return GetIDCardInfo(seconds, finger, data, &length); }

  // What the last read gave.
  std::string Data() const { return HexText(data, static_cast<std::size_t>(length)); }

  // Seconds that answers were given, as the link logged them.
  static Lines ReadTimesSet() {
    const std::string opening = "COMM_Zel_ChageReadTimeOut Start  nTimeOut = ";
    Lines seconds;
    for (const std::string& line : LinesOf("Comm:")) {
      if (line.rfind(opening, 0) == 0) {
        seconds.push_back(line.substr(opening.size(), line.size() - opening.size() - 1));
      }
    }
    return seconds;
  }

  ScriptedReader reader;
  unsigned char data[4096] = {};
  int length = -1;
};

#endif
