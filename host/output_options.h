// The options of every command that writes a picture.
#ifndef ROXE_HOST_OUTPUT_OPTIONS_H_
#define ROXE_HOST_OUTPUT_OPTIONS_H_

#include "codecs.h"
#include "options.h"

namespace host {

struct OutputOptions {
  Colour background;
  WriteSettings settings;

  void add(CLI::App& app) {
    add_text(app, "--background", "COLOUR", "colour of uncovered and transparent pixels",
             [this](const std::string& text) { background = colour(text, "--background"); })
        ->default_str("black");
    add_whole_number(app, "--quality", settings.quality, 1, 100, "of a JPEG, 1 to 100");
  }
};

}  // namespace host

#endif  // ROXE_HOST_OUTPUT_OPTIONS_H_
