// What a layout cannot say: each looks at a message whose layout has been walked.
#pragma once

#include "codec/checks/check_walk.h"

#include <cstring>

namespace ribkit::codec {

template <class Steps> uint32_t checker<Steps>::walk_odd(odd_check odd, size_t at, size_t &end) {
    switch (odd) {
    case odd_check::none:
        break;
    case odd_check::ucast_route:
        return check_ucast_route(at, end);
    case odd_check::registration:
        return check_register(at);
    case odd_check::in_info:
        return check_in_info(at, end);
    case odd_check::verf_info:
        return check_verf_info(at, end);
    case odd_check::fcmrt_info:
        return check_overlap<wire::fcmrt_info>();
    case odd_check::fcurt_info:
        return check_overlap<wire::fcurt_info>();
    }
    return RIB_OK;
}

/// The display steps over the hops of a table entry by the labels that each has, the converter by eight bytes: both
/// must find what they look for.
template <class Steps> uint32_t checker<Steps>::check_ucast_route(size_t at, size_t &end) {
    const view<wire::ucast_route> route(bytes_ + at);
    return walk_run(tables_.hop, at + wire::ucast_route.size, route.get<"n_hop">(), end);
}

/// The name is printed, and so has to end.
template <class Steps> uint32_t checker<Steps>::check_register(size_t at) {
    constexpr row name = wire::registration.row_of("name");
    if (std::memchr(bytes_ + at + name.offset, 0, name.size) == nullptr) {
        return refuse(RIB_CHECK_COUNT, "length of name", at + name.offset, name.size, name.size - 1);
    }
    return RIB_OK;
}

template <class Steps> uint32_t checker<Steps>::check_in_info(size_t at, size_t &end) {
    const view<wire::in_info> info(bytes_ + at);
    const uint32_t body = wire::size_of_body(info.get<"kind">());
    end += body;
    return end <= size_ ? RIB_OK : refuse(RIB_CHECK_SHORT, "body", end - body, end, size_);
}

template <class Steps> uint32_t checker<Steps>::check_verf_info(size_t at, size_t &end) {
    const view<wire::verf_info> info(bytes_ + at);
    const size_t count = info.get<"n_key">();
    const size_t key = wire::size_of_key(info.get<"type">());
    if (const size_t room = left(end) / key; count > room) {
        return refuse(RIB_CHECK_COUNT, "n_key", at + wire::verf_info.at("n_key"), count, room);
    }
    end += count * key;
    return RIB_OK;
}

} // namespace ribkit::codec
