#pragma once

// Whether a word broken by a hyphen at a line's end is one word or a compound that keeps its
// hyphen, as the system's spelling dictionary tells.

#include <string>

namespace velmora {

// True when "first-" ending a line and "second" starting the next are a compound that keeps
// its hyphen ("long-stay"), false when they are one word broken in two ("corpo-ration"): the
// joined word is no word of the dictionary while both parts are. Without a dictionary every
// such break is undone, as typesetters break words far more often than compounds.
bool KeepsLineEndHyphen(const std::string& first, const std::string& second);

}  // namespace velmora
