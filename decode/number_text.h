// What a number is called: the text that stands beside it, and the number that a text names.
#pragma once

#include "codec/row.h"
#include "diag/catalogue.h"

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace ribkit::decode {

/// Where the texts of a field's numbers come from.
struct number_text {
    enum class source : uint8_t { none, vocabulary, control, flags, interface, time, from_one, unit };
    static constexpr size_t room = 160; ///< bytes that hold any of them

    source from = source::none;
    const diag::vocabulary *words = nullptr;
    const char *unit = "";

    explicit operator bool() const { return from != source::none; }

    /// Writes the text of a number; nothing where it has none. @return behind it
    char *put(char *to, uint32_t number) const;
    [[nodiscard]] std::string of(uint32_t number) const;

    /// The only number that has this text; none where there are several, or nobody knows.
    [[nodiscard]] std::optional<uint32_t> number_of(std::string_view text) const;
};

/// Of the whole of a row.
number_text text_of(const codec::row &r);

/// Of a vocabulary, by its name; none for an empty name.
number_text text_of(const char *vocabulary);

/// A label stack entry as it is displayed. @return behind it
char *put_label_text(char *to, uint32_t word);

/// The positions of the bits that are set: "1-3, 239". @return behind it; `to` has 4 bytes a bit
char *put_positions(char *to, std::span<const uint8_t> map);

} // namespace ribkit::decode
