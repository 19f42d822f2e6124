// Speeds of a serial line as termios codes them.
#ifndef QUILLONID_SIMULATOR_LINE_SPEED_H
#define QUILLONID_SIMULATOR_LINE_SPEED_H

#include <termios.h>

namespace simulator {

// The line's speed towards the device, bit/s; 0 for one that no reader link has.
int BitsPerSecond(const termios& settings);

}  // namespace simulator

#endif
