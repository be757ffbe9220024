// help, and what is made of the same table: the manual page and the completion in shells.
#include "command.h"
#include "errors.h"
#include "help.h"
#include "operation.h"
#include "options.h"
#include "terminal.h"

namespace host {
namespace {

class Help : public Command {
 public:
  explicit Help(CLI::App& parent) : Command(parent, "help", "Print the help of a command") {
    app->add_option("COMMAND", name_, "the command")->default_str("all, in brief")->type_name("");
  }

  int run() override {
    const CLI::App& program = *app->get_parent();
    if (name_.empty()) {
      // help() of the program itself would be that of the command that was parsed.
      say(program.get_formatter()->make_help(&program, "roxe", CLI::AppFormatMode::Normal));
      return 0;
    }
    const CLI::App* command = find_command(program, name_);
    if (!command) throw no_such_command(name_);
    say(command->help("roxe"));
    return 0;
  }

 private:
  std::string name_;
};

class Manual : public Command {
 public:
  explicit Manual(CLI::App& parent)
      : Command(parent, "manual", "Print the manual page, as troff") {}

  int run() override {
    say(manual(*app->get_parent()));
    return 0;
  }
};

// What the scripts that complete arguments in a shell ask.
class Complete : public Command {
 public:
  explicit Complete(CLI::App& parent) : Command(parent, "complete", "List what may come next") {
    app->add_option("WORD", words_, "what stands after roxe")->required()->type_name("");
    app->group("");  // for scripts only
  }

  int run() override {
    say(completions(*app->get_parent(), words_));
    return 0;
  }

 private:
  std::vector<std::string> words_;
};

}  // namespace

std::vector<std::unique_ptr<Command>> help_commands(CLI::App& parent) {
  std::vector<std::unique_ptr<Command>> commands;
  commands.push_back(std::make_unique<Help>(parent));
  commands.push_back(std::make_unique<Manual>(parent));
  commands.push_back(std::make_unique<Complete>(parent));
  return commands;
}

}  // namespace host
