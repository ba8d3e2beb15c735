// A layout made ready to be walked: its fields with the keys that they have in JSON, once for all messages of a kind.
// What shows a message goes through the fields; what writes one finds them by their keys. Fields that a layout cannot
// say are added here: what a type, a kind or an operation code decides.
#pragma once

#include "codec/layout.h"
#include "decode/json_text.h"
#include "decode/number_text.h"
#include "protocol/uses.h"

#include <memory>
#include <string>
#include <vector>

namespace ribkit::decode {

enum class field_kind : uint8_t {
    number,     // a word, a half or a byte; of a masked byte the bits that are carried
    address,    // a word that is written as "0x020000"
    digits,     // bytes
    name,       // characters in a room of their own
    words,      // a list of words
    entries,    // a list of entries that have fields
    gap,        // bytes that the message does not carry
    masked_off, // the bits of a byte that it does not carry
    unused,     // the rest of the room of the bounded list in front
    key,        // the key that a type decides
    key_rest,   // the rest of its room
    keys,       // a list of such keys
    body,       // what a kind decides
    payload,    // the content of an envelope
    blocks,     // sixteen lists of an image, one for each size
    tail        // bytes behind the last entry that only a display steps over
};

/// What a layout cannot say.
enum class oddity : uint8_t { none, verf_query, verf_info, in_info, envelope, bud_image, hops };

struct part_field {
    json_key key;
    json_key text_key; ///< where it has texts
    number_text text;
    uint8_t shift = 0;
    uint32_t mask = 0; ///< once shifted down
    uint16_t slot = 0;
    bool counts = false;

    [[nodiscard]] uint32_t of(uint32_t word) const { return word >> shift & mask; }
};

struct shape;

struct field {
    field_kind kind{};
    uint8_t mask = 0xff; ///< of a byte
    uint16_t offset = 0;
    uint16_t size = 0; ///< bytes; 0 for what follows at the end
    const codec::row *row = nullptr;
    json_key key;
    json_key text_key; ///< where it has a text
    json_key use_key;  ///< where our services have a use for it
    const protocol::word_use *use = nullptr;
    number_text text;
    std::vector<part_field> parts;
    uint16_t slot = 0; ///< of its own key; its text's and its use's where it has them
    uint16_t text_slot = 0;
    bool counts = false; ///< is the number of a list's entries
    bool labels = false; ///< words of a list are label stack entries
    const shape *entry = nullptr;

    [[nodiscard]] std::string_view name() const { return key.name(); }
    [[nodiscard]] bool is_list() const { return kind == field_kind::words || kind == field_kind::entries; }
};

/// Whether a bitmap has its second half in the gap behind it.
inline bool is_split_map(const field &f) { return f.row->means == codec::meaning::ports; }

/// What a key stands for.
struct slot {
    enum class role : uint8_t { value, text, use, part, part_text };
    std::string_view key;
    uint16_t field = 0;
    role is{};
    uint16_t part = 0;
};

struct shape {
    const codec::layout *wire = nullptr;
    uint16_t size = 0;
    oddity odd{};
    std::vector<field> fields;
    std::vector<slot> slots; ///< in the order in which they are written

    static constexpr size_t most_slots = 64;
    static constexpr size_t none = SIZE_MAX;
    /// The slot of a key; `expected` is looked at first.
    [[nodiscard]] size_t find(std::string_view key, size_t expected) const;
    /// The number there, which counts or decides.
    [[nodiscard]] const field &number_at(uint32_t offset) const;
};

/// What an envelope carries, where that is known.
struct content {
    const char *name = nullptr;
    const shape *fields = nullptr;
};

/// The word that decides what else there is, and what stands in it.
uint32_t decider_at(oddity odd);

/// The layout of a key of that type; in a query the label key's word 8 is the cursor.
const codec::layout &key_layout(uint32_t type, bool in_query);

/// The layout of a body of that kind; null where there is none.
const codec::layout *body_layout(uint32_t kind);

/// The shape of a layout, kept from then on.
const shape &shape_of(const codec::layout &l, oddity odd = oddity::none);

} // namespace ribkit::decode
