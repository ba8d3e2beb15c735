// The fabric that is read is cut to what the options choose; what it does not have is named, with what is near.
#include "tools/run_options.h"

#include "tools/base_text.h"
#include "tools/fabric_file.h"
#include "tools/input_error.h"
#include "tools/near_names.h"
#include "tools/rib_link.h"

#include <algorithm>

namespace ribkit::tools {

namespace {

void choose_local(fabric &f, const std::string &name) {
    std::vector<std::string_view> names;
    for (const fabric_switch &one : f.switches()) {
        names.push_back(one.name);
    }
    if (std::find(names.begin(), names.end(), name) == names.end()) {
        throw input_error(joined("--local ", name, ": the fabric has no such switch", near_text(name, names)));
    }
    f.set_local(name, 0);
}

void choose_vsans(fabric &f, const std::vector<uint32_t> &vsans) {
    for (const uint32_t vsan : vsans) {
        if (!f.has_vsan(vsan)) {
            throw input_error(joined("--vsan ", vsan, ": the fabric has no VSAN ", vsan));
        }
    }
    if (!vsans.empty()) {
        f.keep_vsans(vsans);
    }
}

} // namespace

fabric chosen_fabric(const run_options &options) {
    fabric f = read_fabric_file(options.fabric_file);
    choose_vsans(f, options.vsans);
    if (!options.local.empty()) {
        choose_local(f, options.local);
    }
    return f;
}

bool unless_stopped(const std::function<void()> &action) {
    try {
        action();
        return true;
    } catch (const link_closed &) {
        std::fputs("ribkit: stopped\n", stderr);
        return false;
    }
}

} // namespace ribkit::tools
