#include "tools/json_output.h"

#include "tools/input_error.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <stdexcept>
#include <unistd.h>
#include <utility>

namespace ribkit {

namespace {

std::FILE *claim_standard_output() {
    const int claimed = dup(STDOUT_FILENO);
    dup2(STDERR_FILENO, STDOUT_FILENO);
    return fdopen(claimed, "w");
}

std::FILE *opened_as_it_is(const std::string &path) {
    const int file = open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0666);
    return file < 0 ? nullptr : fdopen(file, "w");
}

std::FILE *opened(const std::string &path) {
    if (path.empty()) {
        return nullptr;
    }
    std::FILE *file = path == "-" ? claim_standard_output() : opened_as_it_is(path);
    if (file == nullptr) {
        throw input_error(joined(path, ": cannot be written: ", std::strerror(errno)));
    }
    return file;
}

} // namespace

json_output::json_output(std::string path) : path_(std::move(path)), file_(opened(path_), std::fclose) {}

void json_output::write(const std::string &text) const {
    // A pipe or terminal has nothing to lose.
    const bool begun = alone() || ftruncate(fileno(file_.get()), 0) == 0 || errno == EINVAL;
    if (!begun || std::fputs(text.c_str(), file_.get()) < 0 || std::fflush(file_.get()) != 0) {
        throw std::runtime_error(
            joined(alone() ? "standard output" : path_, ": cannot be written: ", std::strerror(errno)));
    }
}

} // namespace ribkit
