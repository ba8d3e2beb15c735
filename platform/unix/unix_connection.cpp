// Packets are sent without waiting: what the socket does not take stays until it does.
#include "platform/unix/unix_connection.h"

#include <algorithm>
#include <cerrno>
#include <sys/socket.h>
#include <sys/uio.h>
#include <utility>

namespace ribkit::platform {

namespace {

int send_bytes(int socket, const packet_head &head, std::span<uint8_t> payload) {
    head_bytes bytes = bytes_of(head);
    std::array<iovec, 2> parts{iovec{bytes.data(), bytes.size()}, iovec{payload.data(), payload.size()}};
    msghdr packet{};
    packet.msg_iov = parts.data();
    packet.msg_iovlen = payload.empty() ? 1 : 2;
    while (sendmsg(socket, &packet, MSG_DONTWAIT | MSG_NOSIGNAL) < 0) {
        if (errno != EINTR) {
            return errno;
        }
    }
    return 0;
}

} // namespace

void unix_connection::close() {
    socket_.reset();
    std::deque<outgoing>{}.swap(to_send_);
    bytes_to_send_ = 0;
    incoming = {};
}

void unix_connection::post(packet_kind kind, message letter) {
    const packet_head head{kind, 0, letter.token, letter.opcode, letter.size};
    to_send_.push_back({head, std::move(letter)});
    bytes_to_send_ += head.size;
}

message unix_connection::unpost() {
    message letter = std::move(to_send_.back().letter);
    to_send_.pop_back();
    bytes_to_send_ -= letter.size;
    return letter;
}

int unix_connection::send_packet(outgoing &one) {
    packet_head head = one.head;
    if (one.begun) {
        head = {.kind = packet_kind::piece, .size = one.sent};
    }
    head.room = std::min(arrived.room_owed.load(), most_room);
    const uint32_t size = std::min<uint32_t>(piece_size, one.letter.size - one.sent);
    const int error = send_bytes(socket_.get(), head, {one.letter.payload() + one.sent, size});
    if (error == 0) {
        arrived.room_owed -= head.room;
        one.begun = true;
        one.sent += size;
        bytes_to_send_ -= size;
    }
    return error;
}

int unix_connection::send_room() {
    const uint32_t owed = std::min(arrived.room_owed.load(), most_room);
    const int error = owed == 0 ? 0 : send_bytes(socket_.get(), {.kind = packet_kind::room, .room = owed}, {});
    if (error == 0) {
        arrived.room_owed -= owed;
    }
    return error;
}

int unix_connection::flush() {
    while (!to_send_.empty()) {
        outgoing &first = to_send_.front();
        if (const int error = send_packet(first); error != 0) {
            return error;
        }
        if (first.sent == first.letter.size) {
            to_send_.pop_front();
            ++sent_;
        }
    }
    return send_room();
}

int unix_connection::say_gap() { return send_bytes(socket_.get(), {.kind = packet_kind::gap}, {}); }

void unix_connection::refuse(int reason) {
    send_bytes(socket_.get(), {.kind = packet_kind::refusal, .opcode = static_cast<uint32_t>(reason)}, {});
    close();
}

int unix_connection::receive(std::span<uint8_t> place, std::span<const uint8_t> &packet) const {
    for (;;) {
        const ssize_t size = recv(socket_.get(), place.data(), place.size(), MSG_DONTWAIT | MSG_TRUNC);
        if (size > 0) {
            packet = place.first(std::min(static_cast<size_t>(size), place.size()));
            return static_cast<size_t>(size) > place.size() ? EPROTO : 0;
        }
        if (size == 0) {
            return ECONNRESET;
        }
        if (errno != EINTR && errno != ECONNRESET) { // after a reset there may still be something to read
            return errno;
        }
    }
}

} // namespace ribkit::platform
