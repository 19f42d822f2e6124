#include "simulator/line_speed.h"

namespace simulator {
namespace {

struct SpeedCode {
  speed_t code;
  int speed;
};
constexpr SpeedCode kSpeedCodes[] = {
    {B300,    300   },
    {B1200,   1200  },
    {B2400,   2400  },
    {B4800,   4800  },
    {B9600,   9600  },
    {B19200,  19200 },
    {B38400,  38400 },
    {B57600,  57600 },
    {B115200, 115200},
    {B230400, 230400},
};

}  // namespace

int BitsPerSecond(const termios& settings) {
  for (const SpeedCode& row : kSpeedCodes) {
    if (row.code == cfgetospeed(&settings)) return row.speed;
  }
  return 0;
}

}  // namespace simulator
