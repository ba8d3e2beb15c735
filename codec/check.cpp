#include "codec/check.h"

#include "codec/engine.h"
#include "codec/messages/info.h"
#include "codec/report.h"

#include <algorithm>

namespace ribkit {

namespace {

/// The bytes under examination, and where to say what is wrong with them.
struct suspect {
    const char *name;
    const uint8_t *bytes;
    size_t size;
    rib_check_report *report; // may be null

    [[nodiscard]] uint32_t refuse(rib_check_rule rule, const char *field, size_t offset, size_t found,
                                  size_t allowed) const {
        return ribkit::refuse(report, {name, field, to_word(offset), to_word(found), to_word(allowed), rule});
    }
    [[nodiscard]] size_t left(size_t at) const { return size - at; }

  private:
    static uint32_t to_word(size_t n) { return static_cast<uint32_t>(std::min(n, size_t{UINT32_MAX})); }
};

uint32_t count_at(count_of count, const uint8_t *message) { return read_count<std::endian::big>(count, message); }

/// Refuses the first field that the bytes do not hold whole, where a layout's fixed part would stand at `at`.
uint32_t refuse_short(const suspect &s, const layout &l, size_t at) {
    const row *r = l.begin();
    while (at + r->end() <= s.size) {
        ++r;
    }
    return s.refuse(RIB_CHECK_SHORT, r->name, at + r->offset, at + r->end(), s.size);
}

uint32_t refuse_count(const suspect &s, const layout &l, const row &list, size_t at, size_t count, size_t allowed) {
    const row *holder = l.begin();
    while (list.count.at >= holder->end()) {
        ++holder;
    }
    return s.refuse(RIB_CHECK_COUNT, holder->name, at + holder->offset, count, allowed);
}

/// What one layout demands at `at`; `end` becomes the furthest byte that anything up to there touches.
uint32_t walk(const suspect &s, const layout &l, size_t at, size_t &end);

/// The list of a record that is a fixed part and one open list of words; null where the layout is anything else.
const row *only_list(const layout &l) {
    const row &last = *(l.end() - 1);
    const bool fits = layout::is_open(last) && last.stride != 0 && last.stride == last.entry->size &&
                      is_words_only(*last.entry) && is_fixed(*last.entry);
    return fits && std::count_if(l.begin(), l.end(), layout::is_list) == 1 ? &last : nullptr;
}

/// Steps over records that fit, as far as they do. Those of one size follow one another: as long as that holds, nothing
/// but their count has to be looked at.
void skip_records(const suspect &s, const layout &l, const row &list, size_t &at, uint32_t &count) {
    while (count != 0 && s.left(at) >= l.size) {
        const uint32_t entries = count_at(list.count, s.bytes + at);
        if (entries > (s.left(at) - l.size) / list.stride) {
            return;
        }
        const size_t size = l.size + size_t{list.stride} * entries;
        do {
            at += size;
            --count;
        } while (count != 0 && s.left(at) >= size && count_at(list.count, s.bytes + at) == entries);
    }
}

/// Entries one behind the other that each say their own size.
uint32_t walk_run(const suspect &s, const layout &entry, size_t at, uint32_t count, size_t &end) {
    if (const row *list = only_list(entry); list != nullptr && count != 0 && at <= s.size) {
        skip_records(s, entry, *list, at, count);
    }
    for (; count != 0; --count) {
        size_t entry_end = at;
        if (const uint32_t refused = walk(s, entry, at, entry_end); refused != 0) {
            return refused;
        }
        at = entry_end;
    }
    end = std::max(end, at);
    return RIB_OK;
}

/// Whether a number says how much of the layout there is.
bool is_counted(const layout &l) {
    return std::any_of(l.begin(), l.end(),
                       [](const row &r) { return layout::is_list(r) && r.count.where != count_in::constant; });
}

uint32_t walk_list(const suspect &s, const layout &l, const row &list, size_t at, size_t &end) {
    const layout &entry = *list.entry;
    const uint32_t count = count_at(list.count, s.bytes + at);
    const size_t first = at + list.offset;
    if (list.bound != 0 && count > list.bound) {
        return refuse_count(s, l, list, at, count, list.bound);
    }
    if (list.stride == 0) {
        return walk_run(s, entry, first, count, end);
    }
    if (!is_counted(entry)) {
        if (const size_t room = s.left(first) / list.stride; list.bound == 0 && count > room) {
            return refuse_count(s, l, list, at, count, room);
        }
        end = std::max(end, first + size_t{count} * list.stride);
        return RIB_OK;
    }
    for (size_t i = 0; i < count; ++i) {
        if (const uint32_t refused = walk(s, entry, first + i * list.stride, end); refused != 0) {
            return refused;
        }
    }
    return RIB_OK;
}

// What a layout cannot say: each looks at a message whose layout has been walked.

/// The display steps over the hops of a table entry by the labels that each has, the converter by eight bytes: both
/// must find what they look for.
uint32_t check_ucast_route(const suspect &s, size_t at, size_t &end) {
    const uint32_t hops = be32(s.bytes + at + wire::ucast_route.at("n_hop"));
    return walk_run(s, wire::fclrt_intf, at + wire::ucast_route.size, hops, end);
}

/// The name is printed, and so has to end.
uint32_t check_register(const suspect &s, size_t at, size_t & /*end*/) {
    constexpr row name = wire::registration.row_of("name");
    if (std::memchr(s.bytes + at + name.offset, 0, name.size) == nullptr) {
        return s.refuse(RIB_CHECK_COUNT, "length of name", at + name.offset, name.size, name.size - 1);
    }
    return RIB_OK;
}

uint32_t check_in_info(const suspect &s, size_t at, size_t &end) {
    const uint32_t body = wire::size_of_body(be32(s.bytes + at + wire::in_info.at("kind")));
    end += body;
    return end <= s.size ? RIB_OK : s.refuse(RIB_CHECK_SHORT, "body", end - body, end, s.size);
}

uint32_t check_verf_info(const suspect &s, size_t at, size_t &end) {
    const size_t count = be32(s.bytes + at + wire::verf_info.at("n_key"));
    const size_t key = wire::key_of(be32(s.bytes + at + wire::verf_info.at("type"))).size;
    if (const size_t room = s.left(end) / key; count > room) {
        return s.refuse(RIB_CHECK_COUNT, "n_key", at, count, room);
    }
    end += count * key;
    return RIB_OK;
}

/// Entries stand as far apart as their fixed parts are long, and their lists run over the entries behind. In place, a
/// word there has been swapped when its own entry comes to read it: a count there has to be 0.
template <const layout &Info> uint32_t check_overlap(const suspect &s, size_t at, size_t & /*end*/) {
    constexpr const row &routes = Info.rows[Info.n_rows - 1];
    constexpr const layout &route = *routes.entry;
    constexpr const row &list = route.rows[route.n_rows - 1];
    size_t swapped = 0;
    for (size_t left = be32(s.bytes + at); left != 0; --left) {
        const size_t entry = at + routes.offset;
        const size_t count = be32(s.bytes + entry + list.count.at);
        if (count != 0 && entry + list.count.at < swapped) {
            return refuse_count(s, route, list, entry, count, 0);
        }
        swapped = std::max(swapped, entry + list.offset + list.stride * count);
        at += routes.stride;
    }
    return RIB_OK;
}

struct odd_check {
    const layout *wire;
    uint32_t (*check)(const suspect &s, size_t at, size_t &end);
};

constexpr odd_check odd_checks[] = {
    {&wire::ucast_route, check_ucast_route},
    {&wire::registration, check_register},
    {&wire::in_info, check_in_info},
    {&wire::verf_info, check_verf_info},
    {&wire::fcmrt_info, check_overlap<wire::fcmrt_info>},
    {&wire::fcurt_info, check_overlap<wire::fcurt_info>},
};

uint32_t walk(const suspect &s, const layout &l, size_t at, size_t &end) {
    if (at > s.size || s.left(at) < l.size) {
        return refuse_short(s, l, at);
    }
    end = std::max(end, at + l.size);
    for (const row &r : l) {
        if (layout::is_list(r) && r.count.where != count_in::constant) {
            if (const uint32_t refused = walk_list(s, l, r, at, end); refused != 0) {
                return refused;
            }
        }
    }
    for (const odd_check &odd : odd_checks) {
        if (odd.wire == &l) {
            return odd.check(s, at, end);
        }
    }
    return RIB_OK;
}

} // namespace

uint32_t check(const layout &l, const char *name, const void *message, uint32_t size, rib_check_report *report) {
    const suspect s{name, static_cast<const uint8_t *>(message), size, report};
    size_t end = 0;
    if (const uint32_t refused = walk(s, l, 0, end); refused != 0) {
        return refused;
    }
    return end == size ? RIB_OK : s.refuse(RIB_CHECK_EXCESS, "size", end, size, end);
}

} // namespace ribkit
