// A script of faults is read before the bus is used; one that cannot be read is the user's mistake.
#include "cli/fabrics/bus_options.h"

#include "base/input_error.h"
#include "ribkit_platform.h"

#include <array>
#include <cerrno>
#include <new>

namespace ribkit::cli {

void load_faults(const bus_options &bus) {
    std::array<char, 512> error{};
    if (bus.faults_file.empty() || qip_faults_load(bus.faults_file.c_str(), error.data(), error.size()) == 0) {
        return;
    }
    if (errno == ENOMEM) {
        throw std::bad_alloc();
    }
    throw base::input_error(error.data());
}

} // namespace ribkit::cli
