// One message after the other is taken, answered and dropped until the service is stopped. Whatever a message holds, it
// is answered: with a refusal where it cannot be used, or memory fails.
#include "fib/service/fib_service.h"

#include "base/text.h"
#include "bus/history.h"
#include "protocol/fib/fib_records.h"
#include "protocol/fib/fib_requests.h"
#include "rib_codes.h"
#include "rib_text.h"
#include "rib_trace.h"
#include "rib_wrap.h"
#include "ribkit_platform.h"
#include "ribkit_rib.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <new>
#include <random>
#include <system_error>
#include <utility>

namespace ribkit::fib {

namespace {

constexpr uint32_t queue_bound = 64;
constexpr uint64_t answer_limit = 5'000'000; ///< microseconds

/// Another number for each module that starts.
uint32_t drawn_instance() {
    std::random_device device;
    return std::max<uint32_t>(device(), 1);
}

model::module_node described(const fib_options &options) {
    model::module_node is{.number = options.number, .address = options.number};
    is.node = static_cast<uint16_t>(RIBKIT_NODE_MODULE & UINT16_MAX);
    is.instance = options.instance != 0 ? options.instance : drawn_instance();
    is.ports = options.ports;
    return is;
}

std::string text_of(const rib_check_report &why) {
    std::array<char, 160> text{};
    rib_check_report_str(&why, text.data(), text.size());
    return text.data();
}

std::string sender_of(const qip_ref &ref) {
    const std::string name = qip_sender_name(&ref);
    return name.empty() ? base::joined("sender ", qip_sender_get(&ref)) : name;
}

} // namespace

std::vector<model::module_port> usual_ports(uint32_t module, uint32_t count) {
    constexpr uint8_t up = 1;
    std::vector<model::module_port> ports;
    for (uint32_t number = 1; number <= count; number++) {
        ports.push_back({.slot = static_cast<uint8_t>(module),
                         .port = static_cast<uint8_t>(number),
                         .status = up,
                         .index = static_cast<uint16_t>(number - 1),
                         .if_index = RIBKIT_IF_FC << 24 | (module & UINT8_MAX) << 16 | number,
                         .vsan = 1});
    }
    return ports;
}

fib_service::fib_service(const std::string &url, const fib_options &options)
    : options_(options), handle_(url, options.patience), module_(options.sizes, described(options)) {
    const qip_addr here = protocol::module_address(options.number);
    if (qip_listen(handle_.number(), &here, queue_bound) != 0 ||
        qip_listen(handle_.number(), &ribkit_modules_address, queue_bound) != 0) {
        throw std::system_error(errno, std::generic_category(),
                                base::joined("module ", options.number, " cannot listen on ", bus::shown_url(url)));
    }
    reconnections_ = qip_reconnections(handle_.number());
    thread_.start([this] { serve(); });
}

void fib_service::stop() {
    {
        const std::scoped_lock locked(stopping_lock_);
        if (std::exchange(stopped_, true)) {
            return;
        }
        stopping_.notify_all();
    }
    {
        const std::scoped_lock locked(lock_);
        module_.fib.exit();
    }
    tell_rib();
    handle_.close();
    thread_.join();
}

void fib_service::set_upgrading(bool upgrading) {
    {
        const std::scoped_lock locked(lock_);
        module_.fib.set_upgrading(upgrading);
    }
    tell_rib();
}

size_t fib_service::answered() const {
    const std::scoped_lock locked(lock_);
    return answered_;
}

void fib_service::serve() {
    while (take_one()) {
    }
}

/// @return whether the service goes on
bool fib_service::take_one() {
    keep_in_touch();
    const qip_recv_opts opts = next_wait();
    qip_ref ref{};
    if (qip_recv(handle_.number(), &ref, &opts) == 0) {
        failures_ = 0;
        take(ref);
        rib_wrap_qip_drop(RIB_CLIENT_RIB, handle_.number(), &ref);
    } else if (errno != ETIMEDOUT && errno != EAGAIN) {
        rest_after(errno);
    }
    const std::scoped_lock locked(stopping_lock_);
    return !stopped_;
}

/// Until the RIB is told again, at the latest.
qip_recv_opts fib_service::next_wait() const {
    constexpr uint64_t millisecond = 1000;
    const uint64_t now = qip_now();
    const uint64_t until = awaited_ != 0 ? asked_at_ + answer_limit : next_at_;
    qip_recv_opts opts{{awaited_ != 0 ? QIP_RECV_ANYTHING : QIP_RECV_INCOMING}};
    opts.word[4] = static_cast<uint32_t>(until > now ? (until - now) / millisecond + 1 : 1);
    return opts;
}

// What fails again and again would do so for ever: the pauses grow.
void fib_service::rest_after(int error) {
    constexpr std::chrono::milliseconds longest{250};
    constexpr uint32_t borne = 16;
    failures_++;
    std::unique_lock locked(stopping_lock_);
    if (!stopped_ && failures_ > borne) {
        bus::note_in_history("module ", options_.number, " cannot receive: ", error);
        qip_step_aside();
        stopping_.wait_for(locked, std::min(longest, std::chrono::milliseconds(1U << std::min(failures_ - borne, 8U))),
                           [this] { return stopped_; });
    }
}

// Nothing that a message causes ends the service.
void fib_service::take(const qip_ref &ref) {
    const uint32_t opcode = qip_opcode_get(&ref);
    if (opcode == 0 && qip_sender_get(&ref) == 0) { // an answer
        return hear_rib(ref);
    }
    if (opcode == RIBKIT_OPCODE_STARTED) {
        return lose_rib(qip_now());
    }
    try {
        const bytes said = respond(ref);
        if (be_slow()) {
            answer(ref, said);
        }
    } catch (const std::exception &) { // no memory: whoever asked hears of it if there is some again
        note_refusal(ref, RIB_OUT_OF_MEMORY, "");
        std::array<uint8_t, wire::fib_rsp.size> refused{};
        codec::writer<wire::fib_rsp>(refused).set<protocol::use<wire::fib_rsp, "result">>(RIB_OUT_OF_MEMORY);
        rib_wrap_qip_rsp(handle_.number(), &ref, refused.data(), refused.size());
    }
}

bytes fib_service::respond(const qip_ref &ref) {
    const uint32_t opcode = qip_opcode_get(&ref);
    const std::span<const uint8_t> message(static_cast<const uint8_t *>(qip_payload_get(&ref)), qip_payload_size(&ref));
    const std::scoped_lock locked(lock_);
    answered_++;
    const message_handler *row = find_handler(opcode);
    if (row == nullptr) {
        note_refusal(ref, RIB_NOT_SUPPORTED, "no such opcode");
        return refusal(RIB_NOT_SUPPORTED);
    }
    rib_check_report why{};
    if (const uint32_t result = row->check(message, &why); result != RIB_OK) {
        note_refusal(ref, result, text_of(why));
        return refusal(result);
    }
    bytes said = row->answer(module_, message);
    trace(opcode, message.size());
    return said;
}

void fib_service::trace(uint32_t opcode, size_t size) const {
    if (options_.trace) {
        std::array<char, 64> state{};
        fib_state_to_str(static_cast<uint32_t>(module_.fib.now()), state.data());
        rib_printf_time("Module %u took %s (size %zu): %u entries, %s\n", options_.number,
                        protocol::find_fib_request(opcode)->name, size, module_.fib.count(), state.data());
    }
}

// A failure of memory may be over at once; the RIB would wait in vain.
void fib_service::answer(const qip_ref &ref, const bytes &payload) {
    constexpr int most_tries = 4;
    const auto size = static_cast<uint32_t>(payload.size());
    const auto lacks_memory = [](uint32_t result) {
        return result == RIB_OUT_OF_MEMORY || result == (RIB_PLATFORM_FAILURE | ENOMEM);
    };
    int tries = 1;
    while (lacks_memory(rib_wrap_qip_rsp(handle_.number(), &ref, payload.data(), size)) && tries < most_tries) {
        tries++;
    }
}

void fib_service::note_refusal(const qip_ref &ref, uint32_t result, const std::string &why) const {
    std::array<char, 64> text{};
    rib_rtn_to_str(result, text.data());
    bus::note_in_history("module ", options_.number, " refuses opcode ", qip_opcode_get(&ref), " from ", sender_of(ref),
                         ": ", text.data(), why.empty() ? "" : ": ", why);
}

// An answer of the RIB is heard meanwhile.
/// @return false where the service was stopped meanwhile
bool fib_service::be_slow() {
    constexpr uint64_t millisecond = 1000;
    const uint64_t until = qip_now() + static_cast<uint64_t>(options_.slow.count()) * millisecond;
    for (uint64_t now = qip_now(); now < until; now = qip_now()) {
        qip_recv_opts opts{{QIP_RECV_ANY_ANSWER}};
        opts.word[4] = static_cast<uint32_t>((until - now - 1) / millisecond + 1);
        qip_ref answer{};
        if (qip_recv(handle_.number(), &answer, &opts) == 0) {
            hear_rib(answer);
            qip_drop(handle_.number(), &answer);
        } else if (errno == ECANCELED || errno == EBADF) {
            return false;
        }
    }
    return true;
}

} // namespace ribkit::fib
