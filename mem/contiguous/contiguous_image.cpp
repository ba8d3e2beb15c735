// Saving a contiguous allocator into an image, and restoring it.
#include "mem/contiguous/contiguous.h"
#include "mem/image.h"
#include "rib_codes.h"
#include <cstdlib>

using namespace ribkit::mem;

namespace {

constexpr size_t header_size = size_t{3} * word_bytes;
static_assert(sizeof(segment) == header_size); // as many words as a record has

} // namespace

uint32_t cont_serialize(const struct cont *cont, uint8_t **buffer, uint32_t *length) {
    *buffer = nullptr;
    if (cont == nullptr || cont->segments > cont->held) {
        return RIB_FAILED;
    }
    const size_t records = size_t{cont->segments} * sizeof(segment);
    *length = static_cast<uint32_t>(header_size + records);
    auto *image = static_cast<uint8_t *>(std::malloc(header_size + records));
    if (image == nullptr) {
        return RIB_OUT_OF_MEMORY;
    }
    store_word(image, 0, cont->total);
    store_word(image, 1, cont->block_size);
    store_word(image, 2, cont->segments);
    if (records != 0) {
        std::memcpy(image + header_size, cont->segment, records);
    }
    *buffer = image;
    return RIB_OK;
}

uint32_t cont_deserialize(struct cont *cont, const uint8_t *buffer, uint32_t length) {
    if (cont == nullptr || buffer == nullptr) {
        return RIB_FAILED;
    }
    cont->total = load_word(buffer, 0);
    cont->block_size = load_word(buffer, 1);
    cont->segments = load_word(buffer, 2);
    if ((uint64_t{cont->segments} + 1) * header_size != length) {
        return RIB_BAD_PARAMETERS;
    }
    std::free(cont->segment);
    cont->held = 0;
    cont->segment = obtain_segments(cont->segments);
    if (cont->segment == nullptr) {
        return RIB_OUT_OF_MEMORY;
    }
    cont->held = cont->segments;
    std::memcpy(cont->segment, buffer + header_size, size_t{cont->segments} * sizeof(segment));
    return RIB_OK;
}
