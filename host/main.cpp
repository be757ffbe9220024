// roxe: a photographer's command line over the fifteen operations.

#include <algorithm>
#include <exception>
#include <iterator>
#include <new>
#include <string>
#include <vector>

#include "codecs.h"
#include "command.h"
#include "errors.h"
#include "files.h"
#include "help.h"
#include "operation.h"
#include "options.h"
#include "terminal.h"

namespace host {
namespace {

int run(int argc, char** argv) {
  CLI::App app(
      "Edits photographs: JPEG, PNG, TIFF, WebP, PPM and PGM. Angles are in degrees; pixels count "
      "from the top left corner, (0, 0), of the upright picture. Colour profiles are kept and not "
      "applied.");
  app.name("roxe");
  app.footer("Exit codes: 0 done, 1 the work failed, 2 the command makes no sense.");
  app.require_subcommand(1);
  app.set_version_flag("--version", version_text(),
                       "print the version and the libraries of formats");

  std::vector<std::unique_ptr<Command>> commands;
  for (auto make : {edit_commands, batch_commands, look_commands, help_commands})
    std::ranges::move(make(app), std::back_inserter(commands));
  set_up_help(app);

  const std::vector<std::string> arguments(argv + std::min(argc, 1), argv + argc);
  const bool has_command = !arguments.empty() && !arguments[0].starts_with("-");
  if (has_command && !find_command(app, arguments[0])) throw no_such_command(arguments[0]);
  try {
    parse(app, arguments);
  } catch (const CLI::Success& help) {
    return app.exit(help);
  } catch (const UsageError& error) {
    throw UsageError(error.what() + std::string(" (see roxe ") +
                     (has_command ? arguments[0] + " --help)" : "--help)"));
  }
  for (const auto& command : commands)
    if (command->app->parsed()) return command->run();
  return kExitUsage;  // not reached: the parser requires a command
}

}  // namespace
}  // namespace host

int main(int argc, char** argv) {
  host::keep_standard_streams();
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
