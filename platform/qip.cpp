// The message service as C sees it: handles and references in front of the transports, results as 0 or -1 with errno,
// which is set last.
#include "qip.h"

#include "platform/clock.h"
#include "platform/faults/faults.h"
#include "platform/handles.h"
#include "platform/names.h"
#include "platform/references.h"
#include "platform/transport.h"
#include "ribkit_platform.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <new>
#include <optional>
#include <span>
#include <string>
#include <system_error>

using namespace ribkit::platform;

namespace {

template <typename Action> int answered_by(const Action &action) {
    int error = 0;
    try {
        error = action();
    } catch (const std::bad_alloc &) {
        error = ENOMEM;
    } catch (
        const std::system_error &failure) { // a thread that cannot be started: EAGAIN also where memory for it fails
        error = failure.code().value() == EAGAIN ? ENOMEM : failure.code().value();
    }
    if (error == 0) {
        return 0;
    }
    errno = error;
    return -1;
}

/// Makes the call unless a fault script lets it fail.
template <typename Action> int called_under(const fault_script_ptr &script, service_call call, const Action &action) {
    const int failure = script == nullptr ? 0 : script->failure_of(call);
    return failure != 0 ? failure : action();
}

/// That of an unknown handle is the one that all follow.
fault_script_ptr script_of(const endpoint_ptr &end) { return end == nullptr ? common_faults() : end->faults()->get(); }

/// Calls the action with the handle's endpoint.
template <typename Action> int called_at(uint32_t handle, service_call call, const Action &action) {
    return answered_by([&] {
        take_turn();
        const endpoint_ptr end = find_handle(handle);
        return called_under(script_of(end), call, [&] { return end == nullptr ? EBADF : action(*end); });
    });
}

bool may_wait(const qip_send_opts *opts) { return opts == nullptr || (opts->word[0] != 1 && opts->word[1] == 0); }

/// A reference to what will be sent: it keeps token and size only, since the payload is on its way then. None is
/// reserved where the caller wants none.
class sent_reference {
  public:
    sent_reference(qip_ref *wanted, uint32_t size) : wanted_(wanted), size_(size) {
        if (wanted != nullptr) {
            reserved_.emplace();
        }
    }

    void hold(uint32_t token) noexcept {
        if (reserved_) {
            message record;
            record.token = token;
            record.size = size_;
            reserved_->hold(std::move(record), *wanted_);
        }
    }

  private:
    qip_ref *wanted_;
    uint32_t size_;
    std::optional<reserved_reference> reserved_;
};

int send_new(endpoint &from, const qip_addr &to, message letter, const qip_send_opts *opts, qip_ref *ref_out) {
    uint32_t token = 0;
    sent_reference sent{ref_out, letter.size};
    const int error = from.send(to, std::move(letter), may_wait(opts), ref_out == nullptr ? nullptr : &token);
    if (error == 0) {
        sent.hold(token);
    }
    return error;
}

int send_answer(const qip_ref *req_ref, message letter, qip_ref *ref_out) {
    const message *request = held(req_ref);
    if (request == nullptr || !request->received) {
        return EINVAL;
    }
    letter.opcode = 0;
    sent_reference sent{ref_out, letter.size};
    const int error = request->reply == nullptr ? 0 : request->reply->answer(std::move(letter));
    if (error == 0) {
        sent.hold(request->token);
    }
    return error;
}

static_assert(static_cast<uint32_t>(selector::kind::incoming) == QIP_RECV_INCOMING &&
              static_cast<uint32_t>(selector::kind::by_token) == QIP_RECV_BY_TOKEN &&
              static_cast<uint32_t>(selector::kind::any_answer) == QIP_RECV_ANY_ANSWER &&
              static_cast<uint32_t>(selector::kind::anything) == QIP_RECV_ANYTHING);

selector selected_by(const qip_recv_opts *opts) {
    if (opts == nullptr) {
        return {};
    }
    return {.wanted = static_cast<selector::kind>(opts->word[0]),
            .token = opts->word[3],
            .may_wait = opts->word[1] == 0,
            .limit = std::chrono::seconds{opts->word[2]} + std::chrono::milliseconds{opts->word[4]}};
}

const message *received(const qip_ref *ref) {
    const message *letter = held(ref);
    return letter != nullptr && letter->received ? letter : nullptr;
}

} // namespace

int qip_open(const char *url, uint32_t *handle) { return qip_open_within(url, UINT32_MAX, handle); }

int qip_open_within(const char *url, uint32_t milliseconds, uint32_t *handle) {
    return answered_by([&] {
        take_turn();
        return called_under(common_faults(), service_call::open, [&] {
            endpoint_ptr opened;
            const int error = open_endpoint(url, std::chrono::milliseconds{milliseconds}, opened);
            if (error == 0) {
                *handle = add_handle(std::move(opened));
            }
            return error;
        });
    });
}

int qip_close(uint32_t handle) {
    return answered_by([&] {
        const endpoint_ptr end = remove_handle(handle);
        if (end == nullptr) {
            return EBADF;
        }
        end->close();
        return 0;
    });
}

