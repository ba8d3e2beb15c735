// A walk's fields as JSON of the same form, with where each stands in the place of what it is.
#pragma once

#include "decode/json_text.h"
#include "decode/shape.h"

#include <span>

namespace ribkit::decode {

/// All offsets are counted in bytes from the start of the message.
class offset_writer {
  public:
    explicit offset_writer(json_text &json) : json_(json) {}

    void number(const field &f, size_t at, uint32_t /*number*/) { place(f, at); }
    void address(const field &f, size_t at, uint32_t /*number*/) { place(f, at); }
    void digits(const field &f, size_t at, std::span<const uint8_t> /*bytes*/, std::span<const uint8_t> /*map*/) {
        place(f, at);
    }
    void name(const field &f, size_t at, std::span<const uint8_t> /*bytes*/) { place(f, at); }

    void begin_words(const field &f) { begin(f, '['); }
    void item(const field & /*f*/, size_t /*i*/, size_t at, uint32_t /*word*/) {
        json_.element();
        json_.number(at);
    }
    void end_words() { json_.close(']'); }

    void begin_entries(const field &f) { begin(f, '['); }
    void begin_entry(const field & /*f*/, size_t /*i*/, size_t /*at*/) {
        json_.element();
        json_.open('{');
    }
    void end_entry() { json_.close('}'); }
    void end_entries() { json_.close(']'); }

    void begin_object(const field &f, size_t /*at*/) { begin(f, '{'); }
    void end_object() { json_.close('}'); }
    void begin_carried(const field &f, size_t at, const char * /*message*/) { begin_object(f, at); }
    void end_carried() { end_object(); }

    void begin_blocks(const field &f) { begin(f, '['); }
    void begin_block(const field & /*f*/, size_t /*k*/) {
        json_.element();
        json_.open('[');
    }
    void block(const field &f, size_t /*k*/, size_t i, size_t at, uint32_t index) { item(f, i, at, index); }
    void end_block() { json_.close(']'); }
    void end_blocks() { json_.close(']'); }

    void rest(size_t offset, size_t at, std::span<const uint8_t> /*bytes*/) {
        json_.member(json_key("bytes_" + std::to_string(offset)));
        json_.number(at);
    }

  private:
    void begin(const field &f, char bracket) {
        json_.member(f.key);
        json_.open(bracket);
    }
    void place(const field &f, size_t at) {
        json_.member(f.key);
        json_.number(at);
    }

    json_text &json_;
};

} // namespace ribkit::decode
