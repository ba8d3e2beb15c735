// Segments of one space of positions, each packed at its bottom: taking positions, giving them back, new sizes.
#include "mem/contiguous/contiguous.h"

#include "rib_codes.h"
#include <cstdio>
#include <cstdlib>

using namespace ribkit::mem;

namespace {

constexpr uint32_t no_position = 0xdeadbeef;

// Lays the segments out one after the other; false where they do not fit.
bool lay_out(segment *segments, const struct cont_config &config, const uint32_t *sizes) {
    uint64_t next = 0;
    for (uint32_t i = 0; i < config.segments; i++) {
        const auto first = static_cast<uint32_t>(next);
        segments[i] = {sizes[i], first, first};
        next += sizes[i];
        if (!is_multiple(sizes[i], config.block_size) || next > config.total) {
            return false;
        }
    }
    return true;
}

uint32_t grow(struct cont &cont, uint32_t number) {
    if (cont.moves_allowed == 0) {
        return RIB_FAILED;
    }
    return cont_mv_up(cont, number, 1) == RIB_OK ? RIB_OK : cont_mv_down(cont, number, 1);
}

uint32_t resize(struct cont &cont, uint32_t number, uint32_t wanted) {
    if (!is_multiple(wanted, cont.block_size)) {
        if (!cont.quiet) {
            std::printf("Invalid seg size %x for seg %d \n", wanted, static_cast<int>(number));
        }
        return RIB_BAD_PARAMETERS;
    }
    const uint32_t current = cont.segment[number].size;
    const uint32_t block = cont.block_size != 0 ? cont.block_size : 1;
    if (wanted < current) {
        return cont_mv_up(cont, number + 1, (current - wanted) / block);
    }
    return wanted > current ? cont_mv_down(cont, number, (wanted - current) / block) : RIB_OK;
}

} // namespace

struct cont *cont_create(const struct cont_config *config, const uint32_t *sizes, cont_move_func move_func,
                         cont_mask_func mask_func, uint32_t moves_allowed) {
    if (!is_multiple(config->total, config->block_size) || config->total < config->block_size ||
        config->total < config->segments) {
        return nullptr;
    }
    auto *made = static_cast<struct cont *>(std::calloc(1, sizeof(struct cont)));
    if (made == nullptr) {
        return nullptr;
    }
    made->segment = obtain_segments(config->segments);
    if (made->segment != nullptr && lay_out(made->segment, *config, sizes)) {
        made->total = config->total;
        made->block_size = config->block_size;
        made->segments = config->segments;
        made->held = config->segments;
        made->move_func = move_func;
        made->mask_func = mask_func;
        made->moves_allowed = moves_allowed;
    }
    return made;
}

uint32_t cont_alloc(struct cont *cont, uint32_t segment, uint32_t *position) {
    if (position == nullptr) {
        return RIB_BAD_PARAMETERS;
    }
    *position = no_position;
    if (!has_segment(cont, segment)) {
        return RIB_BAD_PARAMETERS;
    }
    ribkit::mem::segment &taken = cont->segment[segment];
    const bool room = taken.free < uint64_t{taken.first} + taken.size;
    const uint32_t result = room ? RIB_OK : grow(*cont, segment);
    if (result == RIB_OK) {
        *position = taken.free++;
    }
    return result;
}

uint32_t cont_free(struct cont *cont, uint32_t segment, uint32_t position) {
    if (!has_segment(cont, segment)) {
        return RIB_BAD_PARAMETERS;
    }
    ribkit::mem::segment &given = cont->segment[segment];
    if (position < given.first || position >= given.free) {
        return RIB_BAD_PARAMETERS;
    }
    if (position < given.free - 1 && cont->move_func != nullptr) {
        cont->move_func(position, given.free - 1, 1);
    }
    given.free--;
    return RIB_OK;
}

uint32_t cont_count(const struct cont *cont, uint32_t segment, uint32_t *count) {
    *count = 0;
    if (!has_segment(cont, segment)) {
        return RIB_BAD_PARAMETERS;
    }
    *count = cont->segment[segment].free - cont->segment[segment].first;
    return RIB_OK;
}

uint32_t cont_resize(struct cont *cont, const uint32_t *sizes) {
    if (cont == nullptr) {
        return RIB_BAD_PARAMETERS;
    }
    uint32_t result = RIB_OK;
    for (uint32_t i = 0; has_segment(cont, i) && result == RIB_OK; i++) {
        result = resize(*cont, i, sizes[i]);
    }
    return result;
}

void cont_quiet(struct cont *cont, uint32_t on) {
    if (cont != nullptr) {
        cont->quiet = on != 0;
    }
}

uint32_t cont_destroy(struct cont *cont) {
    if (cont == nullptr) {
        return RIB_BAD_PARAMETERS;
    }
    std::free(cont->segment);
    std::free(cont);
    return RIB_OK;
}

void cont_show(const struct cont *cont) {
    if (cont == nullptr) {
        std::puts("Bad contiguous descriptor!");
        return;
    }
    std::printf("\nTotal %d, block size %d, # segments %d\n", static_cast<int>(cont->total),
                static_cast<int>(cont->block_size), static_cast<int>(cont->segments));
    std::puts("Seg\tSize\tFirst\tFree");
    std::puts("---\t----\t-----\t----");
    for (uint32_t i = 0; has_segment(cont, i); i++) {
        const segment &shown = cont->segment[i];
        std::printf("%d\t%x\t%05x\t%05x\n", static_cast<int>(i), shown.size, shown.first, shown.free);
    }
}
