// What the catalogue knows of a message: one row has its name, its layout and every function that takes it. The rows
// themselves stand above everything that they name, in catalogue/messages.h; whoever only goes through all messages, as
// tests here do, needs no more than this.
#pragma once

#include "codec/choices.h"
#include "rib_check.h"

#include <span>
#include <string_view>

namespace ribkit::codec {

struct message {
    using converter = uint32_t (*)(const void *src, void *dst);
    using checker = uint32_t (*)(const void *message, uint32_t size, rib_check_report *report);
    using sizer = uint32_t (*)(const void *message);
    using tracer = void (*)(const void *message, uint32_t size, const void *update);
    using display = void (*)(uint32_t *header, const void *message);

    std::string_view name; ///< the converters' names without "hton_" and "ntoh_": "rib_fcurt"
    const layout *wire;
    size_t kernel = 0;                   ///< the layout's number among all_layouts
    converter to_network = nullptr;      ///< returns what the exported function does, 0 where that returns nothing
    converter to_host = nullptr;         ///< both are null for a form
    checker check = nullptr;             ///< of the network form, in which everything below reads the message, too
    sizer size = nullptr;                ///< records included; null where the layout says all
    tracer trace = nullptr;              ///< `update` is what a record stands in, and the message itself otherwise
    display show = nullptr;              ///< clears the header flag once the heads are shown
    std::span<const choice> chosen = {}; ///< what one of its words decides: one or none
    const char *odd = "";                ///< what the layout does not say
};

/// Every message that is converted, in an order that only grows at its end: inputs of fuzzers name it by number.
std::span<const message> messages();

/// What has a layout and no converter.
std::span<const message> forms();

/// The message of that name ("rib_fcurt" or, where it is the only one, "fcurt"); null where there is none.
const message *find_message(std::string_view name);

} // namespace ribkit::codec
