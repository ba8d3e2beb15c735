// Whether received bytes are an envelope: its fixed part is there, and its length says just what was received.
#include "codec/report.h"
#include "rib_wrap.h"
#include "wrap/cmi_envelope.h"

using namespace ribkit;
using namespace ribkit::codec;
using namespace ribkit::wrap;

namespace {

uint32_t check(const char *message, const void *envelope, uint32_t size, uint32_t smallest, rib_check_report *report) {
    if (size < smallest) {
        return refuse(report, {message, "fixed part", 0, smallest, size, RIB_CHECK_SHORT});
    }
    const uint32_t length = read_envelope(envelope).get<"length">();
    const uint32_t content = size - content_at;
    if (length > content) {
        return refuse(report, {message, "length", wire::cmi_envelope.at("length"), length, content, RIB_CHECK_COUNT});
    }
    if (length < content) {
        return refuse(report, {message, "size", content_at + length, size, content_at + length, RIB_CHECK_EXCESS});
    }
    return RIB_OK;
}

} // namespace

uint32_t rib_check_cmi_request(const void *envelope, uint32_t size, struct rib_check_report *report) {
    return check("cmi request", envelope, size, payload_at, report);
}

uint32_t rib_check_cmi_answer(const void *envelope, uint32_t size, struct rib_check_report *report) {
    return check("cmi answer", envelope, size, content_at, report);
}
