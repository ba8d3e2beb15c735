// A RIB of another version may have messages whose bytes mean something else: our programs ask before they send or read
// the first route.
#pragma once

#include "bus/rib_link.h"

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

namespace ribkit::clients {

/// The RIB has other formats of messages that clients use. What it says is a line for people.
struct other_formats : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// Looks for a RIB as rib_link::find does, and asks it for its formats. One that does not know the question is of
/// before it could be asked, and is taken as it is; a difference in messages between RIB and modules is none of a
/// client's. Throws other_formats, no_answer, link_closed.
void find_rib(bus::rib_link &link);

/// Says that the RIB has other formats of these messages, one at least.
other_formats difference(const std::string &shown_url, const std::vector<std::string_view> &messages);

/// The same as find_rib for who talks to modules, with the messages that RIB and modules exchange. Where no RIB answers
/// within a second there is nothing to compare. Throws other_formats, and as service_handle does.
void compare_formats_of_modules(const std::string &url, std::chrono::milliseconds patience);

} // namespace ribkit::clients
