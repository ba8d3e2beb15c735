// The digests are those that tests keep of each message.
#include "protocol/wire_digests.h"

#include "codec/checks/check.h"
#include "codec/checks/checked_messages.h"
#include "codec/fingerprint.h"
#include "codec/view.h"
#include "codec/writer.h"

#include <algorithm>

namespace ribkit::protocol {

uint32_t digest_of_all() {
    codec::digest all;
    for (const codec::checked_message &message : codec::checked_messages) {
        all.text(message.name.data());
        all.number(message.wire);
    }
    return all.value;
}

std::vector<uint8_t> own_wire_digests() {
    std::vector<uint8_t> answer(wire_digests.size + std::size(codec::checked_messages) * wire_digest.size);
    const codec::writer<wire_digests> all(answer);
    for (const codec::checked_message &message : codec::checked_messages) {
        const auto *name = reinterpret_cast<const uint8_t *>(message.name.data());
        all.add<"message">().set_bytes<"name">(std::span(name, message.name.size())).set<"digest">(message.wire);
    }
    codec::writable_view<wire_digests>(answer.data()).set<"all">(digest_of_all());
    return answer;
}

uint32_t check_wire_digests(const void *message, uint32_t size, rib_check_report *report) {
    using own = codec::checked_layouts<wire_digests>;
    return codec::check(own::tables, own::plan<wire_digests>(), wire_digests.name, message, size, report);
}

static bool has(codec::view<wire_digests> theirs, const codec::checked_message &message) {
    for (const auto entry : theirs.list<"message">()) {
        if (entry.get<"digest">() == message.wire && entry.text<"name">() == message.name) {
            return true;
        }
    }
    return false;
}

std::vector<std::string_view> different_messages(std::span<const uint8_t> theirs, std::string_view beginning) {
    std::vector<std::string_view> different;
    for (const codec::checked_message &message : codec::checked_messages) {
        if (message.name.starts_with(beginning) && !has(codec::view<wire_digests>(theirs.data()), message)) {
            different.push_back(message.name);
        }
    }
    return different;
}

} // namespace ribkit::protocol
