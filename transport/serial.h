// What the terminal auxiliary port shares with the serial port beyond the exported functions. The
// state stands at the top of serial.cc.
#ifndef QUILLONID_TRANSPORT_SERIAL_H
#define QUILLONID_TRANSPORT_SERIAL_H

inline constexpr int kNoPort = -2;

// The open descriptor, or kNoPort.
int SerialDescriptor();

#endif
