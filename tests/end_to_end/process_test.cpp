// The tool as a process among others: what it leaves in the file system, and for whom it waits.
#include <fcntl.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <regex>
#include <thread>

#include "support.h"

using namespace test;

namespace
{

using Process = ToolTest;

constexpr rlimit unlimited = {RLIM_INFINITY, RLIM_INFINITY};

// Starts the tool, to read what comes from `input`, in `directory`, where it may leave a core. It has another group
// than root's.
pid_t start(const std::filesystem::path &directory, int input)
{
    const pid_t child = fork();
    if (child == 0) {
        if (chdir(directory.c_str()) == 0 && setrlimit(RLIMIT_CORE, &unlimited) == 0 && dup2(input, 0) == 0 &&
            (getgid() != 0 || setgid(1) == 0)) {
            execl(OCMAP, OCMAP, "forward", "-", nullptr);
        }
        _exit(1);
    }
    return child;
}

bool leaves_core(pid_t child)
{
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_TRUE(WIFSIGNALED(status));
    return WIFSIGNALED(status) && WCOREDUMP(status);
}

bool may_leave_none(pid_t child)
{
    return std::regex_search(read_file("/proc/" + std::to_string(child) + "/limits"),
                             std::regex("Max core file size +0 +0 "));
}

// The system gives what it tells of a process to root where nobody may look into it.
bool is_closed_to_others(pid_t child)
{
    struct stat status = {};
    return stat(("/proc/" + std::to_string(child) + "/environ").c_str(), &status) == 0 && status.st_gid == 0;
}

TEST_F(Process, LeavesNoCoreAndCannotBeDumped)
{
#ifdef __SANITIZE_ADDRESS__ // takes a SIGSEGV for a fault of its own finding
    constexpr int signals[] = {SIGABRT, SIGQUIT};
#else
    constexpr int signals[] = {SIGABRT, SIGQUIT, SIGSEGV};
#endif
    for (const int signal : signals) {
        int input[2];
        ASSERT_EQ(pipe(input), 0);
        const pid_t child = start(path("."), input[0]);
        for (int tries = 0; tries < 1000 && !may_leave_none(child); ++tries) {
            std::this_thread::sleep_for(std::chrono::milliseconds(10));
        }
        EXPECT_TRUE(may_leave_none(child));
        EXPECT_TRUE(is_closed_to_others(child));
        kill(child, signal);
        EXPECT_FALSE(leaves_core(child)) << signal;
        close(input[0]);
        close(input[1]);
    }
    EXPECT_TRUE(std::filesystem::is_empty(path(".")));
}

TEST_F(Process, LeavesNoDirectoryBehindWhenItsEditIsRefused)
{
    // Refused by the plug-in, by the router, and for what the document is.
    for (const std::string inside : {"<mka><policies><policy><name>a</name><config><name>b</name></config></policy>"
                                     "</policies></mka>",
                                     "<mka><policies><policy nc:operation='delete'><name>a</name></policy>"
                                     "</policies></mka>",
                                     "<mka><colour/></mka>"}) {
        EXPECT_EQ(edit(inside).status, 1) << inside;
        EXPECT_FALSE(std::filesystem::exists(store())) << inside;
    }
    EXPECT_EQ(edit(in_policies(policy("a", ""))).status, 0);
    EXPECT_EQ(edit("<mka><colour/></mka>").status, 1);
    EXPECT_EQ(policies(), policy("a", ""));
}

TEST_F(Process, SaysForWhomItWaitsAndWaitsNoLongerThanItIsTold)
{
    std::filesystem::create_directory(store());
    const int lock = open((store() + "/native.lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    ASSERT_EQ(flock(lock, LOCK_EX), 0);
    ASSERT_EQ(write(lock, "4711", 4), 4);
    const std::string document = std::string(EXAMPLES) + "/policies/create.xml";
    const std::string refused =
        "error: the store " + store() + " is in use: process 4711 is editing it\n  error-tag: in-use\n";
    Outcome outcome = ocmap({"edit", document, "--store", store(), "--wait", "0"});
    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.err, refused);
    outcome = ocmap({"edit", document, "--store", store(), "--wait", "2"});
    EXPECT_EQ(outcome.err, "waiting for process 4711, which is editing the store " + store() + "\n" + refused);
    EXPECT_EQ(outcome.out, "");
    close(lock);
    EXPECT_EQ(ocmap({"edit", document, "--store", store(), "--wait", "0"}).status, 0);
}

} // namespace
