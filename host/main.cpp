// roxe: a photographer's command line over the fifteen operations.

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <chrono>
#include <cstdio>
#include <exception>
#include <memory>
#include <new>
#include <string>
#include <system_error>

#include <unistd.h>

#include <CLI/CLI.hpp>

#include "batch.h"
#include "errors.h"
#include "files.h"
#include "inspect.h"
#include "operation.h"
#include "options.h"
#include "picture_file.h"
#include "recipe.h"
#include "text.h"

namespace host {
namespace {

constexpr int kExitFailed = 1, kExitUsage = 2;

void say(const std::string& text) { std::fputs(text.c_str(), stdout); }

// Prints what was asked for. If it does not arrive, the work has failed.
void answer(const std::string& text) {
  say(text);
  if (std::fflush(stdout) != 0 || std::ferror(stdout))
    throw Failure("the answer cannot be printed (" + std::generic_category().message(errno) + ")");
}

// The names of files may hold line ends and commands to the terminal.
void complain(std::string sentence) {
  for (char& c : sentence)
    if (std::iscntrl(static_cast<unsigned char>(c))) c = '?';
  std::fprintf(stderr, "roxe: %s\n", sentence.c_str());
}

// Options of every command that writes a picture.
struct OutputOptions {
  Colour background;
  WriteSettings settings;

  void add(CLI::App& app) {
    add_text(app, "--background", "COLOUR",
             "colour of uncovered and transparent pixels (default: black)",
             [this](const std::string& text) { background = colour(text, "--background"); });
    add_whole_number(app, "--quality", settings.quality, 1, 100,
                     "of a JPEG, 1 to 100 (default: 95)");
  }
};

// IN and OUT around one operation.
struct OperationCommand {
  CLI::App* app = nullptr;
  std::unique_ptr<Operation> operation;
  std::string input, output;
  OutputOptions options;

  OperationCommand(CLI::App& parent, const OperationEntry& entry)
      : app(parent.add_subcommand(std::string(entry.name), std::string(entry.description))),
        operation(entry.make()) {
    app->add_option("IN", input, "the picture to read")->required()->type_name("");
    auto* out = app->add_option("OUT", output, "the picture to write: .jpg, .png, .ppm or .pgm");
    out->type_name("");
    operation->add_options(*app);
    out->required(!app->get_option_no_throw("--dry-run"));
    options.add(*app);
  }

  void run() {
    operation->check();
    const bool writes = !operation->only_reports();
    if (writes && output.empty()) throw UsageError("OUT, the picture to write, is missing");
    if (writes) check_target(output);

    Notes notes;
    Picture picture = load_picture(input, options.background, notes).picture;
    const std::string done = operation->apply(picture, options.background);
    if (writes) save_picture(picture, output, options.settings, notes);
    for (const std::string& note : notes) complain("note: " + note);
    if (writes)
      say(output + ": " + done + ", " + picture.size_text() + " pixels\n");
    else
      answer(done + "\n");
  }
};

struct InfoCommand {
  CLI::App* app;
  std::string input;

  explicit InfoCommand(CLI::App& parent)
      : app(parent.add_subcommand("info", "Say what is in a picture file")) {
    app->add_option("IN", input, "the picture to read")->required()->type_name("");
  }

  void run() {
    Notes notes;
    answer(info_text(load_picture(input, {}, notes), input));
  }
};

struct PickCommand {
  CLI::App* app;
  std::string input;
  Point point;

  explicit PickCommand(CLI::App& parent)
      : app(parent.add_subcommand("pick", "Print the colour of a pixel")) {
    app->add_option("IN", input, "the picture to read")->required()->type_name("");
    add_text(*app, "POINT", "", "X,Y of the pixel, in the upright picture",
             [this](const std::string& text) { point = points(text, 1, "POINT")[0]; })
        ->required();
  }

  void run() {
    Notes notes;
    answer(pick_text(load_picture(input, {}, notes).picture, point));
  }
};

struct RunCommand {
  CLI::App* app;
  std::string recipe_path, format;
  BatchJob job;
  OutputOptions options;

  explicit RunCommand(CLI::App& parent)
      : app(parent.add_subcommand("run", "Apply a recipe to many photographs")) {
    app->add_option("RECIPE", recipe_path,
                    "a text file, one operation a line, as on the command line without the files")
        ->required()
        ->type_name("");
    app->add_option("IN", job.inputs, "the pictures to read")->required()->type_name("");
    app->add_option("--out", job.directory, "the folder for the results")
        ->required()
        ->type_name("DIR");
    app->add_option("--format", format, "jpg, png or ppm (default: as each picture)")
        ->check(CLI::IsMember({"jpg", "png", "ppm"}))
        ->type_name("NAME");
    add_whole_number(*app, "--jobs", job.at_a_time, 1, 64,
                     "photographs at a time (default: all processors)");
    options.add(*app);
  }

  int run() {
    job.background = options.background;
    job.settings = options.settings;
    if (!format.empty()) job.extension = "." + format;
    const Recipe recipe = read_recipe(recipe_path);

    const auto start = std::chrono::steady_clock::now();
    const std::vector<BatchResult> results = run_batch(job, recipe, ::isatty(STDERR_FILENO));
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
    size_t failed = 0;
    for (const BatchResult& result : results) {
      for (const std::string& note : result.notes) complain("note: " + note);
      if (result.failure.empty()) continue;
      complain(result.failure);
      ++failed;
    }
    char time[32];
    std::snprintf(time, sizeof(time), "%.1f s", seconds.count());
    say(std::to_string(results.size() - failed) + " of " + std::to_string(results.size()) +
        " photographs done in " + time + ", written to " + job.directory +
        (failed > 0 ? "; " + std::to_string(failed) + " failed\n" : "\n"));
    return failed > 0 ? kExitFailed : 0;
  }
};

int run(int argc, char** argv) {
  CLI::App app(
      "Edits photographs: JPEG, PNG, PPM and PGM. Angles in degrees; pixels count from the "
      "top left corner, (0, 0), of the upright picture.");
  app.name("roxe");
  app.require_subcommand(1);
  app.set_version_flag("--version", "roxe 1.0.0");

  InfoCommand info(app);
  PickCommand pick(app);
  RunCommand batch(app);
  std::vector<std::unique_ptr<OperationCommand>> commands;
  for (const OperationEntry& entry : operations())
    commands.push_back(std::make_unique<OperationCommand>(app, entry));

  const auto is_command = [&](const std::string& name) {
    const auto commands = app.get_subcommands({});
    return std::any_of(commands.begin(), commands.end(),
                       [&](const CLI::App* command) { return command->check_name(name); });
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

  if (info.app->parsed()) info.run();
  if (pick.app->parsed()) pick.run();
  if (batch.app->parsed()) return batch.run();
  for (const auto& command : commands)
    if (command->app->parsed()) command->run();
  return 0;
}

}  // namespace
}  // namespace host

int main(int argc, char** argv) {
  host::prepare_for_signals();
  try {
    return host::run(argc, argv);
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
