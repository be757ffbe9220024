// run: one recipe over many photographs.
#include <chrono>
#include <cstdio>

#include <unistd.h>

#include "batch.h"
#include "command.h"
#include "output_options.h"
#include "recipe.h"
#include "terminal.h"

namespace host {
namespace {

class Run : public Command {
 public:
  explicit Run(CLI::App& parent) : Command(parent, "run", "Apply a recipe to many photographs") {
    app->add_option("RECIPE", recipe_path_,
                    "a text file, one operation a line, as on the command line without the files")
        ->required()
        ->type_name("");
    app->add_option("IN", job_.inputs, "the pictures to read")->required()->type_name("");
    app->add_option("--out", job_.directory, "the folder for the results")
        ->required()
        ->type_name("DIR");
    add_choice(*app, "--format", format_, "jpg|png|ppm|pgm", "of the results")
        ->default_str("as each picture");
    add_whole_number(*app, "--jobs", job_.at_a_time, 1, 64, "photographs at a time")
        ->default_str("as many as there are processors");
    options_.add(*app);
  }

  int run() override {
    job_.reading = options_.reading();
    job_.settings = options_.settings;
    if (!format_.empty()) job_.extension = "." + format_;
    const Recipe recipe = read_recipe(recipe_path_);

    const auto start = std::chrono::steady_clock::now();
    const std::vector<BatchResult> results = run_batch(job_, recipe, ::isatty(STDERR_FILENO));
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
        " photographs done in " + time + ", written to " + printable(job_.directory) +
        (failed > 0 ? "; " + std::to_string(failed) + " failed\n" : "\n"));
    return failed > 0 ? kExitFailed : 0;
  }

 private:
  std::string recipe_path_, format_;
  BatchJob job_;
  OutputOptions options_;
};

}  // namespace

std::vector<std::unique_ptr<Command>> batch_commands(CLI::App& parent) {
  std::vector<std::unique_ptr<Command>> commands;
  commands.push_back(std::make_unique<Run>(parent));
  return commands;
}

}  // namespace host
