// Pictures in pixels on terminals that draw sixel graphics.
#ifndef QUILLONID_TOOLS_QLID_SIXEL_H
#define QUILLONID_TOOLS_QLID_SIXEL_H

#include <string>

#include "tools/qlid/picture.h"

namespace qlid {

// Asks the terminal on standard output what it is (primary device attributes, ECMA-48 DA) and says
// whether sixel graphics are among its answer's attributes. False without a terminal, when it does
// not answer at once, and in a build without the sixel library.
bool TerminalDrawsSixel();

// The picture as a sixel text; empty when that fails.
std::string SixelText(const Picture& picture);

// Whether standard output is a terminal with colour for a picture that is asked for.
bool PictureCanBeShown();

// The picture on standard output, in pixels or else in half blocks.
void ShowPicture(const Picture& picture);

}  // namespace qlid

#endif
