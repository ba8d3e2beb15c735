// A message or entry of which the members are being read: what has been seen, and what has to be compared once it is
// closed. The notes of all objects that are open lie one behind the other, so that an object costs no memory of its
// own.
#pragma once

#include "decode/encoder.h"
#include "decode/escape.h"
#include "decode/output.h"

#include <algorithm>
#include <bitset>
#include <optional>

namespace ribkit::decode {

/// A text of unknown origin in a complaint.
inline std::string quoted(std::string_view text) {
    constexpr size_t longest = 80;
    const bool cut = text.size() > longest;
    std::string shown(4 * longest + 5, '\0');
    char *end = put_printable(put(shown.data(), "\""), text.substr(0, longest));
    end = put(end, cut ? "...\"" : "\"");
    shown.resize(static_cast<size_t>(end - shown.data()));
    return shown;
}

/// A message or entry that is being read.
class encoder::object {
  public:
    object(encoder &all, const shape &s, size_t place)
        : fields(s), at(place), notes_(all.notes_.size()), texts_(all.texts_.size()), sizes_(all.sizes_.size()),
          rests_(all.rests_.size()), all_(all) {
        all.sizes_.resize(sizes_ + s.fields.size(), not_read);
    }
    object(const object &) = delete;
    object &operator=(const object &) = delete;
    ~object() {
        all_.notes_.resize(notes_);
        all_.texts_.resize(texts_);
        all_.sizes_.resize(sizes_);
        all_.rests_.resize(rests_);
    }

    [[nodiscard]] std::span<const note> notes() const { return std::span(all_.notes_).subspan(notes_); }
    [[nodiscard]] std::span<const rest> rests() const { return std::span(all_.rests_).subspan(rests_); }
    /// Of a list, by the number of its field.
    uint32_t &entries(size_t field_number) { return all_.sizes_[sizes_ + field_number]; }
    size_t number_of(const field &f) const { return static_cast<size_t>(&f - fields.fields.data()); }

    /// What a member said; null where it has not been read.
    [[nodiscard]] const note *noted(uint16_t slot_number) const {
        const auto all = notes();
        const auto found = std::find_if(all.begin(), all.end(), [&](const note &n) { return n.slot == slot_number; });
        return found == all.end() ? nullptr : &*found;
    }

    static constexpr uint32_t not_read = UINT32_MAX;

    const shape &fields;
    const size_t at;
    std::bitset<shape::most_slots> seen;
    size_t expected = 0;
    std::vector<later> deferred;
    std::optional<std::pair<uint32_t, std::string>> tail; ///< where it begins, and its digits

  private:
    size_t notes_, texts_, sizes_, rests_;
    encoder &all_;
};

} // namespace ribkit::decode