int qip_listen(uint32_t handle, const struct qip_addr *addr, uint32_t bound) {
    return qip_listen_to(handle, addr, bound, nullptr, 0);
}

int qip_listen_to(uint32_t handle, const struct qip_addr *addr, uint32_t bound, const char *const *names,
                  uint32_t count) {
    return called_at(handle, service_call::listen, [&](endpoint &end) {
        const std::span<const char *const> listed{names, count};
        const bool valid = std::all_of(listed.begin(), listed.end(), [](const char *one) { return is_name(one); });
        return bound == 0 || !valid ? EINVAL : end.listen(*addr, bound, listed);
    });
}

int qip_send(uint32_t handle, const struct qip_addr *addr, uint32_t opcode, const void *payload, uint32_t payload_size,
             struct qip_ref *ref_out, const struct qip_ref *req_ref, const struct qip_send_opts *opts) {
    return called_at(handle, service_call::send, [&](endpoint &end) {
        message letter = new_message(opcode, {static_cast<const uint8_t *>(payload), payload_size});
        return req_ref == nullptr ? send_new(end, *addr, std::move(letter), opts, ref_out)
                                  : send_answer(req_ref, std::move(letter), ref_out);
    });
}

int qip_recv(uint32_t handle, struct qip_ref *ref_out, const struct qip_recv_opts *opts) {
    return called_at(handle, service_call::recv, [&](endpoint &end) {
        if (opts != nullptr && opts->word[0] > QIP_RECV_ANYTHING) {
            return EINVAL;
        }
        message letter;
        reserved_reference reference;
        const int error = end.receive(selected_by(opts), letter);
        if (error == 0) {
            letter.received = true;
            reference.hold(std::move(letter), *ref_out);
        }
        return error;
    });
}

int qip_drop(uint32_t handle, struct qip_ref *ref) {
    const bool was_held = release(ref); // whatever a fault script says: nobody could drop it again
    return answered_by([&] {
        take_turn();
        const fault_script_ptr script = script_of(find_handle(handle)); // references outlive their handle
        return called_under(script, service_call::drop, [&] { return was_held ? 0 : EBADF; });
    });
}

uint32_t qip_rr_token_get(const struct qip_ref *ref) {
    const message *letter = held(ref);
    return letter == nullptr ? 0 : letter->token;
}

void *qip_payload_get(const struct qip_ref *ref) {
    const message *letter = received(ref);
    return letter == nullptr ? nullptr : letter->payload();
}

uint32_t qip_payload_size(const struct qip_ref *ref) {
    const message *letter = received(ref);
    return letter == nullptr ? 0 : letter->size;
}

uint32_t qip_opcode_get(const struct qip_ref *ref) {
    const message *letter = received(ref);
    return letter == nullptr ? 0 : letter->opcode;
}

uint32_t qip_sender_get(const struct qip_ref *ref) {
    const message *letter = received(ref);
    return letter == nullptr || letter->from == nullptr ? 0 : letter->from->number;
}

const char *qip_sender_name(const struct qip_ref *ref) {
    const message *letter = received(ref);
    return letter == nullptr || letter->from == nullptr ? "" : letter->from->name.c_str();
}

uint32_t qip_reconnections(uint32_t handle) {
    const endpoint_ptr end = find_handle(handle);
    return end == nullptr ? 0 : end->reconnections();
}

uint64_t qip_now(void) {
    const auto passed = std::chrono::duration_cast<std::chrono::microseconds>(clock_now().time_since_epoch());
    return static_cast<uint64_t>(passed.count());
}

uint32_t qip_refs_held(void) { return references_held(); }

void qip_step_aside(void) { step_aside(); }

void qip_take_part(void) { take_part(); }

void qip_pause(uint32_t milliseconds) {
    take_turn();
    pause_for(std::chrono::milliseconds{milliseconds});
}

int qip_virtual_time(uint64_t *microseconds) {
    const auto now = virtual_now();
    if (!now) {
        errno = ENOTSUP;
        return -1;
    }
    const auto passed = std::chrono::duration_cast<std::chrono::microseconds>(now->time_since_epoch());
    *microseconds = static_cast<uint64_t>(passed.count());
    return 0;
}

namespace {

/// @param wrong as it follows the file's name
int loaded(const char *file, const std::string &wrong, char *error, uint32_t error_size) {
    if (!wrong.empty()) {
        std::snprintf(error, error_size, "%s:%s", file, wrong.c_str());
        return EINVAL;
    }
    return 0;
}

} // namespace

int qip_faults_load(const char *file, char *error, uint32_t error_size) {
    return answered_by([&] {
        if (file == nullptr) {
            end_faults();
            return 0;
        }
        return loaded(file, load_faults(file), error, error_size);
    });
}

int qip_faults_load_for(uint32_t handle, const char *file, char *error, uint32_t error_size) {
    return answered_by([&] {
        const endpoint_ptr end = find_handle(handle);
        if (end == nullptr) {
            return EBADF;
        }
        if (file == nullptr) {
            end->faults()->put(nullptr);
            return 0;
        }
        return loaded(file, load_faults(file, *end->faults()), error, error_size);
    });
}
