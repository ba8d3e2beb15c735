// Every message that ribkit converts: its name, its layout, both converters, and what its layout does not say. For
// tools, tests and generators; the core itself needs no list.
#pragma once

#include "codec/layout.h"

#include <span>

namespace ribkit::codec {

/// An exported converter, of whichever of the two signatures.
struct converter {
    using plain = void (*)(const void *src, void *dst);
    using sized = uint32_t (*)(const void *src, void *dst);

    constexpr converter(plain function) : unsized_(function) {} // NOLINT(google-explicit-constructor)
    constexpr converter(sized function) : sized_(function) {}   // NOLINT(google-explicit-constructor)

    [[nodiscard]] constexpr bool says_size() const { return sized_ != nullptr; }

    /// What the converter returns; 0 where it returns nothing.
    uint32_t operator()(const void *src, void *dst) const {
        if (sized_ != nullptr) {
            return sized_(src, dst);
        }
        unsized_(src, dst);
        return 0;
    }

  private:
    plain unsized_ = nullptr;
    sized sized_ = nullptr;
};

struct message {
    const char *prefix; // "rib", "fib" or "rib_fib"; the converters are PREFIX_hton_NAME and PREFIX_ntoh_NAME
    const char *name;
    const layout *wire;
    converter to_network, to_host;
    const char *odd = ""; // what the layout does not say
};

std::span<const message> catalogue();

/// A form that no converter handles.
struct form {
    const layout *wire;
    const char *odd = "";
};

std::span<const form> forms();

/// The message of that name ("rib_fcurt" or, where it is the only one, "fcurt"); null where there is none.
const message *find_message(const char *name);

/// A digest of what a layout does to bytes, entries included: it changes with every offset, size, kind, mask, count,
/// stride and bound, and with no name.
uint32_t wire_fingerprint(const layout &l);

/// A digest of what a layout says to a reader, its bytes included: it changes with every name, too.
uint32_t description_fingerprint(const layout &l);

} // namespace ribkit::codec
