// The bitmap's byte loops as the benchmarks' peer: compiled as they stand, not turned into vectors.
#pragma once

#include <cstdint>

namespace ribkit::mem {

void loop_init(uint8_t *map, uint32_t length);
uint32_t loop_set(uint8_t *map, uint32_t length, uint32_t position);
uint32_t loop_clr(uint8_t *map, uint32_t length, uint32_t position);
uint32_t loop_is_set(const uint8_t *map, uint32_t length, uint32_t position);
uint32_t loop_next_set(const uint8_t *map, uint32_t length, uint32_t start, uint32_t *position);
uint32_t loop_next_clr(uint8_t *map, uint32_t length, uint32_t start, uint32_t *position);
uint32_t loop_count(const uint8_t *map, uint32_t length);
uint32_t loop_is_same(const uint8_t *a, const uint8_t *b, uint32_t length);
void loop_or(const uint8_t *a, const uint8_t *b, uint32_t length, uint8_t *out);
void loop_to_set(const uint8_t *a, const uint8_t *b, uint32_t length, uint8_t *out);
void loop_to_clr(const uint8_t *a, const uint8_t *b, uint32_t length, uint8_t *out);

} // namespace ribkit::mem
