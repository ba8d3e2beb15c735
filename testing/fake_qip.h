// The message service and the debug history as recordings: every call is a line of text with all of its arguments, told
// in the order in which calls and printed traces happen.
#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace ribkit::testing {

struct fake_service {
    std::map<std::string, std::pair<int, int>> fail; ///< by function: its n-th call, from 1, fails with this errno
    std::vector<uint8_t> answer;                     ///< payload of every received message
    uint32_t token = 0x70ce0001;                     ///< of every reference
    int subtype_check = 1;                           ///< returned by yelk_hist_event_subtype_check
    int debug_enabled = 0;                           ///< returned by yelk_chk_int

    std::map<std::string, int> calls; ///< made so far, by function
    uint32_t references = 0;          ///< filled so far; the n-th is told as #n
};

/// The one service of this process; assign `{}` to reset it.
fake_service &service();

/// What `action` calls and prints, a line each, calls with a leading "> "; time stamps become HH:MM:SS.
///
/// A reference is told as #n when the service filled it, else as its bytes. Options are told as their words that are
/// not 0. A successful call leaves junk in errno.
std::string transcript_of(const std::function<void()> &action);

} // namespace ribkit::testing
