// The show command: records of a display from a file of network bytes, each checked before it is shown.
#pragma once

#include "cli/command_output.h"
#include "cli/messages/displays.h"
#include "cli/messages/network_bytes.h"

#include <string>

namespace ribkit::cli {

struct show_options {
    std::string kind; ///< a display, by either name
    std::string file = "-";
    byte_form form = byte_form::detected;
    bool list = false; ///< only a line for each display
    output_options output;
};

/// Shows the records that `bytes` are. Throws input_error at the first one that its check refuses, once those before it
/// are shown; its line begins with `title`.
void show_records(const display &kind, std::span<const uint8_t> bytes, const std::string &title);

int run_show(const show_options &options);

} // namespace ribkit::cli
