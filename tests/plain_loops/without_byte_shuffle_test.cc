#include <gtest/gtest.h>

#include "support/byte_shuffle.h"

// Takes the library's place in this program.
bool HasByteShuffle() { return false; }

TEST(HasByteShuffle, IsFalseInThisProgram) { EXPECT_FALSE(HasByteShuffle()); }
