// The converter is tried on exactly the bytes there are; a rule says what it does not demand.
#include "codec/witness/naive_check.h"

#include <algorithm>

namespace ribkit::witness {

namespace {

using byte_span = std::span<const uint8_t>;

/// Thrown where a count exceeds its array.
struct too_many {};

void at_most(uint32_t count, uint32_t bound) {
    if (count > bound) {
        throw too_many{};
    }
}

/// @throws past_the_end where the message is shorter. @return end
size_t need(byte_span m, size_t end) {
    if (end > m.size()) {
        throw past_the_end{};
    }
    return end;
}

uint32_t word(byte_span m, size_t at) {
    need(m, at + 4);
    return load_word(order::big, m.data() + at);
}

uint32_t second_byte(byte_span m, size_t at) { return word(m, at) >> 16 & 0xff; }

size_t whole(std::string_view name, byte_span m);

size_t records(byte_span m, size_t at, uint32_t n, std::string_view record) {
    for (; n > 0; --n) {
        at += whole(record, m.subspan(need(m, at)));
    }
    return at;
}

// One rule a message: the bytes that it asks for.

size_t fclrt_update(byte_span m) { return records(m, 16, word(m, 12), "rib_fclrt"); }
size_t fcmrt_update(byte_span m) { return records(m, 16, word(m, 12), "rib_fcmrt"); }

size_t fcurt_update(byte_span m) {
    at_most(word(m, 12), 240);
    return records(m, 980, word(m, 16), "rib_fcurt");
}

size_t fclrt(byte_span m) {
    at_most(word(m, 20), 2);
    at_most(word(m, 24), 16);
    return 104;
}

size_t fclrt_query(byte_span m) {
    at_most(word(m, 24), 2);
    return 40;
}

size_t lbl_route(byte_span m) {
    at_most(word(m, 24), 2);
    return 40;
}

/// Its display steps from hop to hop by what each hop holds.
size_t ucast_route(byte_span m) {
    const uint32_t hops = word(m, 32);
    for (size_t i = 0; i < hops; ++i) {
        at_most(second_byte(m, 36 + 8 * i), 3);
    }
    size_t shown = 36;
    for (uint32_t i = 0; i < hops; ++i) {
        shown = need(m, shown + 8 + size_t{4} * second_byte(m, shown));
    }
    return shown;
}

/// The size is 88 although the name may end long before.
size_t registration(byte_span m) {
    need(m, 88);
    at_most(static_cast<uint32_t>(std::find(m.begin() + 8, m.begin() + 88, 0) - (m.begin() + 8)), 79);
    return 88;
}

size_t fclrt_info(byte_span m) { return records(m, 4, word(m, 0), "rib_lbl_route"); }

/// Which bytes have been swapped by the lists of earlier entries when a message is received in place.
class swapped_bytes {
  public:
    explicit swapped_bytes(byte_span m) : is_(m.size()) {}
    void add(size_t at, size_t size) { std::fill_n(is_.begin() + static_cast<ptrdiff_t>(at), size, true); }
    [[nodiscard]] bool has(size_t at) const { return is_.at(at); }

    /// A count that would be read after it has been swapped.
    void zero_where_swapped(byte_span m, size_t at) const { at_most(has(at) ? word(m, at) : 0, 0); }

  private:
    std::vector<bool> is_;
};

size_t fcmrt_info(byte_span m) {
    swapped_bytes swapped(m);
    for (size_t i = 0; i < word(m, 0); ++i) {
        swapped.zero_where_swapped(m, 4 + 20 * i + 16);
        swapped.add(4 + 20 * i + 20, size_t{4} * word(m, 4 + 20 * i + 16));
    }
    return 4;
}

size_t fcurt_info(byte_span m) {
    swapped_bytes swapped(m);
    size_t end = need(m, 8);
    for (size_t i = 0; i < word(m, 0); ++i) {
        const size_t route = 8 + 36 * i;
        end = std::max(end, route + ucast_route(m.subspan(route)));
        swapped.zero_where_swapped(m, route + 32);
        swapped.add(route + 36, size_t{8} * word(m, route + 32));
    }
    return end;
}

size_t db_info(byte_span m) { return need(m, 8); }

void slots(byte_span m, size_t at, uint32_t n) {
    at_most(n, 16);
    for (size_t i = 0; i < n; ++i) {
        at_most(second_byte(m, at + 20 * i), 3);
    }
}

size_t fcu_path(byte_span m) {
    slots(m, 28, word(m, 24));
    return 348;
}

size_t fcl_path(byte_span m) {
    at_most(word(m, 24), 2);
    slots(m, 40, word(m, 28));
    return 360;
}

struct rule {
    std::string_view name;
    size_t (*size)(byte_span);
};

constexpr rule rules[] = {
    {"rib_fclrt_update", fclrt_update}, {"rib_fcmrt_update", fcmrt_update},
    {"rib_fcurt_update", fcurt_update}, {"rib_fclrt", fclrt},
    {"rib_fclrt_query", fclrt_query},   {"rib_lbl_route", lbl_route},
    {"rib_ucast_route", ucast_route},   {"rib_register", registration},
    {"rib_fclrt_info", fclrt_info},     {"rib_fcmrt_info", fcmrt_info},
    {"rib_fcurt_info", fcurt_info},     {"rib_db_info", db_info},
    {"fib_fcu_path", fcu_path},         {"fib_fcl_path", fcl_path},
};

/// What the converter touches. Two messages are read as they arrived: there the sending converter tells, of a host that
/// swaps nothing.
size_t reach(std::string_view name, byte_span m) {
    const bool unconverted = name == "rib_dm_info" || name == "rib_reg_query";
    std::vector<uint8_t> converted(m.size());
    return convert(*find_pair(name), unconverted ? direction::hton : direction::ntoh, order::big, m, converted).reach;
}

size_t whole(std::string_view name, byte_span m) {
    const size_t converted = reach(name, m);
    const auto *found =
        std::find_if(std::begin(rules), std::end(rules), [name](const rule &r) { return r.name == name; });
    return found == std::end(rules) ? converted : std::max(converted, found->size(m));
}

} // namespace

std::optional<size_t> message_size(std::string_view name, std::span<const uint8_t> bytes) {
    try {
        return whole(name, bytes);
    } catch (const past_the_end &) {
        return std::nullopt;
    } catch (const too_many &) {
        return std::nullopt;
    }
}

uint32_t verdict(std::string_view name, std::span<const uint8_t> bytes) {
    const std::optional<size_t> size = message_size(name, bytes);
    if (!size) {
        return 0x40520001;
    }
    return *size == bytes.size() ? 0 : 0x40520011;
}

} // namespace ribkit::witness
