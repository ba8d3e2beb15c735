// The encode command: JSON, as the decode command prints it, to network bytes.
#pragma once

#include "cli/command_output.h"

#include <string>

namespace ribkit::cli {

struct encode_options {
    std::string file = "-";
    bool hex = false;         ///< hexadecimal text, instead of the bytes themselves
    std::string template_for; ///< only JSON to start from, for this message
    output_options output;
};

int run_encode(const encode_options &options);

} // namespace ribkit::cli
