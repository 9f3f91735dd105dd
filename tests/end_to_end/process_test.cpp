// The tool as a process among others: what it leaves in the file system, and for whom it waits.
#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include "support.h"

using namespace test;

namespace
{

using Process = ToolTest;

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
    const std::string refused = "error: the store " + store() + " is in use: process 4711 is editing it\n";
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
