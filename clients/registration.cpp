// A registration that is refused is reported, and said again when it is time: the client works without it.
#include "clients/registration.h"

#include "bus/patience.h"
#include "clients/question.h"
#include "model/system.h"
#include "protocol/queries.h"
#include "rib_codes.h"
#include "ribkit_rib.h"

#include <cstdio>

namespace ribkit::clients {

void registration::set_distance(std::optional<uint32_t> distance) {
    if (distance_ != distance) {
        distance_ = distance;
        forget();
    }
}

bool registration::is_due() const { return is_wanted() && (!said_ || bus::run_now() - *said_ >= interval); }

void registration::say() {
    auto said = protocol::encode(model::registration{uuid_, distance_.value_or(model::default_distance(uuid_)), name_});
    const auto answer = ask_for_result(link_, RIBKIT_OPCODE_REGISTER, said);
    if (answer.result != RIB_OK) {
        std::fprintf(stderr, "ribkit: the RIB does not register client %u: %s\n", uuid_,
                     bus::result_text(answer.result).c_str());
    }
    said_ = bus::run_now();
}

void registration::keep() {
    if (is_due()) {
        patiently(link_, [this] { say(); });
    }
}

// A RIB that is gone hears it when it is there again.
void registration::stay() {
    if (!is_due()) {
        return;
    }
    try {
        say();
    } catch (const bus::no_answer &) {
        said_ = bus::run_now();
    }
    link_.renew_patience();
}

} // namespace ribkit::clients
