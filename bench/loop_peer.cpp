// As it is usually written: a word at an offset is read, turned with ntohl and written; bytes are copied one by one;
// counts are taken from the host form, which a receiver looks at again after each entry.
#include "bench/loop_peer.h"

#include <arpa/inet.h>
#include <cstring>

namespace ribkit::bench::loop {

namespace {

uint32_t read(const uint8_t *message, size_t at) {
    uint32_t word;
    memcpy(&word, message + at, sizeof word);
    return word;
}

void word(const uint8_t *src, uint8_t *dst, size_t at) {
    const uint32_t converted = ntohl(read(src, at));
    memcpy(dst + at, &converted, sizeof converted);
}

void words(const uint8_t *src, uint8_t *dst, size_t first, size_t end) {
    for (size_t at = first; at < end; at += 4) {
        word(src, dst, at);
    }
}

void bytes(const uint8_t *src, uint8_t *dst, size_t first, size_t end) {
    for (size_t at = first; at < end; ++at) {
        dst[at] = src[at];
    }
}

void fcurt_fields(const uint8_t *src, uint8_t *dst) {
    bytes(src, dst, 0, 4);
    word(src, dst, 4);
    bytes(src, dst, 8, 16);
    word(src, dst, 16);
    word(src, dst, 20);
    word(src, dst, 24);
    word(src, dst, 28);
}

/// A bounded list of words: the first n, then zeros.
void bounded(const uint8_t *src, uint8_t *dst, size_t at, size_t n, size_t bound) {
    size_t i = 0;
    for (; i < n; ++i) {
        word(src, dst, at + 4 * i);
    }
    for (; i < bound; ++i) {
        memset(dst + at + 4 * i, 0, 4);
    }
}

/// Where the host form is: it holds the counts.
const uint8_t *host_form(const uint8_t *src, const uint8_t *dst, bool sending) { return sending ? src : dst; }

uint32_t convert_fclrt(const uint8_t *src, uint8_t *dst, bool sending) {
    const uint8_t *host = host_form(src, dst, sending);
    words(src, dst, 0, 8);
    bytes(src, dst, 8, 12);
    words(src, dst, 12, 32);
    bounded(src, dst, 32, read(host, 20), 2);
    bounded(src, dst, 40, read(host, 24), 16);
    size_t at = 104;
    for (uint32_t i = 0; i < read(host, 28); ++i) {
        words(src, dst, at, at + 8);
        const size_t labels = read(host, at) >> 16 & 0xff;
        words(src, dst, at + 8, at + 8 + 4 * labels);
        at += 8 + 4 * labels;
    }
    return static_cast<uint32_t>(at);
}

void convert_path(const uint8_t *src, uint8_t *dst, bool sending) {
    const uint8_t *host = host_form(src, dst, sending);
    words(src, dst, 0, 4);
    bytes(src, dst, 4, 8);
    word(src, dst, 8);
    bytes(src, dst, 12, 16);
    words(src, dst, 16, 28);
    size_t i = 0;
    for (; i < read(host, 24); ++i) {
        const size_t at = 28 + 20 * i;
        words(src, dst, at, at + 8);
        bounded(src, dst, at + 8, read(host, at) >> 16 & 0xff, 3);
    }
    for (; i < 16; ++i) {
        memset(dst + 28 + 20 * i, 0, 20);
    }
    const uint32_t kind = sending ? htonl(4) : (read(dst, 0) & 0xff) != 0 ? 0x04000000 : read(dst, 0);
    memcpy(dst, &kind, sizeof kind);
}

const uint8_t *in(const void *message) { return static_cast<const uint8_t *>(message); }
uint8_t *out(void *message) { return static_cast<uint8_t *>(message); }

} // namespace

uint32_t hton_fcurt(const void *src, void *dst) {
    const uint32_t n = read(in(src), 28);
    fcurt_fields(in(src), out(dst));
    for (size_t i = 0; i < n; ++i) {
        word(in(src), out(dst), 32 + 8 * i);
        word(in(src), out(dst), 36 + 8 * i);
    }
    return 32 + 8 * n;
}

uint32_t ntoh_fcurt(const void *src, void *dst) {
    fcurt_fields(in(src), out(dst));
    for (size_t i = 0; i < read(in(dst), 28); ++i) {
        word(in(src), out(dst), 32 + 8 * i);
        word(in(src), out(dst), 36 + 8 * i);
    }
    return 32 + 8 * read(in(dst), 28);
}

uint32_t hton_fclrt(const void *src, void *dst) { return convert_fclrt(in(src), out(dst), true); }
uint32_t ntoh_fclrt(const void *src, void *dst) { return convert_fclrt(in(src), out(dst), false); }

void hton_fcu_path(const void *src, void *dst) { convert_path(in(src), out(dst), true); }
void ntoh_fcu_path(const void *src, void *dst) { convert_path(in(src), out(dst), false); }

void hton_rsp(const void *src, void *dst) { words(in(src), out(dst), 0, 20); }

uint32_t sizeof_fcurt_update(const void *msg) {
    uint32_t size = 980;
    for (uint32_t n = ntohl(read(in(msg), 16)); n != 0; --n) {
        size += 32 + 8 * ntohl(read(in(msg), size + 28));
    }
    return size;
}

} // namespace ribkit::bench::loop
