// What the RIB's state tells while it changes: every route that changed, in order, and what moved in the hardware.
// Notifications, logs, history and whatever follows the RIB are readers of this one stream.
#pragma once

#include "rib/request.h"

#include <cstdint>

namespace ribkit::rib {

/// Why a route is told about.
enum class cause : uint8_t {
    change,  ///< it has changed: listeners want to know
    restore, ///< it has changed, and no listener is told
    replay   ///< it has not changed: its owner has asked for it
};

/// A route that was added, changed or deleted. What it refers to lasts as long as the call.
/// @tparam Kind unicast, multicast or label
template <class Kind> struct route_event {
    cause why;
    uint32_t oper; ///< RIB_OPER_... of the update that led to it; 0 where a distance was set
    /// RIB_ACTION_...: of a label route that which its kind is added or deleted with; else RIB_ACTION_ADD for what is
    /// new or replaced and of replays, RIB_ACTION_DELETE, or what changed of flag and metric
    uint32_t action;
    const typename Kind::key &key;
    uint32_t uuid;              ///< the owner
    typename Kind::values what; ///< as it is now, a unicast route with its active bit; of a deleted one as it was
};

struct unicast;
struct multicast;
struct label;

/// To be derived from by whoever wants to know. The functions must not throw, and must not call the state.
///
/// One record of an update leads to these calls, in this order: the route of the sender itself; the route of another
/// owner that is not active any more; the route of another owner that is active now. The last two are told as
/// RIB_ACTION_CHANGE_FLAG. Removals of several routes go in the order of their keys.
class effects {
  public:
    virtual void told(const route_event<unicast> &) {}
    virtual void told(const route_event<multicast> &) {}
    virtual void told(const route_event<label> &) {}
    /// A VSAN was suspended, or resumed: its routes leave the modules or come back to them.
    virtual void vsan_changed(uint32_t /*vsan*/, bool /*suspended*/) {}
    /// What modules have of a table is to be compared with it, of a VSAN, or of all where that is 0.
    virtual void compare(table_id /*table*/, uint32_t /*vsan*/) {}
    /// A destination's place in the hardware is another one now.
    virtual void moved(uint32_t /*vsan*/, const model::destination &, uint32_t /*from*/, uint32_t /*to*/) {}
    /// Hardware positions belong to another segment now.
    virtual void owned(uint32_t /*segment*/, uint32_t /*first*/, uint32_t /*count*/) {}

  protected:
    ~effects() = default;
};

} // namespace ribkit::rib
