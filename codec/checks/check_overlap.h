// Answers of tables whose entries stand as far apart as their fixed parts are long, so that the lists of one run over
// the entries behind. In place, a word there has been swapped when its own entry comes to read it: a count there has to
// be 0. Walked one by one, overlapping unicast routes would be looked at as often as they overlap; the functions here
// look at every word a few times only.
#pragma once

#include "codec/checks/check_walk.h"

#include <array>

namespace ribkit::codec {

template <class Steps> template <const layout &Info> uint32_t checker<Steps>::check_overlap() {
    constexpr const row &routes = Info.last();
    constexpr const layout &route = *routes.entry;
    constexpr const row &list = route.last();
    constexpr const char *count_name = route[route.rows.size() - 2].name;
    static_assert(route.at(count_name) == list.count.at);
    size_t swapped = 0;
    size_t entry = routes.offset;
    for (size_t n = read_count<std::endian::big>(routes.count, bytes_); n != 0; --n) {
        steps.step();
        const size_t count = read_count<std::endian::big>(list.count, bytes_ + entry);
        if (count != 0 && entry + list.count.at < swapped) {
            return refuse(RIB_CHECK_COUNT, count_name, entry + list.count.at, count, 0);
        }
        swapped = std::max(swapped, entry + list.offset + list.stride * count);
        entry += routes.stride;
    }
    return RIB_OK;
}

/// As walk, of a message that is a table of unicast routes.
template <class Steps> uint32_t checker<Steps>::walk_table(uint8_t number, size_t &end) {
    constexpr const layout &table = wire::fcurt_info;
    static_assert(is_open(table.last()));
    const check_plan &plan = tables_.plans[number];
    steps.step();
    if (size_ < table.size) {
        return refuse_short(plan, 0);
    }
    end = table.size;
    const check_list &list = tables_.lists[plan.first_list];
    const uint32_t count = count_at(list.count, 0);
    const uint32_t refused = walk_overlapping_routes(list.entry, list.offset, count, end);
    return refused != 0 ? refused : walk_odd(plan.odd, 0, end);
}

/// As walk_entries. Routes apart from one another are walked one by one; from the first that overlaps on, a message is
/// refused in any case, and all that is left to find is the first route whose hops do not hold.
template <class Steps>
uint32_t checker<Steps>::walk_overlapping_routes(uint8_t route, size_t first, uint32_t count, size_t &end) {
    constexpr size_t stride = wire::ucast_route.size;
    const size_t apart = routes_apart(first, count);
    if (const uint32_t refused = walk_entries(route, first, stride, static_cast<uint32_t>(apart), end);
        refused != 0 || apart == count) {
        return refused;
    }
    const size_t bad_hop = first_with_bad_hop(first, apart, count);
    const size_t bad = first_with_bad_run(first, apart, bad_hop);
    return bad == count ? RIB_OK : walk(route, first + bad * stride, end);
}

/// How many routes there are before the first whose count another route's hops would swap, or all.
template <class Steps> size_t checker<Steps>::routes_apart(size_t first, size_t count) {
    constexpr const layout &route = wire::ucast_route;
    constexpr size_t apart = route.row_of("hop").stride;
    size_t swapped = 0;
    for (size_t i = 0, at = first; i < count && left(at) >= route.size; ++i, at += route.size) {
        steps.step();
        const size_t hops = hops_of_route(at);
        if (hops != 0 && at + route.at("n_hop") < swapped) {
            return i;
        }
        const size_t hops_at = at + route.size;
        swapped = std::max(swapped, hops_at + std::min(hops, left(hops_at) / apart) * apart);
    }
    return count;
}

template <class Steps> uint32_t checker<Steps>::hops_of_route(size_t at) const {
    return view<wire::ucast_route>(bytes_ + at).get<"n_hop">();
}

template <class Steps> bool checker<Steps>::has_hop_at(size_t at) const {
    constexpr count_of labels = wire::ucast_hop.row_of("label").count;
    constexpr uint32_t most = wire::ucast_hop.row_of("label").bound;
    return left(at) >= wire::ucast_hop.size && count_at(labels, at) <= most;
}

/// The first route that is cut short or has such a hop where the converter looks for them, eight bytes apart; `count`
/// where none has. A hop that held for one route holds for every other, so that none is looked at twice.
template <class Steps> size_t checker<Steps>::first_with_bad_hop(size_t first, size_t from, size_t count) {
    constexpr const layout &route = wire::ucast_route;
    constexpr size_t apart = route.row_of("hop").stride;
    std::array<size_t, 2> held{}; // up to where, for hops at odd and even words
    for (size_t i = from; i < count; ++i) {
        steps.step();
        const size_t at = first + i * route.size;
        if (left(at) < route.size) {
            return i;
        }
        size_t hops = hops_of_route(at);
        size_t hop = at + route.size;
        size_t &known = held[hop / 4 % 2];
        if (known > hop) {
            hops -= std::min(hops, (known - hop) / apart);
            hop = known;
        }
        for (; hops != 0; --hops, hop += apart) {
            steps.step();
            if (!has_hop_at(hop)) {
                return i;
            }
        }
        known = hop;
    }
    return count;
}

/// How many bytes a hop stands before the next where the display steps from one to the other by the labels that each
/// has; 0 where it does not fit.
template <class Steps> size_t checker<Steps>::fitting_hop_at(size_t at) const {
    constexpr const layout &hop = wire::fclrt_intf;
    constexpr count_of labels = hop.row_of("push").count;
    const size_t room = left(at);
    if (room < hop.size) {
        return 0;
    }
    const size_t size = hop.size + wire::label.size * size_t{count_at(labels, at)};
    return size > room ? 0 : size;
}

/// The first route of which the display finds fewer hops than it has; `count` where all have theirs. From the end to
/// the front each word learns how many hops fit from there on: one more than fit behind the hop that would stand there.
template <class Steps> size_t checker<Steps>::first_with_bad_run(size_t first, size_t from, size_t count) {
    constexpr const layout &route = wire::ucast_route;
    constexpr size_t reach = (wire::fclrt_intf.size + wire::label.size * size_t{UINT8_MAX}) / 4; // of a hop, in words
    std::array<uint32_t, reach + 1> fitting;
    size_t found = count;
    size_t next = count; // behind the route whose hops are met next, from the last on
    for (size_t word = size_ / 4 + 1; next != from && word-- != 0;) {
        steps.step();
        const size_t at = word * 4;
        const size_t hop = fitting_hop_at(at);
        const uint32_t fit = hop == 0 ? 0 : fitting[(word + hop / 4) % fitting.size()] + 1;
        fitting[word % fitting.size()] = fit;
        const size_t last = first + (next - 1) * route.size;
        if (at == last + route.size) {
            --next;
            found = hops_of_route(last) > fit ? next : found;
        }
    }
    return found;
}

} // namespace ribkit::codec
