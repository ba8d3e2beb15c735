// The fabric command: fabrics as files and as drawings.
#pragma once

#include "cli/command_output.h"
#include "lab/generator/fabric_generator.h"

#include <string>

namespace ribkit::cli {

struct fabric_command_options {
    lab::fabric_plan plan;   ///< of the fabric that is generated
    bool dot = false;        ///< a drawing, not the file
    std::string fabric_file; ///< drawn in place of a generated one; empty: none
    output_options output;
};

/// Prints the fabric. @return the command's exit code. Throws an input_error where a file is wrong.
int run_fabric(const fabric_command_options &options);

} // namespace ribkit::cli
