// The displays of network bytes, by name: what each record is, the check that stands in front of it, and how it is
// shown.
#pragma once

#include "cli/command_output.h"
#include "codec/message.h"

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace ribkit::cli {

struct display {
    std::string_view name; ///< of the function that shows a record
    const char *what;
    std::string_view message; ///< as `ribkit decode` calls a record
    codec::message::checker check;
    codec::message::display show;

    /// The name without "rib_show_" or "fib_show_".
    [[nodiscard]] constexpr std::string_view short_name() const { return name.substr(name.find("show_") + 5); }
};

std::span<const display> displays();

/// By either name; null where there is none.
const display *find_display(std::string_view name);

/// The same; throws an input_error, with what may have been meant, where there is none.
const display &display_named(const std::string &name);

/// The short names of all.
std::vector<std::string_view> display_names();

/// All of them for a program.
void print_json(command_output &out, std::span<const display> listed);

/// The length of the record that `bytes` begin with; 0, and the report filled, where the check refuses it.
uint32_t record_size(const display &kind, std::span<const uint8_t> bytes, rib_check_report &report);

} // namespace ribkit::cli
