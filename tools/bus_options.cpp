// A script of faults is read before the bus is used; one that cannot be read is the user's mistake.
#include "tools/bus_options.h"

#include "ribkit_platform.h"
#include "tools/input_error.h"

#include <array>
#include <cerrno>
#include <new>

namespace ribkit::tools {

void load_faults(const bus_options &bus) {
    std::array<char, 512> error{};
    if (bus.faults_file.empty() || qip_faults_load(bus.faults_file.c_str(), error.data(), error.size()) == 0) {
        return;
    }
    if (errno == ENOMEM) {
        throw std::bad_alloc();
    }
    throw input_error(error.data());
}

} // namespace ribkit::tools
