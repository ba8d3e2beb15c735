// Of every message that a module takes one that is sound, and of some more, so that every answer is met.
#pragma once

#include "fuzz/sound_requests.h"

#include <algorithm>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace ribkit::fuzz {

/// In an order in which the later ones find what the earlier ones have stored: for a module with room for one entry in
/// each table.
std::vector<sound_request> sound_fib_requests();

/// Calls `take` with each message of a run whose kinds are "a+b": one of each, and of the last any number.
/// @return whether nothing else was there
template <class Take> bool for_each_part(std::string_view names, std::span<const uint8_t> bytes, const Take &take) {
    while (!names.empty()) {
        const size_t end = std::min(names.find('+'), names.size());
        const codec::message *kind = codec::find_message(names.substr(0, end));
        const bool is_last = end == names.size();
        if (kind == nullptr || (is_last && bytes.empty())) { // a form has no check of its own
            return kind != nullptr;
        }
        rib_check_report why{};
        auto size = static_cast<uint32_t>(bytes.size());
        if (kind->check(bytes.data(), size, &why) != 0) {
            if (why.rule != RIB_CHECK_EXCESS) {
                return false;
            }
            size = why.allowed; // where it ends
        }
        take(*kind, bytes.first(size));
        bytes = bytes.subspan(size);
        names = is_last ? names : names.substr(end + 1);
    }
    return bytes.empty();
}

/// Which of some runs an answer is; "" for none.
/// @param names runs, separated by blanks
std::string run_of(const byte_vector &answer, std::string_view names);

/// The result code of the answer that says why there is no other; RIB_OK where it is one of the row's.
uint32_t module_refusal(const byte_vector &answer);

/// Asks a module.
class module_requester {
  public:
    module_requester(const std::string &url, uint32_t number);
    module_requester(const module_requester &) = delete;
    module_requester &operator=(const module_requester &) = delete;
    ~module_requester();

    /// @return the answer. Throws std::runtime_error where none comes
    byte_vector ask(uint32_t opcode, const byte_vector &request);

  private:
    uint32_t handle_ = 0;
    uint32_t number_;
};

} // namespace ribkit::fuzz
