// Chinese for English that other people's code, or a part of ours that knows one language, makes.
#ifndef QUILLONID_TOOLS_QLID_PHRASES_H
#define QUILLONID_TOOLS_QLID_PHRASES_H

#include <span>
#include <string>

namespace qlid {

struct Phrase {
  const char* english;  // a regular expression for the whole text
  const char* chinese;  // with $1, $2 for what stands in its parentheses
};

// The text in the chosen language; as it stands when no phrase fits.
std::string Rephrased(const std::string& english, std::span<const Phrase> phrases);

}  // namespace qlid

#endif
