// Images that come from elsewhere: whether their counts can be trusted, and their words in network order.
#include "mem/image.h"
#include "rib_codes.h"
#include "rib_mem.h"
#include <bit>

using namespace ribkit;

namespace {

constexpr uint32_t bud_fixed_words = BUD_IMAGE_FIXED_SIZE / word_bytes;
constexpr uint32_t bud_counts_at = 3;
constexpr uint32_t segments_at = 2;
constexpr uint32_t segment_words = 3;

// Compilers of every host see a plain load or a load and a swap.
uint32_t load_network(const void *image, size_t number) {
    const auto *byte = static_cast<const uint8_t *>(image) + number * word_bytes;
    return static_cast<uint32_t>(byte[0]) << 24 | static_cast<uint32_t>(byte[1]) << 16 |
           static_cast<uint32_t>(byte[2]) << 8 | byte[3];
}

void store_network(void *image, size_t number, uint32_t word) {
    auto *byte = static_cast<uint8_t *>(image) + number * word_bytes;
    byte[0] = static_cast<uint8_t>(word >> 24);
    byte[1] = static_cast<uint8_t>(word >> 16);
    byte[2] = static_cast<uint8_t>(word >> 8);
    byte[3] = static_cast<uint8_t>(word);
}

uint32_t to_network(const void *host, void *network, size_t words) {
    for (size_t i = 0; i < words; i++) {
        store_network(network, i, load_word(host, i));
    }
    return static_cast<uint32_t>(words * word_bytes);
}

uint32_t to_host(const void *network, void *host, size_t words) {
    for (size_t i = 0; i < words; i++) {
        store_word(host, i, load_network(network, i));
    }
    return static_cast<uint32_t>(words * word_bytes);
}

using reader = uint32_t (*)(const void *, size_t);

size_t bud_words(const void *image, reader read) {
    size_t words = bud_fixed_words;
    for (uint32_t list = bud_counts_at; list < bud_fixed_words; list++) {
        words += read(image, list);
    }
    return words;
}

size_t cont_words(const void *image, reader read) { return (size_t{read(image, segments_at)} + 1) * segment_words; }

uint32_t refuse(struct rib_check_report *report, const struct rib_check_report &found) {
    if (report != nullptr) {
        *report = found;
    }
    return found.rule == RIB_CHECK_EXCESS ? RIB_EXCESS_DATA : RIB_BAD_PARAMETERS;
}

uint32_t check_end(struct rib_check_report *report, const char *message, uint32_t end, uint32_t size) {
    return end == size ? RIB_OK : refuse(report, {message, "size", end, size, end, RIB_CHECK_EXCESS});
}

} // namespace

uint32_t bud_check_image(const void *image, uint32_t size, struct rib_check_report *report) {
    const char *message = "bud image";
    if (size < BUD_IMAGE_FIXED_SIZE) {
        return refuse(report, {message, "fixed part", 0, BUD_IMAGE_FIXED_SIZE, size, RIB_CHECK_SHORT});
    }
    uint32_t used = BUD_IMAGE_FIXED_SIZE;
    for (uint32_t list = bud_counts_at; list < bud_fixed_words; list++) {
        const uint32_t count = load_network(image, list);
        const uint32_t allowed = (size - used) / word_bytes;
        if (count > allowed) {
            const char *field = list < bud_counts_at + BUD_SIZES ? "free count" : "used count";
            return refuse(report, {message, field, list * word_bytes, count, allowed, RIB_CHECK_COUNT});
        }
        used += count * word_bytes;
    }
    return check_end(report, message, used, size);
}

uint32_t cont_check_image(const void *image, uint32_t size, struct rib_check_report *report) {
    const char *message = "cont image";
    constexpr uint32_t fixed_size = segment_words * word_bytes;
    if (size < fixed_size) {
        return refuse(report, {message, "fixed part", 0, fixed_size, size, RIB_CHECK_SHORT});
    }
    const uint32_t segments = load_network(image, segments_at);
    const uint32_t allowed = size / fixed_size - 1;
    if (segments > allowed) {
        return refuse(report, {message, "segments", segments_at * word_bytes, segments, allowed, RIB_CHECK_COUNT});
    }
    return check_end(report, message, (segments + 1) * fixed_size, size);
}

uint32_t bud_image_hton(const void *host, void *network) {
    return to_network(host, network, bud_words(host, load_word));
}

uint32_t bud_image_ntoh(const void *network, void *host) {
    return to_host(network, host, bud_words(network, load_network));
}

uint32_t cont_image_hton(const void *host, void *network) {
    return to_network(host, network, cont_words(host, load_word));
}

uint32_t cont_image_ntoh(const void *network, void *host) {
    return to_host(network, host, cont_words(network, load_network));
}
