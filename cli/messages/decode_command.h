// The decode command: messages of a file of network bytes, field by field.
#pragma once

#include "cli/command_output.h"
#include "cli/messages/network_bytes.h"

#include <string>

namespace ribkit::cli {

struct decode_options {
    std::string message; ///< its kind, with or without "rib_" or "fib_"
    std::string file = "-";
    byte_form form = byte_form::detected;
    std::string carries; ///< what an envelope carries; empty: its operation code tells
    bool list = false;   ///< only a line for each kind
    bool guess = false;  ///< only which checks accept the bytes
    bool offsets = false;
    bool lines = false; ///< of JSON, instead of an array
    output_options output;
};

int run_decode(const decode_options &options);

} // namespace ribkit::cli
