// A file becomes a drawing; without one a fabric is generated, and drawn or written.
#include "cli/fabrics/fabric_command.h"

#include "lab/fabric_dot.h"
#include "lab/files/fabric_file.h"

namespace ribkit::cli {

namespace {

std::string wanted_text(const fabric_command_options &options) {
    if (!options.fabric_file.empty()) {
        return lab::fabric_dot(lab::read_fabric_file(options.fabric_file));
    }
    const std::string generated = lab::generate_fabric(options.plan);
    return options.dot ? lab::fabric_dot(lab::parse_fabric(generated, "generated")) : generated;
}

} // namespace

int run_fabric(const fabric_command_options &options) {
    const std::string text = wanted_text(options);
    command_output out(options.output, {options.fabric_file});
    out.print(text);
    out.finish();
    return 0;
}

} // namespace ribkit::cli
