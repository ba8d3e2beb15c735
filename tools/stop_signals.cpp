#include "tools/stop_signals.h"

#include <pthread.h>
#include <utility>

namespace ribkit {

stop_signals::stop_signals() {
    sigemptyset(&signals_);
    sigaddset(&signals_, SIGINT);
    sigaddset(&signals_, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &signals_, &before_);
}

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
