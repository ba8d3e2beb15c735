// Messages held for the callers of the service. A reference says the message's slot and the slot's generation, so that
// a reference that was cleared, dropped or never filled holds nothing.
#pragma once

#include "platform/message.h"
#include "qip.h"

namespace ribkit::platform {

/// Room for one message, had before anything is done that needs it: nothing can fail then.
class reserved_reference {
  public:
    reserved_reference();
    reserved_reference(const reserved_reference &) = delete;
    reserved_reference &operator=(const reserved_reference &) = delete;
    ~reserved_reference();

    /// Keeps the message and writes all words of the reference. Once.
    void hold(message letter, qip_ref &ref) noexcept;

  private:
    static constexpr uint32_t none = UINT32_MAX;

    uint32_t index_;
};

/// The message of a reference, null where it holds none. It stays until the reference is dropped.
message *held(const qip_ref *ref);

/// Drops the message; false where the reference holds none.
bool release(const qip_ref *ref);

uint32_t references_held();

} // namespace ribkit::platform
