// Computed from the same fingerprints that tests keep of each message.
#include "catalogue/wire_digest.h"

#include "catalogue/messages.h"
#include "codec/fingerprint.h"

namespace ribkit::catalogue {

uint32_t wire_digest() {
    codec::digest all;
    for (const row &message : messages) {
        all.text(message.name.data());
        all.number(codec::wire_fingerprint(*message.wire));
    }
    return all.value;
}

} // namespace ribkit::catalogue
