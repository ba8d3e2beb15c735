// Whether received bytes are an envelope: its fixed part is there, and its length says just what was received.
#include "codec/bytes.h"
#include "codec/report.h"
#include "rib_wrap.h"
#include "wrap/cmi_layout.h"

using namespace ribkit::codec;
using namespace ribkit::wrap;

namespace {

uint32_t check(const char *message, const void *envelope, uint32_t size, uint32_t smallest, rib_check_report *report) {
    if (size < smallest) {
        return refuse(report, {message, "fixed part", 0, smallest, size, RIB_CHECK_SHORT});
    }
    const uint32_t length = be32(static_cast<const uint8_t *>(envelope) + cmi_length_at);
    const uint32_t content = size - cmi_content_at;
    if (length > content) {
        return refuse(report, {message, "length", cmi_length_at, length, content, RIB_CHECK_COUNT});
    }
    if (length < content) {
        return refuse(report,
                      {message, "size", cmi_content_at + length, size, cmi_content_at + length, RIB_CHECK_EXCESS});
    }
    return RIB_OK;
}

} // namespace

uint32_t rib_check_cmi_request(const void *envelope, uint32_t size, struct rib_check_report *report) {
    return check("cmi request", envelope, size, cmi_payload_at, report);
}

uint32_t rib_check_cmi_answer(const void *envelope, uint32_t size, struct rib_check_report *report) {
    return check("cmi answer", envelope, size, cmi_content_at, report);
}
