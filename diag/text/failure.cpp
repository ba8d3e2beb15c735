// The timed trace line, and the failure reports: a trace for developers, a plain sentence for the two clients that face
// an operator.
#include "diag/print.h"
#include "rib_trace.h"

#include <cstdarg>
#include <cstddef>
#include <cstdio>

namespace {

constexpr size_t trace_line = 244; // bytes, time stamp and terminator included
constexpr size_t report_line = 156;

template <size_t Size> int32_t print_timed(const char *format, va_list arguments) {
    char line[Size];
    int used = rib_time_stamp_str(line);
    line[used++] = ' ';
    std::vsnprintf(line + used, Size - static_cast<size_t>(used), format, arguments);
    return std::printf("%s", line);
}

int32_t report(uint32_t uuid, const char *sentence, const char *format, va_list arguments) {
    if (ribkit::diag::faces_operator(uuid)) {
        return std::puts(sentence);
    }
    return print_timed<report_line>(format, arguments);
}

} // namespace

int32_t rib_printf_time(const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const int32_t printed = print_timed<trace_line>(format, arguments);
    va_end(arguments);
    return printed;
}

int32_t rib_printf_req_fail(uint32_t uuid, const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const int32_t printed = report(uuid, "Cannot communicate with RIB!", format, arguments);
    va_end(arguments);
    return printed;
}

int32_t rib_printf_rsp_fail(uint32_t uuid, const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const int32_t printed = report(uuid, "No response from RIB!", format, arguments);
    va_end(arguments);
    return printed;
}

int32_t rib_printf_fib_req_fail(uint32_t uuid, const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const int32_t printed = report(uuid, "Cannot communicate with FIB!", format, arguments);
    va_end(arguments);
    return printed;
}

int32_t rib_printf_fib_rsp_fail(uint32_t uuid, const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const int32_t printed = report(uuid, "No response from FIB!", format, arguments);
    va_end(arguments);
    return printed;
}

int32_t rib_printf_drop_fail(uint32_t uuid, const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const int32_t printed = report(uuid, "Failed IPC drop reference!", format, arguments);
    va_end(arguments);
    return printed;
}

int32_t rib_printf_no_mem(uint32_t uuid, const char *format, ...) {
    va_list arguments;
    va_start(arguments, format);
    const int32_t printed = report(uuid, "Out of memory!", format, arguments);
    va_end(arguments);
    return printed;
}
