// What must not compile: each case by itself, and for the reason that stands behind it. Without a case all of it is
// right. See refused_test.sh.
#include "codec/messages/info.h"
#include "codec/messages/query.h"
#include "codec/messages/route.h"
#include "codec/writer.h"

namespace ribkit::codec {

inline uint32_t refused(uint8_t *message) {
    const view<wire::fcurt> route(message);
    const writable_view<wire::node> node(message);
    writer<wire::fclrt_update> update(message, 0);
    uint32_t sum = route.get<"flag">() + route.get<"flag", "active">() + route.list<"hop">().size();
    node.set<"module">(uint8_t{1});
    update.set<"uuid">(1U);
    update.take_back<"route">(update.add<"route">());
#if CASE == 1 // an unknown name: layout_has_no_such_field
    sum += route.get<"flags">();
#elif CASE == 2  // an unknown part: row_has_no_such_part
    sum += route.get<"flag", "passive">();
#elif CASE == 3  // a list is no number: the field is no number
    sum += route.get<"hop">();
#elif CASE == 4  // a number is no list: the field is no list
    sum += route.list<"flag">().size();
#elif CASE == 5  // 80 bytes are no number: the field is no number
    sum += view<wire::registration>(message).get<"name">();
#elif CASE == 6  // a number wider than its field: the number is wider than the field
    node.set<"module">(1U);
#elif CASE == 7  // a 64-bit number in a word: the number is wider than the field
    writable_view<wire::fcurt>(message).set<"metric">(uint64_t{1});
#elif CASE == 8  // bytes that are const are not written: the bytes are const
    route.set<"metric">(1U);
#elif CASE == 9  // an area of another size: conversion|could not convert|no viable
    const std::span<const uint8_t, 32> name = view<wire::registration>(message).area<"name">();
    sum += name[0];
#elif CASE == 10 // an open list has no area: an open list has no size
    sum += route.area<"hop">()[0];
#elif CASE == 11 // entries of their own sizes are not indexed: met one after the other
    sum += view<wire::fclrt>(message).list<"intf">()[0].get<"intf">();
#elif CASE == 12 // the writer counts: the writer counts the entries
    update.set<"n_route">(1U);
#elif CASE == 13 // likewise where a byte counts: the writer counts the entries
    update.add<"route">().add<"intf">().set<"ctrl", "push">(1);
#elif CASE == 14 // an entry of another list is not taken back: the entry is of another list
    update.add<"route">().take_back<"match">(update.add<"route">().add<"intf">());
#elif CASE == 15 // a list of a constant count does not grow: nothing is counted there
    writer<wire::in_mem>(message, 0).add<"pool">();
#elif CASE == 16 // what is always 0 is not written: the field is always 0
    node.set<"zero">(uint8_t{1});
#elif CASE == 17 // a hole between rows: layout_rows_leave_a_hole_or_overlap
    static constexpr layout hole{"hole", 12, {word(0, "a"), word(8, "b")}};
    sum += hole.size;
#elif CASE == 18 // rows that overlap: layout_rows_leave_a_hole_or_overlap
    static constexpr layout overlap{"overlap", 6, {word(0, "a"), half(2, "b")}};
    sum += overlap.size;
#elif CASE == 19 // a count behind its list: layout_count_must_stand_in_a_word_before_its_list
    static constexpr layout late{"late", 12, {list(0, "entry", in::word(8), wire::label, 4, 2), word(8, "n")}};
    sum += late.size;
#elif CASE == 20 // an open list before a field: layout_open_list_must_be_last
    static constexpr layout early{
        "early", 8, {word(0, "n"), list(4, "entry", in::word(0), wire::label, 4), word(4, "more")}};
    sum += early.size;
#elif CASE == 21 // a size that the rows do not have: layout_size_differs_from_its_rows
    static constexpr layout size{"size", 12, {word(0, "a"), word(4, "b")}};
    sum += size.size;
#elif CASE == 22 // a run of different kinds: layout_run_is_of_one_kind_only
    static constexpr layout run{"run", 8, {word(0, "a"), also(bytes(4, 4, "b"))}};
    sum += run.size;
#elif CASE == 23 // a part outside of its word: layout_part_lies_outside_its_row
    static constexpr row_part parts[] = {part("b", 30, 4)};
    static constexpr layout outside{"outside", 4, {word(0, "a").split(parts)}};
    sum += outside.size;
#elif CASE == 24 // rows in another order: layout_rows_leave_a_hole_or_overlap
    static constexpr layout backwards{"backwards", 4, {half(2, "a"), half(0, "b")}};
    sum += backwards.size;
#elif CASE == 25 // a count that is no word: layout_count_must_stand_in_a_word_before_its_list
    static constexpr layout carried{"carried", 4, {bytes(0, 4, "n"), list(4, "entry", in::word(0), wire::label, 4)}};
    sum += carried.size;
#elif CASE == 26 // a count between words: layout_count_must_stand_in_a_word_before_its_list
    static constexpr layout between{
        "between", 8, {word(0, "n"), word(4, "m"), list(8, "entry", in::word(2), wire::label, 4)}};
    sum += between.size;
#elif CASE == 27 // records before a list: layout_open_list_must_be_last
    static constexpr layout two{
        "two", 4, {word(0, "n"), records(4, "a", in::word(0), wire::label), list(4, "b", in::word(0), wire::label, 4)}};
    sum += two.size;
#elif CASE == 28 // a size without its bounded list: layout_size_differs_from_its_rows
    static constexpr layout bounded{"bounded", 4, {word(0, "n"), list(4, "entry", in::word(0), wire::label, 4, 1)}};
    sum += bounded.size;
#elif CASE == 29 // a run of halves: layout_run_is_of_one_kind_only
    static constexpr layout halves{"halves", 4, {half(0, "a"), also(half(2, "b"))}};
    sum += halves.size;
#elif CASE == 30 // a run that nothing begins: layout_run_is_of_one_kind_only
    static constexpr layout begins{"begins", 4, {also(word(0, "a"))}};
    sum += begins.size;
#elif CASE == 31 // a layout that says itself that it is right: layout_check
    static constexpr layout unchecked{"unchecked", 8, {word(0, "a")}, layout_check(wire::label)};
    sum += unchecked.size;
#elif CASE == 32 // a layout that its rows do not outlive: not a constant expression|must be initialized by a constant
    constexpr layout brief{"brief", 4, {word(0, "a")}};
    sum += view<brief>(message).get<"a">();
#endif
    return sum;
}

} // namespace ribkit::codec
