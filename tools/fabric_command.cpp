// A file becomes a drawing; without one a fabric is generated, and drawn or written.
#include "tools/fabric_command.h"

#include "tools/fabric_dot.h"
#include "tools/fabric_file.h"

namespace ribkit::tools {

namespace {

std::string wanted_text(const fabric_command_options &options) {
    if (!options.fabric_file.empty()) {
        return fabric_dot(read_fabric_file(options.fabric_file));
    }
    const std::string generated = generate_fabric(options.plan);
    return options.dot ? fabric_dot(parse_fabric(generated, "generated")) : generated;
}

} // namespace

int run_fabric(const fabric_command_options &options) {
    const std::string text = wanted_text(options);
    command_output out(options.output, {options.fabric_file});
    out.print(text);
    out.finish();
    return 0;
}

} // namespace ribkit::tools
