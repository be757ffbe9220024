#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <utility>

#include "drawing.h"
#include "errors.h"
#include "operation.h"
#include "option_table.h"
#include "profile.h"
#include "status.h"
#include "text.h"

namespace host {
namespace {

// The colours near a reference colour: what replacement and tint have in common.
class Selection {
 public:
  void add_options(Options& options) {
    Option& reference =
        options.text("--colour", "COLOUR", "the reference colour: '#RRGGBB' or a name",
                     [this](const std::string& text) { colour_ = colour(text, "--colour"); });
    reference.other_spelling = "--color";
    reference.required = true;
    options
        .whole_number("--tolerance", tolerance_, 0, 200, "how far from it colours count, 0 to 200")
        .required = true;
    options.flag("--mask-only", mask_only_, "write the selection as a grey picture instead");
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
  void add_options(Options& options) override {
    selection_.add_options(options);
    options.whole_number("--hue", hue_, -360, 360, "degrees to turn the hue, -360 to 360").form =
        "DEG";
    options.whole_number("--saturation", saturation_, -100, 100, "percent to add, -100 to 100")
        .form = "PCT";
    options.whole_number("--value", value_, -100, 100, "percent of brightness to add, -100 to 100")
        .form = "PCT";
  }

  bool by_pixels() const override { return true; }
  bool gives_mask() const override { return selection_.mask_only(); }

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
  void add_options(Options& options) override { selection_.add_options(options); }

  bool by_pixels() const override { return true; }
  bool gives_mask() const override { return selection_.mask_only(); }

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

// The curves of the white balance are made for numbers of sRGB.
std::string note_about_colours(const Metadata& metadata) {
  const std::string what = what_differs_from_srgb(metadata);
  if (what.empty()) return "";
  return what + (what.ends_with("chunks") ? " are" : " is") +
         " not sRGB, for which temperature takes its numbers";
}

// By how much the channels of a colour differ.
int32_t distance_from_grey(Colour c) {
  const auto [least, most] = std::minmax({c.red, c.green, c.blue});
  return most - least;
}

struct Balance {
  int32_t temperature = 0, tint = 0;

  int32_t apply(const PixelArray* from, PixelArray* to) const {
    return roxeColorTemperature(from, to, temperature, tint);
  }
};

// Of all balances the one that brings a colour nearest to grey, the gentlest of equals. Every one is
// tried on a picture of this one pixel.
Balance balance_for(Colour grey) {
  Balance best;
  std::pair best_merit(INT32_MAX, INT32_MAX);
  const Picture pixel(1, 1, grey);
  Picture balanced(1, 1);
  const PixelArray from = pixel.record();
  PixelArray to = balanced.record();
  for (int32_t temperature = -100; temperature <= 100; ++temperature)
    for (int32_t tint = -100; tint <= 100; ++tint) {
      const Balance balance = {temperature, tint};
      expect_ok(balance.apply(&from, &to));
      const std::pair merit(distance_from_grey(balanced.at(0, 0)),
                            std::abs(temperature) + std::abs(tint));
      if (merit < best_merit) {
        best_merit = merit;
        best = balance;
      }
    }
  return best;
}

class Temperature : public Operation {
 public:
  void add_options(Options& options) override {
    options.whole_number("--temperature", balance_.temperature, -100, 100,
                         "-100 (cooler) to 100 (warmer)");
    options.whole_number("--tint", balance_.tint, -100, 100,
                         "-100 (greener) to 100 (more magenta)");
    Option& grey =
        options.text("--grey", "X,Y",
                     "a pixel that should be grey: finds the temperature and tint that make it so",
                     [this](const std::string& text) { grey_ = Places(text, 1, "--grey"); });
    grey.other_spelling = "--gray";
    grey.otherwise = "as --temperature and --tint say";
    grey.excludes = {"--temperature", "--tint"};
  }

  bool by_pixels() const override { return grey_.empty(); }

  Outcome apply(Picture& picture, Colour) const override {
    Balance balance = balance_;
    const auto balanced = [&](const PixelArray* from, PixelArray* to) {
      return balance.apply(from, to);
    };
    const auto sentence = [&] {
      return "balanced to temperature " + std::to_string(balance.temperature) + ", tint " +
             std::to_string(balance.tint);
    };
    const auto note = [&](bool changed) {
      return changed ? note_about_colours(picture.metadata) : "";
    };
    if (grey_.empty()) {
      const bool changed = draw_in_place(picture, balanced);
      return {sentence(), changed, note(changed)};
    }

    const Point at = grey_.on(size_of(picture))[0];
    if (!picture.contains(at.x, at.y))
      throw UsageError("--grey " + to_text(at) + " lies outside the picture of " +
                       picture.size_text() + " pixels");
    const Colour before = picture.at(at.x, at.y);
    const std::string place = to_text(before) + " at " + to_text(at);
    if (distance_from_grey(before) == 0)
      return {"not balanced: " + place + " is grey already", false};
    balance = balance_for(before);
    const bool changed = draw_in_place(picture, balanced);
    return {sentence() + ", which turns " + place + " into " + to_text(picture.at(at.x, at.y)),
            changed, note(changed)};
  }

 private:
  Balance balance_;
  Places grey_;
};

}  // namespace

std::vector<OperationEntry> colour_operations() {
  return {
      {"replace-colour", "Change the hue, saturation and value of one colour",
       make_operation<ReplaceColour>},
      {"tint", "Keep one colour and turn the others grey; white becomes 254", make_operation<Tint>},
      {"temperature", "Correct the white balance", make_operation<Temperature>},
  };
}

}  // namespace host
