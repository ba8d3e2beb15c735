// The walk that every check is: over tables made from the layouts that the converters are made of. A count must fit its
// array, every entry the bytes there are. Its steps can be counted, so that a test sees that they grow as the message
// does and no faster; in the library nothing counts them.
#pragma once

#include "codec/checks/check_table.h"
#include "codec/messages/info.h"
#include "codec/report.h"
#include "codec/view.h"

#include <algorithm>

namespace ribkit::codec {

struct uncounted {
    void step() {}
};

/// The bytes under examination, and where to say what is wrong with them.
template <class Steps> class checker {
  public:
    /// @param report may be null
    checker(const check_tables &tables, const char *name, const uint8_t *bytes, size_t size, rib_check_report *report)
        : tables_(tables), name_(name), bytes_(bytes), size_(size), report_(report) {}

    /// Whether the bytes are one message of that plan, and nothing behind it.
    uint32_t check(uint8_t plan) {
        size_t end = 0;
        const bool may_overlap = tables_.plans[plan].odd == odd_check::fcurt_info;
        if (const uint32_t refused = may_overlap ? walk_table(plan, end) : walk(plan, 0, end); refused != 0) {
            return refused;
        }
        return end == size_ ? RIB_OK : refuse(RIB_CHECK_EXCESS, "size", end, size_, end);
    }

    /// What one plan demands at `at`; `end` becomes the furthest byte that anything up to there touches.
    uint32_t walk(uint8_t number, size_t at, size_t &end) {
        const check_plan &plan = tables_.plans[number];
        steps.step();
        if (at > size_ || left(at) < plan.size) {
            return refuse_short(plan, at);
        }
        end = std::max(end, at + plan.size);
        for (unsigned i = 0; i < plan.n_lists; ++i) {
            if (const uint32_t refused = walk_list(tables_.lists[plan.first_list + i], at, end); refused != 0) {
                return refused;
            }
        }
        return walk_odd(plan.odd, at, end);
    }

    [[no_unique_address]] Steps steps;

  private:
    const check_tables &tables_;
    const char *name_;
    const uint8_t *bytes_;
    size_t size_;
    rib_check_report *report_;

    [[nodiscard]] size_t left(size_t at) const { return size_ - at; }
    [[nodiscard]] uint32_t count_at(count_of count, size_t message) const {
        return read_count<std::endian::big>(count, bytes_ + message);
    }

    [[nodiscard]] uint32_t refuse(rib_check_rule rule, const char *field, size_t offset, size_t found,
                                  size_t allowed) const {
        return ribkit::codec::refuse(report_, {name_, field, to_word(offset), to_word(found), to_word(allowed), rule});
    }
    static uint32_t to_word(size_t n) { return static_cast<uint32_t>(std::min(n, size_t{UINT32_MAX})); }

    /// Refuses the first field that the bytes do not hold whole, where a plan's fixed part would stand at `at`.
    [[nodiscard]] uint32_t refuse_short(const check_plan &plan, size_t at) const {
        const check_row *r = tables_.rows + plan.first_row;
        size_t begin = at;
        while (at + r->end <= size_) {
            begin = at + r->end;
            ++r;
        }
        return refuse(RIB_CHECK_SHORT, tables_.names + r->name, begin, at + r->end, size_);
    }

    /// Refuses a count, in the name of the field that holds it.
    [[nodiscard]] uint32_t refuse_count(const check_list &list, size_t at, size_t count, size_t allowed) const {
        return refuse(RIB_CHECK_COUNT, tables_.names + list.counted_by, at + list.count.at, count, allowed);
    }

    uint32_t walk_list(const check_list &list, size_t at, size_t &end) {
        const uint32_t count = count_at(list.count, at);
        const size_t first = at + list.offset;
        if (list.bound != 0 && count > list.bound) {
            return refuse_count(list, at, count, list.bound);
        }
        if (list.stride == 0) {
            return walk_run(list.entry, first, count, end);
        }
        if (list.entry == check_list::no_plan) {
            if (const size_t room = left(first) / list.stride; list.bound == 0 && count > room) {
                return refuse_count(list, at, count, room);
            }
            end = std::max(end, first + size_t{count} * list.stride);
            return RIB_OK;
        }
        return walk_entries(list.entry, first, list.stride, count, end);
    }

    uint32_t walk_entries(uint8_t entry, size_t first, size_t stride, uint32_t count, size_t &end) {
        for (size_t i = 0; i < count; ++i) {
            if (const uint32_t refused = walk(entry, first + i * stride, end); refused != 0) {
                return refused;
            }
        }
        return RIB_OK;
    }

    /// Entries one behind the other that each say their own size.
    uint32_t walk_run(uint8_t entry, size_t at, uint32_t count, size_t &end) {
        const check_plan &plan = tables_.plans[entry];
        if (plan.is_record && count != 0 && at <= size_) {
            skip_records(plan.size, tables_.lists[plan.first_list], at, count);
        }
        for (; count != 0; --count) {
            size_t entry_end = at;
            if (const uint32_t refused = walk(entry, at, entry_end); refused != 0) {
                return refused;
            }
            at = entry_end;
        }
        end = std::max(end, at);
        return RIB_OK;
    }

    /// Steps over records that fit, as far as they do. Those of one size follow one another: as long as that holds,
    /// nothing but their count has to be looked at.
    void skip_records(size_t fixed, const check_list &list, size_t &at, uint32_t &count) {
        while (count != 0 && left(at) >= fixed) {
            const uint32_t entries = count_at(list.count, at);
            if (uint64_t{list.stride} * entries > left(at) - fixed) {
                return;
            }
            const size_t size = fixed + size_t{list.stride} * entries;
            do {
                steps.step();
                at += size;
                --count;
            } while (count != 0 && left(at) >= size && count_at(list.count, at) == entries);
        }
    }

    // What a layout cannot say (check_odd.h), looked at once it has been walked.
    uint32_t walk_odd(odd_check odd, size_t at, size_t &end);
    uint32_t check_ucast_route(size_t at, size_t &end);
    uint32_t check_register(size_t at);
    uint32_t check_in_info(size_t at, size_t &end);
    uint32_t check_verf_info(size_t at, size_t &end);

    // Entries that stand closer than they are long (check_overlap.h). One looks back over a kilobyte on the stack,
    // which no other walk shall carry: only a whole message is walked so, never what the walk comes back to.
    template <const layout &Info> uint32_t check_overlap();
    [[gnu::noinline]] uint32_t walk_table(uint8_t number, size_t &end);
    uint32_t walk_overlapping_routes(uint8_t route, size_t first, uint32_t count, size_t &end);
    size_t routes_apart(size_t first, size_t count);
    size_t first_with_bad_hop(size_t first, size_t from, size_t count);
    [[gnu::noinline]] size_t first_with_bad_run(size_t first, size_t from, size_t count);
    [[nodiscard]] uint32_t hops_of_route(size_t at) const;
    [[nodiscard]] bool has_hop_at(size_t at) const;
    [[nodiscard]] size_t fitting_hop_at(size_t at) const;
};

} // namespace ribkit::codec
