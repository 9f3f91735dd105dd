// Runs the tool as its users do, and keeps what it printed.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace test
{

struct Outcome {
    int status = -1;
    std::string out;
    std::string err;
};

/// Runs the tool with `arguments`, with `input` on its standard input and `environment` ("NAME=value") added.
Outcome ocmap(std::vector<std::string> arguments, std::string_view input = "",
              const std::vector<std::string> &environment = {});

std::string read_file(const std::filesystem::path &path);
void write_file(const std::filesystem::path &path, std::string_view text);

/// A directory of its own for each test, removed behind it.
class ToolTest : public testing::Test
{
protected:
    void SetUp() override;
    void TearDown() override;

    std::filesystem::path path(const std::string &name) const { return directory_ / name; }
    std::string store() const { return path("store"); }
    std::string store_file() const { return read_file(path("store") / "native.xml"); }

    /// An edit of the children of `macsec`; the document has "nc" for the base namespace.
    Outcome edit(std::string_view inside, std::string_view parameters = "") const;
    Outcome get_config(std::string_view inside_filter) const;
    /// The children of `policies` in a read of the configuration, without white space between elements.
    std::string policies() const;

private:
    std::filesystem::path directory_;
};

/// A policy of an edit: its key and, in `config`, the name and `leaves`.
std::string policy(std::string_view name, std::string_view leaves, std::string_view operation = "");
std::string in_policies(std::string_view entries);
/// Takes the white space between elements away.
std::string compact(std::string_view text);
/// What a successful read printed inside the first element `tag`, compact; nothing if there is no such element.
std::string inside(const Outcome &read, std::string_view tag);

} // namespace test
