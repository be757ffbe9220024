// The options of every command that writes a picture.
#ifndef ROXE_HOST_OUTPUT_OPTIONS_H_
#define ROXE_HOST_OUTPUT_OPTIONS_H_

#include <algorithm>
#include <vector>

#include "codecs.h"
#include "errors.h"
#include "options.h"

namespace host {

struct OutputOptions {
  Colour background;
  bool damaged = false;
  WriteSettings settings;

  void add(CLI::App& app) {
    const size_t others = app.get_options({}).size();
    add_text(app, "--background", "COLOUR", "colour of uncovered and transparent pixels",
             [this](const std::string& text) { background = colour(text, "--background"); })
        ->default_str("black");
    add_text(app, "--quality", "N",
             "of a JPEG, 1 to 100, or keep: the tables and the subsampling of the JPEG that is "
             "read; from other formats 95",
             [this](const std::string& text) {
               settings.quality.reset();
               if (text != "keep") settings.quality = whole_number(text, 1, 100, "--quality");
             })
        ->default_str("keep");
    add_text(app, "--subsampling", "keep|4:4:4|4:2:2|4:2:0",
             "of the colours of a JPEG: 4:4:4, 4:2:2, 4:2:0 or as --quality has it: keep, or 4:4:4 "
             "with a number",
             [this](const std::string& text) { settings.subsampling = subsampling(text); })
        ->default_str("keep");
    app.add_flag("--progressive", settings.progressive, "write a progressive JPEG");
    app.add_flag("--strip", settings.strip,
                 "write no metadata but what the colours mean and the resolution");
    app.add_flag("--strip-gps", settings.strip_gps, "leave out positions in their usual places");
    app.add_flag("--preserve-time", settings.preserve_time,
                 "give the output the time of change of the input");
    app.add_flag("--damaged", damaged,
                 "read what can be read of a JPEG that is damaged or lacks its end");
    added_ = app.get_options({});
    added_.erase(added_.begin(), added_.begin() + static_cast<ptrdiff_t>(others));
  }

  ReadSettings reading() const {
    ReadSettings reading(background);
    reading.damaged = damaged;
    return reading;
  }

  // Whether the file must be written anew even if no operation has changed the picture.
  bool ask_for_writing() const {
    return std::ranges::any_of(added_, [](const CLI::Option* option) {
      return option->count() > 0 && option->get_name() != "--preserve-time";
    });
  }

 private:
  static Subsampling subsampling(const std::string& text) {
    if (text == "keep") return Subsampling::kDefault;
    if (text == "4:4:4") return Subsampling::k444;
    if (text == "4:2:2") return Subsampling::k422;
    if (text == "4:2:0") return Subsampling::k420;
    throw UsageError("--subsampling needs keep, 4:4:4, 4:2:2 or 4:2:0, not '" + text + "'");
  }

  std::vector<CLI::Option*> added_;
};

}  // namespace host

#endif  // ROXE_HOST_OUTPUT_OPTIONS_H_
