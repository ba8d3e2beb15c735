// What a fuzzer's bytes mean: the first byte names the message, the rest is the message.
#pragma once

#include <cstddef>
#include <cstdint>

/// Checks the message and, where it is accepted, opens it. Aborts where the check and its model disagree.
int check_input(const uint8_t *data, size_t size);

/// Converts the message both ways with the exported converters and with the naive ones. Aborts where they disagree.
int engine_input(const uint8_t *data, size_t size);
