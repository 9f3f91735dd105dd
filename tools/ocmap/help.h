// How the tool explains its own command line: the form of --help, and the examples that end it.
#pragma once

#include <memory>
#include <span>
#include <string>

#include <CLI/CLI.hpp>

namespace ocmap
{

/// Gives help with the options that a command insists on in its usage line.
std::shared_ptr<CLI::FormatterBase> help_formatter();

/// The end of help: examples, and exit statuses.
std::string help_footer(std::span<const char *const> examples);

/// One line for an error in the command line, with the command, if one was named, whose help it points to.
std::string usage_error(const CLI::App &app, const CLI::ParseError &error);

} // namespace ocmap
