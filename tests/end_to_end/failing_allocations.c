// Preloaded into a program, counts its allocations from main() on and lets some fail. By environment variables:
// ALLOCATION_FAILS=n fails the n-th (from 1), and with ALLOCATIONS_STAY_FAILED=1 all behind it; without it none fails.
// ALLOCATIONS_COUNTED=FILE writes their number there when the program exits.
#define _GNU_SOURCE
#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <stdatomic.h>
#include <stddef.h>
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

// The allocator behind the names that are taken here.
void *__libc_malloc(size_t size);
void *__libc_calloc(size_t count, size_t size);
void *__libc_realloc(void *old, size_t size);
void *__libc_memalign(size_t alignment, size_t size);

static int (*program)(int, char **, char **);
static unsigned long failing;
static int stay_failed;
static int counting;
static _Atomic unsigned long counted;

static int fails(void)
{
    if (!counting)
        return 0;
    const unsigned long number = atomic_fetch_add(&counted, 1) + 1;
    if (failing == 0 || number < failing || (number > failing && !stay_failed))
        return 0;
    errno = ENOMEM;
    return 1;
}

void *malloc(size_t size)
{
    return fails() ? NULL : __libc_malloc(size);
}

void *calloc(size_t count, size_t size)
{
    return fails() ? NULL : __libc_calloc(count, size);
}

void *realloc(void *old, size_t size)
{
    return fails() ? NULL : __libc_realloc(old, size);
}

void *memalign(size_t alignment, size_t size)
{
    return fails() ? NULL : __libc_memalign(alignment, size);
}

void *aligned_alloc(size_t alignment, size_t size)
{
    return memalign(alignment, size);
}

int posix_memalign(void **found, size_t alignment, size_t size)
{
    void *const made = memalign(alignment, size);
    if (made == NULL)
        return ENOMEM;
    *found = made;
    return 0;
}

static int counted_program(int argc, char **argv, char **variables)
{
    const char *const number = getenv("ALLOCATION_FAILS");
    failing = number == NULL ? 0 : strtoul(number, NULL, 10);
    stay_failed = getenv("ALLOCATIONS_STAY_FAILED") != NULL;
    counting = 1;
    return program(argc, argv, variables);
}

typedef int start_function(int (*)(int, char **, char **), int, char **, void (*)(void), void (*)(void), void (*)(void),
                           void *);

int __libc_start_main(int (*main)(int, char **, char **), int argc, char **argv, void (*init)(void), void (*fini)(void),
                      void (*end)(void), void *stack)
{
    start_function *start;
    *(void **)&start = dlsym(RTLD_NEXT, "__libc_start_main");
    program = main;
    return start(counted_program, argc, argv, init, fini, end, stack);
}

__attribute__((destructor)) static void tell(void)
{
    counting = 0;
    const char *const file = getenv("ALLOCATIONS_COUNTED");
    const int fd = file == NULL ? -1 : open(file, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    if (fd >= 0) {
        dprintf(fd, "%lu", atomic_load(&counted));
        close(fd);
    }
}
