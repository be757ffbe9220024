// The commands that read one picture and write one.
#include <filesystem>
#include <optional>
#include <utility>

#include "command.h"
#include "compare.h"
#include "errors.h"
#include "files.h"
#include "output_options.h"
#include "picture_file.h"
#include "recipe.h"
#include "terminal.h"

namespace host {
namespace {

// Whether two paths lead to one file, which need not exist yet.
bool is_same_file(const std::string& one, const std::string& other) {
  if (const auto identity = identity_of(one)) return identity == identity_of(other);
  namespace fs = std::filesystem;
  return fs::weakly_canonical(fs::absolute(one)) == fs::weakly_canonical(fs::absolute(other));
}

// IN and OUT around the steps of a recipe.
class OnePicture : public Command {
 public:
  using Command::Command;

 protected:
  CLI::Option* add_files() {
    add_names(*app, "IN", "", input_, "the picture to read; - is standard input")->required();
    return add_names(*app, "OUT", "", output_,
                     "the picture to write: .jpg, .png, .webp, .ppm or .pgm; - is standard output");
  }

  void add_output_options() {
    add_choice(*app, "--format", options_.settings.format, kFormats, "of the output")
        ->default_str("by the extension");
    add_names(*app, "--compare", "FILE", comparison_,
              "write before and after, side by side, as well")
        ->default_str("no");
    options_.add(*app);
  }

  int edit(const Recipe& recipe) {
    if (output_.empty()) throw UsageError("OUT, the picture to write, is missing");
    const Target output(output_, options_.settings.format);
    std::optional<Target> comparison;
    if (comparison_ == kStandardStream) throw UsageError("--compare needs the name of a file");
    if (!comparison_.empty()) comparison.emplace(comparison_);
    for (const std::string& other : {input_, output_})
      if (comparison && is_same_file(comparison_, other))
        throw UsageError("--compare " + comparison_ + " would replace " + other);
    for (const std::string& mask : masks_of(recipe)) {
      const std::string replaced = " would replace the mask " + mask;
      if (comparison && is_same_file(comparison_, mask))
        throw UsageError("--compare " + comparison_ + replaced);
      if (is_same_file(output_, mask) && !is_same_file(input_, mask))
        throw UsageError("OUT " + output_ + replaced);
    }

    Notes notes;
    LoadedPicture loaded = load_picture(input_, options_.reading(), notes);
    Picture& picture = loaded.picture;
    const Picture before = comparison_.empty() ? Picture() : copy_of(picture);
    const Outcome outcome = apply(recipe, picture, options_.background);
    if (!outcome.note.empty()) notes.push_back(name_of_input(input_) + ": " + outcome.note);
    const WriteSettings& settings = options_.settings;
    const bool copied =
        !outcome.changed && !options_.ask_for_writing() && can_be_copied(loaded, output, settings);
    if (copied) notes.clear();  // of what reading would have changed
    const Bytes file =
        copied ? std::move(loaded.file) : encode_for(output, picture, settings, notes);
    // Both are made before either is written, last the one that may replace the input.
    if (comparison) {
      const Picture both = side_by_side(before, picture, options_.background);
      write_picture(*comparison, encode_for(*comparison, both, {}, notes), both, {});
    }
    write_picture(output, file, picture, settings);
    for (const std::string& note : notes) complain("note: " + note);
    const std::string sentence = name_of_output(output_) + ": " + outcome.sentence +
                                 (copied ? "; copied as it is, " : ", ") + picture.size_text() +
                                 " pixels";
    if (output_ == kStandardStream)
      complain(sentence);
    else
      say(printable(sentence));
    return 0;
  }

  // Prints what an operation finds out.
  int report(const Operation& operation) {
    Notes notes;
    Picture picture = load_picture(input_, options_.reading(), notes).picture;
    const Outcome outcome = operation.apply(picture, options_.background);
    for (const std::string& note : notes) complain("note: " + note);
    say(outcome.sentence);
    return 0;
  }

 private:
  std::string input_, output_, comparison_;
  OutputOptions options_;
};

class OneOperation : public OnePicture {
 public:
  OneOperation(CLI::App& parent, const OperationEntry& entry)
      : OnePicture(parent, entry.name, entry.description) {
    recipe_.push_back({entry.make(), {}});
    CLI::Option* out = add_files();
    Options options;
    operation().add_options(options);
    add_options(*app, options);
    out->required(!app->get_option_no_throw("--dry-run"));
    add_output_options();
  }

  int run() override {
    operation().check(pictures_beside(""));
    return operation().only_reports() ? report(operation()) : edit(recipe_);
  }

 private:
  Operation& operation() { return *recipe_[0].operation; }

  Recipe recipe_;
};

class Edit : public OnePicture {
 public:
  explicit Edit(CLI::App& parent)
      : OnePicture(parent, "edit", "Apply several operations to a picture") {
    add_files()->required();
    app->add_option("--then", steps_,
                    "the next operation with its options, such as 'shadow-highlight --shadow 20'")
        ->type_name("'OPERATION ...'")
        ->allow_extra_args(false)
        ->required();
    add_output_options();
  }

  int run() override {
    Recipe recipe;
    for (const std::string& step : steps_) {
      try {
        recipe.push_back(read_step(step));
      } catch (const UsageError& error) {
        throw UsageError("--then '" + step + "': " + error.what());
      }
    }
    return edit(recipe);
  }

 private:
  std::vector<std::string> steps_;
};

}  // namespace

std::vector<std::unique_ptr<Command>> edit_commands(CLI::App& parent) {
  std::vector<std::unique_ptr<Command>> commands;
  for (const OperationEntry& entry : operations())
    commands.push_back(std::make_unique<OneOperation>(parent, entry));
  commands.push_back(std::make_unique<Edit>(parent));
  return commands;
}

}  // namespace host
