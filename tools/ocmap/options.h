// The options and arguments that commands have, each declared once: adds itself to a command, and says where in Options
// its value goes.
#pragma once

#include <CLI/CLI.hpp>

#include "commands.h"

namespace ocmap::option
{

using Declare = void (*)(CLI::App &command, Options &options);

void file(CLI::App &command, Options &options);
void optional_file(CLI::App &command, Options &options);
void kind(CLI::App &command, Options &options);
void json(CLI::App &command, Options &options);
void json_report(CLI::App &command, Options &options);
void bare(CLI::App &command, Options &options);
void check(CLI::App &command, Options &options);
void store(CLI::App &command, Options &options);
void judging_store(CLI::App &command, Options &options);
void wait(CLI::App &command, Options &options);
void dry_run(CLI::App &command, Options &options);
void oper(CLI::App &command, Options &options);
void reverse(CLI::App &command, Options &options);
void html(CLI::App &command, Options &options);
void markdown(CLI::App &command, Options &options);

// Those that many commands have, and that help lists behind a command's own.
void plugin(CLI::App &command, Options &options);
void yang(CLI::App &command, Options &options);
void trace(CLI::App &command, Options &options);
void journal(CLI::App &command, Options &options);
void journal_all(CLI::App &command, Options &options);

/// The name of their group.
inline constexpr const char *common = "Common options";

} // namespace ocmap::option
