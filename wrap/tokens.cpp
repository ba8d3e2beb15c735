// The tokens of requests still unanswered: a small unordered array, searched from its start.
#include "rib_codes.h"
#include "rib_wrap.h"

#include <cstdint>
#include <cstdlib>

namespace {

// A list longer than the host can address has no memory.
void *allocate(uint64_t size) { return size > SIZE_MAX ? nullptr : std::malloc(static_cast<size_t>(size)); }

} // namespace

uint32_t rib_token_alloc(struct rib_token *list, uint32_t capacity) {
    list->tokens = static_cast<uint32_t *>(allocate(uint64_t{capacity} * sizeof *list->tokens));
    if (list->tokens == nullptr) {
        return RIB_OUT_OF_MEMORY;
    }
    list->capacity = capacity;
    list->count = 0;
    return RIB_OK;
}

uint32_t rib_token_add(struct rib_token *list, uint32_t token) {
    if (list->count == list->capacity) {
        return RIB_BAD_PARAMETERS;
    }
    list->tokens[list->count++] = token;
    return RIB_OK;
}

int32_t rib_token_match(const struct rib_token *list, uint32_t token) {
    for (uint32_t index = 0; index < list->count; ++index) {
        if (list->tokens[index] == token) {
            return static_cast<int32_t>(index);
        }
    }
    return -1;
}

uint32_t rib_token_remove(struct rib_token *list, uint32_t token) {
    const int32_t found = rib_token_match(list, token);
    if (found < 0) {
        return RIB_BAD_PARAMETERS;
    }
    --list->count;
    list->tokens[found] = list->tokens[list->count];
    return RIB_OK;
}

uint32_t rib_token_pop(struct rib_token *list, uint32_t *token) {
    if (list->count == 0) {
        return 0;
    }
    *token = list->tokens[--list->count];
    return 1;
}

void rib_token_release(struct rib_token *list) {
    if (list->tokens != nullptr) {
        std::free(list->tokens);
        *list = {};
    }
}
