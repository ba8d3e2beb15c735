// Each wrapped name asks what is to happen before it calls the C library's function. Directories and files have the
// names that the C library gives their calls where positions in files have 64 bits.
#include "testing/intercepted_call.h"

#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <dirent.h>
#include <mutex>
#include <string>
#include <string_view>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/timerfd.h>
#include <sys/types.h>
#include <type_traits>
#include <unistd.h>
#include <utility>

namespace ribkit::testing {

namespace {

std::mutex lock; // of all that follows
std::string wanted;
intercepted_call::action what;
int count = 0;

/// Whether the call fails, with errno.
bool fails(std::string_view function) {
    intercepted_call::action before;
    {
        const std::scoped_lock locked{lock};
        if (function != wanted) {
            return false;
        }
        ++count;
        before = what;
    }
    const int error = before();
    errno = error == 0 ? errno : error;
    return error != 0;
}

} // namespace

/// What the C library's function says, or what it says when it fails: null, or -1.
template <typename Function, typename... Values>
auto unless_it_fails(std::string_view name, Function *real, Values... values) {
    using result = decltype(real(values...));
    if (!fails(name)) {
        return real(values...);
    }
    if constexpr (std::is_pointer_v<result>) {
        return result{nullptr};
    } else {
        return result{-1};
    }
}

intercepted_call::intercepted_call(std::string_view function, action before) {
    const std::scoped_lock locked{lock};
    wanted = function;
    what = std::move(before);
    count = 0;
}

intercepted_call::intercepted_call(std::string_view function, int error, int times)
    : intercepted_call(function, [error, times] { return calls() <= times ? error : 0; }) {}

intercepted_call::~intercepted_call() {
    const std::scoped_lock locked{lock};
    wanted.clear();
}

int intercepted_call::calls() {
    const std::scoped_lock locked{lock};
    return count;
}

} // namespace ribkit::testing

// The linker's names: a call of bind arrives at __wrap_bind, and __real_bind is the C library's.
extern "C" {
decltype(accept4) __real_accept4, __wrap_accept4;
decltype(bind) __real_bind, __wrap_bind;
decltype(connect) __real_connect, __wrap_connect;
decltype(epoll_create1) __real_epoll_create1, __wrap_epoll_create1;
decltype(epoll_ctl) __real_epoll_ctl, __wrap_epoll_ctl;
decltype(eventfd) __real_eventfd, __wrap_eventfd;
decltype(flock) __real_flock, __wrap_flock;
decltype(fopen64) __real_fopen64, __wrap_fopen64;
decltype(fstat64) __real_fstat64, __wrap_fstat64;
decltype(ftruncate64) __real_ftruncate64, __wrap_ftruncate64;
decltype(getsockopt) __real_getsockopt, __wrap_getsockopt;
decltype(listen) __real_listen, __wrap_listen;
decltype(mkdir) __real_mkdir, __wrap_mkdir;
decltype(opendir) __real_opendir, __wrap_opendir;
decltype(pwrite64) __real_pwrite64, __wrap_pwrite64;
decltype(recv) __real_recv, __wrap_recv;
decltype(renameat) __real_renameat, __wrap_renameat;
decltype(sendmsg) __real_sendmsg, __wrap_sendmsg;
decltype(socket) __real_socket, __wrap_socket;
decltype(timerfd_create) __real_timerfd_create, __wrap_timerfd_create;
}

using namespace ribkit::testing;

int __wrap_accept4(int socket, sockaddr *address, socklen_t *size, int flags) {
    return unless_it_fails("accept4", __real_accept4, socket, address, size, flags);
}

int __wrap_bind(int socket, const sockaddr *address, socklen_t size) noexcept {
    return unless_it_fails("bind", __real_bind, socket, address, size);
}

int __wrap_connect(int socket, const sockaddr *address, socklen_t size) {
    return unless_it_fails("connect", __real_connect, socket, address, size);
}

int __wrap_epoll_create1(int flags) noexcept { return unless_it_fails("epoll_create1", __real_epoll_create1, flags); }

int __wrap_epoll_ctl(int set, int act, int file, epoll_event *event) noexcept {
    return unless_it_fails("epoll_ctl", __real_epoll_ctl, set, act, file, event);
}

int __wrap_eventfd(unsigned first, int flags) noexcept {
    return unless_it_fails("eventfd", __real_eventfd, first, flags);
}

int __wrap_flock(int file, int act) noexcept { return unless_it_fails("flock", __real_flock, file, act); }

FILE *__wrap_fopen64(const char *path, const char *mode) {
    return unless_it_fails("fopen64", __real_fopen64, path, mode);
}

int __wrap_fstat64(int file, struct stat64 *there) noexcept {
    return unless_it_fails("fstat64", __real_fstat64, file, there);
}

int __wrap_ftruncate64(int file, off64_t size) noexcept {
    return unless_it_fails("ftruncate64", __real_ftruncate64, file, size);
}

int __wrap_getsockopt(int socket, int level, int name, void *value, socklen_t *size) noexcept {
    return unless_it_fails("getsockopt", __real_getsockopt, socket, level, name, value, size);
}

int __wrap_listen(int socket, int backlog) noexcept {
    return unless_it_fails("listen", __real_listen, socket, backlog);
}

int __wrap_mkdir(const char *path, mode_t mode) noexcept { return unless_it_fails("mkdir", __real_mkdir, path, mode); }

DIR *__wrap_opendir(const char *path) { return unless_it_fails("opendir", __real_opendir, path); }

ssize_t __wrap_pwrite64(int file, const void *bytes, size_t size, off64_t at) {
    return unless_it_fails("pwrite64", __real_pwrite64, file, bytes, size, at);
}

ssize_t __wrap_recv(int socket, void *bytes, size_t size, int flags) {
    return unless_it_fails("recv", __real_recv, socket, bytes, size, flags);
}

int __wrap_renameat(int from, const char *name, int to, const char *other) noexcept {
    return unless_it_fails("renameat", __real_renameat, from, name, to, other);
}

ssize_t __wrap_sendmsg(int socket, const msghdr *packet, int flags) {
    return unless_it_fails("sendmsg", __real_sendmsg, socket, packet, flags);
}

int __wrap_socket(int family, int type, int protocol) noexcept {
    return unless_it_fails("socket", __real_socket, family, type, protocol);
}

int __wrap_timerfd_create(int clock, int flags) noexcept {
    return unless_it_fails("timerfd_create", __real_timerfd_create, clock, flags);
}
