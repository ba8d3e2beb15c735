// What is wrong with something that the user gave us, and where: printed as one line, after which the command exits 2.
#pragma once

#include "base/printable.h"

#include <cstdint>
#include <stdexcept>
#include <string>

namespace ribkit::base {

/// A mistake on a line of a file whose name is not known here.
struct line_error : std::runtime_error {
    line_error(uint32_t at, const std::string &what) : std::runtime_error(one_line(what)), line(at) {}
    uint32_t line;
};

/// A mistake ready to be printed, "FILE:LINE: what" or whatever names its place.
struct input_error : std::runtime_error {
    explicit input_error(const std::string &what) : std::runtime_error(one_line(what)) {}
};

} // namespace ribkit::base
