// The tool when memory runs out, at each allocation or at a sample of them: it says so and does nothing, or it does
// all. OUT_OF_MEMORY_STEP=1 tries every allocation from OUT_OF_MEMORY_FROM on, 7 every seventh.
#include <cstdlib>
#include <map>
#include <sstream>

#include "support.h"

using namespace test;

namespace
{

struct Command {
    const char *name;
    std::vector<std::string> arguments; // STORE stands for a store, examples/ for where they are
    bool edits = false;
};

const std::vector<Command> commands = {
    {"Forward", {"forward", "examples/policies/merge.xml"}},
    {"ForwardJson", {"forward", "examples/policies/merge.json", "--json"}},
    {"ForwardJournal", {"forward", "examples/key-chains/rotate.xml", "--journal", "--trace"}},
    {"Reverse", {"reverse", "examples/state/busy-router.xml", "--json"}},
    {"Explain", {"explain", "examples/policies/replace.xml"}},
    {"ExplainPage", {"explain", "examples/state/busy-router.xml", "--reverse", "--html", "-"}},
    {"Tree", {"tree"}},
    {"MappingPage", {"tree", "--markdown"}},
    {"Deviations", {"deviations"}},
    {"Get", {"get", "--store", "STORE"}},
    {"GetState", {"get", "--store", "STORE", "--oper", "examples/state/busy-router.xml"}},
    {"GetConfig", {"get-config", "examples/policies/get-by-content.xml", "--store", "STORE"}},
    {"EditChain", {"edit", "examples/key-chains/rotate.xml", "--store", "STORE"}, true},
    {"EditPolicy", {"edit", "examples/policies/replace.xml", "--store", "STORE"}, true},
    {"DryRun", {"edit", "examples/policies/replace.xml", "--store", "STORE", "--dry-run"}},
    {"EditRefused", {"edit", "examples/policies/create.xml", "--store", "STORE"}, true},
};

class OutOfMemory : public ToolTest, public testing::WithParamInterface<std::tuple<std::size_t, bool>>
{
protected:
    void SetUp() override
    {
        ToolTest::SetUp();
        command_ = commands[std::get<0>(GetParam())];
        for (std::string &argument : command_.arguments) {
            if (argument == "STORE") {
                argument = store();
            } else if (argument.starts_with("examples/")) {
                argument.replace(0, 8, EXAMPLES);
            }
        }
        for (const char *example : {"policies/create.xml", "key-chains/create.xml", "interfaces/attach.xml"}) {
            ASSERT_EQ(ocmap({"edit", std::string(EXAMPLES) + "/" + example, "--store", store()}).status, 0);
        }
        before_ = store_file();
        expected_ = run(0);
        ASSERT_LE(expected_.status, 1) << expected_.err;
        after_ = store_file();
        total_ = std::stoul(read_file(path("count")));
        ASSERT_GT(total_, 1000U);
    }

    // With the `number`-th allocation failing, and perhaps all behind it; with 0, none.
    Outcome run(std::size_t number)
    {
        std::vector<std::string> environment = {std::string("LD_PRELOAD=") + FAILING_ALLOCATIONS,
                                                "ALLOCATION_FAILS=" + std::to_string(number)};
        if (number == 0) {
            environment.push_back("ALLOCATIONS_COUNTED=" + path("count").string());
        }
        if (std::get<1>(GetParam())) {
            environment.emplace_back("ALLOCATIONS_STAY_FAILED=1");
        }
        return ocmap(command_.arguments, "", environment);
    }

    void restore_store() const
    {
        std::filesystem::remove_all(store());
        std::filesystem::create_directory(store());
        write_file(path("store") / "native.xml", before_);
    }

    // What is wrong with the outcome; nothing if nothing is.
    std::string fault(const Outcome &outcome) const
    {
        std::ostringstream text;
        const std::string stored = store_file();
        const bool refused =
            outcome.err.find("error: out of memory\n  error-tag: resource-denied\n") != std::string::npos ||
            outcome.err.find("\"error-message\": \"out of memory\"") != std::string::npos;
        const bool as_expected = outcome.status == expected_.status && outcome.out == expected_.out;
        if (outcome.status != 0 && outcome.status != 1) {
            text << "status " << outcome.status << ": " << outcome.err;
        } else if (outcome.status == 0 && !as_expected) {
            text << "another answer with status 0: " << outcome.err;
        } else if (outcome.status == 1 && !refused && !(as_expected && outcome.err == expected_.err)) {
            text << "another error: " << outcome.err;
        } else if (stored != (outcome.status == 0 ? after_ : before_)) {
            text << "another store with status " << outcome.status;
        }
        for (const auto &entry : std::filesystem::directory_iterator(store())) {
            const std::string name = entry.path().filename();
            text << (name == "native.xml" || name == "native.lock" ? "" : "leaves " + name + " behind");
        }
        return text.str();
    }

    // Most of a run loads the models, which is the same in all: a few of those allocations do.
    std::vector<std::size_t> numbers() const
    {
        std::vector<std::size_t> found;
        const char *const given = std::getenv("OUT_OF_MEMORY_STEP");
        const char *const from = std::getenv("OUT_OF_MEMORY_FROM");
        const std::size_t first = from == nullptr ? 1 : std::stoul(from);
        const std::size_t step = given == nullptr ? 0 : std::stoul(given);
        for (std::size_t number = first; number <= total_;) {
            found.push_back(number);
            number += step != 0 ? step : number + 500 < total_ ? 1 + total_ / 12 : 41;
        }
        return found;
    }

    Command command_;
    Outcome expected_;
    std::string before_;
    std::string after_;
    std::size_t total_ = 0;
};

TEST_P(OutOfMemory, IsSaidAndNothingIsDone)
{
    std::map<std::string, std::vector<std::size_t>> faults;
    for (const std::size_t number : numbers()) {
        restore_store();
        if (const std::string found = fault(run(number)); !found.empty()) {
            faults[found].push_back(number);
        }
    }
    for (const auto &[text, found] : faults) {
        ADD_FAILURE() << "allocation " << found.front() << " of " << total_ << " (and " << found.size() - 1
                      << " others): " << text;
    }
}

INSTANTIATE_TEST_SUITE_P(Commands, OutOfMemory,
                         testing::Combine(testing::Range(std::size_t{0}, commands.size()), testing::Bool()),
                         [](const auto &made) {
                             return std::string(commands[std::get<0>(made.param)].name) +
                                    (std::get<1>(made.param) ? "FromThenOn" : "Once");
                         });

} // namespace
