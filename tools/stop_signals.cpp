#include "tools/stop_signals.h"

#include <pthread.h>
#include <utility>

namespace ribkit {

static sigset_t both_signals() {
    sigset_t both;
    sigemptyset(&both);
    sigaddset(&both, SIGINT);
    sigaddset(&both, SIGTERM);
    return both;
}

void sleep_stoppably(std::chrono::milliseconds pause) {
    const sigset_t stops = both_signals();
    sigset_t before;
    pthread_sigmask(SIG_UNBLOCK, &stops, &before);
    std::this_thread::sleep_for(pause);
    pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

stop_signals::stop_signals() : signals_(both_signals()) { pthread_sigmask(SIG_BLOCK, &signals_, &before_); }

stop_signals::~stop_signals() {
    ended_ = true;
    if (waiting_.joinable()) {
        pthread_kill(waiting_.native_handle(), SIGINT);
        waiting_.join();
    }
    pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

void stop_signals::call(std::function<void()> stop) {
    waiting_ = std::thread([this, stop = std::move(stop)] {
        wait();
        if (!ended_) {
            stop();
        }
    });
}

void stop_signals::wait() const {
    int signal = 0;
    sigwait(&signals_, &signal);
}

} // namespace ribkit
