// Of every request that the RIB takes one that is sound, and of some more, so that every answer is met.
#pragma once

#include "codec/message.h"
#include <cstdint>
#include <string>
#include <vector>

namespace ribkit::fuzz {

using byte_vector = std::vector<uint8_t>;

struct sound_request {
    uint32_t opcode;
    byte_vector bytes;
};

/// In an order in which the later ones find what the earlier ones have stored.
std::vector<sound_request> sound_requests();

/// Whether an answer is the response that says why there is no other.
bool is_refusal(const byte_vector &answer);

/// Which of some messages an answer is, or a log of which; null for none.
/// @param names as the catalogue has them, separated by blanks
const codec::message *kind_of(const byte_vector &answer, const char *names);

/// Sends requests as they are, and waits for the answers.
class requester {
  public:
    explicit requester(const std::string &url);
    requester(const requester &) = delete;
    requester &operator=(const requester &) = delete;
    ~requester();

    /// @return the answer. Throws std::runtime_error where none comes
    byte_vector ask(uint32_t opcode, byte_vector request, bool in_envelope = false);

  private:
    uint32_t handle_ = 0;
};

} // namespace ribkit::fuzz
