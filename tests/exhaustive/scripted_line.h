// A reader's line inside the test process: what the library writes to the tty is answered at once,
// what it reads comes from the answers. Without a thread and with the library's time skipped
// wherever it would wait, a read that runs into its time limit takes less than a millisecond.
#ifndef QUILLONID_TESTS_EXHAUSTIVE_SCRIPTED_LINE_H
#define QUILLONID_TESTS_EXHAUSTIVE_SCRIPTED_LINE_H

#include <string>

namespace scripted_line {

// Opens a tty whose reads and writes by the library are the script's from now on; its path.
std::string Open();

// A card lies on the reader, and every read command is answered with `reply`. What was answered and
// not read yet is gone.
void HoldCard(const std::string& reply);

// Read commands that came since HoldCard().
int ReadCommands();

}  // namespace scripted_line

#endif
