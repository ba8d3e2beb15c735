// Routes that an operator sends by hand, as the static client.
#pragma once

#include "cli/command_output.h"
#include "cli/fabrics/bus_options.h"
#include "cli/rib/route_request.h"

#include <array>
#include <functional>
#include <string>

namespace ribkit::cli {

/// What can be done to routes.
inline constexpr std::array<const char *, 4> route_actions{"add", "del", "get", "load"};

struct route_command_options {
    bus_options bus;
    route_words words;
    output_options output;
    bool envelopes = false;
    /// What a line of a file says. Throws an input_error.
    std::function<route_words(const std::string &line)> read_line;
};

/// Adds, deletes, looks for or loads routes. @return the command's exit code: 1 where the RIB refused something, or has
/// no such route. Throws an input_error where the words are wrong; then nothing was sent.
int run_route(const route_command_options &options);

} // namespace ribkit::cli
