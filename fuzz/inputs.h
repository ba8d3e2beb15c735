// What a fuzzer's bytes mean: the first byte names the message, the rest is the message.
#pragma once

#include <cstddef>
#include <cstdint>

/// Checks the message and, where it is accepted, opens it. Aborts where the check and its model disagree.
int check_input(const uint8_t *data, size_t size);

/// Converts the message both ways with the exported converters and with the naive ones. Aborts where they disagree.
int engine_input(const uint8_t *data, size_t size);

/// Shows the bytes as messages of a kind, and encodes what was shown. Aborts where it does not come back.
int decode_input(const uint8_t *data, size_t size);

/// JSON of messages. Aborts where a refusal is not one line, or an encoded message does not come back.
int encode_input(const uint8_t *data, size_t size);

/// A fabric file, a fault script, a file of records: parsed. Abort where a refusal is not one printable line.
int fabric_input(const uint8_t *data, size_t size);
int faults_input(const uint8_t *data, size_t size);
int bytes_input(const uint8_t *data, size_t size);

/// A duration, an interface name, a name that nothing has, a URL.
int words_input(const uint8_t *data, size_t size);
