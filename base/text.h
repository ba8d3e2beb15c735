// Text put together from pieces of any kind.
#pragma once

#include <ios>
#include <sstream>
#include <string>

namespace ribkit::base {

/// Everything given, one after the other, as text.
template <typename... Pieces> std::string joined(const Pieces &...pieces) {
    std::ostringstream stream;
    stream.exceptions(std::ios::badbit); // or it would leave out what it has no memory for
    (stream << ... << pieces);
    return stream.str();
}

} // namespace ribkit::base
