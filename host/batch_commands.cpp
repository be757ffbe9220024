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
    add_names(*app, "RECIPE", "", recipe_path_,
              "a text file, one operation a line, as on the command line without the files")
        ->required();
    add_names(*app, "IN", "", job_.inputs, "the pictures to read, and folders of them")->required();
    add_names(*app, "--out", "DIR", job_.directory,
              "the folder for the results, which keep their paths below the folder that all "
              "inputs have in common")
        ->required();
    add_choice(*app, "--format", job_.settings.format, kFormats, "of the results")
        ->default_str("as each picture");
    auto* overwrite = app->add_flag("--overwrite", overwrite_, "replace results that exist");
    app->add_flag("--skip-existing", job_.skip_existing, "leave results that exist as they are")
        ->excludes(overwrite);
    app->add_flag("--dry-run", dry_run_, "print what would be written, and write nothing");
    add_whole_number(*app, "--jobs", job_.at_a_time, 1, 64, "photographs at a time")
        ->default_str("as many as there are processors");
    add_whole_number(*app, "--progress", job_.progress_seconds, 0, 86400,
                     "seconds between lines of progress, where no terminal shows a bar");
    options_.add(*app);
  }

  int run() override {
    job_.reading = options_.reading();
    const std::string format = job_.settings.format;
    job_.settings = options_.settings;
    job_.writes_anew = options_.ask_for_writing();
    job_.settings.existing = overwrite_ ? Existing::kReplaceButNoLink : Existing::kKeep;
    if (!format.empty()) job_.extension = "." + format;
    job_.draws_bar = ::isatty(STDERR_FILENO);
    const Recipe recipe = read_recipe(recipe_path_);
    job_.recipe = recipe_path_;
    job_.masks = masks_of(recipe);

    const auto start = std::chrono::steady_clock::now();
    const BatchCounts counts = dry_run_ ? rehearse_batch(job_) : run_batch(job_, recipe);
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
    char time[32];
    std::snprintf(time, sizeof(time), "%.1f s", seconds.count());
    std::string summary = std::to_string(counts.done()) + " of " + std::to_string(counts.all);
    summary += dry_run_ ? " photographs would be done; nothing is written"
                        : " photographs done in " + std::string(time) + ", written to " +
                              printable(job_.directory);
    if (counts.skipped > 0) summary += "; " + std::to_string(counts.skipped) + " left as they were";
    if (counts.failed > 0) summary += "; " + std::to_string(counts.failed) + " failed";
    if (counts.closed_folders > 0)
      summary += "; " + std::to_string(counts.closed_folders) +
                 (counts.closed_folders == 1 ? " folder" : " folders") + " could not be read";
    say(summary);
    return counts.failed + counts.closed_folders > 0 ? kExitFailed : 0;
  }

 private:
  std::string recipe_path_;
  bool overwrite_ = false, dry_run_ = false;
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
