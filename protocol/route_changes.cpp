// A label record's key and words.
#include "protocol/route_changes.h"

#include "rib_codes.h"

namespace ribkit::protocol {

static model::label_key key_of(codec::view<wire::fclrt> record, uint32_t source) {
    const uint32_t mask = record.get<"mask">();
    model::label_key key{.vsan = record.get<"vsan">(), .type = record.get<"type">(), .source = source};
    key.to = {record.get<"fcid">() & mask, mask};
    for (const auto label : record.list<"match">()) {
        key.match[key.match_count++] = label.get<"label">();
    }
    return key;
}

model::label_change label_reader::operator()(codec::view<wire::fclrt> record) {
    size_t sources = 0;
    for (const auto source : record.list<"src">()) {
        sources_[sources++] = source.get<"intf">();
    }
    size_t words = 0;
    for (const auto hop : record.list<"intf">()) {
        if (words + most_words > hops_.size()) {
            break;
        }
        hops_[words++] = hop.get<"ctrl">();
        hops_[words++] = hop.get<"intf">();
        for (const auto label : hop.list<"push">()) {
            hops_[words++] = label.get<"label">();
        }
    }
    return {record.get<"action">(),
            key_of(record, sources == 0 ? 0 : sources_[0]),
            {std::span(sources_).first(sources), std::span(hops_).first(words)}};
}

} // namespace ribkit::protocol
