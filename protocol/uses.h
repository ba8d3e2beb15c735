// What this RIB and its clients put into words to which the messages give no meaning of their own: the names of the
// uses, each with the name that the layout has for its word.
#pragma once

#include "codec/view.h"

namespace ribkit::protocol::uses {

/// Of the answer to an update, wire::route_rsp.
namespace update_answer {
inline constexpr codec::field_called result{"word_0"};    ///< result code
inline constexpr codec::field_called oper{"word_4"};      ///< of the update; 0 where it was too short to tell
inline constexpr codec::field_called vsan{"word_8"};      ///< of the update; 0 likewise
inline constexpr codec::field_called accepted{"word_12"}; ///< records of the update that took effect
inline constexpr codec::field_called held{"word_16"};     ///< routes that the RIB now holds for this VSAN
} // namespace update_answer

/// Of a query of unicast routes, wire::fcurt_query: the key that it starts at.
namespace query_start {
inline constexpr codec::field_called vsan{"word_12"};
inline constexpr codec::field_called fcid{"word_16"};
inline constexpr codec::field_called mask{"word_20"};
} // namespace query_start

} // namespace ribkit::protocol::uses
