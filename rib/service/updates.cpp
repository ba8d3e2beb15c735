// What is different between the tables is the message: its layout, its check, how its records are read.
#include "rib/service/updates.h"

#include "protocol/route_changes.h"
#include "rib_codes.h"

#include <array>
#include <new>

namespace ribkit::rib {

namespace {

template <class Kind> struct message_of;

template <> struct message_of<unicast> {
    static constexpr auto check = rib_check_fcurt_update;
    using view = codec::view<wire::fcurt_update>;
    using changes = protocol::unicast_changes;
};
template <> struct message_of<multicast> {
    static constexpr auto check = rib_check_fcmrt_update;
    using view = codec::view<wire::fcmrt_update>;
    using changes = protocol::multicast_changes;
};
template <> struct message_of<label> {
    static constexpr auto check = rib_check_fclrt_update;
    using view = codec::view<wire::fclrt_update>;
    using changes = protocol::label_changes;
};

/// A client's versions for a VSAN.
class version_words {
  public:
    template <class View> explicit version_words(View update) {
        if constexpr (std::is_same_v<View, message_of<unicast>::view>) {
            for (const auto one : update.template list<"version">()) {
                words_[count_++] = one.template get<"version">();
            }
        }
    }
    [[nodiscard]] std::span<const uint32_t> all() const { return std::span(words_).first(count_); }

  private:
    std::array<uint32_t, most_versions> words_;
    size_t count_ = 0;
};

/// An answer that says as much about the update as its header tells.
template <class Kind>
protocol::fcurt_response refusal(const state &rib, uint32_t result, std::span<const uint8_t> message) {
    using view = typename message_of<Kind>::view;
    if (message.size() < view::described_by.size) {
        return {result, 0, 0, 0, 0};
    }
    const view update(message.data());
    const uint32_t vsan = update.template get<"vsan">();
    return {result, update.template get<"oper">(), vsan, 0, rib.held(Kind::id, vsan)};
}

} // namespace

template <class Kind>
protocol::fcurt_response take_update(state &rib, std::span<const uint8_t> message, const update_origin &from,
                                     rib_check_report *why) {
    const uint32_t result = message_of<Kind>::check(message.data(), static_cast<uint32_t>(message.size()), why);
    if (result != RIB_OK) {
        return refusal<Kind>(rib, result, message);
    }
    const typename message_of<Kind>::view update(message.data());
    const uint32_t uuid = update.template get<"uuid">();
    if (from.may_speak && !from.may_speak(uuid)) {
        return refusal<Kind>(rib, RIB_BAD_PARAMETERS, message);
    }
    const version_words versions(update);
    const update_head head{
        uuid, update.template get<"vsan">(), update.template get<"oper">(), versions.all(), from.in_envelope, from.now};
    const typename message_of<Kind>::changes changes(update);
    const update_answer answer = rib.update<Kind>(head, changes);
    return {answer.result, answer.oper, answer.vsan, answer.accepted, answer.held};
}

template <class Kind> uint32_t operation_of(std::span<const uint8_t> message) {
    using view = typename message_of<Kind>::view;
    return message.size() < view::described_by.size ? 0 : view(message.data()).template get<"oper">();
}

template uint32_t operation_of<unicast>(std::span<const uint8_t>);
template uint32_t operation_of<multicast>(std::span<const uint8_t>);
template uint32_t operation_of<label>(std::span<const uint8_t>);
template protocol::fcurt_response take_update<unicast>(state &, std::span<const uint8_t>, const update_origin &,
                                                       rib_check_report *);
template protocol::fcurt_response take_update<multicast>(state &, std::span<const uint8_t>, const update_origin &,
                                                         rib_check_report *);
template protocol::fcurt_response take_update<label>(state &, std::span<const uint8_t>, const update_origin &,
                                                     rib_check_report *);

} // namespace ribkit::rib
