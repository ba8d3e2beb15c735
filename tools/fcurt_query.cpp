#include "tools/fcurt_query.h"

#include "rib_codec.h"

namespace ribkit {

static_assert(sizeof(fcurt_query) == fcurt_query_size);

std::array<uint8_t, fcurt_query_size> encode(const fcurt_query &query) {
    std::array<uint8_t, fcurt_query_size> bytes{};
    rib_hton_fcurt_query(&query, bytes.data());
    return bytes;
}

fcurt_query decode_fcurt_query(std::span<const uint8_t, fcurt_query_size> bytes) {
    fcurt_query query{};
    rib_ntoh_fcurt_query(bytes.data(), &query);
    return query;
}

} // namespace ribkit
