// Files of cases: each a request and what must come of it, as texts that a reader checks. README.md in cases/ tells the
// form. Run with UPDATE=1 in the environment, tests that fail write what they see into the files; the change is then
// read.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "walk.h"

namespace test
{

/// One paragraph of a case file.
struct Case {
    std::string name;
    int line = 0;                                              ///< of the name
    std::vector<std::pair<std::string, std::string>> settings; ///< in order: word, and what stands behind it
    Lines request;                                             ///< lines of the document
    Lines expected;

    /// What stands behind `word`, or `otherwise`.
    std::string setting(std::string_view word, const std::string &otherwise = "") const;
    bool has(std::string_view word) const;
};

struct CaseFile {
    std::filesystem::path path;
    Lines head; ///< what stands above the first case
    std::vector<Case> cases;

    static CaseFile read(const std::filesystem::path &path);
    void write() const;
};

/// What came of a case now, in the form of Case::expected.
Lines outcome_of(const Case &one);

/// Both texts line by line: those of `expected` alone with "-", those of `actual` alone with "+".
std::string difference(const Lines &expected, const Lines &actual);

/// Makes a test of each case in the files of `directory`.
bool register_cases(const std::filesystem::path &directory);

} // namespace test
