// Memory that fails in a whole program: preloaded, it lets the N-th allocation after the start of main fail, or all
// from the N-th on. The environment says what it does:
//   RIBKIT_FAIL_AT=N         the N-th fails, from 1; with 0 or without it none
//   RIBKIT_FAIL_ONWARDS=1    and every one after it
//   RIBKIT_FAIL_REPORT=FILE  says at the end how many allocations there were, and from where each failing one was asked
//                            for, as far as the first few
// What the system does before main, four places in other people's libraries that end the process when memory fails,
// and OpenSSL, which does not survive it while it prepares itself, are spared.
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <execinfo.h>
#include <fcntl.h>
#include <link.h>
#include <stdatomic.h>
#include <stdbool.h>
#include <stddef.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

// The C library's own, behind the names that are taken here.
extern void *__libc_malloc(size_t size);
extern void *__libc_calloc(size_t count, size_t size);
extern void *__libc_realloc(void *block, size_t size);
extern void *__libc_memalign(size_t alignment, size_t size);

enum { most_frames = 24, most_reports = 3 };

static atomic_bool armed;
static atomic_uint_fast64_t allocations;
static atomic_uint_fast64_t refusals;
static uint64_t fail_at;
static bool onwards;
static int report = -1;
static __thread bool looking; // the search for the place allocates itself

// libnats gives up a connection whose lock it has not made yet, a JSON object whose fields have no room yet, and
// asserts that there was room for what a thread notes of errors; glibc ends the process where it cannot note that a
// thread has something to destroy.
static const char *const spared[] = {"natsConn_create", "nats_JSONParse", "nats_doNotUpdateErrStack",
                                     "__cxa_thread_atexit_impl"};

static bool is_spared(void *const *frames, int count) {
    for (int i = 0; i < count; i++) {
        Dl_info place;
        if (dladdr(frames[i], &place) == 0 || place.dli_sname == NULL) {
            continue;
        }
        for (size_t k = 0; k < sizeof spared / sizeof *spared; k++) {
            if (strcmp(place.dli_sname, spared[k]) == 0) {
                return true;
            }
        }
    }
    return false;
}

static bool refuse(uint64_t number) {
    void *frames[most_frames];
    looking = true;
    const int count = backtrace(frames, most_frames);
    const bool refused = !is_spared(frames, count);
    if (refused && report >= 0 && atomic_fetch_add(&refusals, 1) < most_reports) {
        dprintf(report, "allocation %llu fails\n", (unsigned long long)number);
        backtrace_symbols_fd(frames + 2, count - 2, report);
    }
    looking = false;
    return refused;
}

static bool fails(void) {
    if (!atomic_load_explicit(&armed, memory_order_relaxed) || looking) {
        return false;
    }
    const uint64_t number = atomic_fetch_add(&allocations, 1) + 1;
    if (fail_at == 0 || number < fail_at || (number > fail_at && !onwards) || !refuse(number)) {
        return false;
    }
    errno = ENOMEM;
    return true;
}

// Where OpenSSL's code lies; it asks for all of its memory from there.
static uintptr_t openssl_start;
static uintptr_t openssl_end;

static int note_openssl(struct dl_phdr_info *library, size_t size, void *unused) {
    (void)size;
    (void)unused;
    for (int i = 0; strstr(library->dlpi_name, "libcrypto.so") != NULL && i < library->dlpi_phnum; i++) {
        if ((library->dlpi_phdr[i].p_flags & PF_X) != 0) {
            openssl_start = library->dlpi_addr + library->dlpi_phdr[i].p_vaddr;
            openssl_end = openssl_start + library->dlpi_phdr[i].p_memsz;
        }
    }
    return 0;
}

static bool is_openssl(const void *caller) {
    return (uintptr_t)caller >= openssl_start && (uintptr_t)caller < openssl_end;
}

void *malloc(size_t size) { return !is_openssl(__builtin_return_address(0)) && fails() ? NULL : __libc_malloc(size); }

void *calloc(size_t count, size_t size) { return fails() ? NULL : __libc_calloc(count, size); }

void *realloc(void *block, size_t size) {
    return !is_openssl(__builtin_return_address(0)) && fails() ? NULL : __libc_realloc(block, size);
}

void *reallocarray(void *block, size_t count, size_t size) {
    size_t bytes = 0;
    if (__builtin_mul_overflow(count, size, &bytes)) {
        errno = ENOMEM;
        return NULL;
    }
    return realloc(block, bytes);
}

void *memalign(size_t alignment, size_t size) { return fails() ? NULL : __libc_memalign(alignment, size); }

void *aligned_alloc(size_t alignment, size_t size) { return memalign(alignment, size); }

int posix_memalign(void **block, size_t alignment, size_t size) {
    void *made = memalign(alignment, size);
    if (made == NULL) {
        return ENOMEM;
    }
    *block = made;
    return 0;
}

static uint64_t number_in(const char *name) {
    const char *text = getenv(name);
    return text == NULL ? 0 : strtoull(text, NULL, 10);
}

// What runs after this has nothing left to lose, and counters of what was run do not survive that memory fails.
static void end_failures(void) {
    atomic_store(&armed, false);
    if (report >= 0) {
        dprintf(report, "%llu allocations\n", (unsigned long long)atomic_load(&allocations));
    }
}

static int (*program)(int, char **, char **);

static int armed_program(int argc, char **argv, char **environment) {
    void *frame = NULL;
    backtrace(&frame, 1); // loads what it needs
    dl_iterate_phdr(note_openssl, NULL);
    const char *file = getenv("RIBKIT_FAIL_REPORT");
    report = file == NULL ? -1 : open(file, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666);
    fail_at = number_in("RIBKIT_FAIL_AT");
    onwards = number_in("RIBKIT_FAIL_ONWARDS") != 0;
    atexit(end_failures);
    atomic_store(&armed, true);
    return program(argc, argv, environment);
}

// The C library starts every program with this call.
int __libc_start_main(int (*main)(int, char **, char **), int argc, char **argv, void (*init)(void), void (*fini)(void),
                      void (*rtld_fini)(void), void *stack_end) {
    int (*start)(int (*)(int, char **, char **), int, char **, void (*)(void), void (*)(void), void (*)(void), void *) =
        NULL;
    *(void **)&start = dlsym(RTLD_NEXT, "__libc_start_main");
    program = main;
    return start(armed_program, argc, argv, init, fini, rtld_fini, stack_end);
}
