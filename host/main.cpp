// roxe: a photographer's command line over the fifteen operations.

#include <algorithm>
#include <exception>
#include <iterator>
#include <new>
#include <string>

#include "command.h"
#include "errors.h"
#include "files.h"
#include "options.h"
#include "terminal.h"

namespace host {
namespace {

int run(int argc, char** argv) {
  CLI::App app(
      "Edits photographs: JPEG, PNG, PPM and PGM. Angles in degrees; pixels count from the "
      "top left corner, (0, 0), of the upright picture.");
  app.name("roxe");
  app.require_subcommand(1);
  app.set_version_flag("--version", "roxe 1.0.0");

  std::vector<std::unique_ptr<Command>> commands;
  for (auto make : {look_commands, batch_commands, edit_commands})
    std::ranges::move(make(app), std::back_inserter(commands));

  const auto is_command = [&](const std::string& name) {
    return std::ranges::any_of(commands,
                               [&](const auto& command) { return command->app->check_name(name); });
  };
  if (argc > 1 && argv[1][0] != '-' && !is_command(argv[1]))
    throw UsageError("there is no command '" + std::string(argv[1]) + "' (see roxe --help)");
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() == 0) return app.exit(error);  // help was asked for
    complain(reason(app, error) + " (see roxe --help)");
    return kExitUsage;
  }
  for (const auto& command : commands)
    if (command->app->parsed()) return command->run();
  return kExitUsage;  // not reached: the parser requires a command
}

}  // namespace
}  // namespace host

int main(int argc, char** argv) {
  host::prepare_for_signals();
  try {
    const int code = host::run(argc, argv);
    host::expect_said();
    return code;
  } catch (const host::UsageError& error) {
    host::complain(error.what());
    return host::kExitUsage;
  } catch (const std::bad_alloc&) {
    host::complain("there is not enough memory for this picture");
  } catch (const std::exception& error) {
    host::complain(error.what());
  }
  return host::kExitFailed;
}
