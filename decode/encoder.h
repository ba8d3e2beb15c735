// JSON to network bytes. Members may stand in any order: what has its place in the fixed part of a message or entry is
// written there, and lists are appended as they come, so that no more than one message is held.
#pragma once

#include "decode/byte_buffer.h"
#include "decode/json_reader.h"
#include "decode/kinds.h"
#include "decode/output.h"

#include <array>
#include <functional>
#include <string>
#include <vector>

namespace ribkit::decode {

/// What is wrong with the JSON, behind where: "[1].fields.route[0].n_hop: is missing".
struct encode_error : std::runtime_error {
    using std::runtime_error::runtime_error;
};

class encoder {
  public:
    using taker = std::function<void(const kind &what, std::span<const uint8_t> message)>;

    /// @param take called with each message, in order
    explicit encoder(taker take) : take_(std::move(take)) {}

    /// Reads an array of messages, or messages one behind the other. Throws encode_error.
    void read(json_reader &in);

  private:
    /// Where in the JSON: a key, or a number in a list.
    struct step {
        std::string_view key;
        size_t index = 0;
    };

    /// What a member says of a number that another one gives.
    struct note {
        uint16_t slot;
        uint32_t part;   ///< the number of a part
        size_t at, size; ///< of a text, among those that are kept
    };

    /// Bytes that the layout does not carry, to be judged when all counts are known.
    struct rest {
        uint16_t field;
        uint32_t from, size;
    };

    struct later {
        uint16_t slot;
        std::string value;
    };

    class object;
    using text_room = std::array<char, output::longest_piece>; ///< any text that a number may have

    void read_message();
    const kind &message_fields(bool carried);
    const kind &kind_named(std::string_view name, bool carried);
    void fields(const shape &s, size_t at, bool in_place);

    void member(object &o);
    void value(object &o, uint16_t slot);
    void part(object &o, uint16_t slot);
    void text(object &o, uint16_t slot);
    void simple_value(const field &f, size_t at);
    void words(object &o, uint16_t field_number);
    void entries(object &o, uint16_t field_number);
    static bool waits(const object &o, const slot &s);
    void odd_value(object &o, const slot &s);
    void keys(object &o, uint16_t field_number);
    void payload(object &o, const field &f);
    void blocks(object &o, const field &f);
    void rest_member(object &o, std::string_view key);

    // Once all members have been read, or what they speak of: encoder_close.cpp.
    void close(object &o);
    void read_deferred(object &o);
    void close_field(object &o, const field &f);
    void close_number(object &o, const field &f);
    void close_list(object &o, const field &f, uint32_t entries);
    void close_name(object &o, const field &f);
    void agree_on_count(object &o, codec::count_of count, uint32_t entries, std::string_view list);
    void close_rest(object &o, const rest &r);
    void close_tail(object &o);
    void appended_digits();
    void close_note(object &o, const note &n);
    void agree_on_part(object &o, const slot &s, uint32_t said);
    void agree_on_text(object &o, const slot &s, std::string_view said, std::string_view expected);
    std::string_view expected_text(object &o, const slot &s, text_room &room);

    void put_number(const field &f, size_t at, uint32_t number);
    [[nodiscard]] uint32_t number_at(const field &f, size_t at);
    [[nodiscard]] uint32_t word_at(size_t at);
    void reserve(size_t at, size_t size);
    void digits(size_t at, size_t size);
    uint32_t address();

    [[noreturn]] void fail(const std::string &what) const;
    [[noreturn]] void fail_at(std::string_view key, const std::string &what);
    [[nodiscard]] std::string path() const;

    taker take_;
    json_reader *in_ = nullptr;
    byte_buffer bytes_; ///< of the message
    std::vector<step> path_;
    std::string unknown_;         ///< a key that the path holds and no shape has
    std::vector<note> notes_;     ///< of all objects that are open
    std::string texts_;           ///< likewise
    std::vector<uint32_t> sizes_; ///< of lists, one for each field of all objects that are open
    std::vector<rest> rests_;
};

} // namespace ribkit::decode
