// How a program of the fabric comes to its bus.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

namespace ribkit::cli {

struct bus_options {
    std::string url;
    std::string faults_file; ///< empty: none
    uint32_t wait = 30;      ///< seconds that a server, or the RIB's answer, is waited for

    [[nodiscard]] std::chrono::milliseconds patience() const { return std::chrono::seconds(wait); }
};

/// Puts the fault script in force, before the bus is opened. Throws an input_error.
void load_faults(const bus_options &bus);

} // namespace ribkit::cli
