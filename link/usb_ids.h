// The USB readers that are known by their ids, in the order in which they are tried. The one place
// that names them: the udev rule is generated from this table (cmake/udev.cmake), so every row
// stays on a line of its own.
#ifndef QUILLONID_LINK_USB_IDS_H
#define QUILLONID_LINK_USB_IDS_H

#include <cstdint>

struct UsbId {
  std::uint16_t product;
  std::uint16_t vendor;
};

inline constexpr UsbId kKnownReaders[] = {
    {0xBCD5, 0x0403},
    {0xBCD7, 0x0403},
    {0xBC95, 0x0403},
    {0xBE11, 0x2B46},
    {0xBE01, 0x2B46},
    {0xBC01, 0x2B46},
};

#endif
