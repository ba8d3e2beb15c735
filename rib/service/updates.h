// Update messages of the three tables, from anywhere: checked, read, taken by the state.
#pragma once

#include "protocol/route_messages.h"
#include "rib/state.h"
#include "rib_check.h"

#include <cstdint>
#include <functional>
#include <span>

namespace ribkit::rib {

/// How an update has come.
struct update_origin {
    uint32_t now = 0; ///< seconds since 1970
    bool in_envelope = false;
    /// Empty, or asked whether the sender may use the update's client identity.
    std::function<bool(uint32_t)> may_speak{};
};

/// As state::update; where the message is too short or its counts and its size disagree, nothing is stored, nor where
/// the sender may not use the client identity: RIB_BAD_PARAMETERS.
/// @tparam Kind unicast, multicast or label
/// @param why null, or filled where the message's size and its counts disagree
template <class Kind>
protocol::fcurt_response take_update(state &rib, std::span<const uint8_t> message, const update_origin &from = {},
                                     rib_check_report *why = nullptr);

/// The operation of an update; 0 where the message is too short to tell.
template <class Kind> uint32_t operation_of(std::span<const uint8_t> message);

} // namespace ribkit::rib
