// Reading and writing of case files, and the tests made of them.
#include "case_file.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <memory>

namespace test
{
namespace
{

constexpr std::string_view case_word = "case ";
constexpr std::string_view arrow = "->";

bool is_setting(std::string_view word)
{
    static constexpr std::string_view words[] = {
        "forward", "reverse",     "in",        "show",          "below",          "inside",
        "rows",    "kinds",       "fields",    "fault",         "sweep",          "call",
        "set",     "delete-mode", "fill-mode", "data-selector", "option-group-9", "without-configuration",
        "zone",    "now"};
    return std::ranges::find(words, word) != std::end(words);
}

bool is_document(std::string_view line)
{
    return line.starts_with("<") || line.starts_with(" ");
}

class CaseTest : public testing::Test
{
    std::shared_ptr<CaseFile> file_;
    std::size_t index_;

public:
    CaseTest(std::shared_ptr<CaseFile> file, std::size_t index) : file_(std::move(file)), index_(index) {}

    void TestBody() override
    {
        Case &one = file_->cases[index_];
        for (const auto &[word, rest] : one.settings) {
            EXPECT_TRUE(is_setting(word)) << one.name << ": no setting: " << word;
        }
        EXPECT_FALSE(one.has("rows") && one.expected.empty()) << one.name << ": no rows";
        const Lines actual = outcome_of(one);
        if (actual == one.expected) {
            return;
        }
        if (std::getenv("UPDATE") != nullptr) {
            one.expected = actual;
            file_->write();
            ADD_FAILURE_AT(file_->path.c_str(), one.line) << one.name << ": written anew; read what has changed";
            return;
        }
        ADD_FAILURE_AT(file_->path.c_str(), one.line) << one.name << ": what came of it differs (- expected, + came)\n"
                                                      << difference(one.expected, actual);
    }
};

} // namespace

std::string Case::setting(std::string_view word, const std::string &otherwise) const
{
    const auto found = std::ranges::find(settings, word, &std::pair<std::string, std::string>::first);
    return found == settings.end() ? otherwise : found->second;
}

bool Case::has(std::string_view word) const
{
    return std::ranges::find(settings, word, &std::pair<std::string, std::string>::first) != settings.end();
}

CaseFile CaseFile::read(const std::filesystem::path &path)
{
    CaseFile file{path, {}, {}};
    std::ifstream stream(path);
    bool expects = false;
    int number = 0;
    for (std::string line; std::getline(stream, line);) {
        ++number;
        if (line.starts_with(case_word)) {
            file.cases.push_back({line.substr(case_word.size()), number, {}, {}, {}});
            expects = false;
        } else if (file.cases.empty()) {
            file.head.push_back(line);
        } else if (line == arrow) {
            expects = true;
        } else if (line.empty()) {
            continue;
        } else if (expects) {
            file.cases.back().expected.push_back(line);
        } else if (is_document(line)) {
            file.cases.back().request.push_back(line);
        } else {
            const std::size_t blank = std::min(line.find(' '), line.size());
            file.cases.back().settings.emplace_back(line.substr(0, blank),
                                                    line.substr(std::min(blank + 1, line.size())));
        }
    }
    return file;
}

void CaseFile::write() const
{
    std::ofstream stream(path);
    for (const std::string &line : head) {
        stream << line << '\n';
    }
    const char *between = "";
    for (const Case &one : cases) {
        stream << between << case_word << one.name << '\n';
        for (const auto &[word, rest] : one.settings) {
            stream << word << (rest.empty() ? "" : " ") << rest << '\n';
        }
        for (const Lines &lines : {one.request, Lines{std::string(arrow)}, one.expected}) {
            for (const std::string &line : lines) {
                stream << line << '\n';
            }
        }
        between = "\n";
    }
}

std::string difference(const Lines &expected, const Lines &actual)
{
    // common[i][k]: how many lines the texts from i and k on have in common, in order
    std::vector<std::vector<std::size_t>> common(expected.size() + 1, std::vector<std::size_t>(actual.size() + 1));
    for (std::size_t i = expected.size(); i-- > 0;) {
        for (std::size_t k = actual.size(); k-- > 0;) {
            common[i][k] =
                expected[i] == actual[k] ? common[i + 1][k + 1] + 1 : std::max(common[i + 1][k], common[i][k + 1]);
        }
    }
    std::string text;
    std::size_t i = 0;
    std::size_t k = 0;
    while (i < expected.size() || k < actual.size()) {
        if (i < expected.size() && k < actual.size() && expected[i] == actual[k]) {
            text += "  " + expected[i++] + "\n";
            ++k;
        } else if (k == actual.size() || (i < expected.size() && common[i + 1][k] >= common[i][k + 1])) {
            text += "- " + expected[i++] + "\n";
        } else {
            text += "+ " + actual[k++] + "\n";
        }
    }
    return text;
}

bool register_cases(const std::filesystem::path &directory)
{
    std::vector<std::filesystem::path> paths;
    for (const auto &entry : std::filesystem::directory_iterator(directory)) {
        if (entry.path().extension() == ".txt") {
            paths.push_back(entry.path());
        }
    }
    std::ranges::sort(paths);
    for (const std::filesystem::path &path : paths) {
        const auto file = std::make_shared<CaseFile>(CaseFile::read(path));
        for (std::size_t index = 0; index < file->cases.size(); ++index) {
            std::string name = file->cases[index].name;
            std::ranges::replace_if(
                name, [](unsigned char c) { return std::isalnum(c) == 0; }, '_');
            testing::RegisterTest(path.stem().c_str(), name.c_str(), nullptr, nullptr, path.c_str(),
                                  file->cases[index].line,
                                  [file, index]() -> testing::Test * { return new CaseTest(file, index); });
        }
    }
    return !paths.empty();
}

} // namespace test
