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
    app->add_option("IN", input_, "the picture to read")->required()->type_name("");
  }

  int run() override {
    Notes notes;
    say(info_text(load_picture(input_, {}, notes), printable(input_)));
    return 0;
  }

 private:
  std::string input_;
};

class Pick : public Command {
 public:
  explicit Pick(CLI::App& parent) : Command(parent, "pick", "Print the colour of a pixel") {
    app->add_option("IN", input_, "the picture to read")->required()->type_name("");
    add_text(*app, "POINT", "", "X,Y of the pixel, in the upright picture",
             [this](const std::string& text) { point_ = points(text, 1, "POINT")[0]; })
        ->required();
  }

  int run() override {
    Notes notes;
    say(pick_text(load_picture(input_, {}, notes).picture, point_));
    return 0;
  }

 private:
  std::string input_;
  Point point_;
};

}  // namespace

std::vector<std::unique_ptr<Command>> look_commands(CLI::App& parent) {
  std::vector<std::unique_ptr<Command>> commands;
  commands.push_back(std::make_unique<Info>(parent));
  commands.push_back(std::make_unique<Pick>(parent));
  return commands;
}

}  // namespace host
