// How a message is declared: a layout is constexpr data that reads like its table. Offsets are written out and checked
// when the layout is compiled: rows in order, no hole that is not declared, every count before its list, sizes that add
// up.
#pragma once

#include "codec/row.h"

#include <initializer_list>
#include <string_view>
#include <utility>

namespace ribkit::codec {

// Not constexpr: naming one of these while a layout is compiled is the error message.
void layout_rows_leave_a_hole_or_overlap();
void layout_count_must_stand_in_a_word_before_its_list();
void layout_open_list_must_be_last();
void layout_size_differs_from_its_rows();
void layout_run_is_of_one_kind_only();
void layout_part_lies_outside_its_row();
void layout_has_no_such_field();

/// That a layout's rows are in order. Every layout has one, and nothing else makes one.
class layout_check {
    friend struct layout;
    constexpr explicit layout_check(const layout &l);
};

/// A message's table. The rows are an array of their own, just as long as the table, which lives where the layout does.
struct layout {
    const char *name;
    uint16_t size; // of the fixed part, bounded lists included
    std::initializer_list<row> rows;
    layout_check checked = layout_check(*this);

    [[nodiscard]] constexpr const row *begin() const { return rows.begin(); }
    [[nodiscard]] constexpr const row *end() const { return rows.end(); }
    [[nodiscard]] constexpr const row &operator[](size_t i) const { return begin()[i]; }
    [[nodiscard]] constexpr const row &last() const { return end()[-1]; }

    /// The row of that name; an unknown name does not compile.
    [[nodiscard]] consteval row row_of(std::string_view field) const {
        for (const row &r : *this) {
            if (field == r.name) {
                return r;
            }
        }
        layout_has_no_such_field();
        return {};
    }
    [[nodiscard]] consteval uint16_t at(std::string_view field) const { return row_of(field).offset; }
};

/// Whether one of the first `n` rows has a word there.
constexpr bool has_word_at(const layout &l, size_t n, uint32_t offset) {
    for (size_t i = 0; i < n; ++i) {
        if (l[i].kind == row_kind::words && offset >= l[i].offset && offset < l[i].end() && offset % 4 == 0) {
            return true;
        }
    }
    return false;
}

constexpr bool can_continue(const row &before, const row &r) {
    return before.kind == r.kind && (r.kind == row_kind::words || r.kind == row_kind::bytes);
}

constexpr bool has_part_outside(const row &r) {
    for (const row_part &p : r.parts) {
        if (p.shift + p.bits > 8 * r.size) {
            return true;
        }
    }
    return false;
}

constexpr layout_check::layout_check(const layout &l) {
    uint32_t next = 0;
    for (size_t i = 0; i < l.rows.size(); ++i) {
        const row &r = l[i];
        if (i != 0 && is_open(l[i - 1])) {
            layout_open_list_must_be_last();
        }
        if (r.continues && (i == 0 || !can_continue(l[i - 1], r))) {
            layout_run_is_of_one_kind_only();
        }
        if (r.offset != next) {
            layout_rows_leave_a_hole_or_overlap();
        }
        if (is_list(r) && r.count.where != count_in::constant && !has_word_at(l, i, r.count.at)) {
            layout_count_must_stand_in_a_word_before_its_list();
        }
        if (has_part_outside(r)) {
            layout_part_lies_outside_its_row();
        }
        next += r.size;
    }
    if (next != l.size) {
        layout_size_differs_from_its_rows();
    }
}

/// How many rows are left where every run is one.
constexpr size_t n_runs(const layout &l) {
    size_t n = 0;
    for (const row &r : l) {
        n += r.continues ? 0 : 1;
    }
    return n;
}

/// One of them.
constexpr row run_of(const layout &l, size_t wanted) {
    row run;
    size_t begun = 0;
    for (const row &r : l) {
        begun += r.continues ? 0 : 1;
        if (begun == wanted + 1) {
            run = r.continues ? run.followed_by(r) : r;
        }
    }
    return run;
}

/// A layout of as many rows as there are indices, each of which `Row` makes from another layout.
template <const layout &Of, row (&Row)(const layout &, size_t), class Indices>
inline constexpr layout made_of{"", 0, {}};
template <const layout &Of, row (&Row)(const layout &, size_t), size_t... I>
inline constexpr layout made_of<Of, Row, std::index_sequence<I...>>{Of.name, Of.size, {Row(Of, I)...}};

/// What converters and checks are made from: fewer and longer rows, of the same bytes.
template <const layout &L>
inline constexpr const layout &merged = made_of<L, run_of, std::make_index_sequence<n_runs(L)>>;

} // namespace ribkit::codec
