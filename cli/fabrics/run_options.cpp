// The fabric that is read is cut to what the options choose; what it does not have is named, with what is near.
#include "cli/fabrics/run_options.h"

#include "base/input_error.h"
#include "base/near_names.h"
#include "base/text.h"
#include "bus/rib_link.h"
#include "lab/files/fabric_file.h"

#include <algorithm>

namespace ribkit::cli {

namespace {

void choose_local(lab::fabric &f, const std::string &name) {
    std::vector<std::string_view> names;
    for (const lab::fabric_switch &one : f.switches()) {
        names.push_back(one.name);
    }
    if (std::find(names.begin(), names.end(), name) == names.end()) {
        throw base::input_error(
            base::joined("--local ", name, ": the fabric has no such switch", base::near_text(name, names)));
    }
    f.set_local(name, 0);
}

void choose_vsans(lab::fabric &f, const std::vector<uint32_t> &vsans) {
    for (const uint32_t vsan : vsans) {
        if (!f.has_vsan(vsan)) {
            throw base::input_error(base::joined("--vsan ", vsan, ": the fabric has no VSAN ", vsan));
        }
    }
    if (!vsans.empty()) {
        f.keep_vsans(vsans);
    }
}

} // namespace

lab::fabric chosen_fabric(const run_options &options) {
    lab::fabric f = lab::read_fabric_file(options.fabric_file);
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
    } catch (const bus::link_closed &) {
        std::fputs("ribkit: stopped\n", stderr);
        return false;
    }
}

} // namespace ribkit::cli
