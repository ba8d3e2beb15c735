// The CMI envelope in network form: where its fields stand and what they may hold.
#pragma once

#include <cstdint>

namespace ribkit::wrap {

inline constexpr uint32_t cmi_length_at = 4;
inline constexpr uint32_t cmi_client_at = 12;
inline constexpr uint32_t cmi_content_at = 112; // an answer's payload; a request's opcode, then its payload
inline constexpr uint32_t cmi_opcode_size = 4;
inline constexpr uint32_t cmi_payload_at = cmi_content_at + cmi_opcode_size; // of a request

inline constexpr uint32_t cmi_answer = 0;
inline constexpr uint32_t cmi_request = 2;
inline constexpr uint32_t cmi_one_way = 3;

} // namespace ribkit::wrap
