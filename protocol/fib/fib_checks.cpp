// A part is taken off the front when its check accepts it. Of a part whose length depends on its counts the check
// itself says where it ends: what is refused for its excess ends there.
#include "protocol/fib/fib_checks.h"

#include "codec/messages/fib.h"
#include "protocol/uses.h"
#include "rib_codes.h"

#include <algorithm>

namespace ribkit::protocol {

using codec::view;

namespace {

using part_check = decltype(fib_check_node);

/// A message while its parts are checked, one after the other.
class checked {
  public:
    checked(std::span<const uint8_t> message, rib_check_report *report) : message_(message), report_(report) {}

    /// Takes a part of a fixed size. @return whether it was sound
    bool take(part_check *check, uint32_t size) {
        const auto most = static_cast<uint32_t>(std::min<size_t>(left(), size));
        rib_check_report why{};
        result_ = check(message_.data() + at_, most, &why);
        return result_ == RIB_OK ? pass(most) : fail(why);
    }

    /// Takes a part that says its own size.
    bool take(part_check *check) {
        rib_check_report why{};
        result_ = check(message_.data() + at_, static_cast<uint32_t>(left()), &why);
        if (result_ == RIB_EXCESS_DATA) {
            result_ = RIB_OK;
            return pass(why.allowed);
        }
        return result_ == RIB_OK ? pass(static_cast<uint32_t>(left())) : fail(why);
    }

    /// Where the part begins that was taken last.
    [[nodiscard]] const uint8_t *last() const { return message_.data() + last_; }
    [[nodiscard]] size_t left() const { return message_.size() - at_; }
    [[nodiscard]] uint32_t result() const { return result_; }

    /// @return RIB_EXCESS_DATA where bytes remain
    uint32_t end(const char *name) {
        if (result_ == RIB_OK && left() != 0) {
            result_ = RIB_EXCESS_DATA;
            const auto size = static_cast<uint32_t>(message_.size());
            fill({name, "its end", 0, size, size - static_cast<uint32_t>(left()), RIB_CHECK_EXCESS});
        }
        return result_;
    }

  private:
    bool pass(uint32_t size) {
        last_ = at_;
        at_ += size;
        return true;
    }
    bool fail(rib_check_report why) {
        const auto before = static_cast<uint32_t>(at_);
        why.offset += before;
        if (why.rule != RIB_CHECK_COUNT) {
            why.found += before;
            why.allowed += before;
        }
        fill(why);
        return false;
    }
    void fill(const rib_check_report &why) {
        if (report_ != nullptr) {
            *report_ = why;
        }
    }

    std::span<const uint8_t> message_;
    rib_check_report *report_;
    size_t at_ = 0;
    size_t last_ = 0;
    uint32_t result_ = RIB_OK;
};

template <const codec::layout &Head>
uint32_t check_update(checked &update, part_check *check_head, part_check *check_path, uint32_t path_size) {
    if (!update.take(check_head, Head.size)) {
        return update.result();
    }
    bool sound = true;
    for (uint32_t left = view<Head>(update.last()).template get<use<Head, "n_path">>(); sound && left > 0; left--) {
        sound = path_size != 0 ? update.take(check_path, path_size) : update.take(check_path);
    }
    return update.end(Head.name);
}

/// A response is shorter than a report with a key.
uint32_t check_answer(checked &answer, part_check *check_report, part_check *check_response) {
    constexpr uint32_t size = wire::fib_rsp.size;
    if (answer.left() > size && !answer.take(check_report)) {
        return answer.result();
    }
    answer.take(check_response, size);
    return answer.end(wire::fib_rsp.name);
}

} // namespace

uint32_t check_unicast_fib_update(std::span<const uint8_t> message, rib_check_report *report) {
    checked update(message, report);
    return check_update<wire::fib_update>(update, fib_check_fcu_update, fib_check_fcu_path, wire::fcu_path.size);
}

uint32_t check_multicast_fib_update(std::span<const uint8_t> message, rib_check_report *report) {
    checked update(message, report);
    return check_update<wire::fib_update>(update, fib_check_fcm_update, fib_check_fcm_path, 0);
}

uint32_t check_label_fib_update(std::span<const uint8_t> message, rib_check_report *report) {
    checked update(message, report);
    return check_update<wire::fib_update>(update, fib_check_fcl_update, fib_check_fcl_path, wire::fcl_path.size);
}

uint32_t check_rewrite_update(std::span<const uint8_t> message, rib_check_report *report) {
    checked update(message, report);
    return check_update<wire::vsan_rewrite_update>(update, fib_check_vsan_rewrite_update, fib_check_vsan_rewrite_path,
                                                   wire::vsan_rewrite_path.size);
}

uint32_t check_unicast_fib_answer(std::span<const uint8_t> message, rib_check_report *report) {
    checked answer(message, report);
    return check_answer(answer, fib_check_fcu_rsp_path, fib_check_fcu_rsp);
}

uint32_t check_multicast_fib_answer(std::span<const uint8_t> message, rib_check_report *report) {
    checked answer(message, report);
    return check_answer(answer, fib_check_fcm_rsp_path, fib_check_fcm_rsp);
}

uint32_t check_label_fib_answer(std::span<const uint8_t> message, rib_check_report *report) {
    checked answer(message, report);
    return check_answer(answer, fib_check_fcl_rsp_path, fib_check_fcl_rsp);
}

uint32_t check_module_message(std::span<const uint8_t> message, rib_check_report *report) {
    checked module(message, report);
    if (!module.take(fib_check_node, wire::node.size)) {
        return module.result();
    }
    const uint32_t ports = view<wire::node>(module.last()).get<"ports">();
    bool sound = module.take(fib_check_sync, wire::fib_sync.size);
    for (uint32_t left = ports; sound && left > 0; left--) {
        sound = module.take(fib_check_port, wire::port.size);
    }
    return module.end(wire::node.name);
}

} // namespace ribkit::protocol
