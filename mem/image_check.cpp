// Images that come from elsewhere: whether their counts can be trusted, and their words in network order.
#include "codec/bytes.h"
#include "codec/report.h"
#include "mem/image.h"
#include "rib_mem.h"

using namespace ribkit::codec;
using namespace ribkit::mem;

namespace {

constexpr uint32_t bud_fixed_words = BUD_IMAGE_FIXED_SIZE / word_bytes;
constexpr uint32_t bud_counts_at = 3;
constexpr uint32_t segments_at = 2;
constexpr uint32_t segment_words = 3;

uint32_t load_network(const void *image, size_t number) {
    return be32(static_cast<const uint8_t *>(image) + number * word_bytes);
}

void store_network(void *image, size_t number, uint32_t word) {
    store32<std::endian::big>(static_cast<uint8_t *>(image) + number * word_bytes, word);
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
