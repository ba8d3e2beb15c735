// A question to the RIB, and its answer once it has passed its check.
#pragma once

#include "bus/rib_link.h"
#include "protocol/route_messages.h"
#include "rib_check.h"

#include <cstdint>
#include <span>
#include <stdexcept>
#include <vector>

namespace ribkit::clients {

/// As the functions of rib_check.h.
using checker = uint32_t (*)(const void *message, uint32_t size, rib_check_report *report);

/// The RIB says why it does not do what it is asked for.
struct refused_question : std::runtime_error {
    explicit refused_question(uint32_t code)
        : std::runtime_error("the RIB answers: " + bus::result_text(code)), result(code) {}

    uint32_t result;
};

/// @return the answer. Throws refused_question where there is a result code in its place, no_answer where it is
/// neither, and as rib_link::ask and rib_link::take_result do.
std::vector<uint8_t> ask_checked(bus::rib_link &link, uint32_t opcode, std::span<uint8_t> question, checker check);

/// Sends what is answered with a result: an update, or a registration. Throws no_answer, and as rib_link::ask and
/// rib_link::take_result do.
protocol::fcurt_response ask_for_result(bus::rib_link &link, uint32_t opcode, std::span<uint8_t> request);

/// As long as no answer comes, or a damaged one, and there is patience, all of `ask` is done again. What goes on after
/// a pause may find the RIB otherwise than before, so that nothing of the first attempt may be used. @return what it
/// returns
template <class Ask> auto patiently(bus::rib_link &link, const Ask &ask) {
    for (;;) {
        try {
            return ask();
        } catch (const bus::no_answer &why) {
            if (!link.await_after(why)) {
                throw;
            }
        }
    }
}

} // namespace ribkit::clients
