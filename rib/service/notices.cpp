// A message grows as long as changes are of the same client and VSAN and there is room; then it is closed, and the next
// one begins.
#include "rib/service/notices.h"

#include <new>

namespace ribkit::rib {

namespace {

constexpr uint32_t opcodes[] = {RIBKIT_OPCODE_FCLRT_NOTE, RIBKIT_OPCODE_FCMRT_NOTE, RIBKIT_OPCODE_FCURT_NOTE};

/// A message with nothing in it: some that were before it are missing.
bytes told_too_little() {
    bytes message(wire::fcurt_update.size);
    codec::writer<wire::fcurt_update>(message).set<"uuid">(RIB_CLIENT_RIB).set<"oper">(RIB_OPER_UPDATE);
    return message;
}

template <class Writer> bool add_change(const Writer &to, const route_event<label> &change) {
    return protocol::add_route(to, change.action, change.key, change.what);
}
template <class Writer, class Kind> bool add_change(const Writer &to, const route_event<Kind> &change) {
    return protocol::add_route(to, change.action, change.key.to, change.what);
}

} // namespace

template <class Kind> bool notices::add(const route_event<Kind> &change) {
    return add_change(std::get<static_cast<size_t>(Kind::id)>(*open_), change);
}

template <class Kind> void notices::begin(const head &now) {
    constexpr auto table = static_cast<size_t>(Kind::id);
    open_.emplace(std::in_place_index<table>, room_);
    head_ = now;
    std::get<table>(*open_).template set<"uuid">(now.uuid).template set<"vsan">(now.vsan).template set<"oper">(
        now.oper);
}

template <class Kind> void notices::tell(const route_event<Kind> &change) {
    if (!heard_ || change.why == cause::restore) {
        return;
    }
    const head now{Kind::id, change.uuid, change.key.vsan,
                   change.why == cause::replay ? RIB_OPER_REPLAY : RIB_OPER_UPDATE};
    if (open_ && head_ == now && add(change)) {
        return;
    }
    close();
    begin<Kind>(now);
    if (!add(change)) { // too large for any message
        open_.reset();
        misses_ = true;
    }
}

void notices::close() {
    if (open_) {
        const uint32_t size = std::visit([](const auto &message) { return message.size(); }, *open_);
        keep(opcodes[static_cast<size_t>(head_.table)], std::span(room_).first(size));
        open_.reset();
    }
}

// Listeners that miss some read again: then all that is kept is of no use.
void notices::keep(uint32_t opcode, std::span<const uint8_t> message) {
    if (misses_) {
        return;
    }
    try {
        kept_.push_back({opcode, {message.begin(), message.end()}});
        misses_ = kept_.size() > most_kept;
    } catch (const std::bad_alloc &) {
        misses_ = true;
    }
    if (misses_) {
        kept_.clear();
    }
}

void notices::flush() {
    close();
    while (!kept_.empty() && send_(kept_.front().opcode, kept_.front().message)) {
        kept_.pop_front();
    }
    if (misses_ && kept_.empty()) {
        misses_ = !send_(RIBKIT_OPCODE_FCURT_NOTE, told_too_little());
    }
}

template void notices::tell(const route_event<unicast> &);
template void notices::tell(const route_event<multicast> &);
template void notices::tell(const route_event<label> &);

} // namespace ribkit::rib
