// What a layout cannot say. A message is converted by its layout unless it has its own conversion here: keys chosen by
// a type, a translated first word, kinds of body, and the messages that a receiver reads as they arrived.
#pragma once

#include "codec/engine.h"
#include "codec/messages/info.h"
#include "codec/path_kind.h"
#include "codec/view.h"

namespace ribkit::codec {

template <const layout &L> struct conversion {
    template <direction D, std::endian Host, class Isa> static uint32_t convert(const uint8_t *src, uint8_t *dst) {
        return engine<D, Host, Isa>::template convert<L>(src, dst);
    }
};

/// The kind of a unicast path is computed on its way.
template <> struct conversion<wire::fcu_path> {
    template <direction D, std::endian Host, class Isa> static uint32_t convert(const uint8_t *src, uint8_t *dst) {
        const uint32_t size = engine<D, Host, Isa>::template convert<wire::fcu_path>(src, dst);
        if constexpr (D == direction::to_network) {
            const writable_view<wire::fcu_path> path(dst);
            path.set<"kind">(sent_kind(path));
        } else {
            const writable_view<wire::fcu_path, Host> path(dst);
            path.template set<"kind">(received_kind(view<wire::fcu_path, Host>(path)));
        }
        return size;
    }
};

template <> struct conversion<wire::reg_query> {
    template <direction D, std::endian Host, class Isa> static uint32_t convert(const uint8_t *src, uint8_t *dst) {
        if constexpr (D == direction::to_network) {
            engine<D, Host, Isa>::template convert<wire::reg_query>(src, dst);
        }
        return wire::reg_query.size;
    }
};

template <> struct conversion<wire::dm_info> {
    template <direction D, std::endian Host, class Isa> static uint32_t convert(const uint8_t *src, uint8_t *dst) {
        if constexpr (D == direction::to_network) {
            return engine<D, Host, Isa>::template convert<wire::dm_info>(src, dst);
        } else {
            writable_view<wire::dm_info, Host>(dst).template set<"n_vsan">(view<wire::dm_info>(dst).get<"n_vsan">());
            return wire::dm_info.size;
        }
    }
};

/// Returns the kind.
template <> struct conversion<wire::in_info> {
    template <direction D, std::endian Host, class Isa> static uint32_t convert(const uint8_t *src, uint8_t *dst) {
        constexpr uint32_t body = wire::in_info.size;
        const uint32_t kind = view<wire::in_info, source_order(D, Host)>(src).template get<"kind">();
        engine<D, Host, Isa>::template convert<wire::in_info>(src, dst);
        std::memmove(dst + body, src + body, wire::size_of_body(kind));
        return kind;
    }
};

/// Keys are nothing but words. @return the key's size
template <class Isa, bool Swaps> uint32_t convert_key(uint32_t type, const uint8_t *src, uint8_t *dst) {
    static_assert(is_words_only(wire::verf_fcl) && is_words_only(wire::verf_fcm) && is_words_only(wire::verf_fcu));
    const uint32_t size = wire::size_of_key(type);
    Isa::template run<Swaps>(src, dst, size / 4);
    return size;
}

/// Of the key's room only what its table's key fills is converted.
template <> struct conversion<wire::verf_query> {
    template <direction D, std::endian Host, class Isa> static uint32_t convert(const uint8_t *src, uint8_t *dst) {
        constexpr const layout &l = wire::verf_query;
        const uint32_t type = view<wire::verf_query, source_order(D, Host)>(src).template get<"type">();
        Isa::template run<Host != std::endian::big>(src, dst, l.at("key") / 4);
        convert_key<Isa, Host != std::endian::big>(type, src + l.at("key"), dst + l.at("key"));
        Isa::template run<Host != std::endian::big>(src + l.at("requested"), dst + l.at("requested"), 1);
        return l.size;
    }
};

template <> struct conversion<wire::verf_info> {
    template <direction D, std::endian Host, class Isa> static uint32_t convert(const uint8_t *src, uint8_t *dst) {
        const view<wire::verf_info, source_order(D, Host)> info(src);
        const uint32_t count = info.template get<"n_key">();
        const uint32_t type = info.template get<"type">();
        size_t at = engine<D, Host, Isa>::template convert<wire::verf_info>(src, dst);
        for (uint32_t i = 0; i < count; ++i) {
            at += convert_key<Isa, Host != std::endian::big>(type, src + at, dst + at);
        }
        return static_cast<uint32_t>(at);
    }
};

} // namespace ribkit::codec
