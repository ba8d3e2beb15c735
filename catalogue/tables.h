// The catalogue as tables that refer to one another by number, made while the library is compiled: every layout that a
// message, a form, an entry or a choice has, each once.
#pragma once

#include "catalogue/messages.h"
#include "codec/fingerprint.h"
#include "diag/catalogue.h"

namespace ribkit::catalogue {

// Not constexpr: naming one of these while a program is compiled is the error message.
void two_layouts_have_one_name();
void a_row_has_texts_that_no_vocabulary_has();

/// Layouts by number. Names are compared, because addresses are no constants where sanitizers watch them.
struct layout_list {
    static constexpr size_t most = 160;
    std::array<const codec::layout *, most> all{};
    size_t size = 0, n_rows = 0, n_parts = 0;

    consteval layout_list() {
        for (const row &m : messages) {
            add(m);
        }
        for (const row &f : forms) {
            add(f);
        }
    }

    [[nodiscard]] constexpr size_t number_of(const codec::layout &wanted) const {
        size_t i = 0;
        while (i < size && std::string_view(all[i]->name) != wanted.name) {
            ++i;
        }
        if (i < size && codec::description_fingerprint(*all[i]) != codec::description_fingerprint(wanted)) {
            two_layouts_have_one_name();
        }
        return i;
    }

  private:
    constexpr void add(const codec::message &m) {
        add(*m.wire);
        for (const codec::choice &choice : m.chosen) {
            for (const codec::choice_case &c : choice.cases) {
                add(*c.chosen);
            }
        }
    }
    constexpr void add(const codec::layout &l) {
        if (number_of(l) != size) {
            return;
        }
        all[size++] = &l;
        for (const codec::row &r : l) {
            ++n_rows;
            n_parts += r.parts.size();
            if (is_list(r)) {
                add(*r.entry);
            }
        }
    }
};

inline constexpr layout_list layouts;

/// The vocabularies, and behind them the one whose numbers are control words.
inline constexpr size_t n_vocabularies = std::size(diag::vocabularies) + 1;
inline constexpr std::string_view control_texts = "rib_fclrt_ctrl";

constexpr size_t vocabulary_number(std::string_view name) {
    if (name == control_texts) {
        return n_vocabularies - 1;
    }
    size_t i = 0;
    while (i < std::size(diag::vocabularies) && diag::vocabularies[i].name != name) {
        ++i;
    }
    if (i == std::size(diag::vocabularies)) {
        a_row_has_texts_that_no_vocabulary_has();
    }
    return i;
}

} // namespace ribkit::catalogue
