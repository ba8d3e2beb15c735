// Notifications: to the local listeners, then to the modules. Nobody waits for their result, so failures go to
// the debug history and debug output instead of the message trace.
#include "wrap/service.h"
#include "yelk.h"

#include <cerrno>
#include <cstddef>
#include <cstdio>

using namespace ribkit::wrap;

namespace {

constexpr uint32_t event_id = 0x730000;
constexpr uint32_t event_subtype = 100;
constexpr uint32_t debug_level = 100;

struct text_event {
    uint32_t subtype;
    char text[512];
};

// The format takes the function's name and the code. In the history it is cut to its record, terminator included.
uint32_t report(const char *format, int error) {
    static constexpr const char *function = "rib_wrap_qip_note";
    const uint32_t code = platform_failure(error);
    if (yelk_hist_event_subtype_check(event_id, event_subtype) == 0) {
        text_event event{.subtype = event_subtype, .text = {}};
        const int length = std::snprintf(event.text, sizeof event.text, format, function, code);
        yelk_hist_event(event_id, static_cast<uint32_t>(length) + sizeof event.subtype + 1, &event);
    }
    if (yelk_chk_int(debug_level, 0, 0, 1) != 0) {
        yapout(1, yelk_dbg_modname, 0, format, function, code);
    }
    return code;
}

uint32_t notify(uint32_t handle, uint32_t opcode, const void *payload, uint32_t payload_size) {
    if (qip_send(handle, &to_local, opcode, payload, payload_size, nullptr, nullptr, nullptr) != 0) {
        return report("%s() failed qip_send_notify() %#x\n", errno);
    }
    const qip_send_opts modules{{2, 0, 0, 0, 0, 0, 0, 0, 1}};
    if (qip_send(handle, &to_modules, opcode, payload, payload_size, nullptr, nullptr, &modules) != 0) {
        return report("%s() failed qip_send_notify() to LCs %#x\n", errno);
    }
    yelk_hist_qip_event(YELK_QIP_SENT, nullptr, 0, 0);
    return RIB_OK;
}

} // namespace

int32_t rib_wrap_qip_note(uint32_t handle, uint32_t opcode, const void *payload, uint32_t payload_size) {
    return static_cast<int32_t>(notify(handle, opcode, payload, payload_size));
}
