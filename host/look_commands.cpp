// info and pick: they look at a picture and write nothing.
#include "command.h"
#include "inspect.h"
#include "options.h"
#include "picture_file.h"
#include "terminal.h"
#include "text.h"

namespace host {
namespace {

class Info : public Command {
 public:
  explicit Info(CLI::App& parent) : Command(parent, "info", "Say what is in a picture file") {
    add_names(*app, "IN", "", input_, "the picture to read")->required();
    app->add_flag("--json", json_, "as a JSON object, for other programs");
  }

  int run() override {
    Notes notes;
    const LoadedPicture loaded = load_picture(input_, {}, notes);
    say(json_ ? info_json(loaded, input_) : info_text(loaded, printable(input_)));
    return 0;
  }

 private:
  std::string input_;
  bool json_ = false;
};

class Pick : public Command {
 public:
  explicit Pick(CLI::App& parent) : Command(parent, "pick", "Print the colour of a pixel") {
    add_names(*app, "IN", "", input_, "the picture to read")->required();
    add_text(*app, "POINT", "", "X,Y of the pixel, in the upright picture",
             [this](const std::string& text) { point_ = Places(text, 1, "POINT"); })
        ->required();
    add_whole_number(*app, "--area", area_, 1, 9999,
                     "the mean of a square of N by N pixels around it");
  }

  int run() override {
    Notes notes;
    const Picture picture = load_picture(input_, {}, notes).picture;
    say(pick_text(picture, point_.on(size_of(picture))[0], area_));
    return 0;
  }

 private:
  std::string input_;
  Places point_;
  int32_t area_ = 1;
};

}  // namespace

std::vector<std::unique_ptr<Command>> look_commands(CLI::App& parent) {
  std::vector<std::unique_ptr<Command>> commands;
  commands.push_back(std::make_unique<Info>(parent));
  commands.push_back(std::make_unique<Pick>(parent));
  return commands;
}

}  // namespace host
