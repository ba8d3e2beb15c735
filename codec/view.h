// Typed access to a message's bytes: fields, their parts and lists are read and written by the names of the layout,
// where they stand, in either byte order. An unknown name, a list read as a number or a number of another width does
// not compile; what is left when it has compiled is the load, the swap and the shift.
//
// A view owns nothing and checks nothing: it is for bytes that a check has accepted, or that the program has written.
#pragma once

#include "codec/size.h"

#include <iterator>
#include <span>
#include <type_traits>

namespace ribkit::codec {

/// The name of a field or of a part, as a template's argument.
template <size_t N> struct field_called {
    char text[N]{};

    consteval field_called(const char (&name)[N]) { // NOLINT(google-explicit-constructor)
        for (size_t i = 0; i < N; ++i) {
            text[i] = name[i];
        }
    }
    [[nodiscard]] constexpr std::string_view str() const { return {text, N - 1}; }
};

namespace fields_of {

template <size_t Size> struct unsigned_of {};
template <> struct unsigned_of<1> { using type = uint8_t; };
template <> struct unsigned_of<2> { using type = uint16_t; };
template <> struct unsigned_of<4> { using type = uint32_t; };

/// Only what is converted as a number changes its byte order; bytes that are carried lie as they travel.
constexpr std::endian order_of(const row &r, std::endian message) {
    return r.kind == row_kind::words || r.kind == row_kind::half ? message : std::endian::big;
}

constexpr bool is_number(const row &r) {
    return !is_list(r) && r.kind != row_kind::name && (r.size == 1 || r.size == 2 || r.size == 4);
}

// Not constexpr: naming this while a program is compiled is the error message.
void row_has_no_such_part();

constexpr row_part part_of(const row &r, std::string_view wanted) {
    for (const row_part &p : r.parts) {
        if (wanted == p.name) {
            return p;
        }
    }
    row_has_no_such_part();
    return {};
}

constexpr bool is_in_one_byte(row_part p) { return p.shift / 8 == (p.shift + p.bits - 1) / 8; }

/// Where the byte of a part stands.
constexpr size_t byte_of(const row &r, row_part p, std::endian order) {
    return order == std::endian::big ? r.end() - 1 - p.shift / 8 : r.offset + p.shift / 8U;
}

constexpr uint32_t mask_of(row_part p) { return (p.bits == 32 ? 0 : uint32_t{1} << p.bits) - 1; }

template <size_t Size, std::endian Order> [[gnu::always_inline]] inline auto load(const uint8_t *at) {
    if constexpr (Size == 1) {
        return *at;
    } else if constexpr (Size == 2) {
        return load16<Order>(at);
    } else {
        return load32<Order>(at);
    }
}

template <size_t Size, std::endian Order> [[gnu::always_inline]] inline void store(uint8_t *at, uint32_t number) {
    if constexpr (Size == 1) {
        *at = static_cast<uint8_t>(number);
    } else if constexpr (Size == 2) {
        store16<Order>(at, static_cast<uint16_t>(number));
    } else {
        store32<Order>(at, number);
    }
}

} // namespace fields_of

/// How far the entries of a list stand apart where each says its own size.
inline constexpr uint16_t self_sized = 0;

template <const layout &Entry, uint16_t Stride, std::endian Order, class Byte> class entries;

/// A message, a record or an entry of layout L at `data()`.
/// @tparam Order of its numbers: big for a message as it travels, std::endian::native for one in host order
/// @tparam Byte const uint8_t to read, uint8_t to read and write
template <const layout &L, std::endian Order = std::endian::big, class Byte = const uint8_t> class view {
    template <field_called Field> static constexpr row row_of = L.row_of(Field.str());
    template <field_called Field, field_called Part>
    static constexpr row_part part_of = fields_of::part_of(row_of<Field>, Part.str());

  public:
    using address = std::conditional_t<std::is_const_v<Byte>, const void *, void *>;
    static constexpr const layout &described_by = L;

    /// @param message so many bytes as its layout and its counts say, of any alignment; the caller keeps them
    explicit view(address message) : bytes_(static_cast<Byte *>(message)) {}

    /// What can be written can be read.
    template <class Written, class = std::enable_if_t<std::is_const_v<Byte> && std::is_same_v<Written, uint8_t>>>
    view(view<L, Order, Written> writable) : bytes_(writable.data()) {} // NOLINT(google-explicit-constructor)

    [[nodiscard]] Byte *data() const { return bytes_; }

    /// Its size in bytes as its counts have it, to the end of the open list.
    [[nodiscard]] uint32_t size() const { return static_cast<uint32_t>(wire_size<L, Order>(bytes_)); }

    /// The number of a field of 1, 2 or 4 bytes, as an unsigned integer of that width.
    template <field_called Field> [[nodiscard]] auto get() const {
        constexpr row r = row_of<Field>;
        static_assert(fields_of::is_number(r), "the field is no number of 1, 2 or 4 bytes: see list, area and text");
        using number = typename fields_of::unsigned_of<r.size>::type;
        const number found = fields_of::load<r.size, fields_of::order_of(r, Order)>(bytes_ + r.offset);
        return r.kind == row_kind::masked ? static_cast<number>(found & r.mask) : found;
    }

    /// The bits of a field that have a name of their own, shifted down. Where they are in one byte, only that is read.
    template <field_called Field, field_called Part> [[nodiscard]] uint32_t get() const {
        constexpr row r = row_of<Field>;
        constexpr row_part p = part_of<Field, Part>;
        if constexpr (fields_of::is_in_one_byte(p)) {
            const uint32_t byte = bytes_[fields_of::byte_of(r, p, fields_of::order_of(r, Order))];
            return byte >> p.shift % 8 & fields_of::mask_of(p);
        } else {
            return uint32_t{get<Field>()} >> p.shift & fields_of::mask_of(p);
        }
    }

    /// The number as a reader is shown it: modules, which are numbered from 0, are counted from 1.
    template <field_called Field> [[nodiscard]] uint32_t shown() const {
        return uint32_t{get<Field>()} + row_of<Field>.shown_more;
    }

    /// The bytes of any field but an open list, as they lie.
    template <field_called Field> [[nodiscard]] auto area() const {
        constexpr row r = row_of<Field>;
        static_assert(r.size != 0, "an open list has no size of its own: see list");
        return std::span<Byte, r.size>(bytes_ + r.offset, r.size);
    }

    /// The characters of a field up to its end, or to the first that is 0.
    template <field_called Field> [[nodiscard]] std::string_view text() const {
        const auto all = area<Field>();
        const auto *characters = reinterpret_cast<const char *>(all.data());
        return {characters, strnlen(characters, all.size())};
    }

    /// The entries of a list.
    template <field_called Field> [[nodiscard]] auto list() const {
        static_assert(is_list(row_of<Field>), "the field is no list");
        constexpr row r = row_of<Field>;
        return entries<*r.entry, r.stride, Order, Byte>(bytes_ + r.offset, read_count<Order>(r.count, bytes_));
    }

    /// The same bytes as another layout has them.
    template <const layout &Other> [[nodiscard]] view<Other, Order, Byte> as() const {
        return view<Other, Order, Byte>(bytes_);
    }

    /// Writes a number into a field of at least its width. Of a masked byte only the bits of its mask are written.
    template <field_called Field, class Number> const view &set(Number value) const {
        constexpr row r = row_of<Field>;
        static_assert(!std::is_const_v<Byte>, "the bytes are const");
        static_assert(fields_of::is_number(r), "the field is no number of 1, 2 or 4 bytes: see area and set_bytes");
        static_assert(r.kind != row_kind::zero, "the field is always 0");
        static_assert((std::is_integral_v<Number> || std::is_enum_v<Number>)&&sizeof(Number) <= r.size,
                      "the number is wider than the field");
        const auto number = static_cast<uint32_t>(value);
        fields_of::store<r.size, fields_of::order_of(r, Order)>(
            bytes_ + r.offset, r.kind == row_kind::masked ? (bytes_[r.offset] & ~r.mask) | (number & r.mask) : number);
        return *this;
    }

    /// Writes the bits of a field that have a name of their own; the others stay.
    template <field_called Field, field_called Part> const view &set(uint32_t value) const {
        constexpr row_part p = part_of<Field, Part>;
        constexpr uint32_t bits = fields_of::mask_of(p) << p.shift;
        const auto number = get<Field>();
        set<Field>(static_cast<std::remove_const_t<decltype(number)>>((number & ~bits) | (value << p.shift & bits)));
        return *this;
    }

    /// Fills a field's area with bytes, and what is left of it with 0; bytes beyond it are left out.
    template <field_called Field> const view &set_bytes(std::span<const uint8_t> bytes) const {
        static_assert(!std::is_const_v<Byte>, "the bytes are const");
        const auto all = area<Field>();
        const size_t taken = bytes.size() < all.size() ? bytes.size() : all.size();
        if (taken != 0) {
            std::memmove(all.data(), bytes.data(), taken);
        }
        std::memset(all.data() + taken, 0, all.size() - taken);
        return *this;
    }

    /// As set_bytes.
    template <field_called Field> const view &set_text(std::string_view text) const {
        return set_bytes<Field>({reinterpret_cast<const uint8_t *>(text.data()), text.size()});
    }

  private:
    Byte *bytes_;
};

/// The entries of a list, one after the other; where they stand at even distances, each at once.
template <const layout &Entry, uint16_t Stride, std::endian Order, class Byte> class entries {
  public:
    using entry = view<Entry, Order, Byte>;

    class iterator {
      public:
        using value_type = entry;
        using reference = entry;
        using difference_type = std::ptrdiff_t;
        using iterator_category = std::input_iterator_tag; // what it yields is made for each call
        using pointer = void;

        iterator(Byte *at, uint32_t left) : at_(at), left_(left) {}

        entry operator*() const { return entry(at_); }
        iterator &operator++() {
            at_ += Stride != self_sized ? Stride : entry(at_).size();
            --left_;
            return *this;
        }
        /// Where the entry stands; behind the last, where the list ends.
        [[nodiscard]] Byte *at() const { return at_; }

        friend bool operator==(const iterator &a, const iterator &b) { return a.left_ == b.left_; }

      private:
        Byte *at_;
        uint32_t left_;
    };

    entries(Byte *first, uint32_t count) : first_(first), count_(count) {}

    [[nodiscard]] iterator begin() const { return {first_, count_}; }
    [[nodiscard]] iterator end() const { return {nullptr, 0}; }

    /// How many there are.
    [[nodiscard]] uint32_t size() const { return count_; }
    [[nodiscard]] bool empty() const { return count_ == 0; }

    entry operator[](size_t position) const {
        static_assert(Stride != self_sized, "entries that say their own sizes are met one after the other");
        return entry(first_ + position * Stride);
    }

  private:
    Byte *first_;
    uint32_t count_;
};

template <const layout &L> using host_view = view<L, std::endian::native>;
template <const layout &L, std::endian Order = std::endian::big> using writable_view = view<L, Order, uint8_t>;

} // namespace ribkit::codec
