// What an operator writes: destinations, interfaces, clients, labels.
#pragma once

#include "model/routes.h"

#include <cstdint>
#include <optional>
#include <string>

namespace ribkit::cli {

// Each throws an input_error that says what was expected.

/// Digits, or hexadecimal ones behind 0x.
/// @param what it is called in the message
uint32_t number_in(const std::string &text, const std::string &what, uint32_t most = UINT32_MAX);

/// FC ID of 24 bits, and behind a slash the mask, where there is one.
struct address {
    uint32_t fcid = 0;
    std::optional<uint32_t> mask{};

    bool operator==(const address &) const = default;
};
address address_in(const std::string &text);

/// An address as a destination: without a mask it is one port's. No bit may stand outside of the mask.
model::destination destination_in(const std::string &text);
std::string destination_text(const model::destination &to);

/// As it is printed: "fc1/1", "port-channel 3".
uint32_t interface_in(const std::string &text);
std::string interface_text(uint32_t if_index);

/// A client's name as displays have it, or its identity.
uint32_t client_in(const std::string &text);
std::string client_text(uint32_t uuid);

} // namespace ribkit::cli
