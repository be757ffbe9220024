// The commands that read one picture and write one.
#include "command.h"
#include "errors.h"
#include "operation.h"
#include "output_options.h"
#include "picture_file.h"
#include "terminal.h"

namespace host {
namespace {

// IN and OUT around one operation.
class OperationCommand : public Command {
 public:
  OperationCommand(CLI::App& parent, const OperationEntry& entry)
      : Command(parent, entry.name, entry.description), operation_(entry.make()) {
    app->add_option("IN", input_, "the picture to read")->required()->type_name("");
    auto* out = app->add_option("OUT", output_, "the picture to write: .jpg, .png, .ppm or .pgm");
    out->type_name("");
    operation_->add_options(*app);
    out->required(!app->get_option_no_throw("--dry-run"));
    options_.add(*app);
  }

  int run() override {
    operation_->check();
    const bool writes = !operation_->only_reports();
    if (writes && output_.empty()) throw UsageError("OUT, the picture to write, is missing");
    if (writes) check_target(output_);

    Notes notes;
    Picture picture = load_picture(input_, options_.reading(), notes).picture;
    const std::string done = operation_->apply(picture, options_.background).sentence;
    if (writes) save_picture(picture, output_, options_.settings, notes);
    for (const std::string& note : notes) complain("note: " + note);
    if (writes)
      say(printable(output_) + ": " + done + ", " + picture.size_text() + " pixels\n");
    else
      say(done + "\n");
    return 0;
  }

 private:
  std::unique_ptr<Operation> operation_;
  std::string input_, output_;
  OutputOptions options_;
};

}  // namespace

std::vector<std::unique_ptr<Command>> edit_commands(CLI::App& parent) {
  std::vector<std::unique_ptr<Command>> commands;
  for (const OperationEntry& entry : operations())
    commands.push_back(std::make_unique<OperationCommand>(parent, entry));
  return commands;
}

}  // namespace host
