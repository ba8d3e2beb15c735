// The envelope around a message, as the wrappers see it: where its content begins, and what its type may say.
#pragma once

#include "codec/messages/forms.h"
#include "codec/view.h"

namespace ribkit::wrap {

using read_envelope = codec::view<wire::cmi_envelope>;
using written_envelope = codec::writable_view<wire::cmi_envelope>;

inline constexpr uint32_t content_at = wire::cmi_envelope.at("opcode"); // an answer's payload; a request's opcode
inline constexpr uint32_t payload_at = wire::cmi_envelope.size;         // of a request, behind its opcode
inline constexpr uint32_t opcode_size = payload_at - content_at;

enum class envelope_type : uint32_t { answer = 0, request = 2, one_way = 3 };

} // namespace ribkit::wrap
