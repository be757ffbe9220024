// What can follow "roxe" on the command line.
#ifndef ROXE_HOST_COMMAND_H_
#define ROXE_HOST_COMMAND_H_

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <CLI/CLI.hpp>

namespace host {

constexpr int kExitFailed = 1, kExitUsage = 2;

class Command {
 public:
  Command(CLI::App& parent, std::string_view name, std::string_view description)
      : app(parent.add_subcommand(std::string(name), std::string(description))->group("Commands")) {
  }
  virtual ~Command() = default;
  // Does the work and gives the exit code. Throws UsageError and Failure.
  virtual int run() = 0;

  CLI::App* const app;
};

// One list a kind, joined by main.
std::vector<std::unique_ptr<Command>> edit_commands(CLI::App& parent);   // one picture
std::vector<std::unique_ptr<Command>> batch_commands(CLI::App& parent);  // many pictures
std::vector<std::unique_ptr<Command>> look_commands(CLI::App& parent);   // nothing is written
std::vector<std::unique_ptr<Command>> help_commands(CLI::App& parent);   // about the others

}  // namespace host

#endif  // ROXE_HOST_COMMAND_H_
