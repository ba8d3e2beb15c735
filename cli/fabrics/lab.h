// The lab: a fabric in one process. The route clients of the local switch keep the RIB up to date over the
// message bus while links go down and come up.
#pragma once

#include "cli/fabrics/run_options.h"

namespace ribkit::cli {

struct lab_options : run_options {
    std::string tables{"auto"}; ///< as table_choice
    bool check = false;         ///< only whether all that is given is sound
    bool memory = false;        ///< display what the RIB's tables are made of, at the end
};

/// Runs the lab and prints. @return the command's exit code: 0, or 1 where the RIB refused something or a
/// signal stopped the run. Throws an
/// input_error, with nothing printed, where the options or a file are wrong.
int run_lab(const lab_options &options);

} // namespace ribkit::cli
