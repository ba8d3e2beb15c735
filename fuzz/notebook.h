// Which messages of the catalogue were seen: themselves, and what stands in them.
#pragma once

#include "codec/bytes.h"
#include "codec/message.h"
#include "codec/size.h"
#include "fuzz/sound_fib_requests.h"
#include "fuzz/sound_requests.h"

#include <set>
#include <span>
#include <string>
#include <string_view>

namespace ribkit::fuzz {

class notebook {
  public:
    /// Notes a message, and what stands in it.
    void note(const codec::message &kind, const uint8_t *bytes) {
        names_.emplace(kind.name);
        note_entries(*kind.wire, bytes);
    }
    void note(std::string_view name, const byte_vector &bytes) {
        if (const codec::message *kind = codec::find_message(name); kind != nullptr) {
            note(*kind, bytes.data());
        }
    }

    /// Notes one message behind the other, of the kinds of "a+b".
    void note_run(std::string_view names, std::span<const uint8_t> bytes) {
        for_each_part(names, bytes,
                      [this](const codec::message &kind, std::span<const uint8_t> part) { note(kind, part.data()); });
    }

    [[nodiscard]] const std::set<std::string, std::less<>> &names() const { return names_; }

  private:
    /// The first entry of each list stands for all.
    void note_entries(const codec::layout &l, const uint8_t *bytes) {
        for (const codec::row &r : l) {
            if (!codec::is_list(r) || codec::read_count<std::endian::big>(r.count, bytes) == 0) {
                continue;
            }
            for (const codec::message &kind : codec::messages()) {
                if (kind.wire == r.entry) {
                    names_.emplace(kind.name);
                }
            }
            note_entries(*r.entry, bytes + r.offset);
        }
    }

    std::set<std::string, std::less<>> names_;
};

} // namespace ribkit::fuzz
