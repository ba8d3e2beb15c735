// Between a query's fields and its bytes stand the library's converters.
#include "tools/fcurt_query.h"

#include "rib_codec.h"

namespace ribkit::tools {

static_assert(sizeof(fcurt_query) == RIBKIT_FCURT_QUERY_SIZE);

std::array<uint8_t, RIBKIT_FCURT_QUERY_SIZE> encode(const fcurt_query &query) {
    std::array<uint8_t, RIBKIT_FCURT_QUERY_SIZE> bytes{};
    rib_hton_fcurt_query(&query, bytes.data());
    return bytes;
}

fcurt_query decode_fcurt_query(std::span<const uint8_t, RIBKIT_FCURT_QUERY_SIZE> bytes) {
    fcurt_query query{};
    rib_ntoh_fcurt_query(bytes.data(), &query);
    return query;
}

} // namespace ribkit::tools
