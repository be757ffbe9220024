#include "drawing.h"
#include "operation.h"
#include "options.h"
#include "text.h"

namespace host {
namespace {

// The colours near a reference colour: what replacement and tint have in common.
class Selection {
 public:
  void add_options(CLI::App& app) {
    add_text(app, "--colour,--color", "COLOUR", "the reference colour: '#RRGGBB' or a name",
             [this](const std::string& text) { colour_ = colour(text, "--colour"); })
        ->required();
    add_whole_number(app, "--tolerance", tolerance_, 0, 200,
                     "how far from it colours count, 0 to 200")
        ->required();
    app.add_flag("--mask-only", mask_only_, "write the selection as a grey picture instead");
  }

  Colour reference() const { return colour_; }
  uint32_t tolerance() const { return static_cast<uint32_t>(tolerance_); }
  bool mask_only() const { return mask_only_; }
  std::string text() const { return to_text(colour_) + " within " + std::to_string(tolerance_); }

 private:
  int32_t tolerance_ = 0;
  bool mask_only_ = false;
  Colour colour_;
};

// A selection is grey and no photograph: no colour profile describes it.
void prepare_for_mask(Picture& picture) {
  picture.one_channel = true;
  picture.metadata.icc.clear();
}

class ReplaceColour : public Operation {
 public:
  void add_options(CLI::App& app) override {
    selection_.add_options(app);
    add_whole_number(app, "--hue", hue_, -360, 360, "degrees to turn the hue, -360 to 360")
        ->type_name("DEG");
    add_whole_number(app, "--saturation", saturation_, -100, 100, "percent to add, -100 to 100")
        ->type_name("PCT");
    add_whole_number(app, "--value", value_, -100, 100, "percent of brightness to add, -100 to 100")
        ->type_name("PCT");
  }

  Outcome apply(Picture& picture, Colour) const override {
    const Colour c = selection_.reference();
    if (selection_.mask_only()) {
      prepare_for_mask(picture);
      draw_in_place(picture, [&](const PixelArray* from, PixelArray* to) {
        return roxeReplaceColorMask(from, to, c.blue, c.green, c.red, selection_.tolerance());
      });
      return {"selected " + selection_.text()};
    }
    const bool changed = draw_in_place(picture, [&](const PixelArray* from, PixelArray* to) {
      return roxeReplaceColor(from, to, c.blue, c.green, c.red, selection_.tolerance(), hue_,
                              saturation_, value_);
    });
    return {"replaced " + selection_.text(), changed};
  }

 private:
  Selection selection_;
  int32_t hue_ = 0, saturation_ = 0, value_ = 0;
};

class Tint : public Operation {
 public:
  void add_options(CLI::App& app) override { selection_.add_options(app); }

  Outcome apply(Picture& picture, Colour) const override {
    const Colour c = selection_.reference();
    if (selection_.mask_only()) {
      prepare_for_mask(picture);
      draw_in_place(picture, [&](const PixelArray* from, PixelArray* to) {
        return roxeColorTintMask(from, to, c.blue, c.green, c.red, selection_.tolerance());
      });
      return {"selected " + selection_.text()};
    }
    const bool changed = draw_in_place(picture, [&](const PixelArray* from, PixelArray* to) {
      return roxeColorTint(from, to, c.blue, c.green, c.red, selection_.tolerance());
    });
    return {"kept " + selection_.text() + " in colour", changed};
  }

 private:
  Selection selection_;
};

class Temperature : public Operation {
 public:
  void add_options(CLI::App& app) override {
    add_whole_number(app, "--temperature", temperature_, -100, 100,
                     "-100 (cooler) to 100 (warmer)");
    add_whole_number(app, "--tint", tint_, -100, 100, "-100 (greener) to 100 (more magenta)");
  }

  Outcome apply(Picture& picture, Colour) const override {
    const bool changed = draw_in_place(picture, [&](const PixelArray* from, PixelArray* to) {
      return roxeColorTemperature(from, to, temperature_, tint_);
    });
    return {"balanced to temperature " + std::to_string(temperature_) + ", tint " +
                std::to_string(tint_),
            changed};
  }

 private:
  int32_t temperature_ = 0, tint_ = 0;
};

}  // namespace

std::vector<OperationEntry> colour_operations() {
  return {
      {"replace-colour", "Change the hue, saturation and value of one colour",
       make_operation<ReplaceColour>},
      {"tint", "Keep one colour and turn the others grey", make_operation<Tint>},
      {"temperature", "Correct the white balance", make_operation<Temperature>},
  };
}

}  // namespace host
