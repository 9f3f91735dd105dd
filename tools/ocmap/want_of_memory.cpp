// What failed last is told by errno: the allocator leaves ENOMEM there, and nothing takes it back.
#include "want_of_memory.h"

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <exception>

#include <unistd.h>

namespace ocmap
{
namespace
{

const char *told = "";

[[noreturn]] void end()
{
    [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, told, std::strlen(told));
    _exit(1);
}

extern "C" void on_fault(int signal)
{
    if (errno == ENOMEM) {
        end();
    }
    std::signal(signal, SIG_DFL);
    raise(signal); // delivered when this returns, as the process's end
}

void on_terminate()
{
    if (errno == ENOMEM) {
        end();
    }
    std::abort();
}

} // namespace

void tell_want_of_memory(const char *text)
{
    const bool first = *told == '\0';
    told = text;
#ifndef __SANITIZE_ADDRESS__ // which has handlers of its own
    if (first) {
        std::set_terminate(on_terminate);
        std::signal(SIGSEGV, on_fault);
    }
#else
    static_cast<void>(first);
    static_cast<void>(&on_fault);
    static_cast<void>(&on_terminate);
#endif
}

} // namespace ocmap
