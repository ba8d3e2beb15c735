// The tables take turns, so that none waits for another that changes all the time.
#include "rib/modules/module_feed.h"

namespace ribkit::rib {

template <class Kind> void module_feed::change(const typename Kind::key &where, waiting::id asker) noexcept {
    const uint32_t code = code_of(condition_);
    if (asker != 0 && code != RIB_OK) {
        requests_.tell(asker, counted(Kind(), where), code);
        asker = 0;
    }
    std::get<static_cast<size_t>(Kind::id)>(lanes_).change(where, asker);
}

void module_feed::vsan_changed(uint32_t vsan, bool suspended) noexcept {
    tell_vsan(vsan);
    each_lane([&](auto &lane) { suspended ? lane.withdraw(vsan) : lane.send_whole(vsan); });
}

void module_feed::compare(table_id table, uint32_t vsan, waiting::id asker) noexcept {
    if (const uint32_t code = code_of(condition_); code != RIB_OK) {
        requests_.tell(asker, code);
        return;
    }
    const auto compare = [&](auto &lane) { lane.compare(vsan, asker); };
    table == table_id::label       ? compare(std::get<0>(lanes_))
    : table == table_id::multicast ? compare(std::get<1>(lanes_))
                                   : compare(std::get<2>(lanes_));
}

void module_feed::restart(uint32_t sequence) noexcept {
    sequence_ = model::is_later(sequence_ + 1, sequence) ? sequence_ : sequence;
    each_lane([](auto &lane) { lane.restart(); });
}

void module_feed::set_condition(module_condition now) noexcept {
    const module_condition before = std::exchange(condition_, now);
    if (now == before) {
        return;
    }
    if (now == module_condition::serving) {
        each_lane([](auto &lane) { lane.retry(); });
    } else {
        each_lane([&](auto &lane) { lane.disappoint(code_of(now)); });
    }
}

std::vector<uint32_t> module_feed::vsans(size_t most) const {
    std::vector<uint32_t> some;
    for (uint32_t vsan = 0; vsan < vsans_.size() && some.size() < most; vsan++) {
        if (vsans_[vsan]) {
            some.push_back(vsan);
        }
    }
    return some;
}

uint32_t module_feed::take_vsans(const std::vector<uint32_t> &told) noexcept {
    for (const uint32_t vsan : told) {
        vsans_.reset(vsan);
    }
    return ++sequence_;
}

bool module_feed::has_work() const {
    return is_there() && std::apply([](const auto &...lane) { return (lane.has_work() || ...); }, lanes_);
}

std::optional<uint32_t> module_feed::write(update_sink &to) {
    const auto try_lane = [&](auto &lane) { return lane.has_work() && lane.write(to, sequence_ + 1); };
    for (size_t tried = 0; tried < tables; tried++) {
        turn_ = (turn_ + 1) % tables;
        const bool wrote = turn_ == 0   ? try_lane(std::get<0>(lanes_))
                           : turn_ == 1 ? try_lane(std::get<1>(lanes_))
                                        : try_lane(std::get<2>(lanes_));
        if (wrote) {
            return ++sequence_;
        }
    }
    return {};
}

void module_feed::settle(uint32_t sequence, const verdict &said) noexcept {
    bool repeats = false;
    each_lane([&](auto &lane) { repeats = lane.settle(sequence, said) || repeats; });
    if (repeats) {
        count_damaged();
    }
}

void module_feed::count_damaged() noexcept {
    damaged_++;
    if (damaged_ >= most_damaged) {
        damaged_ = 0;
        set_condition(module_condition::garbled);
    }
}

void module_feed::give_up(waiting::id asker) noexcept {
    each_lane([&](auto &lane) { lane.give_up(asker); });
}

void module_feed::set_held(bool held) noexcept {
    each_lane([&](auto &lane) { lane.set_held(held); });
}

size_t module_feed::in_flight() const {
    return std::apply([](const auto &...lane) { return (lane.in_flight() + ...); }, lanes_);
}

bool module_feed::is_done() const {
    return std::apply([](const auto &...lane) { return (lane.is_done() && ...); }, lanes_);
}

template void module_feed::change<unicast>(const unicast::key &, waiting::id) noexcept;
template void module_feed::change<multicast>(const multicast::key &, waiting::id) noexcept;
template void module_feed::change<label>(const label::key &, waiting::id) noexcept;

} // namespace ribkit::rib
