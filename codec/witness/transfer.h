// What the naive converters are written with: one field at a time, a byte at a time, for either direction and for a
// host of either byte order, chosen at run time. Slow, and plain enough to be read against the layouts line by line.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace ribkit::witness {

enum class direction : uint8_t { hton, ntoh };
enum class order : uint8_t { little, big };

/// Thrown instead of touching a byte outside the buffers.
struct past_the_end {};

/// The two buffers of a conversion; the same memory when it is done in place.
struct buffers {
    std::span<const uint8_t> src;
    std::span<uint8_t> dst;
    size_t reach = 0; ///< bytes from the start of the buffers that the conversion has touched
};

[[nodiscard]] uint32_t load_word(order from, const uint8_t *at);
void store_word(order to, uint8_t *at, uint32_t value);

class transfer;

/// A count of the message, as loops ask for it: on the way out what the source held when this was made, on the way in
/// what the destination holds now.
class number {
  public:
    number(const transfer &message, size_t offset, bool second_byte);
    [[nodiscard]] uint32_t operator()() const;

  private:
    const transfer *message_;
    size_t offset_;
    bool second_byte_;
    uint32_t sent_ = 0;
};

/// A message, or a record inside one, on its way from source to destination. Offsets count from its start.
class transfer {
  public:
    transfer(direction way, order host, buffers &memory, size_t start = 0)
        : way_(way), host_(host), memory_(&memory), start_(start) {}

    /// A record inside this message.
    [[nodiscard]] transfer at(size_t offset) const { return {way_, host_, *memory_, start_ + offset}; }

    void word(size_t offset);
    void half(size_t offset);
    void bytes(size_t offset, size_t length);
    void zero(size_t offset, size_t length);
    void words(size_t offset, size_t count);
    void put_byte(size_t offset, uint8_t value) { *written(offset, 1) = value; }
    void put_word(size_t offset, uint32_t value) { store_word(to(), written(offset, 4), value); }

    [[nodiscard]] number count(size_t offset) const { return {*this, offset, false}; }
    [[nodiscard]] number second_byte(size_t offset) const { return {*this, offset, true}; }

    [[nodiscard]] bool sending() const { return way_ == direction::hton; }
    [[nodiscard]] uint8_t source_byte(size_t offset) const { return *read(offset, 1); }
    /// The source's word in the source's form.
    [[nodiscard]] uint32_t source_word(size_t offset) const { return load_word(from(), read(offset, 4)); }
    /// The destination's word in the destination's form.
    [[nodiscard]] uint32_t arrived_word(size_t offset) const { return load_word(to(), written(offset, 4)); }
    /// Four of the destination's bytes as a number whose first byte is the highest.
    [[nodiscard]] uint32_t arrived_bytes(size_t offset) const { return load_word(order::big, written(offset, 4)); }
    [[nodiscard]] uint8_t arrived_byte(size_t offset) const { return *written(offset, 1); }

  private:
    [[nodiscard]] order from() const { return sending() ? host_ : order::big; }
    [[nodiscard]] order to() const { return sending() ? order::big : host_; }
    [[nodiscard]] size_t touch(size_t offset, size_t length, size_t room) const;
    [[nodiscard]] const uint8_t *read(size_t offset, size_t length) const;
    [[nodiscard]] uint8_t *written(size_t offset, size_t length) const;

    direction way_;
    order host_;
    buffers *memory_;
    size_t start_;
};

} // namespace ribkit::witness
