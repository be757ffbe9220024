// What the parser's table of commands and options says to people and to shells.
#ifndef ROXE_HOST_HELP_H_
#define ROXE_HOST_HELP_H_

#include <string>
#include <string_view>
#include <vector>

#include <CLI/CLI.hpp>

namespace host {

// Words and layout of --help, for the program and all its commands.
void set_up_help(CLI::App& program);

// The command of this name, or nothing.
const CLI::App* find_command(const CLI::App& program, const std::string& name);

// The manual page of section 1, as troff.
std::string manual(const CLI::App& program);

// What may come next: one candidate a line, a tab, and its meaning. words are what stands after the
// program's name, the last of them perhaps begun or empty. Nothing where a file's name is expected.
std::string completions(const CLI::App& program, const std::vector<std::string>& words);

}  // namespace host

#endif  // ROXE_HOST_HELP_H_
